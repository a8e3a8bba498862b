// What the panel makes of the texts it is given, and "set….dat" against literal bytes.
#include "controlhead/panel.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

// Catches control bytes on the display, a degree sign that is lost, and a line number out of range.
TEST(Panel, LinesAndLegends) {
    Panel panel;
    panel.set_line(1, "a\x07\x7F\x9F\xA0\xB0z");
    EXPECT_EQ(panel.line(1), std::string("a   \xA0\xB0z") + std::string(13, ' '));
    panel.set_line(2, "twenty-two characters!");
    EXPECT_EQ(panel.line(2), "twenty-two characters!");
    panel.set_line(0, "x");
    panel.set_line(5, "x");
    panel.set_line(4, "SETUP INFO HELP MOREover");
    const char* legends[] = {"SETUP", "INFO", "HELP", "MORE", ""};
    for (int key = 0; key <= 4; ++key) EXPECT_EQ(panel.legend(key), legends[key]);
}

ScreenSettings settings(std::int32_t fore, std::int32_t back, double font, std::int32_t machine) {
    return {.fore_colour = fore, .back_colour = back, .font_size = font, .machine_colour = machine};
}

// A damaged file that is taken for a sound one and overwritten, a colour that wraps, a font the display has
// no room for, a number without its leading blank, a file that does not come back as it was written.
TEST(ScreenSettingsFile, IsTakenWholeOrNotAtAll) {
    constexpr std::int32_t k_palette = std::numeric_limits<std::int32_t>::min();
    const ScratchFolder folder;
    const std::string title = "Color Settings\r\n";
    const std::pair<std::string, std::optional<ScreenSettings>> cases[] = {
        {"My Color Settings!\n255\n65280\n15\n0\n", settings(255, 65280, 15, 0)},
        {title + "   1 \r\n  2\r\n  14 \r\n 3\r\n 0\r\n 0\r\n 0\r\n", settings(1, 2, 14, 3)},
        {"Colour\r\n 1\r\n 2\r\n 14\r\n 3\r\n", std::nullopt},
        {"", std::nullopt},
        {title + " 1\r\n 2\r\n -\r\n 3\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\nred 1\r\n", std::nullopt},
        {title + " 2147483648\r\n 2\r\n 14\r\n 3\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\n-2147483649\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\n-2147483623\r\n", std::nullopt},
        {title + "-2147483648\r\n-2147483624\r\n 14\r\n 2147483647\r\n",
         settings(k_palette, -2147483624, 14, 0x7FFFFFFF)},
        {title + " 1\r\n 2\r\n 99\r\n 3\r\n", settings(1, 2, 15, 3)},
        {title + " 1\r\n 2\r\n 8\r\n 3\r\n", settings(1, 2, 13, 3)},
        {title + " 1\r\n 2\r\n-8\r\n 3\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\n 3", std::nullopt},
    };
    for (const auto& [bytes, expected] : cases)
        EXPECT_EQ(read_screen_settings(folder.put("set1234.dat", bytes)), expected) << bytes;
    const ScreenSettings set = settings(0xFFFFFF, 0, 13.5, -2147483633);
    write_screen_settings(folder / "new.dat", set);
    EXPECT_EQ(file_bytes(folder / "new.dat"),
              title + " 16777215\r\n 0\r\n 13.5\r\n-2147483633\r\n-1\r\n-1\r\n-1\r\n");
    // A window's white taken for its text's black: a display that nobody can read.
    const std::pair<std::int32_t, std::uint32_t> colours[] = {
        {k_palette, 0xC0C0C0}, {k_palette + 5, 0xFFFFFF}, {k_palette + 8, 0}, {k_palette + 24, 0xE1FFFF},
        {0xFF, 0xFF},          {0x0200FF00, 0xFF00}};
    for (const auto& [setting, shown] : colours) EXPECT_EQ(shown_colour(setting), shown) << setting;
}

}  // namespace
}  // namespace ampdesk
