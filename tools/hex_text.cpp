#include "tools/hex_text.h"

#include "platform/numbers.h"

namespace ampdesk {

std::optional<unsigned> hex_digit(char c) {
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0');
    if (c >= 'A' && c <= 'F')
        return static_cast<unsigned>(c - 'A' + 10);
    if (c >= 'a' && c <= 'f')
        return static_cast<unsigned>(c - 'a' + 10);
    return std::nullopt;
}

unsigned leading_hex(std::string_view text) {
    unsigned value = 0;
    for (const char c : text) {
        const auto digit = hex_digit(c);
        if (!digit)
            break;
        value = value * 16 + *digit;
    }
    return value;
}

std::string hex_listing(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) text += hex(static_cast<unsigned char>(c)) + " ";
    return text;
}

std::string hex_pairs(std::string_view bytes) {
    constexpr std::string_view k_digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        text += k_digits[static_cast<unsigned char>(c) >> 4U];
        text += k_digits[static_cast<unsigned char>(c) & 15U];
    }
    return text;
}

std::optional<std::string> bytes_of_hex(std::string_view text) {
    std::string bytes;
    for (; !text.empty(); text.remove_prefix(text.size() < 2 ? 1 : 2)) {
        const std::string_view pair = text.substr(0, 2);
        for (const char c : pair)
            if (!hex_digit(c))
                return std::nullopt;
        bytes += static_cast<char>(leading_hex(pair));
    }
    return bytes;
}

}  // namespace ampdesk
