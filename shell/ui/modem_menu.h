// The Modem menu: what its items do, how they stand, and the log that one of them opens.
#pragma once

#include <QMainWindow>
#include <functional>
#include <string>

#include "platform/qt/qt_operator.h"
#include "shell/ui/terminal_control.h"
#include "shell/ui/transfer_menu.h"
#include "terminal/session_log.h"

namespace ampdesk {

class ModemMenu : public QObject {
    Q_OBJECT

  public:
    // `window` holds the menu bar with its menus. Takes the control's on_change until its end.
    ModemMenu(QMainWindow& window, TerminalControl& control, TerminalLine& line, BusLink& bus,
              QtOperator& person);
    ~ModemMenu() override;

    void mnuModemItem_Click(int index);
    void mnuModemOpt_Click(int index);

    // When its end may not have been kept, the operator is told.
    void close_log();

  private:
    void follow();
    QAction* menu_item(const char* array, int index) const;
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
};

}  // namespace ampdesk
