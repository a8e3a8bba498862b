// The main window: menus, the area of the amplifier windows, the terminal's text box and the status
// label. It shows what the station tells and sends it what is done.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QSplitter>
#include <QTimer>
#include <functional>
#include <optional>

#include "platform/qt/qt_operator.h"
#include "shell/program_options.h"
#include "shell/ui/fault_window.h"
#include "shell/ui/head_keys.h"
#include "shell/ui/head_windows.h"
#include "shell/ui/help_viewer.h"
#include "shell/ui/layout_keeper.h"
#include "shell/ui/main_menu.h"
#include "shell/ui/modem_menu.h"
#include "shell/ui/service_tools.h"
#include "shell/ui/set_up.h"
#include "shell/ui/terminal_control.h"
#include "shell/ui/trouble_label.h"
#include "station/talk.h"

namespace ampdesk {

class MDIForm1 : public QMainWindow {
    Q_OBJECT

  public:
    // The references stay valid as long as the window, which reads the notices until its end. Of the clock
    // it only reads the time.
    MDIForm1(Talk& talk, const Clock& clock, QtOperator& person, MDIForm1Options options);
    ~MDIForm1() override;

    // Second part of loading, with the window shown: the start-up timer.
    void load();

    // Tells the station to finish, as closing the window does, which goes when the station has.
    void shut_down();

    // The amplifier window that keys and menu items mean: that of the current sub-window.
    frmMachine* active_machine() const { return heads_->active(); }

    // Shows what the station has told; called by itself from the event loop.
    void take_notices();

    void show_status(const QString& text);

    // COM port 1..4 that "ampdesk.dat" keeps for the terminal; nothing when it names none.
    std::optional<int> terminal_port() const { return terminal_->view().settings.port; }

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void build_centre();
    void build_menu(const Clock& clock);
    // The action on the head that menu items mean; nothing while there is none.
    std::function<void()> with_head(std::function<void(const frmMachine&)> action) const;
    ServiceTools::Hooks tool_hooks();
    frmMachine* keyboard_target() const;
    void send(Act act) { talk_.acts.put(std::move(act)); }
    void take(const HeadNotice& notice);
    void take(const TerminalNotice& notice);
    void take(const ToolNotice& notice) { tools_.take(notice); }
    void take(const SetupNotice& notice) { set_up_.take(notice); }
    void take(const SimulatorNotice& notice) { faults_.take(notice); }
    void take(const PersonNotice& notice);
    void take(const ProgramNotice& notice);
    void follow_heads();
    void TimerFileAutoOpen_Timer();
    void open_file();
    void save_as(const HeadIdentity& head);
    void show_help(HelpViewer::Page page);
    void show_about();

    Talk& talk_;
    QtOperator& person_;
    MDIForm1Options options_;
    LayoutKeeper layout_;
    std::unique_ptr<HelpViewer> help_;
    SetUp set_up_;
    ServiceTools tools_;
    FaultWindow faults_;

    QMdiArea* area_ = nullptr;
    TermBox* Term_ = nullptr;
    QLabel* status_ = nullptr;
    TroubleLabel* trouble_ = nullptr;
    std::unique_ptr<MainMenu> menu_;
    std::unique_ptr<TerminalControl> terminal_;
    std::unique_ptr<ModemMenu> modem_;
    HeadKeys* keys_ = nullptr;
    std::unique_ptr<HeadWindows> heads_;
    std::optional<int> active_address_;
    notice::LineState line_;
    bool finishing_ = false;
    bool finished_ = false;  // the station: the window goes when the last box has been seen
    QTimer close_limit_;
    QTimer TimerFileAutoOpen_;
};

}  // namespace ampdesk
