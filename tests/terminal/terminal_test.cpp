// The terminal on a scripted port and a clock that stands still: typing, the modem's commands, hanging
// up, the port's events, and text without line ends.
#include "terminal/terminal.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"
#include "tests/support/modem_port.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scratch_folder.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using Texts = std::vector<std::string>;

struct TerminalTest : testing::Test {
    TerminalTest() {
        terminal.on_text = [this](std::string_view text) { shown += text; };
        terminal.on_status = [this](std::string_view text) { statuses.emplace_back(text); };
        terminal.on_error = [this](std::string_view text) { errors.emplace_back(text); };
        line.on_change = [this] { terminal.line_changed(); };
        bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    }
    void open(Handshake handshake = Handshake::none) {
        line.open({.device = "modem", .handshake = handshake});
    }

    void receive(std::string bytes) {
        port.arrive(std::move(bytes));
        line.pump();
    }

    // As the window does it: ticks exactly when they are wanted, until that time has passed.
    void pass(milliseconds time) {
        const Instant end = clock.now() + time;
        carry_out(bus, terminal);
        for (int i = 0; i < 2000; ++i) {
            const auto next = terminal.next_tick();
            if (!next || clock.now() + *next > end)
                break;
            clock.advance(*next);
            turn();
        }
        if (clock.now() < end)
            clock.advance(end - clock.now());
    }

    // What is due, and the requests after it.
    void turn() {
        terminal.tick();
        carry_out(bus, terminal);
    }

    std::string take_sent() { return std::exchange(port.sent, {}); }
    Texts take_statuses() { return std::exchange(statuses, {}); }

    ManualClock clock;
    ModemPort port{clock};
    ScriptedPort bus_port{clock};
    RecordingOperator person;
    BusLink bus{bus_port, clock};
    TerminalLine line{&port, clock};
    ScratchFolder folder;
    Terminal terminal{line, bus, folder.path()};
    std::string shown;
    Texts statuses, errors;
};

// A key goes into a transfer's blocks, or one that was typed with the port closed goes out later.
TEST_F(TerminalTest, TypedKeys) {
    terminal.type("a");
    open();
    terminal.type("b\r");
    EXPECT_EQ(take_sent(), "b\r");
    line.take({});
    terminal.type("c");
    line.release();
    EXPECT_EQ(take_sent(), "");
    line.close();
    terminal.type("d");
    EXPECT_EQ(errors, Texts{});
}

// The loudspeaker of another volume.
TEST_F(TerminalTest, Volumes) {
    open();
    for (const Volume volume : {Volume::off, Volume::low, Volume::medium, Volume::high})
        EXPECT_TRUE(terminal.modem().set_volume(volume));
    EXPECT_EQ(take_sent(), "ATM0\rATL1M1\rATL2M1\rATL3M1\r");
}

// The silence is too short or is broken by a key; what comes in meanwhile is not handled.
TEST_F(TerminalTest, HangsUpByCommandsWherePortHasNoDtr) {
    EXPECT_FALSE(terminal.hang_up());
    open();
    port.room = 0;
    terminal.type("old");  // is thrown away
    port.room = 100;
    EXPECT_TRUE(terminal.hang_up());
    EXPECT_FALSE(terminal.hang_up());
    pass(milliseconds(999));
    terminal.type("k");
    EXPECT_FALSE(terminal.modem().auto_answer());
    receive("NO CARRIER\r");
    EXPECT_EQ(take_sent(), "");
    pass(milliseconds(1));
    EXPECT_EQ(take_sent(), "+++");
    pass(milliseconds(999));
    EXPECT_EQ(take_sent(), "");
    pass(milliseconds(1));
    EXPECT_EQ(take_sent(), "ATH\r");
    EXPECT_EQ(take_statuses(), (Texts{"Hanging up", "Hung up"}));
    EXPECT_EQ(shown, "NO CARRIER\r");
    terminal.type("l");
    EXPECT_EQ(take_sent(), "l");
}

// The second of silence begins while the driver still sends; output that never leaves stops it all.
TEST_F(TerminalTest, HangUpWaitsForOldOutputButNotForEver) {
    open();
    port.drained = false;
    terminal.hang_up();
    pass(milliseconds(4000));
    port.drained = true;
    pass(milliseconds(900));
    EXPECT_EQ(take_sent(), "");
    pass(milliseconds(100));
    EXPECT_EQ(take_sent(), "+++");
    pass(milliseconds(1000));
    EXPECT_EQ(take_sent(), "ATH\r");
    port.drained = false;
    terminal.hang_up();
    pass(milliseconds(12000));
    EXPECT_EQ(take_sent(), "+++ATH\r");
}

TEST_F(TerminalTest, AnUnpluggedLineEndsTheHangUp) {
    open();
    terminal.hang_up();
    port.plug(false);
    port.plug(true);
    pass(milliseconds(3000));
    EXPECT_FALSE(terminal.modem().hanging_up());
    EXPECT_EQ(take_sent(), "");
}

