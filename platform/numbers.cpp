#include "platform/numbers.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "platform/run_time_error.h"

namespace ampdesk {

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}
bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

template <class Integer>
Integer round_checked(double value) {
    const double rounded = std::nearbyint(value);
    constexpr double k_low = std::numeric_limits<Integer>::min();
    constexpr double k_high = std::numeric_limits<Integer>::max();
    if (!(rounded >= k_low && rounded <= k_high))
        throw RunTimeError::overflow();
    return static_cast<Integer>(rounded);
}

std::string printed(const char* format, int precision, double value) {
    char buffer[400];
    const int length = std::snprintf(buffer, sizeof buffer, format, precision, value);
    return {buffer, static_cast<std::size_t>(length)};
}

}  // namespace

double lenient_number(std::string_view text) {
    std::string number;
    bool digits = false;
    bool point = false;
    bool exponent = false;
    for (const char raw : text) {
        if (is_blank(raw))
            continue;
        const char c = (raw == 'd' || raw == 'D' || raw == 'E') ? 'e' : raw;
        const bool after_exponent = !number.empty() && number.back() == 'e';
        if (is_digit(c))
            digits = true;
        else if ((c == '+' || c == '-') && (number.empty() || after_exponent))
            ;
        else if (c == '.' && !point && !exponent)
            point = true;
        else if (c == 'e' && digits && !exponent)
            exponent = true;
        else
            break;
        if (number.size() < 300)
            number += c;
    }
    if (!digits)
        return 0;
    const char* begin = number.data();
    if (*begin == '+')
        ++begin;
    double value = 0;
    const auto result = std::from_chars(begin, number.data() + number.size(), value);
    return result.ec == std::errc{} ? value : 0;
}

std::int16_t round_to_int16(double value) {
    return round_checked<std::int16_t>(value);
}

std::int32_t round_to_int32(double value) {
    return round_checked<std::int32_t>(value);
}

std::string right_aligned(std::string_view text, std::size_t width) {
    std::string out(text.size() < width ? width - text.size() : 0, ' ');
    return out.append(text);
}

std::string left_aligned(std::string_view text, std::size_t width) {
    std::string out(text);
    if (out.size() < width)
        out.resize(width, ' ');
    return out;
}

std::string fixed_point(double value, int decimals) {
    // Rounded on the decimal text that the value stands for, so that 0.125 becomes 0.13.
    const double scale = std::pow(10.0, decimals);
    const double rounded = std::round(value * scale) / scale;
    return printed("%.*f", decimals, rounded == 0 ? 0.0 : rounded);
}

std::string plain_number(double value) {
    return printed("%.*g", 15, value == 0 ? 0.0 : value);
}

std::string zero_padded(double value, int digits) {
    const std::string figures = fixed_point(std::fabs(value), 0);
    const std::size_t width = static_cast<std::size_t>(digits);
    const std::string zeros(figures.size() < width ? width - figures.size() : 0, '0');
    return (value < 0 && figures != "0" ? "-" : "") + zeros + figures;
}

std::string hex(unsigned value) {
    char buffer[16];
    const int length = std::snprintf(buffer, sizeof buffer, "%X", value);
    return {buffer, static_cast<std::size_t>(length)};
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

}  // namespace ampdesk
