// Small files, read from anything an operator may pick and written so that the old one survives.
#include "platform/text_file.h"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "platform/run_time_error.h"
#include "tests/platform/far_end.h"
#include "tests/support/full_disk.h"

namespace ampdesk {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

// The number of the run-time error, 0 when there is none.
template <class Action>
int error_of(Action action) {
    try {
        action();
    } catch (const RunTimeError& error) {
        return error.number();
    }
    return 0;
}

std::size_t entries(const std::string& folder) {
    using Iterator = std::filesystem::directory_iterator;
    return static_cast<std::size_t>(std::distance(Iterator(folder), Iterator()));
}

class TextFileTest : public testing::Test {
  protected:
    ScratchFolder folder;
    std::string path = folder / "com1.dat";
};

// Fault: an odd but readable file gives other lines than an editor shows.
TEST_F(TextFileTest, ReadsLinesWhateverEndsThem) {
    const struct {
        std::string bytes;
        Lines lines;
    } cases[] = {
        {"", {}},
        {"RS-485\r\nCOM1:\r\n 6\r\n", {"RS-485", "COM1:", " 6"}},
        {"a\nb\n", {"a", "b"}},
        {"a\r\n\r\n\nb\n", {"a", "", "", "b"}},
        {"a\rb\r\n", {"a\rb"}},
        {"a\r\r\nb\r", {"a\r", "b\r"}},
        {"a\0b\r\n\xB0"s, {"a\0b"s, "\xB0"}},
        {std::string(40000, 'x') + "\r\ny", {std::string(40000, 'x'), "y"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes.substr(0, 40));
        folder.put("com1.dat", c.bytes);
        EXPECT_EQ(read_text_lines(path), c.lines);
        EXPECT_EQ(file_bytes(path), c.bytes);
    }
}

// Fault: a huge file fills the memory, or the cut falls beside the limit.
TEST_F(TextFileTest, ReadsNoFurtherThanTheLimit) {
    folder.put("com1.dat", "one\r\ntwo\r\nthree\r\n");
    EXPECT_EQ(read_text_lines(path, 7), (Lines{"one", "tw"}));
    EXPECT_EQ(read_text_lines(path, 10), (Lines{"one", "two"}));
    EXPECT_EQ(read_text_lines(path, 0), Lines{});
}

// Fault: a name that is no readable file blocks, crashes, or is reported as something else; writing
// replaces a device or a folder.
TEST_F(TextFileTest, RefusesWhatIsNoOrdinaryFile) {
    folder.put("com1.dat", "x");
    ASSERT_EQ(mkfifo((folder / "queue").c_str(), 0644), 0);
    std::filesystem::create_symlink("loop", folder / "loop");
    const struct {
        std::string name;
        int reading;
        int writing;
    } cases[] = {
        {folder / "none", 53, 0},
        {"", 53, 53},
        {folder / "no folder/file", 76, 76},
        {path + "/file", 76, 76},
        {folder.path(), 57, 57},
        {folder / "queue", 57, 57},
        {"/dev/null", 57, 57},
        {folder / "loop", 57, 57},
        {folder / std::string(300, 'n'), 57, 57},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(error_of([&] { read_text_lines(c.name); }), c.reading);
        EXPECT_EQ(error_of([&] { write_text_lines(c.name, {"new"}); }), c.writing);
    }
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_EQ(entries(folder.path()), 4U) << "a temporary file is left";
}

// Fault: a write-protected file or folder is written all the same, or leaves something behind.
TEST_F(TextFileTest, ObeysWriteProtection) {
    write_text_lines(path, {"old"});
    const uid_t user = geteuid();
    for (const auto& [of_file, of_folder] : {std::pair{0444U, 0777U}, {0666U, 0555U}}) {
        SCOPED_TRACE(of_file);
        ASSERT_EQ(chmod(path.c_str(), of_file), 0);
        ASSERT_EQ(chmod(folder.path().c_str(), of_folder), 0);
        ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0);  // no mode stops the superuser
        const int writing = error_of([&] { write_text_lines(path, {"new"}); });
        ASSERT_EQ(seteuid(user), 0);
        EXPECT_EQ(writing, 70);
        ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
        ASSERT_EQ(chmod(path.c_str(), 0644), 0);
        EXPECT_EQ(file_bytes(path), "old\r\n");
        EXPECT_EQ(entries(folder.path()), 1U);
    }
}

// Fault: saving changes who may read the file, or turns a link into a file.
TEST_F(TextFileTest, KeepsModeAndLinks) {
    folder.put("com1.dat", "old");
    ASSERT_EQ(chmod(path.c_str(), 0660), 0);
    std::filesystem::create_directory(folder / "links");
    std::filesystem::create_symlink("../com1.dat", folder / "links/near");
    std::filesystem::create_symlink(folder / "links/near", folder / "far");
    std::filesystem::create_symlink("com2.dat", folder / "unborn");
    write_text_lines(folder / "far", {"new"});
    write_file_bytes(folder / "unborn", "\n\0"s);
    EXPECT_EQ(file_bytes(path), "new\r\n");
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0660));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "links/near"));
    EXPECT_EQ(file_bytes(folder / "com2.dat"), "\n\0"s);
    EXPECT_EQ(std::filesystem::status(folder / "com2.dat").permissions(), std::filesystem::perms(0644));
    EXPECT_EQ(entries(folder.path()), 5U);
}

