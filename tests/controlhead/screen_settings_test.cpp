// Reading and writing of "set….dat" against literal bytes.
#include "controlhead/screen_settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/run_time_error.h"

namespace ampdesk {
namespace {

class ScreenSettingsFile : public testing::Test {
  protected:
    ~ScreenSettingsFile() override { std::filesystem::remove(path_); }

    void put(const std::string& bytes) const { std::ofstream(path_, std::ios::binary) << bytes; }
    std::string bytes() const {
        std::ifstream in(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    const std::string path_ = testing::TempDir() + "ampdesk_set1234.dat";
};

ScreenSettings settings(std::uint32_t fore, std::uint32_t back, double font, std::uint32_t machine) {
    return {.fore_colour = fore, .back_colour = back, .font_size = font, .machine_colour = machine};
}

// A bad line that spoils the good ones, a colour that wraps, a font the display has no room for.
TEST_F(ScreenSettingsFile, TakesWhatIsGoodAndKeepsTheDefaultForTheRest) {
    const ScreenSettings defaults;
    const struct {
        const char* name;
        std::string bytes;
        std::optional<ScreenSettings> expected;
    } cases[] = {
        {"as written", "Color Settings\r\n 255\r\n 65280\r\n 13.5\r\n 16711680\r\n-1\r\n-1\r\n-1\r\n",
         settings(255, 65280, 13.5, 16711680)},
        {"line feeds only", "Color Settings\n255\n65280\n15\n0\n", settings(255, 65280, 15, 0)},
        {"blanks around", "Color Settings  \r\n   1 \r\n  2\r\n  14 \r\n 3\r\n", settings(1, 2, 14, 3)},
        {"flags of 0", "Color Settings\r\n 1\r\n 2\r\n 14\r\n 3\r\n 0\r\n 0\r\n 0\r\n",
         settings(1, 2, 14, 3)},
        {"title within", "My Color Settings!\r\n 1\r\n 2\r\n 14\r\n 3\r\n", settings(1, 2, 14, 3)},
        {"wrong title", "Colour\r\n 1\r\n 2\r\n 14\r\n 3\r\n", std::nullopt},
        {"empty", "", std::nullopt},
        {"title alone", "Color Settings\r\n", defaults},
        {"cut short", "Color Settings\r\n 1\r\n 2\r\n", settings(1, 2, 14, defaults.machine_colour)},
        {"empty line", "Color Settings\r\n\r\n 2\r\n\r\n 3\r\n", settings(defaults.fore_colour, 2, 14, 3)},
        {"font too big", "Color Settings\r\n 1\r\n 2\r\n 99\r\n 3\r\n", settings(1, 2, 15, 3)},
        {"font too small", "Color Settings\r\n 1\r\n 2\r\n-8\r\n 3\r\n", settings(1, 2, 13, 3)},
        {"no colours", "Color Settings\r\n-1\r\n 16777216\r\nbig\r\n1e99\r\n", defaults},
        {"letters", "Color Settings\r\nred\r\n 2\r\n 14\r\nx\r\n",
         settings(defaults.fore_colour, 2, 14, defaults.machine_colour)},
        {"binary", "Color Settings\r\n" + std::string(9000, '\0'), defaults},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        put(c.bytes);
        EXPECT_EQ(read_screen_settings(path_), c.expected);
        EXPECT_EQ(bytes(), c.bytes);
    }
}

// A number without the blank in front of it, a lost line, a file that does not come back the same.
TEST_F(ScreenSettingsFile, WritesEightLinesAndReadsThemBack) {
    const ScreenSettings set = settings(0xFFFFFF, 0, 13.5, 0xC8C8C0);
    write_screen_settings(path_, set);
    EXPECT_EQ(bytes(), "Color Settings\r\n 16777215\r\n 0\r\n 13.5\r\n 13158592\r\n-1\r\n-1\r\n-1\r\n");
    EXPECT_EQ(read_screen_settings(path_), set);
    EXPECT_EQ(screen_settings_name("1234"), "set1234.dat");
}

// A missing file taken for a corrupt one.
TEST_F(ScreenSettingsFile, TellsAMissingFile) {
    EXPECT_THROW(read_screen_settings(path_), RunTimeError);
}

}  // namespace
}  // namespace ampdesk
