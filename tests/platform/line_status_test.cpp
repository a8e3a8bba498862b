// What the driver tells beside the bytes, with a driver that the test plays: a pseudo-terminal has
// neither modem lines nor counts.
#include "platform/posix/line_status.h"

#include <gtest/gtest.h>
#include <linux/serial.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <deque>

#include "platform/posix/posix_serial_port.h"
#include "tests/platform/far_end.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

struct Driver {
    std::deque<int> waiting;  // of TIOCOUTQ, one a call; then none
    int chip_busy = 0;        // calls in which the chip still sends
    std::vector<std::pair<unsigned long, int>> set;

    int call(unsigned long request, void* argument) {
        switch (request) {
            case TIOCMBIS:
            case TIOCMBIC:
                set.emplace_back(request, *static_cast<int*>(argument));
                return 0;
            case TIOCOUTQ:
                *static_cast<int*>(argument) = waiting.empty() ? 0 : waiting.front();
                if (!waiting.empty())
                    waiting.pop_front();
                return 0;
            case TIOCSERGETLSR:
                *static_cast<unsigned*>(argument) = chip_busy-- > 0 ? 0U : unsigned{TIOCSER_TEMT};
                return 0;
            default:
                return -1;
        }
    }
};

struct LineStatus : testing::Test {
    void open() { ASSERT_TRUE(port.open({.device = far.device()}).ok()); }
    ManualClock clock;
    Driver driver;
    FarEnd far;
    PosixSerialPort port{
        clock, [this](int, unsigned long request, void* argument) { return driver.call(request, argument); }};
};

// DTR raised instead of dropped, or another line along with it; a device without DTR that seems to
// have it.
TEST_F(LineStatus, DropsAndRaisesDtrAlone) {
    EXPECT_FALSE(port.set_dtr(false));
    PosixSerialPort pseudo_terminal(clock);
    ASSERT_TRUE(pseudo_terminal.open({.device = far.device()}).ok());
    EXPECT_FALSE(pseudo_terminal.set_dtr(false));
    EXPECT_TRUE(pseudo_terminal.drain(clock.now()));
    pseudo_terminal.close();
    open();
    EXPECT_TRUE(port.set_dtr(false));
    EXPECT_TRUE(port.set_dtr(true));
    EXPECT_EQ(driver.set,
              (std::vector<std::pair<unsigned long, int>>{{TIOCMBIC, TIOCM_DTR}, {TIOCMBIS, TIOCM_DTR}}));
}

// Output counts as sent while the chip still holds a byte, or the wait has no end.
TEST_F(LineStatus, DrainsToTheDeadline) {
    EXPECT_FALSE(port.drain(clock.now()));
    open();
    EXPECT_TRUE(port.drain(clock.now()));
    const Instant start = clock.now();
    driver.waiting = {30, 20};
    driver.chip_busy = 1;
    EXPECT_TRUE(port.drain(start + milliseconds(3000)));
    EXPECT_EQ(clock.now() - start, milliseconds(30));
    driver.waiting.assign(1000, 5);
    EXPECT_FALSE(port.drain(clock.now()));
    EXPECT_FALSE(port.drain(start + milliseconds(3000)));
    EXPECT_EQ(clock.now() - start, milliseconds(3000));
    // Closing does not wait for the driver's half minute.
    const Instant closing = clock.now();
    port.close();
    EXPECT_EQ(clock.now() - closing, milliseconds(500));
}

// What the driver has no room for is lost, doubled, or waited for.
TEST_F(LineStatus, WritesOnlyWhatTheDriverTakes) {
    EXPECT_EQ(port.write_some("x"), std::nullopt);
    open();
    std::size_t taken = 0;
    const std::string block(1000, 'x');
    for (std::optional<std::size_t> count; (count = port.write_some(block)) && *count > 0;) taken += *count;
    EXPECT_EQ(port.write_some("x"), 0U);
    EXPECT_EQ(far.receive(1 << 20, 50).size(), taken);
    EXPECT_EQ(port.write_some("x"), 1U);
    far.unplug();
    EXPECT_EQ(port.write_some("x"), std::nullopt);
    EXPECT_EQ(port.watch_handle(), -1);
}

}  // namespace
}  // namespace ampdesk
