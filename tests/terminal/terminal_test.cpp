// The terminal on a scripted port and a clock that stands still: typing, the modem's commands, hanging
// up, the port's events, text without line ends, and the requests of a remote station.
#include "terminal/terminal.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"
#include "tests/support/modem_port.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

const std::string k_wrong = "No message from amplifier, wrong command\r\n";
const std::string k_request = "\x06\x06>05,RDSTAT\r";

struct TerminalTest : testing::Test {
    TerminalTest() {
        terminal.on_text = [this](std::string_view text) { shown += text; };
        terminal.on_status = [this](std::string_view text) { tell("[" + std::string(text) + "]"); };
        terminal.on_error = [this](std::string_view text) { tell("(" + std::string(text) + ")"); };
        line.on_change = [this] { terminal.line_changed(); };
        line.add_watcher([this](const TerminalTraffic& traffic) {
            if (traffic.sent)
                tell(std::string(traffic.bytes));
        });
        bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    }
    void open(Handshake handshake = Handshake::none) { line.open({.device = {}, .handshake = handshake}); }
    void tell(const std::string& text) {
        timeline += std::to_string((clock.now() - start) / milliseconds(1)) + " " + text + "|";
    }
    void receive(std::string bytes) {
        port.arrive(std::move(bytes));
        line.pump();
    }

    // As the station does it: ticks exactly when they are wanted, until that time has passed, and carries out
    // requests behind them.
    void pass(milliseconds time) {
        const Instant end = clock.now() + time;
        carry_out(bus, terminal);
        for (int i = 0; i < 2000; ++i) {
            const auto next = terminal.next_tick();
            if (!next || clock.now() + *next > end)
                break;
            clock.advance(*next);
            terminal.tick();
            carry_out(bus, terminal);
        }
        clock.sleep_until(end);
    }

    std::string take_sent() { return std::exchange(port.sent, {}); }

    ManualClock clock;
    ModemPort port{clock};
    ScriptedPort bus_port{clock};
    BusLink bus{bus_port, clock};
    TerminalLine line{&port, clock};
    Terminal terminal{line, bus, TEST_DATA "/rs422/good"};
    std::string shown;
    const Instant start = clock.now();
    std::string timeline;  // what is sent, [statuses] and (errors), with their milliseconds since the start
};

// A key goes into a transfer's blocks, one that was typed with the port closed goes out later, or one that is
// lost is not told; the modem is told something else. A line that has nothing to tell is looked at.
TEST_F(TerminalTest, WhatIsTypedAndTheModemsCommands) {
    terminal.type("a");
    EXPECT_EQ(terminal.next_tick(), std::nullopt);
    open();
    EXPECT_EQ(terminal.next_tick(), std::nullopt);
    terminal.type("b\r");
    for (const Volume volume : {Volume::off, Volume::low, Volume::medium, Volume::high})
        EXPECT_TRUE(terminal.modem().set_volume(volume));
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(terminal.modem().auto_answer());
    line.take({});
    terminal.type("c");
    EXPECT_FALSE(terminal.hang_up());
    line.release();
    terminal.type(std::string(65537, 'x'));
    port.plug(false);
    EXPECT_EQ(terminal.next_tick(), std::chrono::seconds(2));
    port.arrive("+");  // a port that is read looks for its line
    pass(milliseconds(2000));
    EXPECT_EQ(shown, "+");
    port.arrive("+");
    terminal.type("e");
    EXPECT_EQ(shown, "++");
    line.close();
    terminal.type("d");
    EXPECT_EQ(timeline,
              "0 b\r|0 ATM0\r|0 ATL1M1\r|0 ATL2M1\r|0 ATL3M1\r|0 ATE1M0S0=1\r|0 ATS0=0\r|"
              "0 (Transmit Buffer Full)|");
}

