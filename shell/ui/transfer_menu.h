// The Modem menu's items about files and looking on: Send File, Receive File and Show Debug.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <functional>

#include "station/terminal_talk.h"
#include "terminal/ui/debug_dock.h"
#include "terminal/ui/transfer_dialog.h"

namespace ampdesk {

class TransferMenu : public QObject {
    Q_OBJECT

  public:
    // The references stay valid as long as this; what is seen of the terminal changes meanwhile.
    TransferMenu(QMainWindow& window, const TerminalView& terminal, const Clock& clock, Dialogs& person,
                 std::function<void(const TerminalAct&)> send);
    ~TransferMenu() override;

    void take(const TerminalNotice& notice);

    // Opens the dialog; one that is open, of either direction, comes to the front instead.
    void open_dialog(TransferDirection direction);

    // Shows or hides the dock, and keeps the item's check mark in step with it.
    void toggle_debug(QAction* item);

  private:
    void on(const notice::TerminalState&) {}
    void on(const notice::TerminalText&) {}
    void on(const notice::TransferState& state);
    void on(const notice::FileNotKept& unkept);
    void on(const notice::Traffic& traffic);
    void make_dialog(TransferDirection direction);

    QMainWindow& window_;
    const TerminalView& terminal_;
    const Clock& clock_;
    Dialogs& operator_;
    std::function<void(const TerminalAct&)> send_;
    QPointer<TransferDialog> dialog_;
    QPointer<DebugDock> debug_;  // once it has been asked for
};

}  // namespace ampdesk
