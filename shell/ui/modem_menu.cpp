#include "shell/ui/modem_menu.h"

#include "platform/run_time_error.h"
#include "terminal/ui/ConfigScrn.h"
#include "terminal/ui/volume_dialog.h"

namespace ampdesk {

ModemMenu::ModemMenu(MainMenu& menu, QMainWindow& window, TerminalControl& control, TerminalLine& line,
                     BusLink& bus, QtOperator& person)
    : window_(window),
      control_(control),
      line_(line),
      bus_(bus),
      person_(person),
      log_(line.clock()),
      transfers_(
          window, line, bus, person, [this] { return line_free(); }, [this] { control_.take_line_back(); }) {
    log_watcher_ = line_.add_watcher([this](const TerminalTraffic& traffic) { log_.note(traffic); });
    log_.on_failure = [this](const std::string& cause) { log_failed(cause); };
    add_to(menu);
    control_.on_change = [this] { follow(); };
    follow();
}

ModemMenu::~ModemMenu() {
    control_.on_change = nullptr;
    line_.remove_watcher(log_watcher_);
}

void ModemMenu::add_to(MainMenu& menu) {
    const std::vector<MenuRow> options = {
        {"&Volume", [this] { set_volume(); }},
        {.caption = "&Open_log", .click = [this] { open_log(); }, .item = &open_log_},
        {.caption = "&Close_Log", .click = [this] { close_log(); }, .item = &close_log_},
        {.caption = "&Show Debug",
         .click = [this] { transfers_.toggle_debug(show_debug_); },
         .checkable = true,
         .item = &show_debug_},
        {"-"},
        {"&Null Modem Test", [this] { transfers_.test_null_modem(); }},
    };
    menu.add({.name = "mnuModem",
              .caption = "Mo&dem",
              .array = "mnuModemItem",
              .rows = {{.caption = "&Auto Answer", .click = [this] { auto_answer(); }, .item = &auto_answer_},
                       {"-"},
                       {"&Settings", [this] { edit_settings(); }},
                       {.caption = "&Options", .array = "mnuModemOpt", .rows = options},
                       {"-"},
                       {"Sen&d File", [this] { transfers_.open_dialog(TransferDirection::send); }},
                       {"&Receive File", [this] { transfers_.open_dialog(TransferDirection::receive); }},
                       {"-"},
                       {"&Hang Up Phone", [this] { hang_up(); }}},
              .after = [this] { control_.refresh(); }});
}

void ModemMenu::follow() {
    auto_answer_->setText(control_.terminal().modem().answers() ? QStringLiteral("&No Auto Answer")
                                                                : QStringLiteral("&Auto Answer"));
    open_log_->setEnabled(!log_.is_open());
    close_log_->setEnabled(log_.is_open());
}

// Whether a modem command can be sent now; if not, it has been told why.
bool ModemMenu::line_free() {
    if (!line_.is_open())
        person_.notify("The terminal's port is not open", "Modem > Settings opens it.");
    else if (!line_.is_connected())
        person_.notify("The terminal's port is not connected", control_.port_name().toStdString());
    else if (line_.taken())
        person_.notify("The terminal's port is in use by a file transfer");
    else if (control_.terminal().modem().hanging_up())
        person_.show_status("Hanging up");
    else
        return true;
    return false;
}

void ModemMenu::auto_answer() {
    if (line_free())
        control_.terminal().modem().auto_answer();
}

// The line may have gone while the question was open.
void ModemMenu::set_volume() {
    if (!line_free())
        return;
    VolumeDialog dialog(&window_);
    if (dialog.exec() == QDialog::Accepted && line_free())
        control_.terminal().modem().set_volume(dialog.volume());
}

void ModemMenu::hang_up() {
    if (line_free())
        control_.terminal().hang_up();
}

void ModemMenu::edit_settings() {
    if (line_.taken()) {
        line_free();
        return;
    }
    ConfigScrn dialog(control_.settings(), bus_.ports(), bus_port_numbers(bus_.settings()), person_,
                      &window_);
    if (dialog.exec() == QDialog::Accepted)
        control_.use_settings(dialog.settings());
}

void ModemMenu::open_log() {
    const auto path = person_.choose_file_to_save("Open Log", "Log Files (*.log)|*.log|All Files (*.*)|*.*",
                                                  "terminal.log");
    if (!path)
        return;
    try {
        log_.open(*path);
    } catch (const RunTimeError& error) {
        person_.notify("The log could not be opened", *path + ": " + error.what());
    }
}

void ModemMenu::close_log() {
    try {
        log_.close();
    } catch (const RunTimeError& error) {
        person_.notify("The log is not complete", log_.path() + ": " + error.what());
    }
}

// The box is not opened from within the log's own call.
void ModemMenu::log_failed(const std::string& cause) {
    QMetaObject::invokeMethod(
        this,
        [this, text = log_.path() + ": " + cause] {
            follow();
            person_.notify("The log has been closed", text);
        },
        Qt::QueuedConnection);
}

}  // namespace ampdesk
