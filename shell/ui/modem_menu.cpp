#include "shell/ui/modem_menu.h"

#include <utility>

#include "terminal/ui/ConfigScrn.h"
#include "terminal/ui/volume_dialog.h"

namespace ampdesk {

ModemMenu::ModemMenu(MainMenu& menu, QMainWindow& window, TerminalControl& control, const PortMap& ports,
                     const Clock& clock, QtOperator& person, std::function<void(const TerminalAct&)> send)
    : window_(window),
      control_(control),
      ports_(ports),
      person_(person),
      send_(std::move(send)),
      transfers_(window, control.view(), clock, person, send_) {
    add_to(menu);
    control_.on_change = [this] { follow(); };
    follow();
}

ModemMenu::~ModemMenu() {
    control_.on_change = nullptr;
}

void ModemMenu::add_to(MainMenu& menu) {
    const std::vector<MenuRow> options = {
        {"&Volume", [this] { set_volume(); }},
        {.caption = "&Open_log", .click = [this] { open_log(); }, .item = &open_log_},
        {.caption = "&Close_Log", .click = [this] { send_(act::CloseLog{}); }, .item = &close_log_},
        {.caption = "&Show Debug",
         .click = [this] { transfers_.toggle_debug(show_debug_); },
         .checkable = true,
         .item = &show_debug_},
        {"-"},
        {"&Null Modem Test", [this] { send_(act::TestNullModem{}); }},
    };
    menu.add({.name = "mnuModem",
              .caption = "Mo&dem",
              .array = "mnuModemItem",
              .rows = {{.caption = "&Auto Answer",
                        .click = [this] { send_(act::ToggleAutoAnswer{}); },
                        .item = &auto_answer_},
                       {"-"},
                       {"&Settings", [this] { edit_settings(); }},
                       {.caption = "&Options", .array = "mnuModemOpt", .rows = options},
                       {"-"},
                       {"Sen&d File", [this] { transfers_.open_dialog(TransferDirection::send); }},
                       {"&Receive File", [this] { transfers_.open_dialog(TransferDirection::receive); }},
                       {"-"},
                       {"&Hang Up Phone", [this] { send_(act::HangUp{}); }}}});
}

void ModemMenu::follow() {
    const TerminalView& terminal = control_.view();
    auto_answer_->setText(terminal.answers ? QStringLiteral("&No Auto Answer")
                                           : QStringLiteral("&Auto Answer"));
    open_log_->setEnabled(!terminal.log_open);
    close_log_->setEnabled(terminal.log_open);
}

void ModemMenu::set_volume() {
    if (!line_free(control_.view(), person_))
        return;
    VolumeDialog dialog(&window_);
    if (dialog.exec() == QDialog::Accepted)
        send_(act::SetModemVolume{dialog.volume()});
}

void ModemMenu::edit_settings() {
    const TerminalView& terminal = control_.view();
    if (terminal.taken) {
        line_free(terminal, person_);
        return;
    }
    ConfigScrn dialog(terminal.settings, ports_, bus_port_numbers(terminal.bus_line), person_, &window_);
    if (dialog.exec() == QDialog::Accepted)
        send_(act::UseTerminalSettings{dialog.settings()});
}

void ModemMenu::open_log() {
    if (const auto path = person_.choose_file_to_save(
            "Open Log", "Log Files (*.log)|*.log|All Files (*.*)|*.*", "terminal.log"))
        send_(act::OpenLog{*path});
}

}  // namespace ampdesk
