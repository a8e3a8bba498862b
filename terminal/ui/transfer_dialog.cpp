#include "terminal/ui/transfer_dialog.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "platform/qt/text.h"
#include "terminal/text_transfer.h"
#include "terminal/transfer_run.h"

namespace ampdesk {

namespace {

constexpr std::string_view k_filter = "All Files (*.*)|*.*";

QLabel* add_label(QVBoxLayout* layout, const QString& name) {
    auto* label = new QLabel(layout->parentWidget());
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    layout->addWidget(label);
    return label;
}

QPushButton* add_button(QHBoxLayout* row, QDialog* dialog, const char* name, const char* caption,
                        void (TransferDialog::*click)()) {
    auto* button = new QPushButton(QLatin1String(caption), dialog);
    button->setObjectName(QLatin1String(name));
    QObject::connect(button, &QPushButton::clicked, static_cast<TransferDialog*>(dialog), click);
    row->addWidget(button);
    return button;
}

}  // namespace

TransferDialog::TransferDialog(TransferDirection direction, const TerminalView& terminal, Dialogs& person,
                               QWidget* parent)
    : QDialog(parent), terminal_(terminal), operator_(person) {
    view_.direction = direction;
    setObjectName(QStringLiteral("frmTransfer"));
    auto* layout = new QVBoxLayout(this);
    const QString captions[] = {QStringLiteral("&XMODEM (checked, repeated where it fails)"),
                                QStringLiteral("Plain &text (nothing is checked)")};
    for (int i = 0; i < 2; ++i) {
        kinds_[i] = new QRadioButton(captions[i], this);
        kinds_[i]->setObjectName(QStringLiteral("optKind(%1)").arg(i));
        layout->addWidget(kinds_[i]);
    }
    kinds_[0]->setChecked(true);
    file_ = add_label(layout, QStringLiteral("lblFile"));
    progress_ = new QProgressBar(this);
    progress_->setAccessibleName(QStringLiteral("Progress"));
    layout->addWidget(progress_);
    state_ = add_label(layout, QStringLiteral("lblState"));
    state_->setMinimumWidth(420);
    auto* row = new QHBoxLayout;
    layout->addLayout(row);
    row->addStretch();
    start_ = add_button(row, this, "cmdStart", "&Start...", &TransferDialog::cmdStart_Click);
    end_ = add_button(row, this, "cmdEnd", "&End", &TransferDialog::cmdEnd_Click);
    cancel_ = add_button(row, this, "cmdCancel", "&Close", &TransferDialog::cmdCancel_Click);
    start_->setDefault(true);
    follow_state();
}

bool TransferDialog::xmodem() const {
    return kinds_[0]->isChecked();
}

// The line may go while the question is open: whoever begins looks again.
void TransferDialog::cmdStart_Click() {
    if (!line_free(terminal_, operator_))
        return;
    const std::string_view obstacle = xmodem() ? xmodem_obstacle(terminal_.line) : std::string_view();
    if (!obstacle.empty()) {
        operator_.notify(obstacle, "Modem > Settings changes that.");
        return;
    }
    const std::string title = windowTitle().toStdString();
    const auto path = sending() ? operator_.choose_file_to_open(title, k_filter)
                                : operator_.choose_file_to_save(title, k_filter,
                                                                xmodem() ? "received.bin" : "received.txt");
    if (path && hooks.begin)
        hooks.begin(view_.direction, xmodem(), *path);
}

void TransferDialog::show_view(const TransferView& view) {
    view_ = view;
    kinds_[view.xmodem ? 0 : 1]->setChecked(true);
    file_->setText(from_utf8(view.path));
    if (!view.busy)
        show_outcome();
    else if (view.state == TransferState::running)
        show_progress();
    else if (view.state == TransferState::cancelled)
        state_->setText(QStringLiteral("Cancelling"));
    follow_state();
}

void TransferDialog::show_progress() {
    const TransferProgress& progress = view_.progress;
    if (progress.total)
        progress_->setRange(0, static_cast<int>(*progress.total));
    else
        progress_->setRange(0, 0);
    progress_->setValue(static_cast<int>(progress.bytes));
    QString text = QStringLiteral("%1 bytes").arg(progress.bytes);
    if (progress.total)
        text += QStringLiteral(" of %1").arg(*progress.total);
    if (progress.bytes == 0)
        text += QStringLiteral(", waiting for the other side");
    if (progress.errors > 0)
        text += QStringLiteral(", %1 repeated").arg(progress.errors);
    if (!view_.xmodem && !sending())
        text +=
            QStringLiteral(". Ends by itself after %1 s of silence.").arg(TextReceiver::k_silence.count());
    state_->setText(text);
}

void TransferDialog::show_outcome() {
    progress_->setRange(0, 1);
    progress_->setValue(view_.state == TransferState::done ? 1 : 0);
    state_->setText(from_utf8(view_.message));
}

void TransferDialog::follow_state() {
    setWindowTitle(sending() ? QStringLiteral("Send File") : QStringLiteral("Receive File"));
    for (QRadioButton* kind : kinds_) kind->setEnabled(!running());
    start_->setEnabled(!running());
    end_->setVisible(!sending());
    end_->setEnabled(running() && !xmodem());
    cancel_->setText(running() ? QStringLiteral("&Cancel") : QStringLiteral("&Close"));
}

void TransferDialog::cmdEnd_Click() {
    if (hooks.end)
        hooks.end();
}

void TransferDialog::cmdCancel_Click() {
    close();
}

void TransferDialog::reject() {
    if (!running())
        QDialog::reject();
}

void TransferDialog::closeEvent(QCloseEvent* event) {
    if (!running()) {
        QDialog::closeEvent(event);
        return;
    }
    if (hooks.cancel)
        hooks.cancel();
    state_->setText(QStringLiteral("Cancelling"));
    event->ignore();
}

}  // namespace ampdesk
