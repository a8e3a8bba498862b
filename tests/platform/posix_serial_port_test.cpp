// The serial line over pseudo-terminals: bytes both ways, exact limits, unplugging, replugging, and
// no processor time while it waits.
#include "platform/posix/posix_serial_port.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "platform/posix/line_modes.h"
#include "platform/posix/system_clock.h"
#include "tests/platform/far_end.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using namespace std::string_literals;
using std::chrono::milliseconds;
using std::chrono::seconds;

bool driver_is_deaf = false;    // to settings
bool device_is_broken = false;  // for who reads
int full_reads = 0;             // so many more fill whatever they are given

class PosixSerialPortTest : public testing::Test {
  protected:
    void open() { ASSERT_EQ(port.open({.device = far.device()}).cause, ""); }
    Instant in(milliseconds time) { return clock.now() + time; }

    SystemClock clock;
    FarEnd far;
    PosixSerialPort port{clock};
};

// Fault: the terminal driver changes, swallows or echoes some byte values; a late answer, or what came in
// before the port was opened, is taken for the next reply; a line that chatters without end holds the caller.
TEST_F(PosixSerialPortTest, CarriesEveryByteBothWaysUnchanged) {
    open();
    far.send("old");
    EXPECT_EQ(port.wait_readable(in(seconds(1))), WaitResult::data);
    open();
    std::string all;
    for (int value = 0; value < 256; ++value) all += static_cast<char>(value);
    EXPECT_EQ(port.write(all, in(seconds(1))), PortError::none);
    EXPECT_EQ(far.receive(all.size()), all);
    far.send(all);
    std::string received;
    while (received.size() < all.size() && port.wait_readable(in(seconds(1))) == WaitResult::data)
        received += port.read_waiting();
    EXPECT_EQ(received, all);
    far.send("late");
    EXPECT_EQ(port.wait_readable(in(seconds(1))), WaitResult::data);
    port.discard_input();
    EXPECT_EQ(port.wait_readable(in(milliseconds(20))), WaitResult::timed_out);
    full_reads = 100;
    EXPECT_EQ(port.read_waiting().size(), 65536U);
    port.discard_input();
    EXPECT_EQ(full_reads, 100 - 2 * 16);
    full_reads = 0;
}

// Fault: a setting is lost or mixed up on the way to the driver, or one that no driver has is taken.
TEST(LineModes, TellTheDriverEverySetting) {
    const std::tuple<PortSettings, tcflag_t, tcflag_t> table[] = {
        {{"", 110, 'n', 5, 1}, B110 | CS5, 0},
        {{"", 300, 'e', 6, 1}, B300 | CS6 | PARENB, INPCK},
        {{"", 600, 'o', 7, 1}, B600 | CS7 | PARENB | PARODD, INPCK},
        {{"", 1200, 'n', 8, 2}, B1200 | CS8 | CSTOPB, 0},
        {{"", 2400, 'o', 8, 2}, B2400 | CS8 | CSTOPB | PARENB | PARODD, INPCK},
        {{"", 4800, 'n', 8, 1, Handshake::xon_xoff}, B4800 | CS8, IXON | IXOFF},
        {{"", 9600, 'n', 8, 1, Handshake::rts_cts}, B9600 | CS8 | CRTSCTS, 0},
        {{"", 19200, 'e', 7, 1, Handshake::xon_xoff}, B19200 | CS7 | PARENB, INPCK | IXON | IXOFF},
    };
    for (const auto& [settings, control, input] : table) {
        SCOPED_TRACE(settings_text(settings));
        const termios modes = line_modes(settings).value();
        EXPECT_EQ(modes.c_cflag, CREAD | CLOCAL | HUPCL | control);
        EXPECT_EQ(modes.c_iflag, input);
        EXPECT_EQ(modes.c_oflag | modes.c_lflag, 0U);
        EXPECT_EQ(std::string(modes.c_cc, modes.c_cc + 10), "\0\0\0\0\0\0\x01\0\x11\x13"s);
        EXPECT_EQ(cfgetispeed(&modes), cfgetospeed(&modes));
    }
    const PortSettings nowhere[] = {{"", 9601},         {"", 9600, 'm'},       {"", 9600, 'n', 4},
                                    {"", 9600, 'n', 9}, {"", 9600, 'n', 8, 0}, {"", 9600, 'n', 8, 3}};
    for (const PortSettings& none : nowhere) EXPECT_FALSE(line_modes(none)) << settings_text(none);
}

