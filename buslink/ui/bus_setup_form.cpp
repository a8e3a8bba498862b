// The shared form of the bus setup dialogs.
#include "buslink/ui/bus_setup_form.h"

#include <QApplication>
#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QStyledItemDelegate>

#include "platform/qt/labelled_list.h"

namespace ampdesk {

namespace {

// Shows the device behind the port's name in the open list; the text of the entry stays the name.
class PortDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        option->text += QStringLiteral("   ") + index.data(Qt::UserRole).toString();
    }
};

QLabel* make_label(QWidget* parent, const QString& name, const QString& text, QWidget* buddy) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setBuddy(buddy);
    return label;
}

QButtonGroup* make_options(QGroupBox* frame, const QString& name, const QStringList& captions, int columns) {
    auto* group = new QButtonGroup(frame);
    auto* layout = new QGridLayout(frame);
    for (int i = 0; i < captions.size(); ++i) {
        auto* option = new QRadioButton(captions[i], frame);
        option->setObjectName(QStringLiteral("%1(%2)").arg(name).arg(i));
        group->addButton(option, i);
        layout->addWidget(option, i / columns, i % columns);
    }
    return group;
}

}  // namespace

BusSetupForm::BusSetupForm(const QString& caption, const std::string& path, const PortMap& ports,
                           Operator& person, BusSetup& logic, QWidget* parent)
    : QDialog(parent), ports_(ports), operator_(person), logic_(logic) {
    setWindowTitle(caption);
    auto* layout = new QVBoxLayout(this);
    fields_ = new QWidget(this);
    auto* grid = new QGridLayout(fields_);
    grid->setContentsMargins(0, 0, 0, 0);
    build_lists(grid);
    build_options(grid);
    layout->addWidget(fields_);

    wait_ = make_label(this, QStringLiteral("lblWait"),
                       QStringLiteral("Please Wait, System Is Checking The Communication . . ."), nullptr);
    QSizePolicy kept_free = wait_->sizePolicy();
    kept_free.setRetainSizeWhenHidden(true);
    wait_->setSizePolicy(kept_free);
    wait_->hide();
    layout->addWidget(wait_);

    auto* buttons = new QHBoxLayout;
    ok_button_ = new QPushButton(QStringLiteral("&OK"), this);
    ok_button_->setObjectName(QStringLiteral("cmdOk"));
    ok_button_->setDefault(true);
    cancel_button_ = new QPushButton(QStringLiteral("&Cancel"), this);
    cancel_button_->setObjectName(QStringLiteral("cmdCancel"));
    buttons->addStretch();
    buttons->addWidget(ok_button_);
    buttons->addWidget(cancel_button_);
    layout->addLayout(buttons);

    connect(ok_button_, &QPushButton::clicked, this, &BusSetupForm::cmdOk_Click);
    connect(cancel_button_, &QPushButton::clicked, this, &BusSetupForm::reject);

    logic_.on_result = [this](const SetupResult& result) { take_result(result); };
    const BusChoices stored = load_bus_choices(path, operator_);
    port_->setEditText(QString::fromLatin1(stored.port));
    address_->setEditText(QString::fromLatin1(stored.address));
    baud_->button(stored.baud)->setChecked(true);
    bits_->button(stored.bits)->setChecked(true);
    stop_->button(stored.stop)->setChecked(true);
    parity_->button(stored.parity)->setChecked(true);
    show_device();
}

// A form that is still shown, as when the program is told to quit, loses the focus only while its
// base is taken down, and that ends the editing.
BusSetupForm::~BusSetupForm() {
    logic_.on_result = nullptr;
    for (const QComboBox* list : {port_, address_}) list->lineEdit()->disconnect(this);
}

void BusSetupForm::build_lists(QGridLayout* layout) {
    const QString port_label = QStringLiteral("Com Port:");
    port_ = new LabelledList(QStringLiteral("cboPort"), port_label, fields_);
    for (int number = 1; number <= 4; ++number)
        port_->addItem(QStringLiteral("COM%1:").arg(number), QString::fromStdString(ports_.device(number)));
    port_->setItemDelegate(new PortDelegate(port_));
    port_->view()->setMinimumWidth(port_->view()->sizeHintForColumn(0));
    device_ = make_label(fields_, QStringLiteral("lblDevice"), QString(), nullptr);

    const QString address_label = QStringLiteral("Address:");
    address_ = new LabelledList(QStringLiteral("cboAddress"), address_label, fields_);
    for (int address = 0; address <= 99; ++address) address_->addItem(QString::number(address));

    layout->addWidget(make_label(fields_, QStringLiteral("Label1"), port_label, port_), 0, 0);
    layout->addWidget(port_, 0, 1);
    layout->addWidget(make_label(fields_, QStringLiteral("Label2"), address_label, address_), 0, 2);
    layout->addWidget(address_, 0, 3);
    layout->addWidget(device_, 1, 1, 1, 3);

    connect(port_, &QComboBox::editTextChanged, this, &BusSetupForm::show_device);
    for (QComboBox* list : {port_, address_})
        connect(list->lineEdit(), &QLineEdit::editingFinished, this, [this, list] { check_later(list); });
}

