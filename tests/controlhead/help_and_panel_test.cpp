// The help file in all the shapes it can come in, and the pages of a short section; what the panel makes of
// the texts it is given, and "set….dat" against literal bytes.
#include <gtest/gtest.h>

#include <limits>

#include "controlhead/help_file.h"
#include "controlhead/panel.h"
#include "tests/controlhead/head_fixture.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

std::string numbered(int lines) {
    std::string text = "machine help\r\n2\r\n\"wrong\"\r\n[END]\r\n3\r\n";
    for (int i = 0; i < lines; ++i) text += "\"line " + std::to_string(i) + "\r\n";
    return text + "[END]\r\n4\r\n\"four\"\r\n";
}

struct HelpPages : HeadTest {
    void put(const std::string& bytes) const { folder.put("mhelp.txt", bytes); }
    void expect_left() const {
        EXPECT_EQ(head.panel.line(4), "WARNINGS   HELP MORE");
        EXPECT_FALSE(head.panel.scroll().visible);
    }
};

// A section that leaks into the next, a text cut wrongly, a store without an end.
TEST_F(HelpPages, TheFileInAllShapes) {
    const std::string abc = "abc                 ";
    // The first line, or why the file is refused.
    const std::tuple<std::string, std::size_t, std::string> cases[] = {
        {"3 machine help\r\n3\r\nx \"12345678901234567890\" more\r\n[END]\r\n", 1, "12345678901234567890"},
        {"the machine help file\n 3 temperatures\nabc\n[END]\n", 1, abc},
        {"machine help\n1\n\"one\n[END]\n3\n\"abc\n\"\x01\n[END]\n4\n\"four\n[END]\n3\n\"more\n", 2, abc},
        {"machine help\n3\n\"say \"hi\" now\" more\n", 1, "say \"hi\" now        "},
        {"machine help\n4\n\"four\n[END]\n", 0, ""},
        {numbered(150), 100, "line 0              "},
        {"", 0, "Input past end of file"},
        {"3\r\n\"abc\"\r\n[END]\r\n", 0, "Invalid file format"},
    };
    for (const auto& [bytes, lines, first] : cases) {
        put(bytes);
        const HelpSection section = read_help(services.options, 3);
        ASSERT_EQ(section.lines.size(), lines) << bytes;
        EXPECT_EQ(lines > 0 ? section.lines[0] : section.refusal ? section.refusal->what() : "", first);
    }
}

// A shipped text that is not found, wins over the site's own, or has lines over the display's edge.
TEST_F(HelpPages, TheShippedTextIsTheSecondChoice) {
    services.options.shipped_folder = TEST_DATA "/../../data";
    for (int screen = 1; screen <= 4; ++screen)
        EXPECT_GT(read_help(services.options, screen).lines.size(), 15U) << screen;
    std::istringstream shipped(file_bytes(services.options.shipped_folder + "/mhelp.txt"));
    for (std::string line; std::getline(shipped, line);) EXPECT_TRUE(line[0] != '"' || line.size() == 22);
    put(numbered(1));
    EXPECT_EQ(read_help(services.options, 3).lines.size(), 1U);
}

// A short section that holds the operator, shows what stood there before it, or a bar beside nothing.
TEST_F(HelpPages, AnyKeyLeavesAShortSection) {
    for (const int count : {0, 3, 4})
        for (std::int16_t key = 0; key <= 4; ++key) {
            put(numbered(count));
            open(3, 2);
            for (int i = 0; i < 4; ++i) {
                const std::string text = i < count ? "line " + std::to_string(i) : "      ";
                EXPECT_EQ(head.panel.line(i + 1), text + std::string(14, ' ')) << count;
            }
            EXPECT_EQ(head.panel.scroll().visible, count > 0);
            EXPECT_EQ(control.panel().key_name(0), "Leave");
            press({key});
            expect_left();
        }
}

// A box instead of the page, help that is not left, or a page instead of the box.
TEST_F(HelpPages, TellsWhatIsWrongWithTheFile) {
    services.options.shipped_folder = folder / "none";
    open(3, 2);
    EXPECT_EQ(lines(), "No help file found  |                    |Press key to exit   |                    ");
    press({3});
    expect_left();
    put("3\r\n\"text\r\n[END]\r\n");
    open(3, 2);
    expect_left();
    EXPECT_EQ(person.messages.at(0).detail, "JEX Amplifier 1234: mhelp.txt");
    EXPECT_EQ(person.take_texts(), Texts{"Invalid file format"});
}

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
