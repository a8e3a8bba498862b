// The serial line over pseudo-terminals: bytes both ways, exact limits, unplugging, replugging, and
// no processor time while it waits.
#include "platform/posix/posix_serial_port.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <ctime>
#include <thread>

#include "platform/posix/line_modes.h"
#include "platform/posix/system_clock.h"
#include "tests/platform/far_end.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

double processor_ms() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

// Runs something that has to end between those times, without using the processor.
template <class Action>
Duration expect_takes(milliseconds at_least, milliseconds at_most, Action action) {
    const double used_before = processor_ms();
    const Instant start = std::chrono::steady_clock::now();
    action();
    const Duration taken = std::chrono::steady_clock::now() - start;
    EXPECT_LT(processor_ms() - used_before, 10.0);
    EXPECT_GE(taken, at_least);
    EXPECT_LT(taken, at_most);
    return taken;
}

class PosixSerialPortTest : public testing::Test {
  protected:
    void open() {
        const PortResult result = port.open({.device = far.device()});
        ASSERT_TRUE(result.ok()) << result.cause;
        port.on_connection_change = [this](bool connected) { changes.push_back(connected); };
    }
    Instant in(milliseconds time) { return clock.now() + time; }

    SystemClock clock;
    FarEnd far;
    PosixSerialPort port{clock};
    std::vector<bool> changes;
};

// Fault: the terminal driver changes, swallows or echoes some byte values.
TEST_F(PosixSerialPortTest, CarriesEveryByteBothWaysUnchanged) {
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
    EXPECT_EQ(port.wait_readable(clock.now()), WaitResult::timed_out);
    EXPECT_EQ(port.read_waiting(), "");
}

// Fault: a setting is lost or mixed up on the way to the driver, or one that works is refused.
TEST_F(PosixSerialPortTest, TakesEverySettingThatTheDialogsOffer) {
    const std::pair<int, speed_t> speeds[] = {{110, B110},   {300, B300},   {600, B600},   {1200, B1200},
                                              {2400, B2400}, {4800, B4800}, {9600, B9600}, {19200, B19200}};
    for (const auto& [baud, speed] : speeds)
        for (const char parity : {'n', 'o', 'e'})
            for (const int data_bits : {5, 7, 8})
                for (const int stop_bits : {1, 2}) {
                    const PortResult result = port.open({far.device(), baud, parity, data_bits, stop_bits});
                    EXPECT_EQ(result.cause, "");
                    EXPECT_EQ(cfgetospeed(&far.modes()), speed);
                    EXPECT_EQ((far.modes().c_cflag & CSTOPB) != 0, stop_bits == 2);
                }
    for (const Handshake handshake : {Handshake::none, Handshake::rts_cts, Handshake::xon_xoff}) {
        EXPECT_TRUE(port.open({.device = far.device(), .handshake = handshake}).ok());
        EXPECT_EQ((far.modes().c_cflag & CRTSCTS) != 0, handshake == Handshake::rts_cts);
        EXPECT_EQ((far.modes().c_iflag & IXON) != 0, handshake == Handshake::xon_xoff);
    }
}

