#include "terminal/ui/ConfigScrn.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QStringList>

#include "platform/qt/text.h"

namespace ampdesk {

namespace {

QString port_name(int number) {
    return QStringLiteral("COM%1:").arg(number);
}

void choose(QComboBox* list, int value) {
    list->setCurrentIndex(std::max(0, list->findData(value)));
}

}  // namespace

ConfigScrn::ConfigScrn(const TerminalSettings& settings, const PortMap& ports, std::vector<int> bus_ports,
                       Operator& person, QWidget* parent)
    : QDialog(parent), ports_(ports), bus_ports_(std::move(bus_ports)), operator_(person) {
    setObjectName(QStringLiteral("ConfigScrn"));
    setWindowTitle(QStringLiteral("Modem Settings"));
    auto* form = new QFormLayout(this);

    port_ = add_list(form, QStringLiteral("cboPort"), QStringLiteral("Com &Port:"));
    port_->addItem(QStringLiteral("None"), 0);
    for (int number = 1; number <= 4; ++number)
        port_->addItem(port_name(number) + QStringLiteral("   ") + from_utf8(ports_.device(number)), number);
    QStringList used;
    for (const int number : bus_ports_) used << port_name(number);
    auto* note = new QLabel(
        used.isEmpty() ? QStringLiteral("The amplifier bus has no port yet.")
                       : QStringLiteral("The amplifier bus uses %1").arg(used.join(QStringLiteral(" and "))),
        this);
    note->setObjectName(QStringLiteral("lblBusPort"));
    form->addRow(QString(), note);

    baud_ = add_list(form, QStringLiteral("cboBaud"), QStringLiteral("&Baud Rate:"));
    for (const int rate : k_baud_rates) baud_->addItem(QString::number(rate), rate);
    bits_ = add_list(form, QStringLiteral("cboBits"), QStringLiteral("&Data Bits:"));
    for (int bits = 5; bits <= 8; ++bits) bits_->addItem(QString::number(bits), bits);
    parity_ = add_list(form, QStringLiteral("cboParity"), QStringLiteral("P&arity:"));
    stop_ = add_list(form, QStringLiteral("cboStop"), QStringLiteral("&Stop Bits:"));
    for (int bits = 1; bits <= 2; ++bits) stop_->addItem(QString::number(bits), bits);
    handshake_ = add_list(form, QStringLiteral("cboHandshake"), QStringLiteral("&Handshaking:"));
    const QStringList parities = QStringLiteral("None Odd Even").split(u' ');
    const QStringList handshakes = QStringLiteral("None XON/XOFF RTS/CTS").split(u' ');
    for (int code = 0; code < 3; ++code) {
        parity_->addItem(parities[code], code);
        handshake_->addItem(handshakes[code], code);
    }
    echo_ = new QCheckBox(QStringLiteral("&Echo typed characters"), this);
    echo_->setObjectName(QStringLiteral("chkEcho"));
    form->addRow(QString(), echo_);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOk"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &ConfigScrn::cmdOk_Click);
    connect(buttons, &QDialogButtonBox::rejected, this, &ConfigScrn::reject);

    choose(port_, settings.port.value_or(0));
    choose(baud_, settings.baud);
    choose(bits_, settings.data_bits);
    choose(parity_, settings.parity_code);
    choose(stop_, settings.stop_bits);
    choose(handshake_, static_cast<int>(settings.handshake));
    echo_->setChecked(settings.echo);
}

QComboBox* ConfigScrn::add_list(QFormLayout* form, const QString& name, const QString& label) {
    auto* list = new QComboBox(this);
    list->setObjectName(name);
    QString plain = label;
    list->setAccessibleName(plain.remove(u'&'));
    form->addRow(label, list);
    return list;
}

TerminalSettings ConfigScrn::settings() const {
    TerminalSettings chosen;
    if (const int number = port_->currentData().toInt(); number > 0)
        chosen.port = number;
    chosen.baud = baud_->currentData().toInt();
    chosen.data_bits = bits_->currentData().toInt();
    chosen.parity_code = parity_->currentData().toInt();
    chosen.stop_bits = stop_->currentData().toInt();
    chosen.handshake = static_cast<Handshake>(handshake_->currentData().toInt());
    chosen.echo = echo_->isChecked();
    return chosen;
}

void ConfigScrn::cmdOk_Click() {
    const auto chosen = settings().port;
    for (const int number : bus_ports_) {
        if (!chosen || !ports_.same_device(number, *chosen))
            continue;
        operator_.notify(port_name(*chosen).toStdString() + " is used by the amplifier bus",
                         "Choose another port for the terminal.");
        port_->setFocus();
        return;
    }
    accept();
}

}  // namespace ampdesk
