// The Modem menu's items about files and looking on: Send File, Receive File, Show Debug and Null
// Modem Test.
#pragma once

#include <QMainWindow>
#include <QPointer>
#include <functional>

#include "terminal/ui/debug_dock.h"
#include "terminal/ui/transfer_dialog.h"

namespace ampdesk {

class TransferMenu : public QObject {
    Q_OBJECT

  public:
    // `line_free` says whether the line may be taken now; when not, it has told the operator why.
    // `over` is called whenever the line has been given back.
    TransferMenu(QMainWindow& window, TerminalLine& line, BusLink& bus, Dialogs& person,
                 std::function<bool()> line_free, std::function<void()> over);

    // Opens the dialog; one that is open, of either direction, comes to the front instead.
    void open_dialog(TransferDirection direction);

    // Shows or hides the dock, and keeps the item's check mark in step with it.
    void toggle_debug(QAction* item);

    // Begins the test; its report comes in a box about a second later.
    void test_null_modem();

  private:
    QMainWindow& window_;
    TerminalLine& line_;
    BusLink& bus_;
    Dialogs& operator_;
    std::function<bool()> line_free_;
    std::function<void()> over_;
    QPointer<TransferDialog> dialog_;
    DebugDock* debug_ = nullptr;  // once it has been asked for
};

}  // namespace ampdesk
