// "mhelp.txt" in all the shapes it can come in.
#include "controlhead/help_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace ampdesk {
namespace {

namespace fs = std::filesystem;

std::string content(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class HelpFile : public testing::Test {
  protected:
    HelpFile() {
        for (const auto& folder : {own_, shipped_}) fs::create_directories(folder);
        options_.folder = own_.string();
        options_.shipped_folder = shipped_.string();
    }
    ~HelpFile() override { fs::remove_all(base_); }

    static void put(const fs::path& folder, const std::string& bytes) {
        std::ofstream(folder / "mhelp.txt", std::ios::binary) << bytes;
    }

    const fs::path base_ = fs::path(testing::TempDir()) / "ampdesk_help_file";
    const fs::path own_ = base_ / "own";
    const fs::path shipped_ = base_ / "shipped";
    HeadOptions options_;
};

std::string repeated(const std::string& line, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) text += line;
    return text;
}

// A section that leaks into the next, a text cut or padded wrongly, a store without an end.
TEST_F(HelpFile, FindsTheSectionOfTheScreen) {
    const std::string padded = "abc                 ";
    const struct {
        const char* name;
        std::string bytes;
        std::size_t lines;
        std::string first;
    } cases[] = {
        {"quotes", "machine help\r\n3\r\n\"abc\"\r\n[END]\r\n", 1, "abc\"                "},
        {"twenty shown", "machine help\r\n3\r\nx \"12345678901234567890\" more\r\n[END]\r\n", 1,
         "12345678901234567890"},
        {"no quote", "machine help\r\n3\r\nabc\r\n[END]\r\n", 1, padded},
        {"line feeds", "the machine help file\n 3 temperatures\n\"abc\n[END]\n", 1, padded},
        {"behind others",
         "machine help\n1\n\"one\n[END]\n2\n\"two\n[END]\n3\n\"abc\n\"de\n[END]\n4\n\"four\n", 2, padded},
        {"no lines", "machine help\n3\n[END]\n4\n\"four\n[END]\n", 0, ""},
        {"no such section", "machine help\n4\n\"four\n[END]\n", 0, ""},
        {"no end mark", "machine help\n3\n\"abc\n", 1, padded},
        {"150 lines", "machine help\n3\n" + repeated("\"abc\n", 150) + "[END]\n", 100, padded},
        {"100000 lines", "machine help\n3\n" + repeated("\"abc\n", 100'000), 100, padded},
        {"bytes", "machine help\n3\n\"\x01\xB0\xFF\n[END]\n", 1, "\x01\xB0\xFF                 "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        put(own_, c.bytes);
        const HelpSection section = read_help(options_, 3);
        EXPECT_FALSE(section.file_missing);
        EXPECT_FALSE(section.refusal);
        ASSERT_EQ(section.lines.size(), c.lines);
        if (c.lines > 0) {
            EXPECT_EQ(section.lines.front(), c.first);
        }
        EXPECT_TRUE(content(own_ / "mhelp.txt") == c.bytes);
    }
}

// A wrong file shown as help, or told as a missing one.
TEST_F(HelpFile, RefusesAFileThatIsNoHelp) {
    const struct {
        std::string bytes;
        std::string text;
    } cases[] = {
        {"", "Input past end of file"},
        {"3\r\n\"abc\"\r\n[END]\r\n", "Invalid file format"},
        {"Machine Help\n3\n\"abc\n[END]\n", "Invalid file format"},
        {std::string(3'000'000, '\0'), "Invalid file format"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        put(own_, c.bytes);
        const HelpSection section = read_help(options_, 3);
        EXPECT_FALSE(section.file_missing);
        ASSERT_TRUE(section.refusal);
        EXPECT_EQ(section.refusal->what(), c.text);
        EXPECT_TRUE(section.lines.empty());
    }
}

// The site's own text must win over the shipped one, and the shipped one must be found.
TEST_F(HelpFile, LooksInTheProgramsFolderFirst) {
    EXPECT_TRUE(read_help(options_, 1).file_missing);
    put(shipped_, "machine help\n1\n\"shipped\n[END]\n");
    EXPECT_EQ(read_help(options_, 1).lines.at(0), "shipped             ");
    put(own_, "machine help\n1\n\"own\n[END]\n");
    EXPECT_EQ(read_help(options_, 1).lines.at(0), "own                 ");
}

// A line of the shipped text that runs over the display's edge, or a section that is missing.
TEST(ShippedHelp, FitsTheDisplay) {
    const fs::path folder = fs::path(AMPDESK_SOURCE_DIR) / "data";
    HeadOptions options;
    options.folder = folder.string();
    for (int screen = 1; screen <= 4; ++screen) {
        const HelpSection section = read_help(options, screen);
        EXPECT_GE(section.lines.size(), 15U) << screen;
        EXPECT_LE(section.lines.size(), 40U) << screen;
    }
    std::ifstream in(folder / "mhelp.txt");
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with('"')) {
            EXPECT_EQ(line.size(), 22U) << line;
        }
    }
}

}  // namespace
}  // namespace ampdesk