// The silence is too short or is broken by a key; what comes in meanwhile is not handled.
TEST_F(TerminalTest, HangsUpByCommandsWherePortHasNoDtr) {
    EXPECT_FALSE(terminal.hang_up());
    open();
    receive("\x06\x06>05,RD");  // is thrown away
    port.room = 0;
    terminal.type("old");  // so is this
    port.room = 100;
    EXPECT_TRUE(terminal.hang_up());
    EXPECT_FALSE(terminal.hang_up());
    pass(milliseconds(999));
    terminal.tick();  // whatever for
    terminal.type("k");
    EXPECT_FALSE(terminal.modem().auto_answer() || terminal.modem().set_volume(Volume::off));
    receive("STAT\r");
    pass(milliseconds(2000));
    terminal.type("l");
    EXPECT_EQ(timeline, "0 [Hanging up]|1000 +++|2000 ATH\r|2000 [Hung up]|2999 l|");
    EXPECT_EQ(shown, "\x06\x06>05,RDSTAT\r");
    EXPECT_TRUE(bus_port.written.empty());
    terminal.hang_up();
    receive(k_request);
    EXPECT_EQ(terminal.due(), std::nullopt);
}

// The second of silence begins while the driver still sends; output that never leaves stops it all; a
// hang-up outlives its line.
TEST_F(TerminalTest, HangUpWaitsForOldOutputButNotForEver) {
    open();
    port.drained = false;
    terminal.hang_up();
    pass(milliseconds(4000));
    port.drained = true;
    pass(milliseconds(2000));
    port.drained = false;
    terminal.hang_up();
    pass(milliseconds(12000));
    terminal.hang_up();
    port.plug(false);
    port.plug(true);
    pass(milliseconds(12000));
    EXPECT_FALSE(terminal.modem().hanging_up());
    EXPECT_EQ(timeline,
              "0 [Hanging up]|5000 +++|6000 ATH\r|6000 [Hung up]|"
              "6000 [Hanging up]|16000 +++|17000 ATH\r|17000 [Hung up]|18000 [Hanging up]|");
}

// Text without line ends hangs up too soon, not at all or again and again, fills the memory, or leaves the
// terminal deaf for the next request.
TEST_F(TerminalTest, TextWithoutLineEndsHangsUp) {
    port.has_dtr = true;
    // Chunks, and when DTR goes low, high … (ms after the first chunk).
    const std::pair<std::vector<std::size_t>, std::vector<int>> cases[] = {
        {{51, 100}, {500, 1000}},
        {{51, 101}, {500, 1000, 1000, 1500}},
        {std::vector<std::size_t>(100, 100), {500, 1000}}};
    for (const auto& [chunks, changes] : cases) {
        open();
        port.dtr.clear();
        shown.clear();
        const Instant first = clock.now();
        for (const std::size_t size : chunks) receive(std::string(size, 'x'));
        EXPECT_EQ(shown.find("manually hang up"), chunks[0] + chunks[1]);
        pass(milliseconds(700));
        receive(std::string(101, 'x'));
        pass(milliseconds(9300));
        ASSERT_EQ(port.dtr.size(), changes.size());
        for (std::size_t i = 0; i < changes.size(); ++i)
            EXPECT_EQ(port.dtr[i], std::pair(first + milliseconds(changes[i]), i % 2 == 1));
        receive(k_request);
        EXPECT_TRUE(terminal.due());
    }
    EXPECT_EQ(shown.size(), 10101 + std::string("manually hang up").size() + k_request.size());
    for (const std::size_t size : {51, 1}) receive(std::string(size, 'x'));
    port.plug(false);
    port.plug(true);  // another call
    port.dtr.clear();
    pass(milliseconds(10000));
    EXPECT_TRUE(port.dtr.empty());
}

// A change that is told twice, told of the state before an unplugging, or told while Term is hidden; CTS
// holds output back for ever and nobody says so, or it is said every time it is looked at.
TEST_F(TerminalTest, ReportsTheLine) {
    port.lines = ModemLines{};
    port.counts = LineCounts{};
    open();
    pass(milliseconds(1000));
    port.counts->framing = 5;
    pass(milliseconds(1000));
    receive("ab\x1A");
    port.plug(false);
    port.counts = LineCounts{};  // the adapter counts anew
    port.plug(true);
    pass(milliseconds(1000));
    terminal.is_visible = [] { return false; };
    port.counts->cts = 1;
    port.counts->buffer_overrun = 1;
    receive("hidden");
    pass(milliseconds(1000));
    EXPECT_EQ(std::exchange(timeline, {}),
              "1250 [Framing Error]|2000 [End of File Detected]|3250 (Receive Buffer Overflow)|");
    EXPECT_EQ(shown, "ab\x1A");
    terminal.is_visible = nullptr;
    for (const Handshake handshake : {Handshake::none, Handshake::rts_cts}) {
        port.drained = true;
        open(handshake);
        pass(milliseconds(10000));
        port.drained = false;
        pass(milliseconds(15000));
    }
    port.drained = true;
    pass(milliseconds(500));
    port.drained = false;
    pass(milliseconds(6000));
    EXPECT_EQ(timeline, "44250 (CTS Timeout)|59750 (CTS Timeout)|");
}

