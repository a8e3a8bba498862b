#include "controlhead/screen_settings.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <string_view>
#include <vector>

#include "platform/numbers.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr const char* k_title = "Color Settings";

// A blank stands where a minus would.
std::string printed(double value) {
    return (value < 0 ? "" : " ") + plain_number(value);
}

// The usual colours of the system's palette, 0x00BBGGRR, in its order.
constexpr std::uint32_t k_palette[] = {
    0xC0C0C0, 0x808000, 0x800000, 0x808080, 0xC0C0C0,  // scroll bar, desktop, titles, menu
    0xFFFFFF, 0x000000, 0x000000, 0x000000, 0xFFFFFF,  // window, its frame, texts of menu, window, title
    0xC0C0C0, 0xC0C0C0, 0x808080, 0x800000, 0xFFFFFF,  // borders, ground of windows, selection and its text
    0xC0C0C0, 0x808080, 0x808080, 0x000000, 0xC0C0C0,  // button, its shadow, dead text, its text, title text
    0xFFFFFF, 0x000000, 0xDFDFDF, 0x000000, 0xE1FFFF,  // edges of buttons, hint and its ground
};
constexpr std::int32_t k_first_of_palette = std::numeric_limits<std::int32_t>::min();

bool in_palette(std::int32_t colour) {
    return colour < k_first_of_palette + static_cast<std::int32_t>(std::size(k_palette));
}

// The number with which a line begins, if it does.
std::optional<double> number_in(std::string_view line) {
    line = trimmed(line);
    const std::size_t digit = line.find_first_of("0123456789");
    if (digit == std::string_view::npos || digit != line.find_first_not_of("+-."))
        return std::nullopt;
    return lenient_number(line);
}

bool take_colour(std::string_view line, std::int32_t& colour) {
    const auto number = number_in(line);
    if (!number || std::abs(*number) > -static_cast<double>(k_first_of_palette))
        return false;
    const auto whole = static_cast<std::int64_t>(*number);
    if (whole > std::numeric_limits<std::int32_t>::max())
        return false;
    colour = static_cast<std::int32_t>(whole);
    return colour >= 0 || in_palette(colour);
}

bool take_font_size(std::string_view line, double& points) {
    constexpr double k_largest = 1000;  // of any letter
    const auto size = number_in(line);
    if (!size || *size <= 0 || *size > k_largest)
        return false;
    points = std::clamp(*size, 13.0, 15.0);
    return true;
}

}  // namespace

std::string screen_settings_name(const std::string& amplifier_number) {
    return "set" + amplifier_number + ".dat";
}

std::uint32_t shown_colour(std::int32_t colour) {
    if (colour >= 0)
        return static_cast<std::uint32_t>(colour) & 0xFFFFFF;
    return k_palette[in_palette(colour) ? colour - k_first_of_palette : 0];
}

std::optional<ScreenSettings> read_screen_settings(const std::string& path) {
    constexpr std::ptrdiff_t k_read_lines = 5;
    constexpr std::size_t k_limit = 4096;
    const std::vector<std::string> lines = read_text_lines(path, k_limit);
    const std::string bytes = read_file_bytes(path, k_limit);
    // A line without its end may be half of a number.
    const bool torn = std::count(bytes.begin(), bytes.end(), '\n') < k_read_lines;
    if (torn || lines.front().find(k_title) == std::string::npos)
        return std::nullopt;
    ScreenSettings settings;
    const bool sound =
        take_colour(lines[1], settings.fore_colour) && take_colour(lines[2], settings.back_colour) &&
        take_font_size(lines[3], settings.font_size) && take_colour(lines[4], settings.machine_colour);
    return sound ? std::optional(settings) : std::nullopt;
}

void write_screen_settings(const std::string& path, const ScreenSettings& settings) {
    std::vector<std::string> lines = {k_title, printed(settings.fore_colour), printed(settings.back_colour),
                                      printed(settings.font_size), printed(settings.machine_colour)};
    for (const std::int16_t flag : settings.option_flags) lines.push_back(printed(flag));
    write_text_lines(path, lines);
}

}  // namespace ampdesk
