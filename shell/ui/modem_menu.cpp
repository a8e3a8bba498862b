// The Modem menu's part of TerminalControl.
#include <QAction>

#include "platform/qt/text.h"
#include "platform/run_time_error.h"
#include "shell/ui/terminal_control.h"
#include "terminal/ui/ConfigScrn.h"
#include "terminal/ui/volume_dialog.h"

namespace ampdesk {

void TerminalControl::mnuModemItem_Click(int index) {
    switch (index) {
        case 0:
            auto_answer();
            break;
        case 2:
            edit_settings();
            break;
        case 5:
            transfers_.open_dialog(TransferDirection::send);
            break;
        case 6:
            transfers_.open_dialog(TransferDirection::receive);
            break;
        case 8:
            hang_up();
            break;
        default:
            break;
    }
    follow_state();
    arm();
}

void TerminalControl::mnuModemOpt_Click(int index) {
    switch (index) {
        case 0:
            set_volume();
            break;
        case 1:
            open_log();
            break;
        case 2:
            close_log();
            break;
        case 3:
            transfers_.toggle_debug(menu_item("mnuModemOpt", 3));
            break;
        case 5:
            transfers_.test_null_modem();
            break;
        default:
            break;
    }
    follow_state();
    arm();
}

// Whether a modem command can be sent now; if not, it has been told why.
bool TerminalControl::line_free() {
    if (!line_.is_open())
        person_.notify("The terminal's port is not open", "Modem > Settings opens it.");
    else if (!line_.is_connected())
        person_.notify("The terminal's port is not connected", port_name().toStdString());
    else if (line_.taken())
        person_.notify("The terminal's port is in use by a file transfer");
    else if (terminal_.modem().hanging_up())
        show_status_(QStringLiteral("Hanging up"));
    else
        return true;
    return false;
}

void TerminalControl::auto_answer() {
    if (line_free())
        terminal_.modem().auto_answer();
}

// The line may have gone while the question was open.
void TerminalControl::set_volume() {
    if (!line_free())
        return;
    VolumeDialog dialog(&window_);
    if (dialog.exec() == QDialog::Accepted && line_free())
        terminal_.modem().set_volume(dialog.volume());
}

void TerminalControl::hang_up() {
    if (line_free())
        terminal_.hang_up();
}

void TerminalControl::edit_settings() {
    if (line_.taken()) {
        line_free();
        return;
    }
    ConfigScrn dialog(settings_, bus_.ports(), bus_port_numbers(bus_), person_, &window_);
    if (dialog.exec() == QDialog::Accepted)
        use_settings(dialog.settings());
}

// The port is opened anew only when its own settings have changed: that would end a call.
void TerminalControl::use_settings(const TerminalSettings& chosen) {
    settings_ = chosen;
    terminal_.echo = chosen.echo;
    try {
        write_terminal_settings(k_terminal_settings_file, chosen);
    } catch (const RunTimeError& error) {
        person_.notify(error.what(), k_terminal_settings_file);
    }
    const PortSettings wanted = port_settings(chosen, bus_.ports());
    if (!chosen.port) {
        line_.close();
        return tell_line();
    }
    if (line_.is_open() && line_.settings() == wanted)
        return tell_line();
    const PortResult result = open_line(wanted);
    if (!result.ok())
        person_.notify("The terminal's port could not be opened", result.cause);
}

void TerminalControl::open_log() {
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

void TerminalControl::close_log() {
    try {
        log_.close();
    } catch (const RunTimeError& error) {
        person_.notify("The log is not complete", log_.path() + ": " + error.what());
    }
}

void TerminalControl::log_failed(const std::string& cause) {
    later([this, text = log_.path() + ": " + cause] {
        follow_state();
        person_.notify("The log has been closed", text);
    });
}

}  // namespace ampdesk
