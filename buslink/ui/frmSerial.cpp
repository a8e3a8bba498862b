// The dialog of the bus line's settings.
#include "buslink/ui/frmSerial.h"

namespace ampdesk {

frmSerial::frmSerial(BusSetup& logic, const std::string& rs485_path, const PortMap& ports, Operator& person,
                     QWidget* parent)
    : BusSetupForm(QStringLiteral("Serial RS422 Setup"), rs485_path, ports, person, logic, parent) {
    setObjectName(QStringLiteral("frmSerial"));
}

}  // namespace ampdesk
