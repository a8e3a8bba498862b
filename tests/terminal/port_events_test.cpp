// What the driver tells of the line, on its way to the operator.
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

struct Driver {
    int lines = 0;
    serial_icounter_struct counts{};
    bool tells_lines = true;
    bool tells_counts = true;

    // A call that fails leaves something behind all the same.
    int call(unsigned long request, void* argument) const {
        if (request == TIOCMGET)
            *static_cast<int*>(argument) = tells_lines ? lines : ~lines;
        if (request == TIOCGICOUNT) {
            auto& told = *static_cast<serial_icounter_struct*>(argument);
            told = counts;
            told.brk += tells_counts ? 0 : 7;
        }
        return (request == TIOCMGET && tells_lines) || (request == TIOCGICOUNT && tells_counts) ? 0 : -1;
    }
};

struct PortEvents : testing::Test {
    PortEvents() {
        terminal.on_status = [this](std::string_view text) { told.append(text) += '|'; };
        terminal.on_error = [this](std::string_view text) { told.append(text) += '!'; };
        line.on_change = [this] { terminal.line_changed(); };
        EXPECT_TRUE(line.open({.device = far.device()}).ok());
    }
    // What the operator is told in two looks.
    std::string looks() {
        told.clear();
        for (int i = 0; i < 2; ++i) {
            clock.advance(Terminal::k_look);
            terminal.tick();
        }
        return told;
    }

    Driver driver;
    ManualClock clock;
    FarEnd far;
    PosixSerialPort port{
        clock, [this](int, unsigned long request, void* argument) { return driver.call(request, argument); }};
    TerminalLine line{&port, clock};
    ScriptedPort bus_port{clock};
    RecordingOperator person;
    BusLink bus{bus_port, clock};
    Terminal terminal{line, bus};
    std::string told;
};

// A count or a line that is told as another one, twice or not at all; a level that is told although
// the edges are counted.
TEST_F(PortEvents, EachComesFromItsOwnPlace) {
    using Counts = serial_icounter_struct;
    const struct {
        int Counts::*count;
        int line;  // 0: it is only counted
        std::string told;
    } table[] = {{&Counts::cts, TIOCM_CTS, "Change in CTS Detected|"},
                 {&Counts::dsr, TIOCM_DSR, "Change in DSR Detected|"},
                 {&Counts::dcd, TIOCM_CAR, "Change in CD Detected|"},
                 {&Counts::rng, TIOCM_RNG, "The Phone is Ringing|"},
                 {&Counts::brk, 0, "Break Received|"},
                 {&Counts::frame, 0, "Framing Error|"},
                 {&Counts::overrun, 0, "Overrun Error!"},
                 {&Counts::parity, 0, "Parity Error|"},
                 {&Counts::buf_overrun, 0, "Receive Buffer Overflow!"},
                 {&Counts::rx, 0, ""}};
    for (const auto& row : table) {
        SCOPED_TRACE(row.told);
        driver.counts.*row.count += 3;  // several at once
        EXPECT_EQ(looks(), row.told);
        driver.lines = row.line;
        EXPECT_EQ(looks(), "");
        driver.tells_counts = false;
        driver.lines = 0;
        EXPECT_EQ(looks(), row.line == 0 || row.line == TIOCM_RNG ? "" : row.told);
        driver.lines = row.line;
        EXPECT_EQ(looks(), row.line == 0 ? "" : row.told);
        driver.tells_counts = true;
        EXPECT_EQ(looks(), "");
    }
}

// What a call left behind that failed is told as an event; one failure blinds the terminal for good.
TEST_F(PortEvents, FailingCallsTellNothing) {
    driver.counts.frame = INT_MAX;
    driver.counts.rng = -1;
    looks();
    driver.counts.frame = INT_MIN;  // past their ends
    driver.counts.rng = 0;
    EXPECT_EQ(looks(), "The Phone is Ringing|Framing Error|");
    driver.tells_lines = driver.tells_counts = false;
    driver.lines = TIOCM_CTS;
    driver.counts.frame += 9;
    EXPECT_EQ(looks(), "");
    driver.tells_lines = driver.tells_counts = true;
    EXPECT_EQ(looks(), "");
    driver.tells_lines = false;
    ++driver.counts.dcd;
    EXPECT_EQ(looks(), "Change in CD Detected|");
    line.close();
    EXPECT_EQ(terminal.next_tick(), std::nullopt);
}

// The codes that no counter and no line gives.
TEST(PortEventTexts, OfTheOthers) {
    using enum EventKind;
    const struct {
        int code;
        const char* text;
        EventKind kind;
    } table[] = {{1, "", ignored},
                 {2, "", ignored},
                 {1003, "DSR Timeout", error},
                 {1006, "Carrier Detect Timeout", error},
                 {1010, "Unknown error or event", error}};
    for (const auto& row : table) {
        EXPECT_EQ(describe_event(row.code).text, row.text) << row.code;
        EXPECT_EQ(describe_event(row.code).kind, row.kind) << row.code;
    }
}

}  // namespace
}  // namespace ampdesk
