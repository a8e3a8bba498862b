// The help file in all the shapes it can come in, and the pages with keys and scroll bar.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "controlhead/comm_faults.h"
#include "controlhead/help_file.h"
#include "controlhead/screens.h"
#include "tests/controlhead/screen_test.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

namespace fs = std::filesystem;

std::string numbered(int lines) {
    std::string text = "machine help\r\n2\r\n\"wrong\"\r\n[END]\r\n3\r\n";
    for (int i = 0; i < lines; ++i) text += "\"line " + std::to_string(i) + "\r\n";
    return text + "[END]\r\n4\r\n\"four\"\r\n";
}

class HelpPages : public ScreenTest {
  protected:
    HelpPages() {
        fs::create_directories(folder_ / "shipped");
        services.options.folder = folder_.string();
        services.options.shipped_folder = (folder_ / "shipped").string();
    }
    static void put(const fs::path& folder, const std::string& bytes) {
        std::ofstream(folder / "mhelp.txt", std::ios::binary) << bytes;
    }
    void expect_from(int first, int count) const {
        expect_numbered(first, count, [](const std::string& n) { return "line " + n; });
    }
    void expect_left() {
        EXPECT_EQ(head.panel.line(4), "WARNINGS   HELP MORE");
        EXPECT_FALSE(head.panel.scroll().visible);
    }
    const ScratchFolder scratch_;
    const fs::path folder_ = scratch_.path();
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
        {"machine help\n4\n\"four\n[END]\n", 0, ""},
        {numbered(150), 100, "line 0              "},
        {numbered(100'000), 100, "line 0              "},
        {"", 0, "Input past end of file"},
        {"3\r\n\"abc\"\r\n[END]\r\n", 0, "Invalid file format"},
        {std::string(3'000'000, '\0'), 0, "Invalid file format"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.substr(0, 80));
        put(folder_, c.bytes);
        const HelpSection section = read_help(services.options, 3);
        ASSERT_EQ(section.lines.size(), c.lines);
        EXPECT_EQ(c.lines > 0 ? section.lines[0] : section.refusal ? section.refusal->what() : "", c.first);
        std::ifstream in(folder_ / "mhelp.txt", std::ios::binary);
        EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(in), {}) == c.bytes);
    }
}

// A shipped text that is not found, or wins over the site's own; lines over the display's edge.
TEST_F(HelpPages, TheShippedTextIsTheSecondChoice) {
    const fs::path ours = (fs::path(TEST_DATA) / "../../data/mhelp.txt").lexically_normal();
    fs::copy_file(ours, folder_ / "shipped/mhelp.txt");
    for (int screen = 1; screen <= 4; ++screen) {
        const std::size_t lines = read_help(services.options, screen).lines.size();
        EXPECT_TRUE(lines >= 15 && lines <= 40) << screen << ": " << lines;
    }
    std::ifstream in(ours);
    for (std::string line; std::getline(in, line);) EXPECT_TRUE(line[0] != '"' || line.size() == 22) << line;
    put(folder_, numbered(1));
    EXPECT_EQ(read_help(services.options, 3).lines.size(), 1U);
}

// A short section that holds the operator or shows what stood there before it.
TEST_F(HelpPages, AnyKeyLeavesAShortSection) {
    for (const int count : {0, 3, 4}) {
        for (std::int16_t key = 0; key <= 4; ++key) {
            SCOPED_TRACE(std::to_string(count) + " lines, key " + std::to_string(key));
            put(folder_, numbered(count));
            open(3, 2);
            expect_from(0, count);
            press(key);
            expect_left();
        }
    }
}

// A page skipped, a line lost at an end, a bar that stands elsewhere or is taken for a key.
TEST_F(HelpPages, ALongSectionScrolls) {
    const struct {
        int lines;
        int stored;
        std::vector<std::pair<std::int16_t, int>> steps;  // key and the line that is then on top
    } cases[] = {{5, 5, {{0, 0}, {1, 1}, {1, 1}, {2, 0}, {3, 1}, {0, 0}}},
                 {150, 100, {{3, 4}, {3, 8}, {2, 4}, {0, 3}, {2, 0}, {2, 0}}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lines);
        const int last = c.stored - 4;
        put(folder_, numbered(c.lines));
        open(3, 2);
        for (const auto& [key, top] : c.steps) {
            press(key);
            expect_from(top, c.stored);
            EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, last, top}));
        }
        for (int position = 1; position <= last; ++position) {
            VScroll1_Change(head, position);
            expect_from(position, c.stored);
        }
        press(3);
        DispCommError(head, 1);
        attach_help(head, k_key_refresh);
        expect_from(last, c.stored);
        EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, last, last}));
        scroll_help(head, static_cast<std::int16_t>(c.stored - 1));
        expect_from(c.stored - 1, c.stored);
        scroll_help(head, static_cast<std::int16_t>(c.stored));
        expect_left();
    }
}

// A box instead of the page, help that is not left, or a page instead of the box.
TEST_F(HelpPages, TellsWhatIsWrongWithTheFile) {
    open(3, 2);
    EXPECT_EQ(lines(), "No help file found  |" + k_blank + "|Press key to exit   |" + k_blank);
    press(3);
    expect_left();
    put(folder_, "3\r\n\"text\r\n[END]\r\n");
    open(3, 2);
    expect_left();
    EXPECT_EQ(person.take_texts(), std::vector<std::string>{"Invalid file format"});
}

}  // namespace
}  // namespace ampdesk
