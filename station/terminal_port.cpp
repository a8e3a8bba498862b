#include "station/terminal_port.h"

#include <utility>

#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

TerminalPort::TerminalPort(TerminalLine& line, BusLink& bus, Operator& person, std::string folder)
    : line_(line), bus_(bus), operator_(person), folder_(std::move(folder)) {}

void TerminalPort::load_settings() {
    const std::string path = folder_ + "/" + k_terminal_settings_file;
    if (file_exists(path))
        settings_ = read_terminal_settings(path);
}

void TerminalPort::open_at_start() {
    if (!settings_.port || line_.port() == nullptr)
        return;
    const PortSettings wanted = port_settings(settings_, bus_.ports());
    for (const int number : bus_port_numbers(bus_.settings(), folder_))
        if (bus_.ports().same_device(number, *settings_.port))
            return operator_.show_status(name() + " is used by the amplifier bus, the terminal stays closed");
    open(wanted);
}

void TerminalPort::use(const TerminalSettings& chosen) {
    settings_ = chosen;
    try {
        write_terminal_settings(folder_ + "/" + k_terminal_settings_file, chosen);
    } catch (const RunTimeError& error) {
        operator_.notify(error.what(), k_terminal_settings_file);
    }
    const PortSettings wanted = port_settings(chosen, bus_.ports());
    if (!chosen.port) {
        line_.close();
        return tell_line();
    }
    if (line_.is_open() && line_.settings() == wanted)
        return tell_line();
    const PortResult result = open(wanted);
    if (!result.ok())
        operator_.notify("The terminal's port could not be opened", result.cause);
}

PortResult TerminalPort::open(const PortSettings& wanted) {
    PortResult result = line_.open(wanted);
    line_name_ = name();
    if (!result.ok())
        operator_.show_status(line_name_ + " " + result.cause);
    return result;
}

std::string TerminalPort::name() const {
    return settings_.port ? "COM" + std::to_string(*settings_.port) + ":" : "No port";
}

std::string TerminalPort::state(const LineState& seen) const {
    std::string text = name() + "  ";
    if (!line_.is_open())
        text += "closed";
    else if (!line_.is_connected())
        text += "connection lost";
    else
        text += std::to_string(settings_.baud) + "," + parity_letter(settings_.parity_code) + "," +
                std::to_string(settings_.data_bits) + "," + std::to_string(settings_.stop_bits);
    const auto on = [](bool level) { return level ? "on" : "off"; };
    if (const auto& lines = seen.lines)
        text += std::string("\nCTS ") + on(lines->cts) + "   DSR " + on(lines->dsr) + "   CD " +
                on(lines->carrier) + "   RI " + on(lines->ring);
    return text;
}

void TerminalPort::tell_line() {
    if (line_.is_open())
        line_name_ = name();
    if (line_name_.empty())
        operator_.show_status({});
    else if (!line_.is_open())
        operator_.show_status(line_name_ + " closed");
    else if (line_.is_connected())
        operator_.show_status(line_name_ + " connected");
    else
        operator_.show_status(line_name_ + " connection lost, trying again");
}

}  // namespace ampdesk
