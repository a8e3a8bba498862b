#include "buslink/settings_files.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "platform/numbers.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr std::size_t k_read_limit = 4096;   // six short lines; a file of another kind may be huge
constexpr std::size_t k_longest_field = 40;  // of a text that may end up in a message

// The lines of one file, read as far as they go: what is missing is an empty text and no code.
class Fields {
  public:
    explicit Fields(const std::string& path) : lines_(read_text_lines(path, k_read_limit)) {}

    bool titled(std::string_view title) const {
        return !lines_.empty() && lines_.front().find(title) != std::string::npos;
    }

    // Line 1 is the title.
    std::string text(std::size_t line) const {
        if (line > lines_.size())
            return {};
        std::string field(trimmed(trimmed(lines_[line - 1]).substr(0, k_longest_field)));
        std::replace_if(
            field.begin(), field.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
        return field;
    }

    // Codes are small; one that no code can be, or that is missing, becomes -1: the half of a torn file
    // must not open the line at 110 baud.
    int code(std::size_t line) const {
        const double value = line > lines_.size() ? -1 : lenient_number(lines_[line - 1]);
        return value > -1 && value < 1000 ? round_to_int16(value) : -1;
    }

  private:
    std::vector<std::string> lines_;
};

}  // namespace

std::optional<Rs485File> read_rs485(const std::string& path) {
    const Fields fields(path);
    if (!fields.titled("RS-485"))
        return std::nullopt;
    return Rs485File{.port_name = fields.text(2), .baud_code = fields.code(3), .address = fields.text(4)};
}

void write_rs485(const std::string& path, const Rs485File& file) {
    write_text_lines(path, {"RS-485", file.port_name, std::to_string(file.baud_code), file.address});
}

std::optional<LineSettings> line_settings(const Rs485File& file) {
    const auto baud = baud_of_code(file.baud_code);
    if (!baud)
        return std::nullopt;
    return LineSettings{.port_name = file.port_name, .baud = *baud};
}

std::optional<int> unit_address(const Rs485File& file) {
    const double value = lenient_number(file.address);
    if (file.address.empty() || !(value > -1 && value < 1000))
        return std::nullopt;
    const int address = round_to_int16(value);
    return address >= 0 && address <= 99 ? std::optional(address) : std::nullopt;
}

std::optional<Rs422File> read_rs422(const std::string& path) {
    const Fields fields(path);
    if (!fields.titled("RS-422"))
        return std::nullopt;
    return Rs422File{.port_name = fields.text(2),
                     .baud_code = fields.code(3),
                     .data_bits_code = fields.code(4),
                     .parity_code = fields.code(5),
                     .stop_bits_code = fields.code(6)};
}

void write_rs422(const std::string& path, const Rs422File& file) {
    write_text_lines(
        path, {"RS-422", file.port_name, std::to_string(file.baud_code), std::to_string(file.data_bits_code),
               std::to_string(file.parity_code), std::to_string(file.stop_bits_code)});
}

std::optional<LineSettings> line_settings(const Rs422File& file) {
    const auto baud = baud_of_code(file.baud_code);
    const bool possible = file.data_bits_code >= 0 && file.data_bits_code <= 3 && file.stop_bits_code >= 0 &&
                          file.stop_bits_code <= 1;
    if (!baud || !possible)
        return std::nullopt;
    return LineSettings{.port_name = file.port_name,
                        .baud = *baud,
                        .parity_code = file.parity_code,
                        .data_bits = file.data_bits_code + 5,
                        .stop_bits = file.stop_bits_code + 1};
}

}  // namespace ampdesk
