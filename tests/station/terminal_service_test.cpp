// The terminal as the station keeps it: what is done with each order, what is told, and the end of the
// program. It is driven as its host drives it: a step when input has come and when one is due, and at no
// other time.
#include "station/terminal_service.h"

#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "tests/station/rig.h"
#include "tests/support/full_disk.h"
#include "tests/support/modem_port.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

struct TerminalServiceTest : StationTest {
    TerminalServiceTest() {
        services.options.folder = folder.path();
        make();
    }
    void make() {
        terminal.emplace(&modem, station, services, [this](const std::string& key, TerminalNotice notice) {
            if (const auto* state = std::get_if<notice::TerminalState>(&notice)) {
                EXPECT_EQ(key, "terminal");
                seen = state->terminal;
                ++told;
            }
        });
        terminal->on_text = [this](std::string_view bytes) { text += bytes; };
        terminal->on_traffic = [this](TrafficChunk chunk) { traffic.push_back(std::move(chunk)); };
    }

    // Settings of COM2:, opened as the program does it at its start.
    void start() {
        folder.put("ampdesk.dat", "ampdesk settings\r\n2\r\n");
        terminal->load_settings();
        terminal->open_at_start();
    }
    void pass(Duration time) {
        const Instant end = clock.now() + time;
        for (int steps = 0; steps < 1000; ++steps) {
            terminal->step();
            const Instant input = modem.input_due().value_or(end);
            const Instant next = std::min({terminal->due().value_or(end), input, end});
            if (clock.now() >= end)
                return;
            clock.advance(std::max<Duration>(next - clock.now(), milliseconds(1)));
        }
        ADD_FAILURE() << "it spins";
    }
    void receive(std::string bytes) {
        modem.arrive(std::move(bytes));
        terminal->step();
    }
    std::string take_sent() { return std::exchange(modem.sent, {}); }

    ModemPort modem{clock};
    std::optional<TerminalService> terminal;
    TerminalView seen;
    int told = 0;
    std::string text;
    std::vector<TrafficChunk> traffic;
};

// The copy of the state that the window works by is an old one, or is told again and again.
TEST_F(TerminalServiceTest, TellsEachChangeOnce) {
    start();
    EXPECT_TRUE(seen.open && seen.connected && seen.shows_typed());
    EXPECT_EQ(seen.state, "COM2:  9600,n,8,1");
    EXPECT_EQ(person.status, "COM2: connected");
    told = 0;
    pass(std::chrono::seconds(10));
    EXPECT_EQ(told, 0);
    modem.plug(false);
    pass(milliseconds(1));
    EXPECT_EQ(seen.state, "COM2:  connection lost");
    EXPECT_EQ(person.status, "COM2: connection lost, trying again");
    modem.plug(true);
    terminal->take(act::HangUp{});
    EXPECT_TRUE(seen.hanging_up && !seen.shows_typed());
    pass(std::chrono::seconds(3));
    EXPECT_FALSE(seen.hanging_up);
    EXPECT_EQ(take_sent(), "+++ATH\r");
}

// What is typed is not sent; what comes in goes to a box that nobody can see.
TEST_F(TerminalServiceTest, TextGoesBothWays) {
    start();
    modem.room = 2;
    terminal->take(act::TypeText{"abc"});
    modem.room = 10;
    pass(milliseconds(20));
    EXPECT_EQ(take_sent(), "abc");
    receive("in");
    terminal->take(act::ShowTerminal{false});
    receive("hidden");
    terminal->take(act::ShowTerminal{true});
    receive("again");
    EXPECT_EQ(text, "inagain");
}

// A remote station's request waits for ever, or its answer goes nowhere.
TEST_F(TerminalServiceTest, ARemoteStationReachesTheAmplifier) {
    start();
    bus.open_bus_port("COM1:", 9600, 0, 8, 1);
    receive("\x06\x06>3,RDSTAT\r");
    poll(milliseconds(1500));
    EXPECT_EQ(port.requests, (std::vector<std::pair<int, char>>{{3, 'R'}}));
    EXPECT_NE(take_sent(), "");
}

// An amplifiers' port is taken by the terminal because a file says so; a file of another kind is changed.
TEST_F(TerminalServiceTest, TheStartLeavesTheBusItsPort) {
    folder.put("rs485.dat", "RS-485\r\nCOM2:\r\n6\r\n1\r\n");
    start();
    EXPECT_FALSE(seen.open);
    EXPECT_EQ(person.status, "COM2: is used by the amplifier bus, the terminal stays closed");
    folder.put("ampdesk.dat", "something else");
    EXPECT_THROW(terminal->load_settings(), RunTimeError);
    EXPECT_EQ(file_bytes(folder / "ampdesk.dat"), "something else");
}

