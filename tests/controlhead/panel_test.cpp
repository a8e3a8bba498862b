// What the panel makes of the texts it is given, the fault log, and "set….dat" against literal bytes.
#include "controlhead/panel.h"

#include <gtest/gtest.h>

#include <functional>

#include "controlhead/fault_log.h"
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
    const char* legends[] = {"SETUP", "INFO", "HELP", "MORE"};
    for (int key = 0; key < 4; ++key) EXPECT_EQ(panel.legend(key), legends[key]);
    EXPECT_EQ(panel.legend(4), "");
}

// A line, lamp or colour that changes and is not seen to, or a lamp beside the panel that is written to.
TEST(Panel, DiffersInWhatIsSeen) {
    const std::function<void(Panel&)> changes[] = {
        [](Panel& panel) { panel.set_line(1, "x"); },
        [](Panel& panel) { panel.set_lamp(8, LampColour::red); },
        [](Panel& panel) {
            panel.set_scroll({true, 0, 10, 3});
        },
        [](Panel& panel) { panel.hide_scroll(); },
        [](Panel& panel) { panel.set_gauge(5.0); },
        [](Panel& panel) { panel.set_key_name(2, "Next page"); },
        [](Panel& panel) { panel.set_look({.fore_colour = 1}); },
    };
    Panel panel;
    for (const auto& change : changes) {
        const Panel before = panel;
        change(panel);
        EXPECT_NE(panel, before);
        const Panel after = panel;
        change(panel);
        panel.set_lamp(9, LampColour::red);
        EXPECT_EQ(panel, after);
    }
    EXPECT_EQ(panel.scroll(), (ScrollBar{false, 0, 10, 3}));
}

// Catches a wrong width, order or count.
TEST(FaultLog, KeepsTheNewestFirst) {
    FaultLog log;
    for (int minute = 0; minute < 120; ++minute) {
        log.log_fault({.hour = 9, .minute = minute % 60}, minute == 118 ? "a text of fifteen" : "short");
        EXPECT_EQ(log.count(), std::min(minute + 1, 98));
    }
    EXPECT_EQ(log.entry(0), "9:59 short       ");
    EXPECT_EQ(log.entry(1), "9:58 a text of fi");
    EXPECT_EQ(log.entry(98), "9:21 short       ");
    log.log_fault({.hour = 9, .minute = 5}, "123456789012345");
    EXPECT_EQ(log.entry(0), "9:5 1234567890123");
}

ScreenSettings settings(std::int32_t fore, std::int32_t back, double font, std::int32_t machine) {
    return {.fore_colour = fore, .back_colour = back, .font_size = font, .machine_colour = machine};
}

// A damaged file that is taken for a sound one and overwritten, a colour that wraps, a font the display has
// no room for, a number without its leading blank, a file that does not come back as it was written.
TEST(ScreenSettingsFile, IsTakenWholeOrNotAtAll) {
    const ScratchFolder folder;
    const std::string path = folder / "set1234.dat";
    const std::string title = "Color Settings\r\n";
    const struct {
        std::string bytes;
        std::optional<ScreenSettings> expected;
    } cases[] = {
        {"My Color Settings!\n255\n65280\n15\n0\n", settings(255, 65280, 15, 0)},
        {title + "   1 \r\n  2\r\n  14 \r\n 3\r\n 0\r\n 0\r\n 0\r\n", settings(1, 2, 14, 3)},
        {"Colour\r\n 1\r\n 2\r\n 14\r\n 3\r\n", std::nullopt},
        {"", std::nullopt},
        {title + " 1\r\n 2\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\n", std::nullopt},
        {title + "\r\n 2\r\n 14\r\n 3\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n -\r\n 3\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\nred 1\r\n", std::nullopt},
        {title + " 2147483648\r\n 2\r\n 14\r\n 3\r\n", std::nullopt},
        {title + " 1\r\n 1e99\r\n 14\r\n 3\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\n-2147483649\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\n-2147483623\r\n", std::nullopt},
        {title + "-1\r\n 2\r\n 14\r\n 3\r\n", std::nullopt},
        {title + "-2147483648\r\n-2147483624\r\n 14\r\n 2147483647\r\n",
         settings(std::numeric_limits<std::int32_t>::min(), -2147483624, 14, 0x7FFFFFFF)},
        {title + " 1\r\n 2\r\n 99\r\n 3\r\n", settings(1, 2, 15, 3)},
        {title + " 1\r\n 2\r\n 8\r\n 3\r\n", settings(1, 2, 13, 3)},
        {title + " 1\r\n 2\r\n-8\r\n 3\r\n", std::nullopt},
        {title + " 1\r\n 2\r\n 14\r\n 3", std::nullopt},
        {title + std::string(9000, '\0'), std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.substr(0, 60));
        std::ofstream(path, std::ios::binary) << c.bytes;
        EXPECT_EQ(read_screen_settings(path), c.expected);
        EXPECT_EQ(file_bytes(path), c.bytes);
    }
    const ScreenSettings set = settings(0xFFFFFF, 0, 13.5, -2147483633);
    write_screen_settings(path, set);
    EXPECT_EQ(file_bytes(path), title + " 16777215\r\n 0\r\n 13.5\r\n-2147483633\r\n-1\r\n-1\r\n-1\r\n");
    EXPECT_EQ(read_screen_settings(path), set);
}

// A window's white taken for its text's black: a display that nobody can read.
TEST(ScreenSettingsFile, ColoursOfTheSystemsPalette) {
    constexpr std::int32_t k_palette = std::numeric_limits<std::int32_t>::min();
    for (const auto& [setting, shown] :
         std::vector<std::pair<std::int32_t, std::uint32_t>>{{k_palette + 5, 0xFFFFFF},
                                                             {k_palette + 8, 0},
                                                             {k_palette + 15, 0xC0C0C0},
                                                             {k_palette + 24, 0xE1FFFF},
                                                             {0xFF, 0xFF},
                                                             {0x0200FF00, 0xFF00}})
        EXPECT_EQ(shown_colour(setting), shown) << setting;
}

}  // namespace
}  // namespace ampdesk
