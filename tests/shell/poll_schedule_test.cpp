// The schedule driven through simulated minutes. Visits cost time, as they do on a line.
#include "shell/poll_schedule.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

class PollScheduleTest : public testing::Test {
  protected:
    PollScheduleTest() : start(now) {}

    PollSchedule::Head& head(int slot) {
        return *std::find_if(heads.begin(), heads.end(), [&](const auto& h) { return h.slot == slot; });
    }
    void open(int count) {
        for (int slot = 1; slot <= count; ++slot) heads.push_back({.slot = slot});
    }
    void restart(int count, Duration cost) {
        schedule = {};
        heads.clear();
        visits.clear();
        visit_cost = cost;
        open(count);
    }
    void close(int slot) {
        std::erase_if(heads, [&](const auto& h) { return h.slot == slot; });
    }

    // Follows the schedule for that long; fails when it spins.
    void run(milliseconds length) {
        const Instant end = now + length;
        int turns = 0;
        while (now < end) {
            ASSERT_LT(++turns, 200'000) << "the schedule spins";
            const PollSchedule::Next next = schedule.next(heads, now);
            if (!next.slot) {
                ASSERT_GT(next.wait, Duration::zero());
                ASSERT_LE(next.wait, PollSchedule::k_cycle);
                now += next.wait;
                continue;
            }
            ASSERT_FALSE(head(*next.slot).opening);
            schedule.visited(*next.slot, now);
            visits[*next.slot].push_back(now);
            now += head(*next.slot).silent ? look_cost : visit_cost;
        }
    }

    // The intervals between the visits of that slot, in milliseconds.
    std::vector<long long> intervals(int slot) {
        const std::vector<Instant>& at = visits[slot];
        std::vector<long long> out;
        for (std::size_t i = 1; i < at.size(); ++i)
            out.push_back(std::chrono::duration_cast<milliseconds>(at[i] - at[i - 1]).count());
        return out;
    }
    long long longest(int slot) {
        const auto all = intervals(slot);
        return all.empty() ? -1 : *std::max_element(all.begin(), all.end());
    }

    PollSchedule schedule;
    std::vector<PollSchedule::Head> heads;
    Instant now = Instant{} + std::chrono::hours(5);
    const Instant start;
    Duration visit_cost = milliseconds(3);
    Duration look_cost = milliseconds(350);
    std::map<int, std::vector<Instant>> visits;
};

// The cycle drifts with the number of heads or with what a visit costs, or heads come in a bunch.
TEST_F(PollScheduleTest, EveryHeadComesRoundEveryHalfSecond) {
    for (const int count : {1, 4, 16}) {
        SCOPED_TRACE(count);
        restart(count, milliseconds(3));
        run(milliseconds(120'000));
        std::vector<Instant> last;
        for (int slot = 1; slot <= count; ++slot) {
            EXPECT_NEAR(static_cast<double>(longest(slot)), 500, 50);
            EXPECT_NEAR(static_cast<double>(visits[slot].size()), 240, 2);
            last.push_back(visits[slot].back());
        }
        std::sort(last.begin(), last.end());
        for (std::size_t i = 1; i < last.size(); ++i)
            EXPECT_NEAR(static_cast<double>((last[i] - last[i - 1]).count()), 0.5e9 / count, 0.1e9 / count);
    }
}

// A silent amplifier is looked for too often or never again; several looks in a row add up for the live
// ones; on a slow line the looks are never due.
TEST_F(PollScheduleTest, SilentHeadsHoldNobodyUp) {
    const struct {
        int count;
        milliseconds cost;
        int silent_to;  // from slot 2
        std::size_t looks;
        long long longest;
    } cases[] = {{4, milliseconds(20), 2, 11, 700},
                 {16, milliseconds(3), 15, 6, 500 + 350 + 20},
                 {4, milliseconds(125), 2, 11, 3 * 125 + 350 + 125},  // 9600 baud: the line is full
                 {9, milliseconds(100), 2, 8, 2'000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        restart(c.count, c.cost);
        for (int slot = 2; slot <= c.silent_to; ++slot) head(slot).silent = true;
        run(milliseconds(60'000));
        for (const auto& h : heads) {
            if (h.silent) {
                EXPECT_GE(visits[h.slot].size(), c.looks);
                EXPECT_GE(intervals(h.slot).back(), 5'000);
            } else {
                EXPECT_LE(longest(h.slot), c.longest);
            }
        }
    }
}

// A head that is still opening stops the others, is visited all the same, or makes the loop run hot while its
// box is open for hours.
TEST_F(PollScheduleTest, PassesABusyHeadOver) {
    open(3);
    head(2).opening = true;
    run(milliseconds(10'000));
    EXPECT_TRUE(visits[2].empty());
    EXPECT_LE(longest(1), 510);
    head(1).opening = head(3).opening = true;
    for (int i = 0; i < 100; ++i) {
        const PollSchedule::Next next = schedule.next(heads, now);
        ASSERT_TRUE(!next.slot && next.wait >= milliseconds(10));
        now += next.wait;
    }
    visits.clear();
    for (PollSchedule::Head& h : heads) h.opening = false;
    const Instant freed = now;
    run(milliseconds(5'000));
    for (const int slot : {1, 2, 3}) {
        EXPECT_LE(visits[slot].front() - freed, milliseconds(510));
        EXPECT_NEAR(static_cast<double>(longest(slot)), 500, 20);
    }
}

// One visit that took long is made up for by a burst, or pushes the head out of its phase.
TEST_F(PollScheduleTest, ALateHeadKeepsItsPhase) {
    open(1);
    run(milliseconds(1'000));
    const Instant stalled = visits[1].back();
    now = stalled + milliseconds(1'300);
    run(milliseconds(1'000));
    EXPECT_EQ(intervals(1), (std::vector<long long>{500, 1300, 200, 500}));
}

// Heads that come and go leave somebody behind, or bunch the others together.
TEST_F(PollScheduleTest, SpreadsAnewWhenHeadsComeAndGo) {
    open(4);
    run(milliseconds(5'000));
    close(2);
    run(milliseconds(5'000));
    heads.push_back({.slot = 2});
    heads.push_back({.slot = 5});
    const Instant added = now;
    run(milliseconds(5'000));
    EXPECT_LE(visits[5].front() - added, milliseconds(20));
    for (const int slot : {1, 3, 4}) EXPECT_LE(longest(slot), 510);
    for (const int slot : {1, 2, 3, 4, 5}) EXPECT_LE(now - visits[slot].back(), milliseconds(500));
    heads.clear();
    EXPECT_EQ(schedule.next(heads, now).wait, PollSchedule::k_cycle);
}

}  // namespace
}  // namespace ampdesk