// Fault: a driver that changed what was asked goes unnoticed, or a pseudo-terminal is held to what it
// cannot have.
TEST(LineModes, NoticeWhatADriverDidNotKeep) {
    const termios wanted = line_modes({"", 19200, 'e', 7, 1, Handshake::rts_cts}).value();
    const std::tuple<tcflag_t termios::*, std::vector<tcflag_t>, bool, bool> table[] = {
        {&termios::c_cflag, {0, HUPCL}, true, true},
        {&termios::c_cflag, {CS6, PARENB, PARODD}, false, true},
        {&termios::c_cflag, {B19200 ^ B9600, CREAD, CLOCAL, CSTOPB, CRTSCTS}, false, false},
        {&termios::c_iflag, {IGNPAR, PARMRK, ISTRIP, INLCR, IGNCR, ICRNL, IXON, IXOFF}, false, false},
        {&termios::c_oflag, {OPOST}, false, false},
        {&termios::c_lflag, {ICANON, ECHO, ISIG, IEXTEN}, false, false},
    };
    for (const auto& [flags, changes, on_line, on_pseudo_terminal] : table)
        for (const tcflag_t change : changes) {
            SCOPED_TRACE(change);
            termios kept = wanted;
            kept.*flags ^= change;
            EXPECT_EQ(modes_kept(wanted, kept, false), on_line);
            EXPECT_EQ(modes_kept(wanted, kept, true), on_pseudo_terminal);
        }
    for (const int index : {VMIN, VTIME}) {
        termios kept = wanted;
        kept.c_cc[index] ^= 1;
        EXPECT_FALSE(modes_kept(wanted, kept, true));
    }
}

// Fault: the settings do not reach the driver, or what a pseudo-terminal cannot have is asked of it; the
// program's children hold the line, or it becomes the terminal that ends the program when it is unplugged.
TEST_F(PosixSerialPortTest, SetsTheLineAndNothingElse) {
    const auto open_as_leader = [this] {
        setsid();
        _exit(port.open({.device = far.device()}).ok() && ::open("/dev/tty", O_RDONLY) < 0 ? 0 : 1);
    };
    EXPECT_EXIT(open_as_leader(), testing::ExitedWithCode(0), "");
    ASSERT_TRUE(port.open({far.device(), 1200, 'o', 5, 2, Handshake::xon_xoff}).ok());
    EXPECT_EQ(cfgetospeed(&far.modes()), speed_t{B1200});
    EXPECT_EQ(far.modes().c_cflag & (CSTOPB | CRTSCTS), tcflag_t{CSTOPB});
    EXPECT_EQ(far.modes().c_iflag & (INPCK | IXON | IXOFF), tcflag_t{INPCK | IXON | IXOFF});
    EXPECT_EQ(fcntl(port.watch_handle(), F_GETFD), FD_CLOEXEC);
}

// Fault: a wait ends early, drags on, or spins; an unplugged line is waited on to the end. A busy machine may
// delay some attempts, not all.
TEST_F(PosixSerialPortTest, WaitsExactlyToTheDeadline) {
    open();
    Duration taken = Duration::max();
    for (int attempt = 0; attempt < 10 && taken > milliseconds(230); ++attempt) {
        taken = time_of([&] { EXPECT_EQ(port.wait_readable(in(milliseconds(200))), WaitResult::timed_out); });
        EXPECT_GE(taken, milliseconds(200));
    }
    EXPECT_LE(taken, milliseconds(230));
    EXPECT_EQ(port.wait_readable(clock.now() - seconds(5)), WaitResult::timed_out);
    std::thread hand([&] {
        std::this_thread::sleep_for(milliseconds(100));
        far.unplug();
    });
    taken = time_of([&] {
        for (int i = 0; i < 100; ++i) EXPECT_EQ(port.wait_readable(in(seconds(5))), WaitResult::lost);
    });
    EXPECT_LT(taken, seconds(1));
    hand.join();
}

