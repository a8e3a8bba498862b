// Reading and writing of "set….dat" against literal bytes.
#include "controlhead/screen_settings.h"

#include <gtest/gtest.h>

#include <fstream>

#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

ScreenSettings settings(std::uint32_t fore, std::uint32_t back, double font, std::uint32_t machine) {
    return {.fore_colour = fore, .back_colour = back, .font_size = font, .machine_colour = machine};
}

// A bad line that spoils the good ones, a colour that wraps, a font the display has no room for, a
// number without its leading blank, a file that does not come back as it was written.
TEST(ScreenSettingsFile, TakesWhatIsGoodAndKeepsTheDefaultForTheRest) {
    const ScratchFolder folder;
    const std::string path = folder / "set1234.dat";
    const ScreenSettings defaults;
    const std::string title = "Color Settings\r\n";
    const struct {
        std::string bytes;
        std::optional<ScreenSettings> expected;
    } cases[] = {
        {"My Color Settings!\n255\n65280\n15\n0\n", settings(255, 65280, 15, 0)},
        {title + "   1 \r\n  2\r\n  14 \r\n 3\r\n 0\r\n 0\r\n 0\r\n", settings(1, 2, 14, 3)},
        {"Colour\r\n 1\r\n 2\r\n 14\r\n 3\r\n", std::nullopt},
        {"", std::nullopt},
        {title, defaults},
        {title + " 1\r\n 2\r\n", settings(1, 2, 14, defaults.machine_colour)},
        {title + "\r\n 2\r\n\r\nred\r\n", settings(defaults.fore_colour, 2, 14, defaults.machine_colour)},
        {title + " 1\r\n 2\r\n 99\r\n 3\r\n", settings(1, 2, 15, 3)},
        {title + " 1\r\n 2\r\n-8\r\n 3\r\n", settings(1, 2, 13, 3)},
        {title + "-1\r\n 16777216\r\nbig\r\n1e99\r\n", defaults},
        {title + std::string(9000, '\0'), defaults},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.substr(0, 60));
        std::ofstream(path, std::ios::binary) << c.bytes;
        EXPECT_EQ(read_screen_settings(path), c.expected);
        EXPECT_EQ(file_bytes(path), c.bytes);
    }
    const ScreenSettings set = settings(0xFFFFFF, 0, 13.5, 0xC8C8C0);
    write_screen_settings(path, set);
    EXPECT_EQ(file_bytes(path), title + " 16777215\r\n 0\r\n 13.5\r\n 13158592\r\n-1\r\n-1\r\n-1\r\n");
    EXPECT_EQ(read_screen_settings(path), set);
}

}  // namespace
}  // namespace ampdesk
