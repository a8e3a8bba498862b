#include "tools/ui/frmBlock.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/qt/text.h"
#include "tools/ui/output_label.h"

namespace ampdesk {

namespace {

constexpr int k_output_lines = 5;

// A button that dies under the operator's finger hands the focus to the one that takes its place, not
// to Exit.
void set_enabled_in_turn(QPushButton& first, bool first_enabled, QPushButton& second, bool second_enabled) {
    QPushButton& dying = first_enabled ? second : first;
    QPushButton& living = first_enabled ? first : second;
    living.setEnabled(first_enabled || second_enabled);
    if (dying.window()->focusWidget() == &dying && living.isEnabled())
        living.setFocus();
    dying.setEnabled(first_enabled && second_enabled);
}

}  // namespace

frmBlock::frmBlock(const NvramPanel& panel, Hooks hooks, QWidget* parent)
    : QDialog(parent), hooks_(std::move(hooks)) {
    build();
    show_panel(panel);
}

void frmBlock::build() {
    setObjectName(QStringLiteral("frmBlock"));
    auto* layout = new QVBoxLayout(this);
    const auto add_label = [&](const char* name) {
        auto* label = new QLabel(this);
        label->setObjectName(QLatin1String(name));
        label->setTextFormat(Qt::PlainText);
        layout->addWidget(label);
        return label;
    };
    lblAddress_ = add_label("lblAddress");
    lblStatusLbl_ = add_label("lblStatusLbl");
    lblStatus_ = add_label("lblStatus");
    lblStatus_->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    lblStatus_->setMinimumHeight(lblStatus_->fontMetrics().height() + 6);  // also while it is empty
    lblOutputLbl_ = add_label("lblOutputLbl");
    lblOutput_ = new OutputLabel(QStringLiteral("lblOutput"), k_output_lines, this);
    layout->addWidget(lblOutput_, 1);

    auto* buttons = new QHBoxLayout;
    layout->addLayout(buttons);
    buttons->addStretch(1);
    const auto add_button = [&](const char* name, const char* caption, void (frmBlock::*click)()) {
        auto* button = new QPushButton(QLatin1String(caption), this);
        button->setObjectName(QLatin1String(name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, click);
        buttons->addWidget(button);
        return button;
    };
    cmdOk_ = add_button("cmdOk", "Start", &frmBlock::cmdOk_Click);
    cmdCancel_ = add_button("cmdCancel", "Pause", &frmBlock::cmdCancel_Click);
    cmdExit_ = add_button("cmdExit", "Exit", &frmBlock::CmdExit_Click);
    cmdOk_->setFocus();
}

void frmBlock::show_panel(const NvramPanel& panel) {
    panel_ = panel;
    lblAddress_->setText(QStringLiteral("Unit address: %1").arg(panel.unit_address));
    setWindowTitle(from_latin1(panel.caption));
    lblStatusLbl_->setText(from_latin1(panel.status_label));
    lblStatus_->setText(from_latin1(panel.status));
    lblStatus_->setAccessibleDescription(lblStatusLbl_->text());
    lblOutputLbl_->setText(from_latin1(panel.output_label));
    lblOutput_->set_text(panel.output);
    lblOutput_->label().setAccessibleDescription(lblOutputLbl_->text());
    cmdOk_->setText(from_latin1(panel.start_caption));
    set_enabled_in_turn(*cmdOk_, panel.start_enabled, *cmdCancel_, panel.pause_enabled);
    if (!panel.under_way)
        withdraw_question();
}

// It counts as under way before the station says so: Escape may follow at once.
void frmBlock::cmdOk_Click() {
    panel_.under_way = true;
    hooks_.start();
}

void frmBlock::cmdCancel_Click() {
    hooks_.pause();
}

void frmBlock::CmdExit_Click() {
    Form_Unload();
}

void frmBlock::Form_Unload() {
    if (unloaded_)
        return;
    unloaded_ = true;
    panel_.under_way = false;
    withdraw_question();
    hide();
    hooks_.exit();
    deleteLater();
}

// Escape or the close box may be a slip, and half a memory is no memory. The transfer goes on behind the
// question: a slip costs nothing, and no amplifier is left half set by a box that nobody sees. The end
// takes the question back and stays to be read.
void frmBlock::ask_to_leave() {
    if (!panel_.under_way) {
        CmdExit_Click();
        return;
    }
    if (question_)
        return;
    question_ = new QMessageBox(QMessageBox::Question, QStringLiteral("JEX Remote Control"),
                                QStringLiteral("The nvRam transfer is not finished. End it?"),
                                QMessageBox::Yes | QMessageBox::No, this);
    question_->setAccessibleDescription(question_->text());
    question_->setDefaultButton(QMessageBox::No);
    question_->setAttribute(Qt::WA_DeleteOnClose);
    connect(question_, &QMessageBox::finished, this, [this](int answer) {
        question_ = nullptr;
        if (answer == QMessageBox::Yes)
            CmdExit_Click();
    });
    question_->open();  // no loop of its own: the program can end beside it
}

void frmBlock::withdraw_question() {
    if (question_)
        question_->done(QMessageBox::No);
}

void frmBlock::closeEvent(QCloseEvent* event) {
    event->setAccepted(unloaded_ || !panel_.under_way);
    ask_to_leave();
}

bool frmBlock::event(QEvent* event) {
    // What takes the activation is only known afterwards.
    if (event->type() == QEvent::WindowDeactivate)
        QMetaObject::invokeMethod(this, &frmBlock::Form_Deactivate, Qt::QueuedConnection);
    return QDialog::event(event);
}

// The window stays in front of the main window, but in front of no box that waits for an answer and
// of no other program.
void frmBlock::Form_Deactivate() {
    const QWidget* active = QApplication::activeWindow();
    if (unloaded_ || active == nullptr || active == this || QApplication::activeModalWidget() != nullptr)
        return;
    if (isMinimized())
        showNormal();
    raise();
}

}  // namespace ampdesk
