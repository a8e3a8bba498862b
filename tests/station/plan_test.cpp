// The plan driven through simulated minutes. Exchanges cost time, as they do on a line.
#include "station/plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using namespace std::chrono_literals;
using Kind = Request::Kind;
using What = Plan::Choice::What;

class PlanTest : public testing::Test {
  protected:
    struct Asked {
        int slot = 0;
        Try attempt;
        Instant at;
    };

    void open(int count) {
        heads.clear();
        wishes.clear();
        wishes.resize(static_cast<std::size_t>(count));
        for (int slot = 1; slot <= count; ++slot)
            heads.push_back({.slot = slot,
                             .active = slot == 1,
                             .alarm = true,
                             .requests = &wishes[static_cast<std::size_t>(slot - 1)]});
        plan = {};
        asked.clear();
    }
    Plan::Head& head(int slot) { return heads[static_cast<std::size_t>(slot - 1)]; }
    std::deque<Request>& wishes_of(int slot) { return wishes[static_cast<std::size_t>(slot - 1)]; }

    // What an exchange of a kind costs on a line of 9600 baud with 5 ms turn-around.
    static Duration cost(Kind kind) {
        return kind == Kind::status ? 24ms : kind == Kind::alarm_state ? 34ms : 51ms;
    }

    // Follows the plan for that long; fails when it spins.
    void run(Duration length) {
        const Instant end = now + length;
        for (int turns = 0; now < end; ++turns) {
            ASSERT_LT(turns, 100'000) << "the plan spins";
            const Plan::Choice choice = plan.next(heads, guest, now);
            if (choice.what == What::nothing) {
                ASSERT_GT(choice.until, now);
                now = std::min(choice.until, end);
            } else if (choice.what == What::guest) {
                guests.push_back(now);
                now += guest_takes;
                plan.guest_had_line(now);
            } else {
                exchange(choice);
            }
        }
    }
    void exchange(const Plan::Choice& choice) {
        const Try& attempt = choice.attempt;
        plan.asked(choice.slot, attempt, now);
        asked.push_back({choice.slot, attempt, now});
        const bool silence = mute.contains(choice.slot) || mute_kinds.contains(attempt.request.kind);
        now += silence ? wait : cost(attempt.request.kind);
        head(choice.slot).failing = mute.contains(choice.slot);
        plan.ended(choice.slot, attempt, silence ? failure : Reading::Outcome::good, now);
        if (!silence || attempt.last)
            std::erase(wishes_of(choice.slot), attempt.request);
        if (on_ended)
            on_ended(choice, silence);
    }

    std::vector<Instant> times(int slot, Kind kind) const {
        std::vector<Instant> at;
        for (const Asked& a : asked)
            if (a.slot == slot && a.attempt.request.kind == kind)
                at.push_back(a.at);
        return at;
    }
    // The longest time between two requests of that kind to that head, in milliseconds.
    long long gap(int slot, Kind kind) const {
        const auto at = times(slot, kind);
        Duration longest{};
        for (std::size_t i = 1; i < at.size(); ++i) longest = std::max(longest, at[i] - at[i - 1]);
        return std::chrono::duration_cast<milliseconds>(longest).count();
    }

    Plan plan;
    std::vector<Plan::Head> heads;
    std::vector<std::deque<Request>> wishes;
    std::optional<Instant> guest;
    Duration guest_takes{};
    std::vector<Instant> guests;
    std::vector<Asked> asked;
    std::set<int> mute;
    std::set<Kind> mute_kinds;
    Duration wait = 1s;
    Reading::Outcome failure = Reading::Outcome::silence;
    std::function<void(const Plan::Choice&, bool silence)> on_ended;
    Instant now = Instant{} + std::chrono::hours(5);
};

// A cycle that drifts where there is time; on a line without, a status that waits for displays, an active
// display that waits for the others, or others that starve; what is asked more often than anybody looks.
// Somebody else on the line who gets nothing, or all of it, where he or every amplifier waits in vain, too.
TEST_F(PlanTest, StretchesFirstWhatCanWaitLongest) {
    const struct {
        int heads;
        milliseconds guest;                // how long an exchange of somebody else takes; 0: there is nobody
        bool dead;                         // no amplifier answers
        std::size_t guests;                // at least, in 30 s
        long long status, active, others;  // the longest, in milliseconds
    } table[] = {{4, 0ms, false, 0, 550, 550, 550},
                 {16, 0ms, false, 0, 1000, 1000, 3000},
                 {16, 60ms, false, 60, 1200, 1200, 6000},
                 {4, 1050ms, false, 6, 1600, 1600, 6500},
                 {4, 60ms, true, 6, 99'999, 99'999, 99'999}};
    for (const auto& row : table) {
        SCOPED_TRACE(std::to_string(row.heads) + " heads, guest " + std::to_string(row.guest.count()));
        open(row.heads);
        for (int slot = 1; slot <= row.heads && row.dead; ++slot) mute.insert(slot);
        guest = row.guest > 0ms ? std::optional(now) : std::nullopt;
        guest_takes = row.guest;
        run(10s);
        asked.clear();
        guests.clear();
        run(30s);
        EXPECT_GE(guests.size(), row.guests);
        for (int slot = 1; slot <= row.heads; ++slot) {
            EXPECT_LE(gap(slot, Kind::status), row.status);
            const auto count = static_cast<double>(times(slot, Kind::status).size());
            EXPECT_NEAR(row.active <= 550 ? count : 60, 60, 1);
            for (const Kind kind : {Kind::analog, Kind::alarm_state}) {
                EXPECT_LE(gap(slot, kind), slot == 1 ? row.active : row.others);
                EXPECT_TRUE(row.dead || times(slot, kind).size() > 4);
            }
        }
        EXPECT_TRUE(times(1, Kind::limits).empty()) << "nobody shows them";
    }
}

// A silent amplifier that holds the others up: a second try before they had their turn, or a look that finds
// them hungry; one that is asked for its temperatures while it does not even tell its status.
TEST_F(PlanTest, WhoFallsSilentWaitsForTheOthers) {
    open(16);
    run(10s);
    mute = {3};
    asked.clear();
    int failed = 0;
    on_ended = [&](const Plan::Choice& choice, bool silence) {
        wait = silence ? 300ms : wait;  // it is known by then
        failed += silence && choice.attempt.last ? 1 : 0;
        head(3).silent = failed >= 3;
    };
    const Instant start = now;
    while (!head(3).silent) run(50ms);
    EXPECT_LE(now - start, 5500ms);
    EXPECT_LE(times(3, Kind::analog).size() + times(3, Kind::alarm_state).size(), 2U)
        << "when it fell silent";
    for (const bool looked_for : {false, true}) {
        if (looked_for) {
            asked.clear();
            run(60s);
        }
        for (int slot = 1; slot <= 16; ++slot)
            EXPECT_LE(gap(slot, Kind::status), slot == 3 ? 10'000 : looked_for ? 1300 : 2000) << slot;
    }
    EXPECT_NEAR(static_cast<double>(times(3, Kind::status).size()), 12, 1);
}

// A question that an amplifier has no answer to, asked again and again at the others' cost; its other
// questions not asked for that.
TEST_F(PlanTest, AnUnanswerableRequestIsNotRepeatedAtOnce) {
    open(2);
    head(1).limits = true;
    mute_kinds = {Kind::limits};
    wait = 300ms;
    run(30s);
    EXPECT_NEAR(static_cast<double>(times(1, Kind::limits).size()), 12, 2) << "two tries every five seconds";
    EXPECT_LE(gap(1, Kind::status), 1000);
    mute_kinds.clear();
    run(30s);
    EXPECT_GT(times(1, Kind::limits).size(), 60U);
}

// What the operator has just asked for waits in the queue of what is asked anyway; the reason of a shutdown
// behind it; a request that was given up, or was a guess, is tried a second time.
TEST_F(PlanTest, WhatIsWantedOnceGoesFirst) {
    open(16);
    run(10s);
    wishes_of(5) = {{Kind::event, 4}, {Kind::identity}};
    wishes_of(9) = {{Kind::shutdown}, {Kind::status}};
    asked.clear();
    run(200ms);
    ASSERT_GE(asked.size(), 4U);
    EXPECT_EQ(asked[0].attempt.request.kind, Kind::shutdown);
    std::set<Kind> next;
    for (std::size_t i = 1; i < 4; ++i) next.insert(asked[i].attempt.request.kind);
    EXPECT_EQ(next, (std::set<Kind>{Kind::status, Kind::identity, Kind::event}));

    mute_kinds = {Kind::event};
    for (const bool guess : {false, true}) {
        wishes_of(5) = {{Kind::event, 7, guess}};
        on_ended = [&](const Plan::Choice& choice, bool) {
            if (choice.attempt.request.kind == Kind::event && !guess)
                wishes_of(5).clear();  // the page has been left
        };
        asked.clear();
        run(5s);
        EXPECT_EQ(times(5, Kind::event).size(), 1U) << guess;
    }
}

// A read that was cut for an order counted as asked, or its second try lost.
TEST_F(PlanTest, ACutReadIsAskedAgain) {
    open(1);
    run(2s);
    for (const bool second : {false, true}) {
        Plan::Choice choice = plan.next(heads, {}, now);
        for (; choice.what == What::nothing; choice = plan.next(heads, {}, now)) now = choice.until;
        plan.asked(1, choice.attempt, now);
        if (second) {
            now += 50ms;
            plan.ended(1, choice.attempt, Reading::Outcome::bad_crc, now);
            choice = plan.next(heads, {}, now);
            plan.asked(1, choice.attempt, now);
        }
        now += 100ms;
        plan.cut(1, choice.attempt);
        const Plan::Choice again = plan.next(heads, {}, now);
        ASSERT_EQ(again.what, What::read);
        EXPECT_EQ(again.attempt.last, second);
        run(2s);
    }
}

// A station that spins on a line that takes nothing.
TEST_F(PlanTest, ALineThatTakesNothingIsTriedNowAndThen) {
    open(1);
    mute = {1};
    wait = 0ms;
    failure = Reading::Outcome::not_sent;
    run(10s);
    EXPECT_GE(asked.size(), 10U);
    EXPECT_LE(asked.size(), 60U);
}

// Two replies in a row are lost, and the window in front shows values of five seconds ago.
TEST_F(PlanTest, TwoLostRepliesAreNoAmplifierWithoutAnAnswer) {
    open(4);
    run(5s);
    mute_kinds = {Kind::analog};
    wait = 300ms;
    on_ended = [this](const Plan::Choice& choice, bool silence) {
        if (silence && choice.attempt.last)
            mute_kinds.clear();
    };
    run(10s);
    EXPECT_LE(gap(1, Kind::analog), 2000);
}

}  // namespace
}  // namespace ampdesk
