#include "platform/numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iterator>
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

// The digits of a finite value to 15 significant places, which is what a decimal number of the
// outside world survives arithmetic with, and how many of them stand before the point (negative:
// zeros behind it).
struct Decimal {
    std::string digits;
    int point = 0;
};

Decimal decimal(double value) {
    std::array<char, 32> buffer{};
    // Not printf: that would use the decimal comma of the operator's country.
    const auto end =
        std::to_chars(buffer.begin(), buffer.end(), value, std::chars_format::scientific, 14).ptr;
    const char* mark = std::find(buffer.begin(), end, 'e');
    Decimal result;
    std::copy_if(buffer.cbegin(), mark, std::back_inserter(result.digits), is_digit);
    std::from_chars(mark + (mark[1] == '+' ? 2 : 1), end, result.point);
    ++result.point;
    return result;
}

// Adds one in the last place; of no digits, one is made.
void step_up(std::string& digits) {
    const std::size_t other = digits.find_last_not_of('9');
    std::fill(digits.begin() + static_cast<std::ptrdiff_t>(other + 1), digits.end(), '0');
    if (other != std::string::npos) {
        ++digits[other];
    } else {
        digits += '0';
        digits.front() = '1';
    }
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
        number += c;
    }
    if (!digits)
        return 0;
    const char* begin = number.data();
    if (*begin == '+')
        ++begin;
    double value = 0;
    const auto result = std::from_chars(begin, number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range && number.find("e-") == std::string::npos)
        value = *begin == '-' ? -HUGE_VAL : HUGE_VAL;
    return value;
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
    if (!std::isfinite(value))
        throw RunTimeError::overflow();
    Decimal number = decimal(std::fabs(value));
    const int keep = number.point + decimals;  // digits that will be shown, leading zeros apart
    const auto kept = static_cast<std::size_t>(std::max(keep, 0));
    const bool round_up = keep >= 0 && kept < number.digits.size() && number.digits[kept] >= '5';
    std::string text = std::move(number.digits);
    text.resize(kept, '0');
    if (round_up)
        step_up(text);
    // At least one digit before the point, all decimals behind it.
    if (const auto needed = static_cast<std::size_t>(decimals) + 1; text.size() < needed)
        text.insert(0, needed - text.size(), '0');
    const bool negative = value < 0 && text.find_first_not_of('0') != std::string::npos;
    if (decimals > 0)
        text.insert(text.end() - decimals, '.');
    return std::string(negative ? 1 : 0, '-').append(text);
}

std::string plain_number(double value) {
    std::array<char, 32> buffer{};
    const auto end =
        std::to_chars(buffer.begin(), buffer.end(), value == 0 ? 0.0 : value, std::chars_format::general, 15)
            .ptr;
    return {buffer.begin(), end};
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
