// What the driver tells beside the bytes, with a driver that the test plays: a pseudo-terminal has
// neither modem lines nor counts.
#include "platform/posix/line_status.h"

#include <gtest/gtest.h>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>

#include "platform/posix/posix_serial_port.h"
#include "tests/platform/far_end.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

struct LineStatus : testing::Test {
    int call(unsigned long request, void* argument) {
        int& value = *static_cast<int*>(argument);
        if (request == TIOCMBIS || request == TIOCMBIC)
            set.emplace_back(request, value);
        else if (request == TIOCOUTQ)
            value = driver_holds-- > 0 ? 1 : 0;
        else if (request == TIOCSERGETLSR)
            value = chip_sends-- > 0 ? 0 : TIOCSER_TEMT;
        else
            return -1;
        return 0;
    }
    void open(Handshake handshake = Handshake::none) {
        ASSERT_TRUE(port.open({.device = far.device(), .handshake = handshake}).ok());
    }
    // Writes until the driver takes nothing; what it has taken.
    std::string fill() {
        std::string text;
        for (int i = 0; i < 100'000; ++i) text += std::to_string(i);
        std::size_t taken = 0;
        while (const std::size_t count = port.write_some(text.substr(taken, 1000)).value()) taken += count;
        return text.substr(0, taken);
    }
    int driver_holds = 0;  // calls in which there is output left
    int chip_sends = 0;
    using Settings = std::vector<std::pair<unsigned long, int>>;
    Settings set;
    ManualClock clock;
    FarEnd far;
    PosixSerialPort port{
        clock, [this](int, unsigned long request, void* argument) { return call(request, argument); }};
};

// DTR raised instead of dropped, or another line along with it; a device without DTR that seems to
// have it.
TEST_F(LineStatus, DropsAndRaisesDtrAlone) {
    EXPECT_FALSE(port.set_dtr(false));
    open();
    EXPECT_TRUE(port.set_dtr(false));
    EXPECT_TRUE(port.set_dtr(true));
    EXPECT_EQ(set, (Settings{{TIOCMBIC, TIOCM_DTR}, {TIOCMBIS, TIOCM_DTR}}));
    port.close();
    PosixSerialPort pseudo_terminal(clock);
    ASSERT_TRUE(pseudo_terminal.open({far.device()}).ok());
    EXPECT_FALSE(pseudo_terminal.set_dtr(false));
    EXPECT_TRUE(pseudo_terminal.drain(clock.now()));
}

// What the driver has no room for is lost, doubled, or waited for (it may make room at any time, by handing
// on what it holds); output counts as sent while the chip still holds a byte, or the wait has no end; closing
// waits for the driver's half minute, or at all where a handshake may hold the output back.
TEST_F(LineStatus, WritesWhatTheDriverTakesAndDrainsToTheDeadline) {
    EXPECT_EQ(port.write_some("x"), std::nullopt);
    EXPECT_FALSE(port.drain(clock.now()));
    open();
    const std::string taken = fill();
    EXPECT_TRUE(far.receive(taken.size(), 10'000) == taken);
    EXPECT_EQ(port.write_some("end"), 3U);
    EXPECT_EQ(far.receive(3, 10'000), "end");
    EXPECT_TRUE(port.drain(clock.now()));
    const Instant start = clock.now();
    const auto expect_at = [&](int time) { EXPECT_EQ(clock.now() - start, milliseconds(time)); };
    driver_holds = 2;
    chip_sends = 1;
    EXPECT_TRUE(port.drain(start + milliseconds(3000)));
    expect_at(30);
    driver_holds = 1000;
    EXPECT_FALSE(port.drain(clock.now()));
    EXPECT_FALSE(port.drain(start + milliseconds(3000)));
    expect_at(3000);
    port.close();
    expect_at(3500);
    driver_holds = 1000;
    open(Handshake::rts_cts);
    const std::size_t held_back = fill().size();
    port.close();
    expect_at(3500);
    EXPECT_LT(far.receive(held_back, 100).size(), 8192U) << "what the far driver had not taken is still sent";
}

}  // namespace
}  // namespace ampdesk
