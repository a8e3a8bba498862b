#include "controlhead/screen_settings.h"

#include <algorithm>
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

// Line i, counted from 0; nothing when it is not there or holds no number.
std::optional<double> number_in(const std::vector<std::string>& lines, std::size_t i) {
    if (i >= lines.size())
        return std::nullopt;
    const double value = lenient_number(lines[i]);
    if (value == 0 && !trimmed(lines[i]).starts_with('0'))
        return std::nullopt;
    return value;
}

void take_colour(std::optional<double> value, std::uint32_t& colour) {
    if (value && *value >= 0 && *value <= 0xFFFFFF)
        colour = static_cast<std::uint32_t>(*value);
}

}  // namespace

std::string screen_settings_name(const std::string& amplifier_number) {
    return "set" + amplifier_number + ".dat";
}

std::optional<ScreenSettings> read_screen_settings(const std::string& path) {
    const std::vector<std::string> lines = read_text_lines(path, 4096);
    if (lines.empty() || lines.front().find(k_title) == std::string::npos)
        return std::nullopt;
    ScreenSettings settings;
    take_colour(number_in(lines, 1), settings.fore_colour);
    take_colour(number_in(lines, 2), settings.back_colour);
    if (const auto size = number_in(lines, 3))
        settings.font_size = std::clamp(*size, 13.0, 15.0);
    take_colour(number_in(lines, 4), settings.machine_colour);
    return settings;
}

void write_screen_settings(const std::string& path, const ScreenSettings& settings) {
    std::vector<std::string> lines = {k_title, printed(settings.fore_colour), printed(settings.back_colour),
                                      printed(settings.font_size), printed(settings.machine_colour)};
    for (const std::int16_t flag : settings.option_flags) lines.push_back(printed(flag));
    write_text_lines(path, lines);
}

}  // namespace ampdesk
