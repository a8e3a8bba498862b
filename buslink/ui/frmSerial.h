// "Serial RS422 Setup": changes the settings of the bus line and identifies nothing.
#pragma once

#include "buslink/ui/bus_setup_form.h"

namespace ampdesk {

class frmSerial : public BusSetupForm {
    Q_OBJECT

  public:
    // `logic` outlives the dialog.
    frmSerial(BusSetup& logic, const std::string& rs485_path, const PortMap& ports, Operator& person,
              QWidget* parent = nullptr);
};

}  // namespace ampdesk
