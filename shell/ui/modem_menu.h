// The Modem menu: what its items do, how they stand, and the log that one of them opens.
#pragma once

#include <QMainWindow>
#include <functional>
#include <string>

#include "platform/qt/qt_operator.h"
#include "shell/ui/main_menu.h"
#include "shell/ui/terminal_control.h"
#include "shell/ui/transfer_menu.h"
#include "terminal/session_log.h"

namespace ampdesk {

class ModemMenu : public QObject {
    Q_OBJECT

  public:
    // Adds the Modem menu to `menu`; dialogs stand in front of `window`. Takes the control's on_change until
    // its end.
    ModemMenu(MainMenu& menu, QMainWindow& window, TerminalControl& control, TerminalLine& line, BusLink& bus,
              QtOperator& person);
    ~ModemMenu() override;

    // When its end may not have been kept, the operator is told.
    void close_log();

  private:
    void add_to(MainMenu& menu);
    void follow();
    bool line_free();
    void auto_answer();
    void edit_settings();
    void hang_up();
    void set_volume();
    void open_log();
    void log_failed(const std::string& cause);

    QMainWindow& window_;
    TerminalControl& control_;
    TerminalLine& line_;
    BusLink& bus_;
    QtOperator& person_;
    SessionLog log_;
    int log_watcher_ = 0;
    TransferMenu transfers_;
    QAction* auto_answer_ = nullptr;
    QAction* open_log_ = nullptr;
    QAction* close_log_ = nullptr;
    QAction* show_debug_ = nullptr;
};

}  // namespace ampdesk
