// The Modem menu: what its items ask of the terminal, and how they stand.
#pragma once

#include <QMainWindow>
#include <functional>

#include "buslink/line_settings.h"
#include "platform/qt/qt_operator.h"
#include "shell/ui/main_menu.h"
#include "shell/ui/terminal_control.h"
#include "shell/ui/transfer_menu.h"

namespace ampdesk {

class ModemMenu : public QObject {
    Q_OBJECT

  public:
    // Adds the Modem menu to `menu`; dialogs stand in front of `window`. Takes the control's on_change until
    // its end. The references stay valid until then.
    ModemMenu(MainMenu& menu, QMainWindow& window, TerminalControl& control, const PortMap& ports,
              const Clock& clock, QtOperator& person, std::function<void(const TerminalAct&)> send);
    ~ModemMenu() override;

    void take(const TerminalNotice& notice) { transfers_.take(notice); }

  private:
    void add_to(MainMenu& menu);
    void follow();
    void edit_settings();
    void set_volume();
    void open_log();

    QMainWindow& window_;
    TerminalControl& control_;
    const PortMap& ports_;
    QtOperator& person_;
    std::function<void(const TerminalAct&)> send_;
    TransferMenu transfers_;
    QAction* auto_answer_ = nullptr;
    QAction* open_log_ = nullptr;
    QAction* close_log_ = nullptr;
    QAction* show_debug_ = nullptr;
};

}  // namespace ampdesk