void BusSetupForm::build_options(QGridLayout* layout) {
    const auto frame = [&](const QString& name, const QString& title, int row, int column, int width) {
        auto* box = new QGroupBox(title, fields_);
        box->setObjectName(name);
        layout->addWidget(box, row, column, 1, width);
        return box;
    };
    QStringList rates;
    for (const int rate : k_baud_rates) rates << QString::number(rate);
    baud_ = make_options(frame(QStringLiteral("Frame1"), QStringLiteral("Baud Rate"), 2, 0, 2),
                         QStringLiteral("optBaud"), rates, 4);
    bits_ = make_options(frame(QStringLiteral("Frame2"), QStringLiteral("Data Bits"), 2, 2, 2),
                         QStringLiteral("optBits"), QStringLiteral("5 6 7 8").split(u' '), 2);
    stop_ = make_options(frame(QStringLiteral("Frame3"), QStringLiteral("Stop Bits"), 3, 0, 2),
                         QStringLiteral("optStop"), QStringLiteral("1 2").split(u' '), 2);
    parity_ = make_options(frame(QStringLiteral("Frame4"), QStringLiteral("Parity"), 3, 2, 2),
                           QStringLiteral("optParity"), QStringLiteral("None Odd Even").split(u' '), 3);
}

BusChoices BusSetupForm::choices() const {
    return {.port = port_->currentText().toLatin1().toStdString(),
            .address = address_->currentText().toLatin1().toStdString(),
            .baud = baud_->checkedId(),
            .bits = bits_->checkedId(),
            .stop = stop_->checkedId(),
            .parity = parity_->checkedId()};
}

// The device behind the chosen name; nothing for a text that is no port.
void BusSetupForm::show_device() {
    const std::string port = port_->currentText().toLatin1().toStdString();
    device_->setText(accepted_port(port) ? QString::fromStdString(ports_.device(port_number(port)))
                                         : QString());
}

// Not at once: where the focus goes to, and whether the dialog closes, shows only afterwards. Who presses
// Cancel is not bothered.
void BusSetupForm::check_later(QComboBox* list) {
    const auto when_idle = [this, list] {
        if (isVisible() && !cancel_button_->hasFocus())
            check(list);
    };
    QMetaObject::invokeMethod(this, when_idle, Qt::QueuedConnection);
}

// The list's rule: true when its text is accepted, else it has been told and replaced.
bool BusSetupForm::check(QComboBox* list) {
    const std::string text = list->currentText().toLatin1().toStdString();
    const std::string checked =
        list == port_ ? checked_port(text, operator_) : checked_address(text, operator_);
    if (checked == text)
        return true;
    list->setEditText(QString::fromLatin1(checked));
    return false;
}

bool BusSetupForm::check_all() {
    const bool port_accepted = check(port_);
    return check(address_) && port_accepted;
}

// What the settings file brought is held to the same rules, once the dialog can be seen.
void BusSetupForm::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    QMetaObject::invokeMethod(this, &BusSetupForm::check_all, Qt::QueuedConnection);
}

// A text that had to be replaced is not sent: the operator has not seen it yet.
void BusSetupForm::cmdOk_Click() {
    if (checking_ || !check_all())
        return;
    set_checking(true);
    wait_->show();
    logic_.begin(choices());
}

void BusSetupForm::take_result(const SetupResult& result) {
    set_checking(false);
    if (result.outcome != SetupResult::Outcome::stay_open)
        accept();
}

void BusSetupForm::set_checking(bool checking) {
    checking_ = checking;
    if (checking)
        focused_ = focusWidget();
    fields_->setEnabled(!checking);
    ok_button_->setEnabled(!checking);
    cancel_button_->setEnabled(!checking);
    if (!checking && focused_ != nullptr)
        focused_->setFocus();
}

void BusSetupForm::reject() {
    if (!checking_)
        QDialog::reject();
}

}  // namespace ampdesk