// Settings are used and not kept, end a call though the port is the same, or go wrong without a word.
TEST_F(TerminalServiceTest, Settings) {
    TerminalSettings settings{.port = 2, .baud = 1200};
    terminal->take(act::UseTerminalSettings{settings});
    EXPECT_EQ(file_bytes(folder / "ampdesk.dat"),
              "ampdesk settings\r\n2\r\n1200\r\n8\r\n0\r\n1\r\n0\r\n1\r\n");
    settings.echo = false;
    terminal->take(act::UseTerminalSettings{settings});
    EXPECT_EQ(modem.opened.size(), 1U);
    EXPECT_FALSE(seen.shows_typed());
    settings.baud = 300;
    modem.open_result = {PortError::not_found, "no such device"};
    terminal->take(act::UseTerminalSettings{settings});
    ASSERT_EQ(person.messages.size(), 1U);
    EXPECT_EQ(person.messages[0].detail, "no such device");
    EXPECT_EQ(person.take_texts(), Texts{"The terminal's port could not be opened"});
    EXPECT_EQ(person.status, "COM2: no such device");
    terminal->take(act::UseTerminalSettings{});
    EXPECT_EQ(person.status, "COM2: closed");
    const FullDisk full;
    terminal->take(act::UseTerminalSettings{settings});
    EXPECT_EQ(person.take_texts(), (Texts{"Disk full", "The terminal's port could not be opened"}));
}

// An order is carried out on a line that has changed since it was given, or nobody says why it is not.
TEST_F(TerminalServiceTest, OrdersForALineThatIsNotFree) {
    const TerminalAct orders[] = {act::ToggleAutoAnswer{}, act::SetModemVolume{}, act::HangUp{},
                                  act::TestNullModem{},
                                  act::BeginTransfer{.direction = TransferDirection::receive}};
    const auto refused = [&](const char* why) {
        SCOPED_TRACE(why);
        for (const TerminalAct& order : orders) terminal->take(order);
        EXPECT_EQ(person.take_texts(), Texts(std::size(orders), why));
        EXPECT_EQ(take_sent(), "");
    };
    refused("The terminal's port is not open");
    start();
    modem.plug(false);
    refused("The terminal's port is not connected");
    modem.plug(true);
    terminal->take(act::BeginTransfer{.direction = TransferDirection::receive, .xmodem = false});
    EXPECT_TRUE(seen.taken && !seen.shows_typed());
    refused("The terminal's port is in use by a file transfer");
    terminal->take(act::UseTerminalSettings{});
    EXPECT_EQ(person.take_texts(), Texts{"The terminal's port is in use by a file transfer"});
    EXPECT_TRUE(seen.open);
    receive("\x1A");
    person.status = "";
    terminal->take(act::CancelTransfer{});
    pass(milliseconds(500));
    EXPECT_EQ(person.status, "COM2: connected");
    terminal->take(act::ToggleAutoAnswer{});
    EXPECT_TRUE(seen.answers);
    terminal->take(act::SetModemVolume{Volume::high});
    EXPECT_EQ(take_sent(), "ATE1M0S0=1\rATL3M1\r");
    terminal->take(act::HangUp{});
    person.status = "";
    terminal->take(act::ToggleAutoAnswer{});
    EXPECT_EQ(person.status, "Hanging up");
    EXPECT_TRUE(seen.answers);
}

// Box upon box, a Cancel that leaves the port open, an OK that closes it, or a box of a terminal that is
// gone.
TEST_F(TerminalServiceTest, AnErrorOffersToCloseThePort) {
    person.answers = {Answer::ok, Answer::cancel, Answer::cancel};
    for (const bool open : {true, false}) {
        start();
        for (int i = 0; i < 3; ++i) terminal->take(act::TypeText{std::string(70000, 'x')});
        ASSERT_EQ(person.messages.size(), 1U);
        EXPECT_EQ(person.messages[0].title, "Click Cancel to quit, OK to ignore.");
        EXPECT_EQ(person.messages[0].buttons, Buttons::ok_cancel);
        EXPECT_EQ(person.take_texts(), Texts{"Transmit Buffer Full"});
        for (const auto& [number, reply] : person.take_replies()) station.answer(number, reply);
        terminal->step();
        EXPECT_EQ(seen.open, open);
    }
    EXPECT_EQ(person.beeps.size(), 2U);
    start();
    terminal->take(act::TypeText{std::string(70000, 'x')});
    person.take_texts();
    terminal.reset();
    EXPECT_TRUE(person.take_replies().empty());
}

// A log that the disk ended is called open, or what is not in it is not told.
TEST_F(TerminalServiceTest, TheLogUntilTheDiskIsFull) {
    start();
    terminal->take(act::OpenLog{folder / "none/my.log"});
    EXPECT_EQ(person.take_texts(), Texts{"The log could not be opened"});
    const std::string path = folder / "my.log";
    terminal->take(act::OpenLog{path});
    EXPECT_TRUE(seen.log_open);
    terminal->take(act::TypeText{"A"});
    receive("B");
    const FullDisk full(100);
    receive("CDE");
    EXPECT_TRUE(
        file_bytes(path).starts_with("Terminal log of 2026-03-10\r\n12:00:00.000 sent     A\r\n"
                                     "12:00:00.000 received B\r\n"));
    ASSERT_EQ(person.messages.size(), 1U);
    EXPECT_EQ(person.messages[0].detail, path + ": Disk full");
    EXPECT_EQ(person.take_texts(), Texts{"The log has been closed"});
    EXPECT_FALSE(seen.log_open);
    EXPECT_EQ(text, "BCDE");
}