// A bad line that is answered without end, whose noise keeps a request of its own waiting or takes its
// place in the queue, or that leaves a person's wrong request without an answer.
TEST_F(TerminalTest, AnswersWrongRequestsOnceASecond) {
    open();
    for (int i = 0; i < 100; ++i) receive("\x06\x06>\x81,\x13\x7F\r");
    receive("\x06\x06noise>5,\x06\x06>05,RDSTAT\r\x06\x06>5 RDSTAT\r");
    terminal.tick();
    carry_out(bus, terminal);  // the amplifier has its time
    for (int i = 0; i < 10; ++i) {
        receive("\x06\x06>5 RDSTAT\r");
        pass(milliseconds(100));
    }
    pass(milliseconds(5000));
    receive(k_request + "\x06\x06>5 RDSTAT\r");
    pass(milliseconds(5000));
    EXPECT_EQ(timeline, "0 " + k_wrong + "|1050 \r\n|1050 " + k_wrong + "|2050 " + k_wrong +
                            "|8100 \r\n|8100 " + k_wrong + "|");
    EXPECT_EQ(bus_port.written.size(), 2U);
}

// Whoever asks the guests of the bus in turn gets two requests at once, out of their order or without end, or
// the answer to one goes where nobody has asked for it.
TEST_F(TerminalTest, RequestsAreAGuestOfTheBus) {
    open();
    EXPECT_EQ(terminal.due(), std::nullopt);
    receive(k_request + k_request + "\x06\x06>5 RDSTAT\r");
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(terminal.due());
        terminal.tick();
        const auto asked = terminal.next();
        ASSERT_TRUE(asked);
        EXPECT_EQ(terminal.due(), std::nullopt);
        terminal.tick();
        EXPECT_EQ(take_sent(), "");
        terminal.ended(bus.carry_out(*asked));
        EXPECT_EQ(take_sent(), "\r\n");
    }
    terminal.tick();
    EXPECT_EQ(take_sent(), k_wrong);
    for (const bool hang_up : {true, false}) {
        receive(k_request + k_request);
        const auto asked = terminal.next();
        ASSERT_TRUE(asked);
        if (hang_up)
            terminal.hang_up();
        else
            line.take({});
        terminal.ended(bus.carry_out(*asked));
        EXPECT_EQ(take_sent(), "");
        EXPECT_EQ(terminal.due(), std::nullopt);
        line.close();
        open();
    }
    bus_port.written.clear();
    for (int i = 0; i < 40; ++i) receive(k_request);
    pass(milliseconds(0));
    EXPECT_EQ(bus_port.written.size(), 32U);
}

// A request that is lost, goes to the bus though it is none or half of one, or whose answer the remote
// station or the operator does not get.
TEST_F(TerminalTest, CarriesOutRequests) {
    open();
    for (const char* bytes : {"\x06", "\x06\x02\x02", "RS422", "\r"}) receive(bytes);
    pass(milliseconds(0));
    EXPECT_EQ(bus_port.opened.back().device, "/dev/ttyS0");
    EXPECT_EQ(take_sent(), "");

    const std::string request = "hello \x06\x06 > 5 , RDSTAT \r\n";
    shown.clear();
    receive(request);
    EXPECT_EQ(port.discards, 1);
    pass(milliseconds(1000));
    EXPECT_EQ(to_hex(bus_port.written.at(0)), "01 05 06 52 44 53 54 41 54 37 29");
    EXPECT_EQ(take_sent(), "\r\n");
    EXPECT_EQ(shown, request + "\r\n");

    receive("\x06\x06>05,RD");
    port.plug(false);
    port.plug(true);
    for (const char* none : {"STAT\r", ">05,RDSTAT\r", "\x06>05,RDSTAT\r", "\x06\x06RDSTAT\r"}) receive(none);
    pass(milliseconds(1000));
    EXPECT_EQ(bus_port.written.size(), 1U);
    EXPECT_EQ(take_sent(), "");
}

}  // namespace
}  // namespace ampdesk