// Fault: output is cut when the driver takes only part of it at a time; a write waits for ever or spins when
// nothing leaves, or half of it leaves much later.
TEST_F(PosixSerialPortTest, WritesAllOrStalls) {
    open();
    std::string large;
    for (int i = 0; i < 20000; ++i) large += std::to_string(i) + ",";
    std::string received;
    std::thread reader([&] { received = far.receive(large.size()); });
    EXPECT_EQ(port.write(large, in(seconds(20))), PortError::none);
    reader.join();
    EXPECT_TRUE(received == large) << received.size() << " of " << large.size() << " bytes";
    const Duration taken =
        time_of([&] { EXPECT_EQ(port.write(large, in(milliseconds(300))), PortError::stalled); });
    EXPECT_GE(taken, milliseconds(300));
    EXPECT_LT(taken, seconds(1));
    EXPECT_TRUE(port.is_connected());
    EXPECT_EQ(port.write("new", in(seconds(1))), PortError::none);
    // What the far driver had taken already is out of reach; all else is gone.
    received = far.receive(1 << 20, 100);
    EXPECT_LT(received.size(), 8192U);
    EXPECT_TRUE(received.ends_with("new"));
}

// Fault: one of the calls misses an idle line's end, or takes it for "nothing waiting"; a listener that
// closes the port as soon as it hears of it leaves a dead descriptor.
TEST(PosixSerialPortLost, EveryCallNoticesAnIdleLineThatWasUnplugged) {
    void (*const calls[])(PosixSerialPort&) = {
        [](PosixSerialPort& port) { EXPECT_EQ(port.write("x", Instant::max()), PortError::lost); },
        [](PosixSerialPort& port) { EXPECT_EQ(port.write_some("x"), std::nullopt); },
        [](PosixSerialPort& port) { EXPECT_EQ(port.read_waiting(), ""); },
        [](PosixSerialPort& port) { port.discard_input(); },
        [](PosixSerialPort& port) { EXPECT_EQ(port.wait_readable({}), WaitResult::lost); },
    };
    for (const auto& call : calls)
        for (const bool closes : {false, true}) {
            SCOPED_TRACE(&call - calls);
            device_is_broken = closes;  // or has hung up
            ManualClock clock;
            FarEnd far;
            PosixSerialPort port(clock);
            ASSERT_TRUE(port.open({far.device()}).ok());
            std::vector<bool> changes;
            port.on_connection_change = [&](bool connected) {
                changes.push_back(connected);
                if (closes)
                    port.close();
            };
            far.unplug();
            call(port);
            EXPECT_EQ(changes, std::vector{false});
            EXPECT_EQ(port.is_open(), !closes);
            EXPECT_EQ(port.watch_handle(), -1);
        }
    device_is_broken = false;
}