// The lines are watched while nobody looks, a direction or a line is missing, or a chunk is longer than an
// entry, so that counting chunks does not bound what waits.
TEST_F(TerminalServiceTest, TrafficOnlyWhileItIsWatched) {
    start();
    bus.open_bus_port("COM1:", 9600, 0, 8, 1);
    const auto talk = [&] {
        traffic.clear();
        terminal->take(act::TypeText{std::string(300, 'x')});
        receive("in");
        std::string reply;
        bus.bus_command(3, "\x11", reply);
        std::vector<std::tuple<TrafficLine, bool, int, std::size_t>> all;
        for (const TrafficChunk& c : traffic) all.emplace_back(c.line, c.sent, c.unit, c.bytes.size());
        return all;
    };
    EXPECT_TRUE(talk().empty());
    for (int i = 0; i < 2; ++i) terminal->take(act::WatchTraffic{true});
    auto watched = talk();
    ASSERT_GE(watched.size(), 5U);
    EXPECT_EQ(watched[0], std::tuple(TrafficLine::terminal, true, 0, 256U));
    EXPECT_EQ(watched[1], std::tuple(TrafficLine::terminal, true, 0, 44U));
    EXPECT_EQ(watched[2], std::tuple(TrafficLine::terminal, false, 0, 2U));
    EXPECT_EQ(watched[3], std::tuple(TrafficLine::bus, true, 3, 6U));
    EXPECT_LT(traffic[3].at, traffic.back().at);
    terminal->take(act::WatchTraffic{false});
    EXPECT_TRUE(talk().empty());
    terminal->take(act::WatchTraffic{true});
    terminal.reset();
    EXPECT_EQ(bus.on_traffic, nullptr);
}

// The end loses output that would still have left, waits for ever for what cannot leave, says nothing of it,
// or leaves the port or the log open.
TEST_F(TerminalServiceTest, TheEndWaitsForTheOutput) {
    const struct {
        const char* name;
        std::optional<milliseconds> leaves;  // after the end has begun; nothing: never
        milliseconds finished;
        Texts texts;
    } table[] = {
        {"nothing waits", milliseconds(0), milliseconds(0), {}},
        {"late", milliseconds(2900), milliseconds(2950), {}},
        {"never", std::nullopt, milliseconds(3000), {"Data cannot be sent"}},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.name);
        make();
        start();
        terminal->take(act::OpenLog{folder / "log"});
        modem.drained = row.leaves == milliseconds(0);
        terminal->begin_finish();
        const Instant begun = clock.now();
        while (!terminal->finished() && terminal->due() && clock.now() < begun + milliseconds(4000)) {
            clock.sleep_until(std::max<Instant>(*terminal->due(), clock.now() + milliseconds(1)));
            modem.drained = row.leaves && clock.now() - begun >= *row.leaves;
            terminal->step();
        }
        EXPECT_TRUE(terminal->finished());
        EXPECT_LE(clock.now() - begun, row.finished);
        EXPECT_FALSE(modem.is_open() || seen.log_open);
        EXPECT_EQ(person.take_texts(), row.texts);
        terminal->take(act::UseTerminalSettings{{.port = 2}});
        EXPECT_FALSE(modem.is_open());
    }
}

// A text that is being received is lost with the program's end.
TEST_F(TerminalServiceTest, TheEndKeepsTheTextThatHasCome) {
    start();
    terminal->take(act::BeginTransfer{TransferDirection::receive, false, folder / "news.txt"});
    receive("hello");
    modem.drained = true;
    terminal->begin_finish();
    pass(milliseconds(500));
    EXPECT_TRUE(terminal->finished());
    EXPECT_EQ(read_file_bytes(folder / "news.txt", 10), "hello");
}

// Memory grows for as long as a window stands still, or what is newest goes first.
TEST(TerminalTalk, WhatWaitsToBeShownIsBounded) {
    notice::TerminalText text{"old"};
    join(text, {std::string(8190, 'x')});
    join(text, {"ab"});
    EXPECT_EQ(text.bytes, std::string(8190, 'x') + "ab");
    notice::Traffic traffic{{{.bytes = "0"}}};
    for (int i = 1; i <= 10'001; ++i) join(traffic, {{{.bytes = std::to_string(i)}}});
    EXPECT_EQ(traffic.chunks.size(), 10'000U);
    EXPECT_EQ(traffic.chunks.front().bytes, "2");
    EXPECT_EQ(traffic.chunks.back().bytes, "10001");
}

}  // namespace
}  // namespace ampdesk
