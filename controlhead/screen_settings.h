// Colours and display font size of one control head and the file that keeps them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ampdesk {

struct ScreenSettings {
    // 0x00BBGGRR: red in the low byte.
    std::uint32_t fore_colour = 0x0040FF40;
    std::uint32_t back_colour = 0x00202018;
    double font_size = 14;  // points, 13..15
    std::uint32_t machine_colour = 0x00C8C8C0;
    // Option flags -1 or 0; written to the file and never read back.
    std::int16_t option_flags[3] = {-1, -1, -1};
    bool operator==(const ScreenSettings&) const = default;
};

// "set" + number + ".dat"
std::string screen_settings_name(const std::string& amplifier_number);

// Lines 1 to 5 of the file; the flags are always -1. A value that is missing or no colour keeps
// its default; a font size outside 13..15 is brought to the nearer end. Nothing when the first
// line does not contain "Color Settings". Throws what read_text_lines throws.
std::optional<ScreenSettings> read_screen_settings(const std::string& path);

// Writes the eight lines. Throws what write_text_lines throws.
void write_screen_settings(const std::string& path, const ScreenSettings& settings);

}  // namespace ampdesk
