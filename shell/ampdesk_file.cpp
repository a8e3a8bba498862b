#include "shell/ampdesk_file.h"

#include "platform/numbers.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

std::optional<int> read_terminal_port(const std::string& path) {
    const auto lines = read_text_lines(path);
    if (lines.empty() || lines[0].find("ampdesk settings") == std::string::npos)
        throw RunTimeError(321, "Invalid file format");
    const double port = lines.size() > 1 ? lenient_number(lines[1]) : 0;
    if (port < 1 || port > 4)
        return std::nullopt;
    return round_to_int16(port);
}

}  // namespace ampdesk