// Fault: a line that is back is never taken back, is asked for too often, or comes back with other
// settings; a line that was closed meanwhile comes back to life.
TEST(PosixSerialPortLost, TakesTheLineBackByItsNameEveryTwoSeconds) {
    ManualClock clock;
    const ScratchFolder folder;
    const std::string name = folder / "line";
    const auto plug = [&](const std::string& device) {
        std::filesystem::remove(name);
        std::filesystem::create_symlink(device, name);
    };
    FarEnd first;
    plug(first.device());
    PosixSerialPort port(clock);
    ASSERT_TRUE(port.open({.device = name, .baud = 1200}).ok());
    std::vector<bool> changes;
    port.on_connection_change = [&](bool connected) { changes.push_back(connected); };
    first.unplug();
    EXPECT_EQ(port.wait_readable(clock.now()), WaitResult::lost);
    for (const std::string& in_vain : {folder / "none", "/dev/null"s}) {
        plug(in_vain);
        clock.advance(seconds(2));
        EXPECT_EQ(port.read_waiting(), "");
        EXPECT_FALSE(port.is_connected()) << in_vain;
    }
    FarEnd second;
    plug(second.device());
    clock.advance(milliseconds(1999));
    EXPECT_EQ(port.write("early", clock.now()), PortError::lost);
    EXPECT_EQ(changes, std::vector{false});
    clock.advance(milliseconds(1));
    EXPECT_EQ(port.write("\nback\r\x03", clock.now()), PortError::none);
    EXPECT_EQ(second.receive(7), "\nback\r\x03");
    EXPECT_EQ(cfgetospeed(&second.modes()), speed_t{B1200});
    EXPECT_EQ(changes, (std::vector{false, true}));
    port.close();
    EXPECT_EQ(port.write("x", clock.now()), PortError::failed);
    EXPECT_EQ(port.wait_readable(clock.now()), WaitResult::lost);
}

// Fault: two programs talk over one line; a wrong name blocks, crashes, is opened, or is explained wrongly; a
// line stays locked after it was closed, or after an opening that failed.
TEST_F(PosixSerialPortTest, SaysWhyALineCannotBeOpened) {
    const ScratchFolder folder;
    folder.put("file", "");
    ASSERT_EQ(mkfifo((folder / "queue").c_str(), 0644), 0);
    std::filesystem::create_symlink("line", folder / "line");
    open();
    FarEnd free;
    const std::pair<PortSettings, const char*> table[] = {
        {{""}, ": no such device"},
        {{folder / "file"}, " is not a serial line"},
        {{folder / "queue"}, " is not a serial line"},
        {{"/dev/null"}, " is not a serial line"},
        {{folder / "line"}, ": Too many levels of symbolic links"},
        {{far.device()}, ": in use by another program"},
        {{free.device(), 9601, 'e', 7, 2}, " refused 9601,e,7,2"},
    };
    PosixSerialPort second(clock);
    for (const auto& [settings, cause] : table) {
        EXPECT_EQ(second.open(settings).cause, settings.device + cause);
        EXPECT_FALSE(second.is_open());
    }
    driver_is_deaf = true;
    EXPECT_EQ(second.open({free.device()}).cause, free.device() + " refused 9600,n,8,1");
    driver_is_deaf = false;
    port.close();
    for (const std::string& device : {free.device(), far.device(), far.device()})
        EXPECT_EQ(second.open({device}).cause, "") << "a lock is in the way";
}

// Fault: the operator is not told whom to ask for the right to use the line.
TEST_F(PosixSerialPortTest, NamesTheGroupThatOwnsAForbiddenLine) {
    const char* device = far.device().c_str();
    ASSERT_EQ(chmod(device, 0), 0);
    // No mode stops the superuser.
    const bool superuser = geteuid() == 0 && chown(device, 0, 20) == 0 && seteuid(65534) == 0;
    const std::string told = port.open({.device = device}).cause;
    ASSERT_EQ(superuser ? seteuid(0) : 0, 0);
    const std::string cause = far.device() + ": permission denied; the device belongs to the group ";
    EXPECT_TRUE(told.starts_with(cause + (superuser ? "dialout" : ""))) << told;
}

}  // namespace
}  // namespace ampdesk

// Both instead of the C library's.
extern "C" int tcsetattr(int file, int when, const termios* modes) noexcept {
    static const auto set = reinterpret_cast<decltype(&tcsetattr)>(dlsym(RTLD_NEXT, "tcsetattr"));
    return ampdesk::driver_is_deaf ? 0 : set(file, when, modes);
}

extern "C" ssize_t read(int file, void* buffer, size_t size) {
    static const auto take = reinterpret_cast<decltype(&read)>(dlsym(RTLD_NEXT, "read"));
    if (ampdesk::full_reads > 0) {
        --ampdesk::full_reads;
        return static_cast<ssize_t>(size);
    }
    errno = EIO;
    return ampdesk::device_is_broken ? -1 : take(file, buffer, size);
}
