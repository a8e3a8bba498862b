// What each event code says and how it is reported, and which codes the driver's counters give.
#include "terminal/port_events.h"

#include <gtest/gtest.h>
#include <linux/serial.h>
#include <sys/ioctl.h>

#include <climits>

#include "platform/posix/posix_serial_port.h"
#include "terminal/terminal.h"
#include "tests/platform/far_end.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"

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

// What the driver tells gets lost on the way to the operator, or what a call left behind that failed
// half way is told as an event; one failure blinds the terminal for good.
TEST(PortEvents, FromTheDriverToTheOperator) {
    struct Driver {
        int lines = 0;
        serial_icounter_struct counts{};
        bool tells_lines = true;
        bool tells_counts = true;
    } driver;
    driver.counts.frame = INT_MAX;
    driver.counts.rng = -1;
    const auto call = [&](int, unsigned long request, void* argument) {
        if (request == TIOCMGET)
            *static_cast<int*>(argument) = driver.tells_lines ? driver.lines : ~driver.lines;
        if (request == TIOCGICOUNT) {
            auto& counts = *static_cast<serial_icounter_struct*>(argument);
            counts = driver.counts;
            counts.brk += driver.tells_counts ? 0 : 7;
        }
        const bool told =
            (request == TIOCMGET && driver.tells_lines) || (request == TIOCGICOUNT && driver.tells_counts);
        return told ? 0 : -1;
    };
    ManualClock clock;
    FarEnd far;
    PosixSerialPort port(clock, call);
    TerminalLine line(&port, clock);
    ScriptedPort bus_port(clock);
    RecordingOperator person;
    BusLink bus(bus_port, clock, person);
    Terminal terminal(line, bus);
    std::string told;
    terminal.on_status = terminal.on_error = [&](std::string_view text) { told.append(text) += '|'; };
    line.on_change = [&] { terminal.line_changed(); };
    ASSERT_TRUE(line.open({.device = far.device()}).ok());
    const struct {
        const char* what;
        void (*happens)(Driver&);
        const char* told;
    } steps[] = {
        {"nothing", [](Driver&) {}, ""},
        {"the counters pass their ends",
         [](Driver& d) {
             d.counts.frame = INT_MIN;
             d.counts.rng = 0;
         },
         "The Phone is Ringing|Framing Error|"},
        {"each error",
         [](Driver& d) {
             for (int* count : {&d.counts.brk, &d.counts.parity, &d.counts.overrun, &d.counts.buf_overrun})
                 ++*count;
         },
         "Break Received|Parity Error|Overrun Error|Receive Buffer Overflow|"},
        {"the counters go, a line rises",
         [](Driver& d) {
             d.tells_counts = false;
             d.lines = TIOCM_CTS;
             d.counts.cts = 1;
         },
         "Change in CTS Detected|"},
        {"a line falls, an error is not seen",
         [](Driver& d) {
             d.lines = 0;
             d.counts.frame += 9;
         },
         "Change in CTS Detected|"},
        {"the lines go, too", [](Driver& d) { d.tells_lines = false; }, ""},
        {"all is back", [](Driver& d) { d.tells_lines = d.tells_counts = true; }, ""},
        {"the lines go, a carrier is counted",
         [](Driver& d) {
             d.tells_lines = false;
             d.counts.dcd = 5;
         },
         "Change in CD Detected|"},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.what);
        told.clear();
        step.happens(driver);
        for (int looks = 0; looks < 2; ++looks) {
            clock.advance(Terminal::k_look);
            terminal.tick();
        }
        EXPECT_EQ(told, step.told);
    }
    line.close();
    EXPECT_EQ(terminal.next_tick(), std::nullopt);
}

}  // namespace
}  // namespace ampdesk
