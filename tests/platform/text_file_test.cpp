// Small files, read from anything an operator may pick and written so that the old one survives.
#include "platform/text_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "platform/line_file.h"
#include "platform/run_time_error.h"
#include "tests/platform/far_end.h"
#include "tests/support/full_disk.h"

namespace ampdesk {
namespace {

using namespace std::string_literals;
using Lines = std::vector<std::string>;

// The disk that is asked to flush, instead of the real one while `saved` names the file that is saved.
struct {
    std::string saved;
    int error = 0;  // -1 loses bytes without a word
    Lines asked;    // what is flushed, over what stands under the name meanwhile, of how many files there
} disk;

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
    ~TextFileTest() override { disk = {}; }
    ScratchFolder folder;
    std::string path = folder.put("com1.dat", "old");
};

// Fault: an odd but readable file gives other lines than an editor shows; a huge one fills the memory, or the
// cut falls beside the limit.
TEST_F(TextFileTest, ReadsLinesWhateverEndsThem) {
    const std::pair<std::string, Lines> table[] = {
        {"", {}},
        {"RS-485\r\nCOM1:\r\n 6\r\n", {"RS-485", "COM1:", " 6"}},
        {"a\n\r\n\nb\n", {"a", "", "", "b"}},
        {"a\rb\r\r\nb\r", {"a\rb\r", "b\r"}},
        {"a\0b\r\n\xB0"s, {"a\0b"s, "\xB0"}},
        {std::string(40000, 'x') + "\r\ny", {std::string(40000, 'x'), "y"}},
    };
    for (const auto& [bytes, lines] : table) {
        folder.put("com1.dat", bytes);
        EXPECT_EQ(read_text_lines(path), lines);
        EXPECT_EQ(file_bytes(path), bytes);
    }
    folder.put("com1.dat", "one\r\ntwo\r\nthree\r\n");
    EXPECT_EQ(read_text_lines(path, 7), (Lines{"one", "tw"}));
    EXPECT_EQ(read_text_lines(path, 10), (Lines{"one", "two"}));
    EXPECT_EQ(read_text_lines(path, 0), Lines{});
}

// Fault: a name that is no readable file blocks, crashes, or is reported as something else; writing
// replaces a device or a folder.
TEST_F(TextFileTest, RefusesWhatIsNoOrdinaryFile) {
    const FarEnd device;  // one of our own: a fault may replace it
    ASSERT_EQ(mkfifo((folder / "queue").c_str(), 0644), 0);
    std::filesystem::create_symlink("loop", folder / "loop");
    const std::tuple<std::string, int, int> table[] = {
        {folder / "none", 53, 0},
        {"", 53, 53},
        {folder / "no folder/file", 76, 76},
        {path + "/file", 76, 76},
        {folder.path(), 57, 57},
        {folder / "queue", 57, 57},
        {device.device(), 57, 57},
        {folder / "loop", 57, 57},
    };
    for (const auto& [name, reading, writing] : table) {
        EXPECT_EQ(error_of([&file = name] { read_text_lines(file); }), reading) << name;
        EXPECT_EQ(error_of([&file = name] { write_text_lines(file, {"new"}); }), writing) << name;
    }
    EXPECT_EQ(entries(folder.path()), 4U) << "a temporary file is left";
}

// Fault: a write-protected file or folder is written all the same, or leaves something behind.
TEST_F(TextFileTest, ObeysWriteProtection) {
    const uid_t user = geteuid();
    for (const auto& [of_file, of_folder] : {std::pair{0444U, 0777U}, {0666U, 0555U}}) {
        SCOPED_TRACE(of_file);
        ASSERT_EQ(chmod(path.c_str(), of_file), 0);
        ASSERT_EQ(chmod(folder.path().c_str(), of_folder), 0);
        ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0);  // no mode stops the superuser
        EXPECT_EQ(error_of([&] { write_text_lines(path, {"new"}); }), 70);
        ASSERT_EQ(seteuid(user), 0);
        ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
        EXPECT_EQ(file_bytes(path), "old");
        EXPECT_EQ(entries(folder.path()), 1U);
    }
}

