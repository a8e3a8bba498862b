// Bytes as the tests write them down: "06 01 07".
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace ampdesk::demo {

inline std::string bytes_of(std::string_view hex_text) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex_text.size(); i += 3)
        bytes += static_cast<char>(std::stoi(std::string(hex_text.substr(i, 2)), nullptr, 16));
    return bytes;
}

inline std::string hex_of(std::string_view bytes) {
    std::string text;
    char digits[4];
    for (const char byte : bytes) {
        std::snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned>(byte) & 0xFFU);
        text += digits;
    }
    return text.empty() ? text : text.substr(0, text.size() - 1);
}

}  // namespace ampdesk::demo
