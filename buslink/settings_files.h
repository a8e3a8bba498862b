// "rs485.dat", the amplifier files (same layout) and "rs422.dat": a title and one value a line.
#pragma once

#include <optional>
#include <string>

#include "buslink/line_settings.h"

namespace ampdesk {

// The four lines of "rs485.dat" and of an amplifier file, as texts and codes.
struct Rs485File {
    std::string port_name = "COM2:";
    int baud_code = 6;
    std::string address = "1";
    bool operator==(const Rs485File&) const = default;
};

// Nothing when the title line does not contain "RS-485". A file that ends early gives empty texts
// and, as a number that no code can be, a baud code of -1. Texts are trimmed, cut to 40
// characters, and hold "?" for what does not print, so that they can be shown. Throws what
// read_text_lines throws.
std::optional<Rs485File> read_rs485(const std::string& path);

// Replaces the file. Throws what write_text_lines throws.
void write_rs485(const std::string& path, const Rs485File& file);

// The settings of the line: 8 data bits, no parity, 1 stop bit. Nothing for a baud code outside
// 0..7.
std::optional<LineSettings> line_settings(const Rs485File& file);

// The numeric value of the address text, rounded; nothing when it is not in 0..99 or when there is
// no text at all, as in a file that was cut short.
std::optional<int> unit_address(const Rs485File& file);

// The six lines of "rs422.dat".
struct Rs422File {
    std::string port_name;
    int baud_code = 6;
    int data_bits_code = 3;  // data bits = code + 5
    int parity_code = 0;     // 0 none, 1 odd, 2 even
    int stop_bits_code = 0;  // stop bits = code + 1
    bool operator==(const Rs422File&) const = default;
};

// Nothing when the title line does not contain "RS-422"; else as read_rs485.
std::optional<Rs422File> read_rs422(const std::string& path);
void write_rs422(const std::string& path, const Rs422File& file);

// Nothing for a baud code outside 0..7, data bits outside 5..8 or stop bits outside 1..2.
std::optional<LineSettings> line_settings(const Rs422File& file);

}  // namespace ampdesk
