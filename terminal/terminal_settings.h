// "ampdesk.dat", the settings of the terminal's port: the title "ampdesk settings", the COM port
// number, then the rest of what the settings dialog offers, one value a line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "buslink/line_settings.h"

namespace ampdesk {

// Its name in the program's folder.
inline constexpr const char* k_terminal_settings_file = "ampdesk.dat";

struct TerminalSettings {
    std::optional<int> port;  // 1..4; nothing while the terminal has none
    int baud = 9600;
    int data_bits = 8;                      // 5..8
    int parity_code = 0;                    // 0 none, 1 odd, 2 even
    int stop_bits = 1;                      // 1 or 2
    Handshake handshake = Handshake::none;  // kept as 0 none, 1 XON/XOFF, 2 RTS/CTS
    bool echo = true;                       // typed characters are shown
    bool operator==(const TerminalSettings&) const = default;
};

// A value that is missing or cannot be is the default's. Throws "Invalid file format" (321) when the
// first line lacks the title, else what read_text_lines throws. Never changes the file.
TerminalSettings read_terminal_settings(const std::string& path);

// Replaces the file. Throws what write_text_lines throws.
void write_terminal_settings(const std::string& path, const TerminalSettings& settings);

// For the port behind that number; an empty device when there is none.
PortSettings port_settings(const TerminalSettings& settings, const PortMap& ports);

// The numbers of the ports that the amplifiers use or are set to use: that of the open bus, else that
// of "rs485.dat", and that of "rs422.dat", which a remote station can open at any time. `line` is the open
// bus's, nothing while none is.
std::vector<int> bus_port_numbers(const std::optional<LineSettings>& line, const std::string& folder = ".");

}  // namespace ampdesk
