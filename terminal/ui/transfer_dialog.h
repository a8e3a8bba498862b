// Send File and Receive File: the protocol, how far it has got, and what became of it. Stands beside
// the other windows, which go on.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "platform/dialogs.h"
#include "terminal/terminal_view.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QRadioButton;

namespace ampdesk {

class TransferDialog : public QDialog {
    Q_OBJECT

  public:
    // The references stay valid as long as the dialog; what is seen of the terminal changes meanwhile.
    TransferDialog(TransferDirection direction, const TerminalView& terminal, Dialogs& person,
                   QWidget* parent);

    // What the person does.
    struct Hooks {
        std::function<void(TransferDirection, bool xmodem, const std::string& path)> begin{};
        std::function<void()> end{};  // of a text, which is kept
        std::function<void()> cancel{};
    };
    Hooks hooks;

    // What has become of the transfer so far; of either direction.
    void show_view(const TransferView& view);

    bool running() const { return view_.busy; }

    // Asks for the file and begins. Why it cannot is told.
    void cmdStart_Click();

    // Ends a running text reception and keeps what has come.
    void cmdEnd_Click();

    // Cancels what is running, else closes the dialog.
    void cmdCancel_Click();

    // Escape: not while something is running.
    void reject() override;

  protected:
    // Closing the window cancels what is running and leaves the window to say so.
    void closeEvent(QCloseEvent* event) override;

  private:
    void show_progress();
    void show_outcome();
    void follow_state();
    bool xmodem() const;
    bool sending() const { return view_.direction == TransferDirection::send; }

    const TerminalView& terminal_;
    Dialogs& operator_;
    TransferView view_;

    QRadioButton* kinds_[2];
    QLabel* file_;
    QProgressBar* progress_;
    QLabel* state_;
    QPushButton* start_;
    QPushButton* end_;
    QPushButton* cancel_;
};

}  // namespace ampdesk