// Fault: saving changes who owns or may read the file, or turns a link into a file.
TEST_F(TextFileTest, KeepsModeAndLinks) {
    ASSERT_EQ(chmod(path.c_str(), 0660), 0);
    const bool given = chown(path.c_str(), 65534, 20) == 0;  // away, as only some may
    std::filesystem::create_directory(folder / "links");
    std::filesystem::create_symlink("../com1.dat", folder / "links/near");
    std::filesystem::create_symlink(folder / "links/near", folder / "far");
    std::filesystem::create_symlink("com2.dat", folder / "unborn");
    write_text_lines(folder / "far", {"new"});
    write_file_bytes(folder / "unborn", "\n\0"s);
    EXPECT_EQ(file_bytes(path), "new\r\n");
    struct stat saved {};
    ASSERT_EQ(stat(path.c_str(), &saved), 0);
    EXPECT_EQ(saved.st_uid, given ? 65534 : geteuid());
    EXPECT_EQ(saved.st_mode & 0777U, 0660U);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "links/near"));
    EXPECT_EQ(file_bytes(folder / "com2.dat"), "\n\0"s);
    EXPECT_EQ(std::filesystem::status(folder / "com2.dat").permissions(), std::filesystem::perms(0644));
    EXPECT_EQ(entries(folder.path()), 5U);
}

// Fault: a copy differs in some bytes, or a failed one harms its target; a crash or a power cut in the middle
// of saving leaves an empty or a torn file.
TEST_F(TextFileTest, CopiesAndReplacesWhole) {
    std::string bytes;
    for (int i = 0; i < 50000; ++i) bytes += static_cast<char>(i * 7);
    folder.put("com1.dat", bytes);
    copy_file_bytes(path, folder / "copy");
    copy_file_bytes(path, path);
    EXPECT_EQ(error_of([&] { copy_file_bytes(folder / "none", folder / "copy"); }), 53);
    EXPECT_TRUE(file_bytes(folder / "copy") == bytes);
    EXPECT_TRUE(file_bytes(path) == bytes);
    folder.put("com1.dat", "old");
    disk.saved = path;
    write_text_lines(path, {"new"});
    EXPECT_EQ(disk.asked, (Lines{"new\r\n over old of 3", "folder over new\r\n of 2"}));
}

// Fault: a full or a broken disk costs the old file, leaves half a file, or goes unsaid.
TEST_F(TextFileTest, ADiskThatFailsKeepsTheOldFile) {
    const std::string large(1 << 18, 'n');
    const ScratchFolder elsewhere;
    elsewhere.put("large", large);
    const auto expect_old = [&](int number) {
        EXPECT_EQ(error_of([&] { write_file_bytes(path, large); }), number);
        EXPECT_EQ(error_of([&] { copy_file_bytes(elsewhere / "large", path); }), number);
        EXPECT_EQ(file_bytes(path), "old");
        EXPECT_EQ(entries(folder.path()), 1U) << "a temporary file is left";
    };
    {
        const FullDisk full(65536);
        expect_old(61);
    }
    disk.saved = path;
    for (const auto& [error, number] : {std::pair{ENOSPC, 61}, {EDQUOT, 61}, {EROFS, 70}, {EIO, 57}}) {
        disk.error = error;
        LineWriter writer(elsewhere / "lines");
        EXPECT_EQ(error_of([&] { writer.close(); }), number);
        expect_old(number);
    }
    disk.error = -1;
    expect_old(57);
}

}  // namespace
}  // namespace ampdesk

// Instead of the C library's.
extern "C" int fsync(int file) {
    using ampdesk::disk;
    if (disk.saved.empty())
        return static_cast<int>(syscall(SYS_fsync, file));
    const std::string flushed = "/proc/self/fd/" + std::to_string(file);
    const std::string bytes =
        std::filesystem::is_directory(flushed) ? "folder" : ampdesk::file_bytes(flushed);
    disk.asked.push_back(bytes + " over " + ampdesk::file_bytes(disk.saved) + " of " +
                         std::to_string(ampdesk::entries(std::filesystem::path(disk.saved).parent_path())));
    if (disk.error < 0)
        return ftruncate(file, 1);
    errno = disk.error;
    return disk.error == 0 ? 0 : -1;
}
