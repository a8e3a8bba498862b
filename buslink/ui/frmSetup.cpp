// The RS-485 dialog of a new amplifier.
#include "buslink/ui/frmSetup.h"

namespace ampdesk {

frmSetup::frmSetup(BusSetup& logic, const std::string& rs485_path, const PortMap& ports, Operator& person,
                   QWidget* parent)
    : BusSetupForm(QStringLiteral("Setup Amplifier Communication"), rs485_path, ports, person, logic,
                   parent) {
    setObjectName(QStringLiteral("frmSetup"));
}

}  // namespace ampdesk
