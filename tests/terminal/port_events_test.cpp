// What the driver tells of the line, on its way to the operator.
#include "terminal/port_events.h"

#include <gtest/gtest.h>
#include <linux/serial.h>
#include <sys/ioctl.h>

#include <utility>

#include "platform/posix/posix_serial_port.h"
#include "tests/platform/far_end.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

// A count or a line that is told as another one, twice or not at all; a level that is told although the
// edges are counted; what a call left behind that failed.
TEST(PortEvents, EachComesFromItsOwnPlace) {
    using Counts = serial_icounter_struct;
    int lines = 0;
    Counts counts{};
    bool tells_lines = true;
    bool tells_counts = true;
    ManualClock clock;
    const FarEnd far;
    PosixSerialPort port{clock, [&](int, unsigned long request, void* argument) {
                             if (request == TIOCMGET)
                                 *static_cast<int*>(argument) = lines;
                             else if (request == TIOCGICOUNT)
                                 *static_cast<Counts*>(argument) = counts;
                             else
                                 return -1;
                             return (request == TIOCMGET ? tells_lines : tells_counts) ? 0 : -1;
                         }};
    ASSERT_TRUE(port.open({.device = far.device()}).ok());
    LineState state = read_line_state(port);
    const auto look = [&] {
        std::string told;
        const LineState before = std::exchange(state, read_line_state(port));
        for (const int code : events_between(before, state)) {
            const PortEvent event = describe_event(code);
            told.append(event.text) += event.kind == EventKind::error ? '!' : '|';
        }
        return told;
    };
    const std::tuple<int Counts::*, int, std::string> table[] = {
        {&Counts::cts, TIOCM_CTS, "Change in CTS Detected|"},
        {&Counts::dsr, TIOCM_DSR, "Change in DSR Detected|"},
        {&Counts::dcd, TIOCM_CAR, "Change in CD Detected|"},
        {&Counts::rng, TIOCM_RNG, "The Phone is Ringing|"},
        {&Counts::brk, 0, "Break Received|"},
        {&Counts::frame, 0, "Framing Error|"},
        {&Counts::overrun, 0, "Overrun Error!"},
        {&Counts::parity, 0, "Parity Error|"},
        {&Counts::buf_overrun, 0, "Receive Buffer Overflow!"},
        {&Counts::rx, 0, ""}};
    for (const auto& [count, level, told] : table) {
        SCOPED_TRACE(told);
        counts.*count += 3;  // several at once
        EXPECT_EQ(look(), told);
        lines = level;  // 0: it is only counted
        EXPECT_EQ(look(), "");
        tells_counts = false;
        lines = 0;
        EXPECT_EQ(look(), level == 0 || level == TIOCM_RNG ? "" : told);
        lines = level;
        EXPECT_EQ(look(), level == 0 ? "" : told);
        tells_lines = false;
        lines = 0;
        counts.*count += 3;
        EXPECT_EQ(look(), "");
        tells_lines = tells_counts = true;
        EXPECT_EQ(look(), "");
    }
}

}  // namespace
}  // namespace ampdesk
