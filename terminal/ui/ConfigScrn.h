// `ConfigScrn`, the settings of the terminal's port.
#pragma once

#include <QDialog>
#include <vector>

#include "platform/operator.h"
#include "terminal/terminal_settings.h"

class QCheckBox;
class QComboBox;
class QFormLayout;

namespace ampdesk {

class ConfigScrn : public QDialog {
    Q_OBJECT

  public:
    // `bus_ports` are the numbers of the ports that the amplifier bus uses or is set to use; one
    // that is the same device is refused. `ports` tells which device each number stands for.
    ConfigScrn(const TerminalSettings& settings, const PortMap& ports, std::vector<int> bus_ports,
               Operator& person, QWidget* parent = nullptr);

    // As the fields stand.
    TerminalSettings settings() const;

  private:
    QComboBox* add_list(QFormLayout* form, const QString& name, const QString& label);
    void cmdOk_Click();

    PortMap ports_;
    std::vector<int> bus_ports_;
    Operator& operator_;
    QComboBox* port_;
    QComboBox* baud_;
    QComboBox* bits_;
    QComboBox* parity_;
    QComboBox* stop_;
    QComboBox* handshake_;
    QCheckBox* echo_;
};

}  // namespace ampdesk
