// "Setup Amplifier Communication": sets the line up and identifies a new amplifier.
#pragma once

#include "buslink/ui/bus_setup_form.h"

namespace ampdesk {

class frmSetup : public BusSetupForm {
    Q_OBJECT

  public:
    // `logic` outlives the dialog.
    frmSetup(BusSetup& logic, const std::string& rs485_path, const PortMap& ports, Operator& person,
             QWidget* parent = nullptr);
};

}  // namespace ampdesk
