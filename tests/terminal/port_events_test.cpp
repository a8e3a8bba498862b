// What each event code says and how it is reported, and which codes the driver's counters give.
#include "terminal/port_events.h"

#include <gtest/gtest.h>

namespace ampdesk {
namespace {

TEST(PortEvents, TextsAndKinds) {
    using enum EventKind;
    const struct {
        int code;
        const char* text;
        EventKind kind;
    } table[] = {{1, "", ignored},
                 {2, "", ignored},
                 {3, "Change in CTS Detected", status},
                 {4, "Change in DSR Detected", status},
                 {5, "Change in CD Detected", status},
                 {6, "The Phone is Ringing", status},
                 {7, "End of File Detected", status},
                 {1001, "Break Received", status},
                 {1002, "CTS Timeout", error},
                 {1003, "DSR Timeout", error},
                 {1004, "Framing Error", status},
                 {1005, "Overrun Error", error},
                 {1006, "Carrier Detect Timeout", error},
                 {1007, "Receive Buffer Overflow", error},
                 {1008, "Parity Error", status},
                 {1009, "Transmit Buffer Full", error},
                 {0, "Unknown error or event", error},
                 {1000, "Unknown error or event", error},
                 {1010, "Unknown error or event", error}};
    for (const auto& row : table) {
        EXPECT_EQ(describe_event(row.code).text, row.text) << row.code;
        EXPECT_EQ(describe_event(row.code).kind, row.kind) << row.code;
    }
}

using Codes = std::vector<int>;

// A count told under another's name, an edge told twice or not at all.
TEST(PortEvents, FromTheCounters) {
    const LineCounts before{.framing = 7, .ring = 0xFFFFFFFF};
    const struct {
        unsigned LineCounts::*count;
        int code;
    } table[] = {{&LineCounts::cts, 3},        {&LineCounts::dsr, 4},
                 {&LineCounts::carrier, 5},    {&LineCounts::ring, 6},
                 {&LineCounts::breaks, 1001},  {&LineCounts::framing, 1004},
                 {&LineCounts::overrun, 1005}, {&LineCounts::buffer_overrun, 1007},
                 {&LineCounts::parity, 1008}};
    for (const auto& row : table) {
        LineCounts now = before;
        now.*row.count += 3;  // several at once, and past the end of the counter
        EXPECT_EQ(events_between({{}, before}, {{}, now}), Codes{row.code});
    }
    EXPECT_EQ(events_between({{}, before}, {{}, before}), Codes{});
    // With counters the levels say nothing: a line that fell and rose reads as it was.
    EXPECT_EQ(events_between({ModemLines{}, before}, {ModemLines{.cts = true}, before}), Codes{});
}

TEST(PortEvents, FromTheLevelsWhereNothingCounts) {
    const ModemLines low;
    const ModemLines high{true, true, true, true};
    EXPECT_EQ(events_between({low, {}}, {high, {}}), (Codes{3, 4, 5, 6}));
    EXPECT_EQ(events_between({high, {}}, {low, {}}), (Codes{3, 4, 5}));  // the end of a ring is none
    EXPECT_EQ(events_between({high, {}}, {high, {}}), Codes{});
    EXPECT_EQ(events_between({{}, {}}, {high, {}}), Codes{});  // the first look has nothing to compare
    EXPECT_EQ(events_between({high, LineCounts{.cts = 4}}, {{}, {}}), Codes{});
}

}  // namespace
}  // namespace ampdesk