// Fault: a driver that changed what was asked goes unnoticed, or a pseudo-terminal is held to what it
// cannot have.
TEST(LineModes, NoticesWhatADriverDidNotKeep) {
    const PortSettings settings{
        .device = "", .baud = 19200, .parity = 'e', .data_bits = 7, .handshake = Handshake::rts_cts};
    const termios wanted = line_modes(settings).value();
    const struct {
        const char* change;
        void (*apply)(termios&);
        bool on_line;
        bool on_pseudo_terminal;
    } cases[] = {
        {"nothing", [](termios&) {}, true, true},
        {"modem-hang-up flag", [](termios& t) { t.c_cflag &= ~static_cast<tcflag_t>(HUPCL); }, true, true},
        {"speed", [](termios& t) { cfsetospeed(&t, B9600); }, false, false},
        {"size", [](termios& t) { t.c_cflag |= CS8; }, false, true},
        {"parity", [](termios& t) { t.c_cflag &= ~static_cast<tcflag_t>(PARENB); }, false, true},
        {"stop bits", [](termios& t) { t.c_cflag |= CSTOPB; }, false, false},
        {"handshake", [](termios& t) { t.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS); }, false, false},
        {"echo", [](termios& t) { t.c_lflag |= ECHO; }, false, false},
        {"marked errors", [](termios& t) { t.c_iflag |= PARMRK; }, false, false},
        {"line ends", [](termios& t) { t.c_oflag |= OPOST; }, false, false},
        {"empty reads", [](termios& t) { t.c_cc[VMIN] = 0; }, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.change);
        termios kept = wanted;
        c.apply(kept);
        EXPECT_EQ(modes_kept(wanted, kept, false), c.on_line);
        EXPECT_EQ(modes_kept(wanted, kept, true), c.on_pseudo_terminal);
    }
}

// Fault: a late answer, or what came in before the port was opened, is taken for the next reply.
TEST_F(PosixSerialPortTest, ThrowsAwayWhatIsWaiting) {
    far.send("old\n");
    open();
    EXPECT_EQ(port.read_waiting(), "");
    far.send("noise");
    ASSERT_EQ(port.wait_readable(in(seconds(1))), WaitResult::data);
    port.discard_input();
    EXPECT_EQ(port.wait_readable(in(milliseconds(20))), WaitResult::timed_out);
}

// Fault: a wait ends early, drags on, or spins. A busy machine may delay one attempt, not three.
TEST_F(PosixSerialPortTest, WaitsExactlyToTheDeadline) {
    open();
    Duration taken = Duration::max();
    for (int attempt = 0; attempt < 3 && taken > milliseconds(1030); ++attempt)
        taken = expect_takes(milliseconds(1000), seconds(2),
                             [&] { EXPECT_EQ(port.wait_readable(in(seconds(1))), WaitResult::timed_out); });
    EXPECT_LE(taken, milliseconds(1030));
    expect_takes(milliseconds(0), milliseconds(500),
                 [&] { EXPECT_EQ(port.wait_readable(clock.now() - seconds(5)), WaitResult::timed_out); });
}

// Fault: output is cut when the driver takes only part of it at a time.
TEST_F(PosixSerialPortTest, WritesMoreThanTheDriverHoldsWhileTheOtherSideReads) {
    open();
    std::string large;
    for (int i = 0; i < 20000; ++i) large += std::to_string(i) + ",";
    std::string received;
    std::thread reader([&] { received = far.receive(large.size()); });
    EXPECT_EQ(port.write(large, in(seconds(20))), PortError::none);
    reader.join();
    EXPECT_TRUE(received == large) << received.size() << " of " << large.size() << " bytes";
}

// Fault: a write waits for ever or spins when nothing leaves, or half of it leaves much later.
TEST_F(PosixSerialPortTest, AWriteThatNobodyTakesStalls) {
    open();
    expect_takes(milliseconds(300), seconds(1), [&] {
        EXPECT_EQ(port.write(std::string(1 << 20, 'x'), in(milliseconds(300))), PortError::stalled);
    });
    EXPECT_TRUE(port.is_connected());
    EXPECT_EQ(port.write("new", in(seconds(1))), PortError::none);
    // What the far driver had taken already is out of reach; all else is gone.
    const std::string received = far.receive(1 << 20, 100);
    EXPECT_LT(received.size(), 8192U);
    EXPECT_TRUE(received.ends_with("new"));
}

