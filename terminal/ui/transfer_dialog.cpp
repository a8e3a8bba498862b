#include "terminal/ui/transfer_dialog.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "platform/qt/text.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "terminal/text_transfer.h"
#include "terminal/xmodem_receiver.h"
#include "terminal/xmodem_sender.h"

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

TransferDialog::TransferDialog(TransferDirection direction, TerminalLine& line, Dialogs& person,
                               QWidget* parent)
    : QDialog(parent), direction_(direction), line_(line), operator_(person) {
    setObjectName(QStringLiteral("frmTransfer"));
    setWindowTitle(sending() ? QStringLiteral("Send File") : QStringLiteral("Receive File"));
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

void TransferDialog::cmdStart_Click() {
    if (line_free && !line_free())
        return;
    const std::string_view obstacle = xmodem() ? xmodem_obstacle(line_.settings()) : std::string_view();
    if (!obstacle.empty()) {
        operator_.notify(obstacle, "Modem > Settings changes that.");
        return;
    }
    const std::string title = windowTitle().toStdString();
    const auto path = sending() ? operator_.choose_file_to_open(title, k_filter)
                                : operator_.choose_file_to_save(title, k_filter,
                                                                xmodem() ? "received.bin" : "received.txt");
    if (!path || (line_free && !line_free()))  // it may have gone while the question was open
        return;
    path_ = *path;
    std::unique_ptr<Transfer> transfer = make_transfer();
    if (!transfer)
        return;
    auto* driver = new TransferDriver(line_, std::move(transfer), this);
    if (!driver->start()) {
        delete driver;
        operator_.notify("The terminal's port cannot be used now");
        return;
    }
    driver_ = driver;
    connect(driver, &TransferDriver::ticked, this, &TransferDialog::show_progress);
    connect(driver, &TransferDriver::over, this, &TransferDialog::transfer_over);
    file_->setText(from_utf8(path_));
    follow_state();
    show_progress();
}

// Nothing when the file cannot be read; that has been told.
std::unique_ptr<Transfer> TransferDialog::make_transfer() {
    const Instant now = line_.clock().now();
    if (!sending()) {
        if (xmodem())
            return std::make_unique<XmodemReceiver>(now);
        return std::make_unique<TextReceiver>();
    }
    try {
        std::string bytes = read_file_bytes(path_, Transfer::k_longest_file + 1);
        if (bytes.size() > Transfer::k_longest_file) {
            operator_.notify(
                "The file is too long",
                path_ + ": more than " + std::to_string(Transfer::k_longest_file >> 20U) + " MB");
            return nullptr;
        }
        if (!xmodem())
            return std::make_unique<TextSender>(bytes);
        const auto block_time = static_cast<int>(k_xmodem_block) * character_time(line_.settings());
        return std::make_unique<XmodemSender>(std::move(bytes), block_time, now);
    } catch (const RunTimeError& error) {
        operator_.notify(error.what(), path_);
        return nullptr;
    }
}

void TransferDialog::show_progress() {
    if (driver_ == nullptr || driver_->transfer().finished())
        return;
    const TransferProgress& progress = driver_->transfer().progress();
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
    if (!xmodem() && !sending())
        text +=
            QStringLiteral(". Ends by itself after %1 s of silence.").arg(TextReceiver::k_silence.count());
    state_->setText(text);
}

void TransferDialog::transfer_over() {
    TransferDriver* driver = std::exchange(driver_, nullptr);
    driver->deleteLater();  // not before this handler is done
    Q_EMIT over();
    const Transfer& transfer = driver->transfer();
    QString text = from_utf8(transfer.message());
    if (transfer.state() == TransferState::done && !sending()) {
        const auto* by_blocks = dynamic_cast<const XmodemReceiver*>(&transfer);
        const std::string& bytes =
            by_blocks != nullptr ? by_blocks->file() : dynamic_cast<const TextReceiver&>(transfer).file();
        if (!keep_file(bytes))
            text = QStringLiteral("The file was received but not saved.");
        else if (by_blocks != nullptr && bytes.ends_with(k_sub))
            text += QStringLiteral(" It ends in filling bytes (hexadecimal 1A) of the last block.");
    }
    const bool whole = transfer.state() == TransferState::done;
    progress_->setRange(0, 1);
    progress_->setValue(whole ? 1 : 0);
    state_->setText(text);
    follow_state();
}

// Hours of receiving are not lost to a full disk: another name is asked for until it is written or
// the operator gives up.
bool TransferDialog::keep_file(const std::string& bytes) {
    for (;;) {
        try {
            write_file_bytes(path_, bytes);
            file_->setText(from_utf8(path_));
            return true;
        } catch (const RunTimeError& error) {
            operator_.notify(error.what(), path_);
        }
        const auto other = operator_.choose_file_to_save("Save the received file as", k_filter, path_);
        if (!other)
            return false;
        path_ = *other;
    }
}

void TransferDialog::follow_state() {
    for (QRadioButton* kind : kinds_) kind->setEnabled(!running());
    start_->setEnabled(!running());
    end_->setVisible(!sending());
    end_->setEnabled(running() && !xmodem());
    cancel_->setText(running() ? QStringLiteral("&Cancel") : QStringLiteral("&Close"));
}

void TransferDialog::cmdEnd_Click() {
    if (driver_ == nullptr)
        return;
    if (auto* text = dynamic_cast<TextReceiver*>(&driver_->transfer()))
        text->end();
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
    driver_->transfer().cancel();
    state_->setText(QStringLiteral("Cancelling"));
    event->ignore();
}

}  // namespace ampdesk
