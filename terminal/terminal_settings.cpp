#include "terminal/terminal_settings.h"

#include <algorithm>

#include "buslink/settings_files.h"
#include "platform/numbers.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr std::string_view k_title = "ampdesk settings";
constexpr std::size_t k_read_limit = 4096;  // eight short lines; a file of another kind may be huge

// The number of a line, 1 the title, when it is one of least..most.
std::optional<int> number_in(const std::vector<std::string>& lines, std::size_t line, int least, int most) {
    const double value = line > lines.size() ? 0 : lenient_number(lines[line - 1]);
    if (line > lines.size() || trimmed(lines[line - 1]).empty() || !(value >= least && value <= most))
        return std::nullopt;
    return round_to_int32(value);
}

// The port that a settings file of the bus names; 0 when it cannot be read or names none.
template <class File>
int port_of(std::optional<File> (*read)(const std::string&), const std::string& path) {
    try {
        const auto file = read(path);
        return file ? port_number(file->port_name) : 0;
    } catch (const RunTimeError&) {
        return 0;
    }
}

}  // namespace

TerminalSettings read_terminal_settings(const std::string& path) {
    const auto lines = read_text_lines(path, k_read_limit);
    if (lines.empty() || lines[0].find(k_title) == std::string::npos)
        throw RunTimeError(321, "Invalid file format");
    TerminalSettings settings;
    settings.port = number_in(lines, 2, 1, 4);
    const int baud = number_in(lines, 3, 0, 99999).value_or(0);
    settings.baud = code_of_baud(baud) ? baud : settings.baud;
    settings.data_bits = number_in(lines, 4, 5, 8).value_or(settings.data_bits);
    settings.parity_code = number_in(lines, 5, 0, 2).value_or(settings.parity_code);
    settings.stop_bits = number_in(lines, 6, 1, 2).value_or(settings.stop_bits);
    settings.handshake = static_cast<Handshake>(number_in(lines, 7, 0, 2).value_or(0));
    settings.echo = number_in(lines, 8, 0, 1).value_or(1) == 1;
    return settings;
}

void write_terminal_settings(const std::string& path, const TerminalSettings& settings) {
    write_text_lines(
        path, {std::string(k_title), std::to_string(settings.port.value_or(0)), std::to_string(settings.baud),
               std::to_string(settings.data_bits), std::to_string(settings.parity_code),
               std::to_string(settings.stop_bits), std::to_string(static_cast<int>(settings.handshake)),
               std::to_string(static_cast<int>(settings.echo))});
}

PortSettings port_settings(const TerminalSettings& settings, const PortMap& ports) {
    return {.device = settings.port ? ports.device(*settings.port) : std::string(),
            .baud = settings.baud,
            .parity = parity_letter(settings.parity_code),
            .data_bits = settings.data_bits,
            .stop_bits = settings.stop_bits,
            .handshake = settings.handshake};
}

std::vector<int> bus_port_numbers(const std::optional<LineSettings>& line, const std::string& folder) {
    std::vector<int> numbers;
    numbers.push_back(line ? port_number(line->port_name) : port_of(read_rs485, folder + "/rs485.dat"));
    numbers.push_back(port_of(read_rs422, folder + "/rs422.dat"));
    std::erase(numbers, 0);
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

}  // namespace ampdesk