// Fault: an unplugged line is waited on to the end, reported again and again, or spins.
TEST_F(PosixSerialPortTest, UnplugInTheMiddleOfAFrameEndsTheWaitAtOnce) {
    open();
    std::thread hand([&] {
        far.send("\x06\x01\x09");
        std::this_thread::sleep_for(milliseconds(100));
        far.unplug();
    });
    ASSERT_EQ(port.wait_readable(in(seconds(5))), WaitResult::data);
    EXPECT_EQ(port.read_waiting(), "\x06\x01\x09");
    expect_takes(milliseconds(0), seconds(1),
                 [&] { EXPECT_EQ(port.wait_readable(in(seconds(5))), WaitResult::lost); });
    hand.join();
    expect_takes(milliseconds(0), seconds(1), [&] {
        EXPECT_EQ(port.wait_readable(in(seconds(5))), WaitResult::lost);
        EXPECT_EQ(port.write("x", in(seconds(5))), PortError::lost);
        EXPECT_EQ(port.read_waiting(), "");
        port.discard_input();
    });
    EXPECT_EQ(changes, std::vector{false});
    EXPECT_TRUE(port.is_open());
    EXPECT_FALSE(port.is_connected());
}

// Fault: one of the calls misses an idle line's end, or takes it for "nothing waiting".
TEST(PosixSerialPortLost, EveryCallNoticesAnIdleLineThatWasUnplugged) {
    SystemClock clock;
    using Call = void (*)(PosixSerialPort&, Instant);
    const Call calls[] = {
        [](PosixSerialPort& p, Instant now) { EXPECT_EQ(p.write("x", now + seconds(1)), PortError::lost); },
        [](PosixSerialPort& p, Instant) { EXPECT_EQ(p.read_waiting(), ""); },
        [](PosixSerialPort& p, Instant) { p.discard_input(); },
        [](PosixSerialPort& p, Instant now) { EXPECT_EQ(p.wait_readable(now), WaitResult::lost); },
    };
    for (const Call& call : calls) {
        SCOPED_TRACE(&call - calls);
        FarEnd far;
        PosixSerialPort port(clock);
        ASSERT_TRUE(port.open({.device = far.device()}).ok());
        int losses = 0;
        port.on_connection_change = [&](bool connected) { losses += connected ? 100 : 1; };
        far.unplug();
        call(port, clock.now());
        EXPECT_EQ(losses, 1);
    }
}

// Fault: a line that is back is never taken back, is asked for too often, or comes back with other
// settings; a line that was closed meanwhile comes back to life.
TEST(PosixSerialPortLost, TakesTheLineBackByItsNameEveryTwoSeconds) {
    ManualClock clock;
    const ScratchFolder folder;
    const std::string name = folder / "line";
    FarEnd first;
    std::filesystem::create_symlink(first.device(), name);
    PosixSerialPort port(clock);
    ASSERT_TRUE(port.open({.device = name}).ok());
    std::vector<bool> changes;
    port.on_connection_change = [&](bool connected) { changes.push_back(connected); };
    first.unplug();
    EXPECT_EQ(port.wait_readable(clock.now() + seconds(1)), WaitResult::lost);
    FarEnd taken;
    PosixSerialPort other(clock);
    ASSERT_TRUE(other.open({.device = taken.device()}).ok());
    FarEnd second;
    const auto plug = [&](const std::string& device) {
        std::filesystem::remove(name);
        std::filesystem::create_symlink(device, name);
    };
    // Attempts in vain: what has come under the name is missing, no serial line, or somebody else's.
    for (const std::string& in_vain :
         {folder / "none", folder.path(), std::string("/dev/null"), taken.device()}) {
        plug(in_vain);
        clock.advance(seconds(2));
        EXPECT_EQ(port.read_waiting(), "");
        EXPECT_FALSE(port.is_connected()) << in_vain;
    }
    plug(second.device());
    clock.advance(milliseconds(1999));
    EXPECT_EQ(port.write("early", clock.now() + seconds(1)), PortError::lost);
    EXPECT_EQ(changes, std::vector{false});
    clock.advance(milliseconds(1));
    EXPECT_EQ(port.write("\nback\r\x03", clock.now() + seconds(1)), PortError::none);
    EXPECT_EQ(second.receive(7), "\nback\r\x03");
    EXPECT_EQ(changes, (std::vector{false, true}));
    second.unplug();
    port.discard_input();
    port.close();
    clock.advance(seconds(10));
    EXPECT_EQ(port.wait_readable(clock.now()), WaitResult::lost);
    EXPECT_EQ(port.write("x", clock.now()), PortError::failed);
    EXPECT_EQ(changes, (std::vector{false, true, false}));
}