// Ten thousand characters without a line end hang up again and again, fill the memory, or leave the
// terminal deaf for the next request.
TEST_F(TerminalTest, TextWithoutLineEndsHangsUp) {
    port.has_dtr = true;
    open();
    for (int i = 0; i < 100; ++i) receive(std::string(100, 'x'));
    EXPECT_EQ(shown.size(), 10000 + std::string("manually hang up").size());
    EXPECT_EQ(shown.find("manually hang up"), 200U);
    EXPECT_EQ(port.dtr.size(), 0U);
    pass(milliseconds(499));
    EXPECT_EQ(port.dtr.size(), 0U);
    pass(milliseconds(1));
    EXPECT_EQ(port.dtr.size(), 1U);
    pass(milliseconds(500));
    EXPECT_EQ(port.dtr.size(), 2U);
    pass(milliseconds(5000));
    EXPECT_EQ(port.dtr.size(), 2U);
    receive("\x06\x06>05 X\r");
    pass(milliseconds(1));
    EXPECT_EQ(take_sent(), "No message from amplifier, wrong command\r\n");
}

// More than a hundred characters that came during the wait are not acted on, or fewer are.
TEST_F(TerminalTest, TextThatGoesOnDuringTheWaitHangsUpOnceMore) {
    port.has_dtr = true;
    for (const auto& [during, changes] : {std::pair{100U, 2U}, {101U, 4U}}) {
        open();
        port.dtr.clear();
        shown.clear();
        for (const std::size_t size : {51U, during}) receive(std::string(size, 'x'));
        pass(milliseconds(10000));
        EXPECT_EQ(port.dtr.size(), changes);
        EXPECT_EQ(shown.size(), 51 + during + changes / 2 * std::string("manually hang up").size());
    }
}

// A change that is told twice, told of the state before an unplugging, or told while Term is hidden.
TEST_F(TerminalTest, ReportsTheLine) {
    port.lines = ModemLines{};
    port.counts = LineCounts{};
    open();
    pass(milliseconds(1000));
    EXPECT_EQ(take_statuses(), Texts{});
    port.counts->framing = 5;
    pass(milliseconds(249));
    EXPECT_EQ(take_statuses(), Texts{});
    pass(milliseconds(1));
    EXPECT_EQ(take_statuses(), Texts{"Framing Error"});
    receive(std::string("ab\x1A", 3));
    EXPECT_EQ(take_statuses(), Texts{"End of File Detected"});
    port.plug(false);
    port.counts = LineCounts{};  // the adapter counts anew
    port.plug(true);
    pass(milliseconds(1000));
    EXPECT_EQ(take_statuses(), Texts{});
    terminal.is_visible = [] { return false; };
    port.counts->cts = 1;
    port.counts->buffer_overrun = 1;
    receive("hidden");
    pass(milliseconds(500));
    EXPECT_EQ(take_statuses(), Texts{});
    EXPECT_EQ(shown, std::string("ab\x1A", 3));
    EXPECT_EQ(errors, Texts{"Receive Buffer Overflow"});
}

// CTS holds output back for ever and nobody says so, or it is said every time it is looked at.
TEST_F(TerminalTest, SaysWhenCtsHoldsOutputBack) {
    port.lines = ModemLines{.cts = false};
    open(Handshake::rts_cts);
    pass(milliseconds(10000));
    EXPECT_EQ(errors, Texts{});
    port.drained = false;
    pass(milliseconds(5000));
    EXPECT_EQ(errors, Texts{});
    pass(milliseconds(10000));
    EXPECT_EQ(errors, Texts{"CTS Timeout"});
    port.drained = true;
    pass(milliseconds(500));
    port.drained = false;
    pass(milliseconds(6000));
    EXPECT_EQ(errors, (Texts{"CTS Timeout", "CTS Timeout"}));
}

// The program looks at an idle line that has nothing to tell.
TEST_F(TerminalTest, AnIdleLineWithoutModemLinesWantsNoTick) {
    EXPECT_EQ(terminal.next_tick(), std::nullopt);
    open();
    EXPECT_EQ(terminal.next_tick(), std::nullopt);
    port.plug(false);
    EXPECT_EQ(terminal.next_tick(), std::chrono::seconds(2));
}

// Requests are carried out inside the handler, or without end.
TEST_F(TerminalTest, RequestsWaitForTheirTurn) {
    open();
    std::string many;
    for (int i = 0; i < 40; ++i) many += "\x06\x06>05,RDSTAT\r";
    receive("\x06\x06neither command nor marker\r" + many);
    terminal.tick();
    EXPECT_EQ(bus_port.written.size(), 0U);
    turn();
    EXPECT_EQ(bus_port.written.size(), 32U);
    EXPECT_EQ(shown.substr(shown.size() - 4), "\r\n\r\n");
}

