// The program as a person starts it, on a line of simulated amplifiers, without a screen: what only main()
// wires together.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>

#include "platform/posix/system_clock.h"
#include "platform/text_file.h"
#include "tests/support/child_program.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/served_line.h"

namespace ampdesk {
namespace {

class ProgramTest : public testing::Test {
  protected:
    ProgramTest() {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        sim_.add({.address = 1, .serial = 1001, .noise = 0});
    }
    static ChildProgram start(const ScratchFolder& folder, std::vector<std::string> more = {}) {
        std::vector<std::string> arguments = {AMPDESK_PROGRAM, "--folder", folder.path()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return ChildProgram(arguments);
    }
    // Real time, at most ten seconds.
    template <class Condition>
    static bool comes(Condition condition) {
        for (int i = 0; i < 1000 && !condition(); ++i) usleep(10'000);
        return condition();
    }

    SystemClock clock_;
    demo::SimBus sim_{clock_};
};

// Fault: an amplifier file on the command line is not opened, or the port of "ampdesk.ini" not used; a signal
// at the end, the one of a logout too, loses the windows' places and the panels' colours.
TEST_F(ProgramTest, OpensItsFilesAndKeepsEverythingAtASignal) {
    for (const int signal : {SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        const ScratchFolder folder;
        folder.put("com1001.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n");
        folder.put("ampdesk.ini", "[ports]\r\nCOM1=" + (folder / "line") + "\r\n");
        std::atomic<int> analog_blocks = 0;
        const ServedLine line(sim_, folder / "line", [&](const std::string& reply) {
            analog_blocks += reply.size() > 3 && reply[3] == '\x12' ? 1 : 0;
            return true;
        });
        ChildProgram program = start(folder, {"com1001.dat"});
        EXPECT_TRUE(comes([&] { return analog_blocks >= 2; }));
        EXPECT_EQ(program.end(signal), 0);
        for (const char* name : {"set1001.dat", "layout.dat"})
            EXPECT_TRUE(file_exists(folder / name)) << name;
    }
}

// Fault: `reply_address=checked`, the cure for a line on which amplifiers answer for one another, is read and
// not used.
TEST_F(ProgramTest, ChecksTheAddressOfRepliesWhenToldSo) {
    sim_.find(1)->line.wrong_address = 77;
    const ScratchFolder folder;
    folder.put("com1001.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n");
    const std::string port = "[ports]\r\nCOM1=" + (folder / "line") + "\r\n[amplifier]\r\n";
    for (const bool checked : {false, true}) {
        SCOPED_TRACE(checked);
        folder.put("ampdesk.ini", port + (checked ? "reply_address=checked\r\n" : ""));
        std::atomic<int> replies = 0;
        std::atomic<int> others = 0;  // than those to the first request, for the status
        const ServedLine line(sim_, folder / "line", [&](const std::string& reply) {
            others += reply.size() > 3 && reply[3] == '\x11' ? 0 : 1;
            ++replies;
            return true;
        });
        ChildProgram program = start(folder, {"com1001.dat"});
        EXPECT_TRUE(comes([&] { return replies >= 1; }));
        if (checked)
            usleep(500'000);  // the next request would follow at once
        else
            EXPECT_TRUE(comes([&] { return others > 0; }));
        EXPECT_EQ(others == 0, checked);
        EXPECT_EQ(program.end(SIGTERM), 0);
    }
}

// Fault: a second program in the same folder is a second master on the bus, also when the lock of the first
// is old; or it ends without its word, which a person has to see.
TEST_F(ProgramTest, IsAloneInItsFolder) {
    const ScratchFolder folder;
    ChildProgram first = start(folder);
    const std::string lock = folder / "ampdesk.lock";
    ASSERT_TRUE(comes([&] { return file_exists(lock); }));
    std::filesystem::last_write_time(lock,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(48));
    ChildProgram second = start(folder);
    usleep(700'000);
    EXPECT_TRUE(second.goes_on());
    EXPECT_EQ(second.end(SIGTERM), 1);
    EXPECT_EQ(first.end(SIGTERM), 0);
}

}  // namespace
}  // namespace ampdesk