// Fault: a listener that closes the port as soon as it hears of the loss leaves a dead descriptor.
TEST_F(PosixSerialPortTest, TheListenerMayCloseThePort) {
    open();
    port.on_connection_change = [&](bool) { port.close(); };
    far.unplug();
    EXPECT_EQ(port.write("x", in(seconds(1))), PortError::lost);
    EXPECT_FALSE(port.is_open());
}

// Fault: two programs talk over one line; or the line stays locked after it was closed.
TEST_F(PosixSerialPortTest, RefusesASecondUser) {
    open();
    PosixSerialPort second(clock);
    const PortResult refused = second.open({.device = far.device()});
    EXPECT_EQ(refused.error, PortError::in_use);
    EXPECT_EQ(refused.cause, far.device() + ": in use by another program");
    EXPECT_FALSE(second.is_open());
    port.close();
    EXPECT_TRUE(second.open({.device = far.device()}).ok());
    EXPECT_TRUE(second.open({.device = far.device()}).ok()) << "its own lock is in the way";
}

// Fault: a wrong name blocks, crashes, is opened, or is explained wrongly.
TEST_F(PosixSerialPortTest, SaysWhyANameCannotBeOpened) {
    const ScratchFolder folder;
    Descriptor file(::open((folder / "file").c_str(), O_CREAT | O_WRONLY, 0644));
    ASSERT_EQ(mkfifo((folder / "queue").c_str(), 0644), 0);
    std::filesystem::create_symlink("line", folder / "line");
    const struct {
        std::string device;
        PortError error;
        const char* cause;
    } cases[] = {
        {folder / "none", PortError::not_found, ": no such device"},
        {"", PortError::not_found, ": no such device"},
        {folder / "file", PortError::not_a_serial_line, " is not a serial line"},
        {folder / "queue", PortError::not_a_serial_line, " is not a serial line"},
        {"/dev/null", PortError::not_a_serial_line, " is not a serial line"},
        {folder / "line", PortError::failed, ": Too many levels of symbolic links"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.device);
        const PortResult result = port.open({.device = c.device});
        EXPECT_EQ(result.error, c.error);
        EXPECT_EQ(result.cause, c.device + c.cause);
        EXPECT_FALSE(port.is_open());
    }
    const PortResult odd = port.open({.device = far.device(), .baud = 9601, .parity = 'e', .data_bits = 7});
    EXPECT_EQ(odd.error, PortError::bad_settings);
    EXPECT_EQ(odd.cause, far.device() + " refused 9601,e,7,1");
    EXPECT_TRUE(port.open({.device = far.device()}).ok()) << "the refused opening still holds the line";
}

// Fault: the operator is not told whom to ask for the right to use the line.
TEST_F(PosixSerialPortTest, NamesTheGroupThatOwnsAForbiddenLine) {
    ASSERT_EQ(chmod(far.device().c_str(), 0), 0);
    const bool superuser = geteuid() == 0;  // whom no mode stops
    if (superuser) {
        ASSERT_EQ(chown(far.device().c_str(), 0, 20), 0);
        ASSERT_EQ(seteuid(65534), 0);
    }
    const PortResult result = port.open({.device = far.device()});
    if (superuser) {
        ASSERT_EQ(seteuid(0), 0);
        EXPECT_EQ(result.cause,
                  far.device() + ": permission denied; the device belongs to the group dialout");
    }
    EXPECT_EQ(result.error, PortError::permission_denied);
    EXPECT_NE(result.cause.find("; the device belongs to the group "), std::string::npos) << result.cause;
}

}  // namespace
}  // namespace ampdesk
