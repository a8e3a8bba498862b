// The wait for several lines, woken by other threads and by bytes that come meanwhile.
#include "platform/line_wait.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>

#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "tests/platform/far_end.h"

namespace ampdesk {
namespace {

constexpr int k_steps = 2'000;
constexpr std::chrono::seconds k_patience{30};

// Fault: a waking or a byte between two waits, or at the end of one, is slept over. The other thread does its
// next step only when the last one has been seen, so that whatever is missed is waited for in vain.
TEST(LineWaitThreads, NothingThatHappensBetweenTwoWaitsIsSleptOver) {
    SystemClock clock;
    std::array<FarEnd, 2> far;
    PosixSerialPort first(clock);
    PosixSerialPort second(clock);
    ASSERT_TRUE(first.open({.device = far[0].device()}).ok());
    ASSERT_TRUE(second.open({.device = far[1].device()}).ok());
    const std::array<SerialPort*, 2> ports{&first, &second};
    const std::unique_ptr<LineWait> line_wait = make_line_wait(clock);

    std::atomic<int> orders = 0;  // given by the other thread
    std::atomic<int> seen = 0;    // steps that the waiting thread knows of
    std::atomic<bool> stop = false;
    std::thread other([&] {
        std::minstd_rand random(1);
        for (int step = 0; step < k_steps && !stop; ++step) {
            const auto what = (random() >> 8U) % 3;
            if (what < 2) {
                far[what].send("x");
            } else {
                ++orders;
                line_wait->wake();
            }
            while (seen <= step && !stop) std::this_thread::yield();
        }
    });

    std::size_t bytes = 0;
    bool in_time = true;
    while (seen < k_steps && in_time) {
        const Instant limit = clock.now() + k_patience;
        line_wait->wait(ports, limit);
        in_time = clock.now() < limit;
        bytes += first.read_waiting().size() + second.read_waiting().size();
        seen = static_cast<int>(bytes) + orders;
    }
    stop = true;
    other.join();
    EXPECT_TRUE(in_time) << "asleep after " << seen << " steps";
    EXPECT_EQ(seen, k_steps);
}

}  // namespace
}  // namespace ampdesk
