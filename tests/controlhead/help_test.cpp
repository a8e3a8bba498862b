// The help file in all the shapes it can come in, and the pages with keys and scroll bar.
#include <filesystem>
#include <fstream>

#include "controlhead/help_file.h"
#include "controlhead/screens.h"
#include "tests/controlhead/head_fixture.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

namespace fs = std::filesystem;

std::string numbered(int lines) {
    std::string text = "machine help\r\n2\r\n\"wrong\"\r\n[END]\r\n3\r\n";
    for (int i = 0; i < lines; ++i) text += "\"line " + std::to_string(i) + "\r\n";
    return text + "[END]\r\n4\r\n\"four\"\r\n";
}

class HelpPages : public HeadTest {
  protected:
    HelpPages() {
        fs::create_directory(scratch_ / "shipped");
        services.options.folder = scratch_.path();
        services.options.shipped_folder = scratch_ / "shipped";
    }
    void put(const std::string& bytes) const { scratch_.put("mhelp.txt", bytes); }
    void expect_left() {
        EXPECT_EQ(head.panel.line(4), "WARNINGS   HELP MORE");
        EXPECT_FALSE(head.panel.scroll().visible);
    }
    const ScratchFolder scratch_;
};

// A section that leaks into the next, a text cut wrongly, a store without an end, a file changed.
TEST_F(HelpPages, TheFileInAllShapes) {
    const std::string abc = "abc                 ";
    const struct {
        std::string bytes;
        std::size_t lines;
        std::string first;  // or why the file is refused
    } cases[] = {
        {"3 machine help\r\n3\r\nx \"12345678901234567890\" more\r\n[END]\r\n", 1, "12345678901234567890"},
        {"the machine help file\n 3 temperatures\nabc\n[END]\n", 1, abc},
        {"machine help\n1\n\"one\n[END]\n3\n\"abc\n\"\x01\n[END]\n4\n\"four\n", 2, abc},
        {"machine help\n3\n\"abc", 1, abc},
        {"machine help\n3\nx \"abc\" more\n", 1, abc},
        {"machine help\n3\n\"say \"hi\" now\" more\n", 1, "say \"hi\" now        "},
        {"machine help\n4\n\"four\n[END]\n", 0, ""},
        {numbered(150), 100, "line 0              "},
        {numbered(100'000), 100, "line 0              "},
        {"", 0, "Input past end of file"},
        {"3\r\n\"abc\"\r\n[END]\r\n", 0, "Invalid file format"},
        {std::string(3'000'000, '\0'), 0, "Invalid file format"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.substr(0, 80));
        put(c.bytes);
        const HelpSection section = read_help(services.options, 3);
        ASSERT_EQ(section.lines.size(), c.lines);
        EXPECT_EQ(c.lines > 0 ? section.lines[0] : section.refusal ? section.refusal->what() : "", c.first);
        EXPECT_TRUE(file_bytes(scratch_ / "mhelp.txt") == c.bytes);
    }
}

// A shipped text that is not found, or wins over the site's own; lines over the display's edge.
TEST_F(HelpPages, TheShippedTextIsTheSecondChoice) {
    const std::string ours = TEST_DATA "/../../data/mhelp.txt";
    fs::copy_file(ours, scratch_ / "shipped/mhelp.txt");
    for (int screen = 1; screen <= 4; ++screen) {
        const std::size_t lines = read_help(services.options, screen).lines.size();
        EXPECT_TRUE(lines >= 15 && lines <= 40) << screen << ": " << lines;
    }
    std::ifstream in(ours);
    for (std::string line; std::getline(in, line);) EXPECT_TRUE(line[0] != '"' || line.size() == 22) << line;
    put(numbered(1));
    EXPECT_EQ(read_help(services.options, 3).lines.size(), 1U);
}

// A short section that holds the operator or shows what stood there before it, or a bar beside nothing.
TEST_F(HelpPages, AnyKeyLeavesAShortSection) {
    for (const int count : {0, 3, 4})
        for (std::int16_t key = 0; key <= 4; ++key) {
            SCOPED_TRACE(std::to_string(count) + " lines, key " + std::to_string(key));
            put(numbered(count));
            open(3, 2);
            for (int i = 0; i < 4; ++i) {
                const std::string text = i < count ? "line " + std::to_string(i) : "      ";
                EXPECT_EQ(head.panel.line(i + 1), text + std::string(14, ' '));
            }
            EXPECT_EQ(head.panel.scroll().visible, count > 0);
            press({key});
            expect_left();
        }
}

// A box instead of the page, help that is not left, or a page instead of the box.
TEST_F(HelpPages, TellsWhatIsWrongWithTheFile) {
    const std::string blank(20, ' ');
    open(3, 2);
    EXPECT_EQ(lines(), "No help file found  |" + blank + "|Press key to exit   |" + blank);
    press({3});
    expect_left();
    put("3\r\n\"text\r\n[END]\r\n");
    open(3, 2);
    expect_left();
    ASSERT_EQ(person.messages.size(), 1U);
    EXPECT_EQ(person.messages[0].detail, "JEX Amplifier 1234: mhelp.txt");
    EXPECT_EQ(person.take_texts(), Texts{"Invalid file format"});
}

}  // namespace
}  // namespace ampdesk
