#include "tools/ui/frmIntact.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>

#include "platform/qt/text.h"
#include "tools/ui/output_label.h"

namespace ampdesk {

namespace {
constexpr int k_output_lines = 14;
}

frmIntact::frmIntact(CommandHistory& history, Hooks hooks, QWidget* parent)
    : QDialog(parent), history_(history), hooks_(std::move(hooks)) {
    setAttribute(Qt::WA_DeleteOnClose);
    build();
    Form_Load();
}

void frmIntact::build() {
    setObjectName(QStringLiteral("frmIntact"));
    setWindowTitle(QStringLiteral("INTERACTIVE CONTROL"));
    auto* layout = new QGridLayout(this);
    const auto add_field = [&](const char* name, const char* caption, int row) {
        auto* field = new QLineEdit(this);
        field->setObjectName(QLatin1String(name));
        field->setAccessibleName(QLatin1String(caption));
        auto* label = new QLabel(QLatin1String(caption), this);
        label->setBuddy(field);
        layout->addWidget(label, row, 0);
        layout->addWidget(field, row, 1);
        return field;
    };
    const auto add_button = [&](const char* name, const char* caption, int row) {
        auto* button = new QPushButton(QLatin1String(caption), this);
        button->setObjectName(QLatin1String(name));
        button->setAutoDefault(false);  // the Enter key belongs to the command entry
        layout->addWidget(button, row, 2);
        return button;
    };
    TxtInput_ = add_field("TxtInput", "Command:", 0);
    TxtInput_->installEventFilter(this);
    connect(TxtInput_, &QLineEdit::returnPressed, this, &frmIntact::cmdOk_Click);
    connect(add_button("CmdOk", "Send", 0), &QPushButton::clicked, this, &frmIntact::cmdOk_Click);

    // Repeating is not offered: its button and interval keep their places.
    add_field("txtIntval", "Interval:", 1)->setEnabled(false);
    add_button("cmdRepeat", "Repeat", 1);

    lblReply_ = new QLabel(this);
    lblReply_->setObjectName(QStringLiteral("lblReply"));
    lblReply_->setTextFormat(Qt::PlainText);
    layout->addWidget(lblReply_, 2, 0, 1, 2);
    connect(add_button("CmdExit", "EXIT", 2), &QPushButton::clicked, this, &frmIntact::CmdExit_Click);
    LblOutput_ = new OutputLabel(QStringLiteral("LblOutput"), k_output_lines, this);
    layout->addWidget(LblOutput_, 3, 0, 1, 3);
    layout->setRowStretch(3, 1);
    layout->setColumnStretch(1, 1);
}

void frmIntact::Form_Load() {
    findChild<QPushButton*>(QStringLiteral("cmdRepeat"))->hide();
    TxtInput_->setFocus();
    show_state();
    adjustSize();
    const QRect available = screen()->availableGeometry();
    move(available.center() - rect().center());
}

// Whom a command goes to, and the missing response of the last one.
void frmIntact::show_state() {
    const int address = hooks_.unit_address();
    no_response_ = no_response_ && address == address_;
    address_ = address;
    lblReply_->setText(QStringLiteral("Unit address: %1").arg(address) +
                       (no_response_ ? QStringLiteral("   There is no response") : QString()));
}

void frmIntact::cmdOk_Click() {
    show_state();
    const std::string text = TxtInput_->text().toLatin1().toStdString();
    if (!text.empty())
        history_.add(text);
    hooks_.send(static_cast<std::int16_t>(address_), text);
}

void frmIntact::show_sending() {
    LblOutput_->set_text({});
}

void frmIntact::show_result(const Console::Result& result) {
    LblOutput_->set_text(result.output);
    no_response_ = result.sent && !result.answered && result.unit_address == address_;
    show_state();
}

bool frmIntact::event(QEvent* event) {
    // The operator may come back from another control head.
    if (event->type() == QEvent::WindowActivate)
        show_state();
    return QDialog::event(event);
}

bool frmIntact::eventFilter(QObject* watched, QEvent* event) {
    if (watched != TxtInput_ || event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Up && key != Qt::Key_Down)
        return false;
    const std::string shown = TxtInput_->text().toLatin1().toStdString();
    TxtInput_->setText(from_latin1(key == Qt::Key_Up ? history_.older(shown) : history_.newer(shown)));
    return true;
}

}  // namespace ampdesk
