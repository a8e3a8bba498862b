// Literal bytes of the wire in a form that can be read beside a traffic log.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

namespace ampdesk {

// hex_bytes("01 3F A0") is those three bytes.
inline std::string hex_bytes(const std::string& text) {
    std::istringstream in(text);
    std::string bytes;
    for (std::string pair; in >> pair;) bytes += static_cast<char>(std::strtol(pair.c_str(), nullptr, 16));
    return bytes;
}

inline std::string to_hex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, " %02X", static_cast<unsigned char>(c));
        text += text.empty() ? digits + 1 : digits;
    }
    return text;
}

}  // namespace ampdesk
