// Colours and display font size of one control head and the file that keeps them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ampdesk {

struct ScreenSettings {
    // As in the file, see shown_colour.
    std::int32_t fore_colour = 0x0040FF40;
    std::int32_t back_colour = 0x00202018;
    double font_size = 14;  // points, 13..15
    std::int32_t machine_colour = 0x00C8C8C0;
    // Option flags -1 or 0; written to the file and never read back.
    std::int16_t option_flags[3] = {-1, -1, -1};
    bool operator==(const ScreenSettings&) const = default;
};

// The colour of a settings file as 0x00BBGGRR, red in the low byte. A negative number names a colour of the
// system's palette by its low byte, 0 to 24; what is shown is the usual one.
std::uint32_t shown_colour(std::int32_t colour);

// "set" + number + ".dat"
std::string screen_settings_name(const std::string& amplifier_number);

// Lines 1 to 5 of the file; the flags are always -1. A font size outside 13..15 is brought to the nearer end.
// Nothing for a damaged file: the first line does not contain "Color Settings", or one of the four values is
// missing, torn, no number, a colour beyond 32 bits or outside the palette, or no size of a letter. Throws
// what read_text_lines throws.
std::optional<ScreenSettings> read_screen_settings(const std::string& path);

// Writes the eight lines. Throws what write_text_lines throws.
void write_screen_settings(const std::string& path, const ScreenSettings& settings);

}  // namespace ampdesk