// Fault: a copy differs in some bytes, or a failed one harms its target.
TEST_F(TextFileTest, CopiesByteForByte) {
    std::string bytes;
    for (int i = 0; i < 50000; ++i) bytes += static_cast<char>(i * 7);
    folder.put("com1.dat", bytes);
    copy_file_bytes(path, folder / "copy");
    EXPECT_TRUE(file_bytes(folder / "copy") == bytes);
    copy_file_bytes(path, path);
    EXPECT_TRUE(file_bytes(path) == bytes);
    EXPECT_EQ(error_of([&] { copy_file_bytes(folder / "none", folder / "copy"); }), 53);
    EXPECT_TRUE(file_bytes(folder / "copy") == bytes);
}

// Fault: a full disk costs the old file, leaves half a file, or goes unsaid.
TEST_F(TextFileTest, AFullDiskKeepsTheOldFile) {
    const ScratchFolder elsewhere;
    const std::string large(1 << 18, 'n');
    elsewhere.put("large", large);
    const auto try_to_save = [&](const ScratchFolder& full) {
        const std::string file = full / "com1.dat";
        write_text_lines(file, {"old"});
        EXPECT_EQ(error_of([&] { write_file_bytes(file, large); }), 61);
        EXPECT_EQ(error_of([&] { copy_file_bytes(elsewhere / "large", file); }), 61);
        EXPECT_EQ(file_bytes(file).substr(0, 10), "old\r\n");
        EXPECT_EQ(entries(full.path()), 1U) << "a temporary file is left";
    };
    {
        const FullDisk full(65536);
        try_to_save(folder);
    }
    // And a disk that is full, where the user may mount one.
    const ScratchFolder disk;
    if (mount("none", disk.path().c_str(), "tmpfs", 0, "size=160k") == 0) {
        try_to_save(disk);
        umount2(disk.path().c_str(), MNT_DETACH);
    }
}

// Fault: a crash or a power cut in the middle of saving leaves an empty or a torn file.
TEST_F(TextFileTest, AKillWhileSavingLeavesAWholeFile) {
    const Lines small(50, "old");
    const Lines large(20000, "new line");
    write_text_lines(path, small);
    for (int round = 0; round < 20; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            while (error_of([&] {
                       write_text_lines(path, large);
                       write_text_lines(path, small);
                   }) == 0) {
            }
            _exit(1);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(3 + round));
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child could not save";
        const Lines found = read_text_lines(path);
        EXPECT_TRUE(found == small || found == large) << found.size() << " lines";
    }
}

}  // namespace
}  // namespace ampdesk
