// Send File and Receive File: the protocol, how far it has got, and what became of it. Stands beside
// the other windows, which go on.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "platform/dialogs.h"
#include "terminal/terminal_line.h"
#include "terminal/terminal_view.h"
#include "terminal/ui/transfer_driver.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QRadioButton;

namespace ampdesk {

class TransferDialog : public QDialog {
    Q_OBJECT

  public:
    // The references stay valid as long as the dialog.
    TransferDialog(TransferDirection direction, TerminalLine& line, Dialogs& person, QWidget* parent);

    // Whether the line may be taken now; when not, it has told why. Unset: yes.
    std::function<bool()> line_free;

    bool running() const { return driver_ != nullptr; }

    // Asks for the file and begins.
    void cmdStart_Click();

    // Ends a running text reception and keeps what has come.
    void cmdEnd_Click();

    // Cancels what is running, else closes the dialog.
    void cmdCancel_Click();

    // Escape: not while something is running.
    void reject() override;

  Q_SIGNALS:
    // A transfer has ended and the line is free again.
    void over();

  protected:
    // Closing the window cancels what is running and leaves the window to say so.
    void closeEvent(QCloseEvent* event) override;

  private:
    std::unique_ptr<Transfer> make_transfer();
    void show_progress();
    void transfer_over();
    bool keep_file(const std::string& bytes);
    void follow_state();
    bool xmodem() const;
    bool sending() const { return direction_ == TransferDirection::send; }

    TransferDirection direction_;
    TerminalLine& line_;
    Dialogs& operator_;
    TransferDriver* driver_ = nullptr;  // while a transfer runs
    std::string path_;

    QRadioButton* kinds_[2];
    QLabel* file_;
    QProgressBar* progress_;
    QLabel* state_;
    QPushButton* start_;
    QPushButton* end_;
    QPushButton* cancel_;
};

}  // namespace ampdesk
