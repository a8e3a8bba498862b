// Strict reading of whole numbers in fault commands and arguments: a typing mistake is an error.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace ampdesk::demo {

// The whole text as a decimal number, or a hexadecimal one after "0x"; nothing when it is anything
// else or lies outside low..high.
inline std::optional<long> whole_number(std::string_view text, long low, long high) {
    const bool is_hex = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
    if (is_hex)
        text.remove_prefix(2);
    long value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value, is_hex ? 16 : 10);
    if (result.ec != std::errc{} || result.ptr != text.data() + text.size() || value < low || value > high)
        return std::nullopt;
    return value;
}

}  // namespace ampdesk::demo
