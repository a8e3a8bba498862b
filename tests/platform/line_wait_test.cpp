// One wait over several pseudo-terminals: what ends it, and that nothing else does. How another thread
// ends it is in tests/threads.
#include "platform/line_wait.h"

#include <gtest/gtest.h>

#include <array>
#include <ctime>
#include <memory>

#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "tests/platform/far_end.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class LineWaitTest : public testing::Test {
  protected:
    LineWaitTest() {
        EXPECT_TRUE(first.open({.device = far_first.device()}).ok());
        EXPECT_TRUE(second.open({.device = far_second.device()}).ok());
    }
    // How long it waited when it may wait so long. The processor's time is this thread's.
    Duration wait(milliseconds limit) {
        timespec before{};
        timespec after{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
        const Instant start = clock.now();
        line_wait->wait(ports, start + limit);
        const Duration waited = clock.now() - start;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
        EXPECT_LT((after.tv_sec - before.tv_sec) * 1'000'000'000 + after.tv_nsec - before.tv_nsec,
                  10'000'000);
        return waited;
    }
    void expect_at_once() { EXPECT_LT(wait(seconds(10)), seconds(5)); }
    void expect_to_the_end(milliseconds limit = milliseconds(50)) { EXPECT_GE(wait(limit), limit); }

    SystemClock clock;
    std::unique_ptr<LineWait> line_wait = make_line_wait(clock);
    FarEnd far_first;
    FarEnd far_second;
    PosixSerialPort first{clock};
    PosixSerialPort second{clock};
    std::array<SerialPort*, 2> ports{&first, &second};
};

// Fault: only the first line is looked at, or a line that was read ends the next wait again.
TEST_F(LineWaitTest, InputOnAnyLineEndsIt) {
    expect_to_the_end(milliseconds(300));
    far_second.send("x");
    expect_at_once();
    EXPECT_EQ(second.read_waiting(), "x");
    expect_to_the_end();
    far_first.send("y");
    expect_at_once();
}

// Fault: a loss is waited out; a line that is known to be lost or closed ends every wait, and the caller
// spins.
TEST_F(LineWaitTest, ALossEndsItOnce) {
    far_second.unplug();
    expect_at_once();
    EXPECT_EQ(second.read_waiting(), "");
    first.close();
    expect_to_the_end();
}

// Fault: an order that came before the wait is slept over, or ends more than one wait.
TEST_F(LineWaitTest, AWakingBeforeTheWaitEndsItOnce) {
    line_wait->wake();
    line_wait->wake();
    expect_at_once();
    expect_to_the_end();
}

// Fault: a deadline at the end of time, or before its beginning, overflows.
TEST_F(LineWaitTest, TakesEveryDeadline) {
    line_wait->wait(ports, Instant::min());
    line_wait->wait({}, Instant{});
    line_wait->wake();
    line_wait->wait(ports, Instant::max());
}

struct PromisingPort : PosixSerialPort {
    using PosixSerialPort::PosixSerialPort;
    std::optional<Instant> input_due() const override { return due; }
    std::optional<Instant> due;
};

// Fault: a line of this process, which has no descriptor, is slept over.
TEST_F(LineWaitTest, InputThatIsDueEndsIt) {
    PromisingPort promising(clock);
    ports[0] = &promising;
    promising.due = clock.now() + milliseconds(50);
    const Instant start = clock.now();
    expect_at_once();
    EXPECT_GE(clock.now() - start, milliseconds(45));
    expect_at_once();  // waiting now
}

}  // namespace
}  // namespace ampdesk
