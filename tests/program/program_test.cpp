// The program as a person starts it, on a line of simulated amplifiers that are a program, too, and without a
// screen: what only main() wires together.
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/text_file.h"
#include "tests/platform/far_end.h"
#include "tests/support/running_ampsim.h"

namespace ampdesk {
namespace {

// Without a screen, or on one whose every picture becomes a file in the current folder.
ChildProgram start(const ScratchFolder& folder, std::vector<std::string> more = {},
                   const char* screen = "offscreen") {
    setenv("QT_QPA_PLATFORM", screen, 1);
    setenv("QT_DEBUG_BACKINGSTORE", "1", 1);
    std::signal(SIGHUP, SIG_DFL);  // whoever runs the tests may have it ignored
    std::vector<std::string> arguments = {AMPDESK_PROGRAM, "--folder", folder.path()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return ChildProgram(arguments);
}

// Looked at again and again, in real time, for ten seconds at most.
bool comes(const std::function<bool()>& condition) {
    for (int i = 0; i < 1000 && !condition(); ++i) usleep(10'000);
    return condition();
}

// A line that passes on what is said, and keeps it.
class Tap {
  public:
    explicit Tap(const std::string& device) : far_(open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
    const std::string& device() const { return near_.device(); }
    const std::string& asked() {
        const std::string request = near_.receive(4096, 0);
        asked_ += request;
        if (!request.empty() && write(far_.get(), request.data(), request.size()) < 0)
            ADD_FAILURE() << "the simulator has gone";
        near_.send(read_some(far_.get(), 4096, 0));
        return asked_;
    }

  private:
    FarEnd near_;
    Descriptor far_;
    std::string asked_;
};

// Fault: the port of the command line or of "ampdesk.ini", the amplifier files, or the terminal's line are
// not used; a signal at the end, the one of a logout too, loses the windows' places and the panels' colours.
TEST(Program, OpensItsFilesAndKeepsEverythingAtASignal) {
    for (const int signal : {SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        const ScratchFolder folder;
        const RunningAmpsim ampsim({"--address", "1,2", "--link", folder / "line"});
        ASSERT_NE(ampsim.answer(), "");
        Tap line(folder / "line");
        FarEnd remote;
        folder.put("com1001.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n");
        folder.put("com1002.dat", "RS-485\r\nCOM1:\r\n6\r\n2\r\n");
        folder.put("ampdesk.dat", "ampdesk settings\r\n2\r\n");
        folder.put("ampdesk.ini", "[ports]\r\nCOM1=/dev/null\r\nCOM2=" + remote.device() + "\r\n");
        ChildProgram program =
            start(folder, {"--port", "COM1:=" + line.device(), "com1001.dat", "com1002.dat"});
        // The second one's analog block once more: its panel shows its first screen, and has something to
        // keep.
        const std::string analog = "\x01\x02\x01\x12";
        EXPECT_TRUE(comes([&] {
            const std::string& asked = line.asked();
            return asked.find(analog) != asked.rfind(analog);
        }));
        remote.send("\x06\x06>2,RDSTAT\r");
        std::string answer;
        EXPECT_TRUE(comes([&] {
            line.asked();
            answer += remote.receive(100, 0);
            return answer.ends_with("\r\n");
        }));
        EXPECT_EQ(answer, "No response from amplifier, check 422/485 connection to the amplifier\r\n");
        EXPECT_EQ(program.end(signal), 0);
        for (const char* name : {"set1001.dat", "set1002.dat", "layout.dat"})
            EXPECT_TRUE(file_exists(folder / name)) << name;
    }
}

// Fault: a second program in the same folder is a second master on the bus, also when the lock of the first
// is old and the folder on a server that holds no file locks; or it ends without its word, which a person has
// to see.
TEST(Program, IsAloneInItsFolder) {
    const ScratchFolder folder;
    ChildProgram first = start(folder);
    const std::string lock = folder / "ampdesk.lock";
    ASSERT_TRUE(comes([&] { return file_bytes(lock).ends_with('\n'); }));
    const std::string holder = file_bytes(lock);
    std::filesystem::remove(lock);
    folder.put("ampdesk.lock", holder);
    std::filesystem::last_write_time(lock,
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(48));
    ChildProgram second = start(folder, {}, "minimal");
    EXPECT_TRUE(comes([&] { return file_exists(folder / "output0000.png"); }));
    EXPECT_EQ(second.end(SIGTERM), 1);
    EXPECT_EQ(first.end(SIGTERM), 0);
    EXPECT_EQ(start(folder, {"--port", "COM5:=/dev/null"}).end(), 2) << "a mistyped argument is passed over";
}

}  // namespace
}  // namespace ampdesk
