// The traffic log: what is kept, what is joined, what a filter lets through, and how it is printed.
#include <gtest/gtest.h>

#include "terminal/traffic.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

struct TrafficLogTest : testing::Test {
    std::vector<std::string> bytes_kept() const {
        std::vector<std::string> all;
        for (auto i = log.first(); i < log.end(); ++i) all.push_back(log.entry(i).bytes);
        return all;
    }
    void add(const std::string& bytes, bool sent = true, int unit = 1, TrafficLine line = TrafficLine::bus) {
        log.add({line, sent, unit, bytes, clock.local_time(), clock.now()});
    }

    ManualClock clock;
    TrafficLog log;
};

using Kept = std::vector<std::string>;

// Fault: a frame that came in in pieces is torn, or two frames run together; a reader who was told that an
// entry is complete misses what joins it afterwards.
TEST_F(TrafficLogTest, JoinsPiecesOfOneStretch) {
    EXPECT_EQ(log.settled_end(clock.now()), 0U);
    add("a");
    add("b");
    clock.advance(milliseconds(30));
    EXPECT_EQ(log.settled_end(clock.now()), 0U);
    add("c");
    clock.advance(milliseconds(31));
    add("later");
    add("other way", false);
    add("other unit", false, 2);
    add("", false, 2);
    add("other line", false, 2, TrafficLine::terminal);
    const TrafficChunk held_up{.line = TrafficLine::terminal, .unit = 2, .bytes = "d", .at = clock.now()};
    clock.advance(milliseconds(31));
    EXPECT_EQ(log.settled_end(clock.now()), 5U);
    log.add(held_up);
    EXPECT_EQ(bytes_kept(), (Kept{"abc", "later", "other way", "other unit", "other line", "d"}));
}

// Fault: memory grows for months; a number means another entry after the ring has turned.
TEST_F(TrafficLogTest, KeepsTheLastTenThousand) {
    add(std::string(100, 'x'));
    add(std::string(500, 'y'));
    EXPECT_EQ(bytes_kept(), (Kept{std::string(100, 'x') + std::string(156, 'y'), std::string(256, 'y'),
                                  std::string(88, 'y')}));
    for (int i = 0; i < 10'000; ++i) add("z", i % 2 == 0, 2);
    EXPECT_EQ(log.first(), 3U);
    EXPECT_EQ(log.entry(3).bytes, "z");
    log.clear();
    EXPECT_EQ(log.first(), 10'003U);
    add("new");
    EXPECT_EQ(log.entry(10'003).bytes, "new");
}

// Fault: the columns move, bytes are lost at a line's end, or the file holds other entries than the ones
// chosen.
TEST_F(TrafficLogTest, PrintsLinesAndFile) {
    clock.set_wall(std::chrono::hours(9) + std::chrono::minutes(8) + milliseconds(7006));
    add(hex_bytes("01 01 01 11 91 A0"), true, 1);
    add("A line of twenty ch~", false, 12);
    add("ok\r", true, 0, TrafficLine::terminal);
    const std::vector<std::string> expected = {
        "Traffic up to 2026-03-10 09:08:07.006",
        "09:08:07.006  unit 01   sent      01 01 01 11 91 A0                                ......",
        "09:08:07.006  unit 12   received  41 20 6C 69 6E 65 20 6F 66 20 74 77 65 6E 74 79  A line of twenty",
        "                                  20 63 68 7E                                       ch~",
        "09:08:07.006  terminal  sent      6F 6B 0D                                         ok.",
    };
    EXPECT_EQ(traffic_file(log, {}, clock.local_time()), expected);
    EXPECT_EQ(traffic_file(log, {.unit = 1}, clock.local_time()), std::vector(&expected[0], &expected[2]));
    const std::pair<TrafficFilter, const char*> chosen[] = {
        {{.line = TrafficLine::bus}, "01"},
        {{.unit = 0}, ""},
        {{.text = "LINE"}, "1"},
        {{.text = "01 11"}, "0"},
        {{.text = "ok."}, "2"},
        {{.sent = true}, "02"},
        {{.sent = true, .text = "line"}, ""},
    };
    for (const auto& [filter, wanted] : chosen) {
        std::string passed;
        for (auto i = log.first(); i < log.end(); ++i)
            passed += filter.passes(log.entry(i)) ? std::to_string(i) : "";
        EXPECT_EQ(passed, wanted);
    }
}

}  // namespace
}  // namespace ampdesk