// A bad line that is answered without end, whose noise keeps a request of its own waiting or takes its
// place in the queue, or that leaves a person's wrong request without an answer.
TEST_F(TerminalTest, AnswersWrongRequestsOnceASecond) {
    const std::string wrong = "No message from amplifier, wrong command\r\n";
    open();
    pass(milliseconds(0));
    for (int i = 0; i < 100; ++i) receive("\x06\x06>\x81,\x13\x7F\r");
    receive("\x06\x06noise>5,\x06\x06>05,RDSTAT\r");
    turn();
    EXPECT_EQ(take_sent(), wrong + "\r\n");
    EXPECT_EQ(bus_port.written.size(), 1U);
    const Instant answered = clock.now();  // the amplifier's second has passed since the noise
    receive("\x06\x06>5 RDSTAT\r");
    pass(milliseconds(0));
    EXPECT_EQ(take_sent(), wrong);
    for (int i = 0; i < 9; ++i) {
        receive("\x06\x06>5 RDSTAT\r");
        pass(milliseconds(100));
    }
    EXPECT_EQ(take_sent(), "");
    pass(milliseconds(99));
    EXPECT_EQ(take_sent(), "");
    pass(milliseconds(1));
    EXPECT_EQ(take_sent(), wrong);
    EXPECT_EQ(clock.now() - answered, milliseconds(1000));

    pass(milliseconds(5000));
    receive("\x06\x06>05,RDSTAT\r\x06\x06>5 RDSTAT\r");
    pass(milliseconds(5000));
    EXPECT_EQ(take_sent(), "\r\n" + wrong) << "the answers are not in the order of the requests";
    pass(milliseconds(5000));
    EXPECT_EQ(take_sent(), "");
}

// Whoever asks the guests of the bus in turn gets two requests at once or out of their order, or the answer
// to one goes where nobody has asked for it.
TEST_F(TerminalTest, RequestsAreAGuestOfTheBus) {
    const std::string wrong = "No message from amplifier, wrong command\r\n";
    const std::string request = "\x06\x06>05,RDSTAT\r";
    enum class Meanwhile { nothing, hang_up, transfer };
    for (const Meanwhile meanwhile : {Meanwhile::nothing, Meanwhile::hang_up, Meanwhile::transfer}) {
        SCOPED_TRACE(static_cast<int>(meanwhile));
        open();
        EXPECT_EQ(terminal.due(), std::nullopt);
        receive(request + request + "\x06\x06>5 RDSTAT\r");
        EXPECT_TRUE(terminal.due());
        const auto asked = terminal.next();
        ASSERT_TRUE(asked);
        EXPECT_EQ(terminal.due(), std::nullopt);
        if (meanwhile == Meanwhile::hang_up)
            terminal.hang_up();
        if (meanwhile == Meanwhile::transfer)
            line.take({});
        take_sent();
        terminal.ended(bus.carry_out(*asked));
        EXPECT_EQ(take_sent(), meanwhile == Meanwhile::nothing ? "\r\n" : "");
        EXPECT_EQ(terminal.due().has_value(), meanwhile == Meanwhile::nothing);
        if (meanwhile == Meanwhile::nothing) {
            const auto second = terminal.next();
            ASSERT_TRUE(second);
            terminal.tick();
            EXPECT_EQ(take_sent(), "");
            terminal.ended(bus.carry_out(*second));
            terminal.tick();
            EXPECT_EQ(take_sent(), "\r\n" + wrong);
        }
        line.release();
        line.close();
    }
}

// A request that is lost, goes to the bus though it is none or half of one, or whose answer the remote
// station or the operator does not get.
TEST_F(TerminalTest, CarriesOutRequests) {
    folder.put("rs422.dat", "RS-422\r\nCOM1:\r\n6\r\n3\r\n0\r\n0\r\n");
    bus.close_bus_port();
    open();
    for (const char* bytes : {"\x06", "\x06\x02\x02", "RS422", "\r"}) receive(bytes);
    pass(milliseconds(0));
    EXPECT_EQ(bus_port.opened.back().device, "/dev/ttyS0");
    EXPECT_EQ(take_sent(), "");

    bus_port.answer(hex_bytes("06 05 04 52 44 4F 4B B3 3F"));
    const std::string answer = "No response from amplifier, check 422/485 connection to the amplifier\r\n";
    const std::string request = "hello \x06\x06 > 5 , RDSTAT \r\n";
    shown.clear();
    receive(request);
    pass(milliseconds(1000));
    ASSERT_EQ(bus_port.written.size(), 1U);
    EXPECT_EQ(to_hex(bus_port.written[0]), "01 05 06 52 44 53 54 41 54 37 29");
    EXPECT_EQ(take_sent(), answer);
    EXPECT_EQ(shown, request + answer);

    receive("\x06\x06>05,RD");
    port.plug(false);
    port.plug(true);
    for (const char* none : {"STAT\r", ">05,RDSTAT\r", "\x06>05,RDSTAT\r", "\x06\x06RDSTAT\r"}) receive(none);
    pass(milliseconds(1000));
    EXPECT_EQ(bus_port.written.size(), 1U);
}

}  // namespace
}  // namespace ampdesk
