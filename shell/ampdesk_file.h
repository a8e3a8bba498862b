// "ampdesk.dat", the terminal's settings: the title "ampdesk settings", then the COM port number.
#pragma once

#include <optional>
#include <string>

namespace ampdesk {

// COM port 1..4 of the terminal; nothing when line 2 names none. Throws "Invalid file format" when
// the first line lacks the title, else what read_text_lines throws.
std::optional<int> read_terminal_port(const std::string& path);

}  // namespace ampdesk
