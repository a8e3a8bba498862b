// One wait over several pseudo-terminals: what ends it, and that nothing else does. How another thread
// ends it is in tests/threads.
#include "platform/line_wait.h"

#include <gtest/gtest.h>

#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "tests/platform/far_end.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

struct PromisingPort : PosixSerialPort {
    using PosixSerialPort::PosixSerialPort;
    std::optional<Instant> input_due() const override { return due; }
    std::optional<Instant> due;
};

struct LineWaitTest : testing::Test {
    LineWaitTest() { EXPECT_TRUE(first.open({far[0].device()}).ok() && second.open({far[1].device()}).ok()); }
    void expect_wait(milliseconds limit, milliseconds at_least) {
        const Duration waited = time_of([&] { line_wait->wait(ports, clock.now() + limit); });
        EXPECT_GE(waited, at_least);
        EXPECT_LT(waited, milliseconds(5'000));
    }
    void expect_at_once() { expect_wait(milliseconds(10'000), milliseconds(0)); }
    void expect_to_the_end() { expect_wait(milliseconds(50), milliseconds(50)); }

    SystemClock clock;
    std::unique_ptr<LineWait> line_wait = make_line_wait(clock);
    FarEnd far[2];
    PosixSerialPort first{clock};
    PromisingPort second{clock};
    std::array<SerialPort*, 2> ports{&first, &second};
};

// Fault: only the first line is looked at; a loss is waited out, an order that came before the wait slept
// over; or something ends more than one wait: a line that was read, is lost or closed, or a waking.
TEST_F(LineWaitTest, WhateverHappensEndsItOnce) {
    expect_wait(milliseconds(300), milliseconds(300));
    far[1].send("x");
    expect_at_once();
    EXPECT_EQ(second.read_waiting(), "x");
    expect_to_the_end();
    far[0].send("y");
    expect_at_once();
    EXPECT_EQ(first.read_waiting(), "y");
    line_wait->wake();
    line_wait->wake();
    expect_at_once();
    expect_to_the_end();
    far[1].unplug();
    expect_at_once();
    EXPECT_EQ(second.read_waiting(), "");
    first.close();
    expect_to_the_end();
}

// Fault: input of a line of this process, which has no descriptor, is slept over; a deadline at the end of
// time, or before its beginning, overflows.
TEST_F(LineWaitTest, EndsAtWhateverIsDue) {
    second.due = clock.now() + milliseconds(50);
    expect_at_once();
    EXPECT_GE(clock.now(), *second.due);
    expect_at_once();  // waiting now
    line_wait->wait({}, Instant::min());
    line_wait->wake();
    line_wait->wait({}, Instant::max());
}

}  // namespace
}  // namespace ampdesk
