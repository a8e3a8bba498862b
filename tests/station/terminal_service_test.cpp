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

struct TerminalServiceTest : StationTest {
    TerminalServiceTest() { make(); }
    void make() {
        terminal.emplace(&modem, station, services, [this](const std::string& key, TerminalNotice notice) {
            if (const auto* state = std::get_if<notice::TerminalState>(&notice)) {
                EXPECT_EQ(key, "terminal");
                seen = state->terminal;
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
        for (const Instant end = clock.now() + time; clock.now() < end; terminal->step()) {
            const Instant due = std::min(terminal->due().value_or(end), modem.input_due().value_or(end));
            clock.sleep_until(std::max<Instant>(std::min(due, end), clock.now() + 1ms));
        }
    }
    void receive(std::string bytes) {
        modem.arrive(std::move(bytes));
        terminal->step();
    }
    std::string take_sent() { return std::exchange(modem.sent, {}); }

    ModemPort modem{clock};
    std::optional<TerminalService> terminal;
    TerminalView seen;
    std::string text;
    std::vector<TrafficChunk> traffic;
};

// What is typed is not sent, what comes in not shown; a remote station's request waits for ever, or its
// answer goes nowhere.
TEST_F(TerminalServiceTest, TextGoesBothWays) {
    start();
    modem.room = 2;
    terminal->take(act::TypeText{"abc"});
    modem.room = 100;
    pass(20ms);
    EXPECT_EQ(take_sent(), "abc");
    receive("in");
    EXPECT_EQ(text, "in");
    bus.open_bus_port("COM1:", 9600, 0, 8, 1);
    receive("\x06\x06>3,RDSTAT\r");
    poll(1500ms);
    EXPECT_EQ(port.requests, (std::vector<std::pair<int, char>>{{3, 'R'}}));
    EXPECT_NE(take_sent(), "");
}

// An amplifiers' port is taken by the terminal because a file says so, under another of its names, too; a
// file of another kind is changed.
TEST_F(TerminalServiceTest, TheStartLeavesTheBusItsPort) {
    std::filesystem::create_symlink("/dev/null", folder / "link");
    BusOptions options;
    const std::string devices[] = {"/dev/null", "/dev/null", folder / "link", "/dev/zero"};
    for (int number = 1; number <= 4; ++number) options.ports.set(number, devices[number - 1]);
    BusLink shared(port, clock, options);
    TerminalLine line(&modem, clock);
    TerminalPort starting(line, shared, person, folder.path());
    folder.put("rs485.dat", "RS-485\r\nCOM1:\r\n6\r\n1\r\n");
    for (const std::string number : {"1", "2", "3", "4"}) {
        folder.put("ampdesk.dat", "ampdesk settings\r\n" + number + "\r\n");
        starting.load_settings();
        starting.open_at_start();
        const bool used = number != "4";
        EXPECT_EQ(line.is_open(), !used);
        EXPECT_EQ(std::exchange(person.status, ""),
                  used ? "COM" + number + ": is used by the amplifier bus, the terminal stays closed" : "");
    }
    folder.put("ampdesk.dat", "something else");
    EXPECT_THROW(terminal->load_settings(), RunTimeError);
    EXPECT_EQ(file_bytes(folder / "ampdesk.dat"), "something else");
}

// Settings are used and not kept, end a call though the port is the same, or go wrong without a word.
TEST_F(TerminalServiceTest, Settings) {
    TerminalSettings settings{.port = 2, .baud = 1200};
    terminal->take(act::UseTerminalSettings{settings});
    EXPECT_TRUE(file_bytes(folder / "ampdesk.dat").starts_with("ampdesk settings\r\n2\r\n1200\r\n"));
    settings.echo = false;
    terminal->take(act::UseTerminalSettings{settings});
    EXPECT_EQ(modem.opened.size(), 1U);
    terminal->take(act::UseTerminalSettings{});
    EXPECT_EQ(person.status, "COM2: closed");
    modem.open_result = {PortError::not_found, "no such device"};
    const FullDisk full;
    terminal->take(act::UseTerminalSettings{settings});
    EXPECT_EQ(person.messages.back().detail, "no such device");
    EXPECT_EQ(person.take_texts(), (Texts{"Disk full", "The terminal's port could not be opened"}));
    EXPECT_EQ(person.status, "COM2: no such device");
}

// An order is carried out on a line that has changed since it was given, or nobody says why it is not; the
// copy of the state that the window works by is an old one.
TEST_F(TerminalServiceTest, OrdersForALineThatIsNotFree) {
    const TerminalAct orders[] = {act::ToggleAutoAnswer{}, act::SetModemVolume{}, act::HangUp{},
                                  act::TestNullModem{},
                                  act::BeginTransfer{.direction = TransferDirection::receive}};
    const auto refused = [&](const char* why) {
        for (const TerminalAct& order : orders) terminal->take(order);
        EXPECT_EQ(person.take_texts(), Texts(std::size(orders), why));
        EXPECT_EQ(take_sent(), "");
    };
    refused("The terminal's port is not open");
    start();
    EXPECT_TRUE(seen.open && seen.connected && seen.shows_typed());
    modem.plug(false);
    refused("The terminal's port is not connected");
    EXPECT_EQ(seen.state, "COM2:  connection lost");
    EXPECT_EQ(person.status, "COM2: connection lost, trying again");
    modem.plug(true);
    terminal->take(act::BeginTransfer{.direction = TransferDirection::receive, .xmodem = false});
    EXPECT_TRUE(seen.taken && !seen.shows_typed());
    refused("The terminal's port is in use by a file transfer");
    terminal->take(act::UseTerminalSettings{});
    EXPECT_EQ(person.take_texts(), Texts{"The terminal's port is in use by a file transfer"});
    person.status = "";
    terminal->take(act::CancelTransfer{});
    pass(500ms);
    EXPECT_EQ(person.status, "COM2: connected");
}

// Box upon box, a Cancel that leaves the port open, an OK that closes it, or a box of a terminal that is
// gone.
TEST_F(TerminalServiceTest, AnErrorOffersToCloseThePort) {
    person.answers = {Answer::ok, Answer::cancel, Answer::cancel};
    start();
    for (const bool open : {true, false}) {
        for (int i = 0; i < 3; ++i) terminal->take(act::TypeText{std::string(70000, 'x')});
        EXPECT_EQ(person.messages.at(0).title, "Click Cancel to quit, OK to ignore.");
        EXPECT_EQ(person.messages.at(0).buttons, Buttons::ok_cancel);
        EXPECT_EQ(person.take_texts(), Texts{"Transmit Buffer Full"});
        for (const auto& [number, reply] : person.take_replies()) station.answer(number, reply);
        terminal->step();
        EXPECT_EQ(seen.open, open);
    }
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
    terminal->take(act::TypeText{"A"});
    receive("B");
    const FullDisk full(100);
    receive("CDE");
    EXPECT_NE(file_bytes(path).find("12:00:00.000 sent     A\r\n12:00:00.000 received B\r\n"),
              std::string::npos);
    EXPECT_EQ(person.messages.at(0).detail, path + ": Disk full");
    EXPECT_EQ(person.take_texts(), Texts{"The log has been closed"});
    EXPECT_FALSE(seen.log_open);
}

// The lines are watched while nobody looks, a direction or a line is missing, or a chunk is longer than an
// entry, so that counting chunks does not bound what waits.
TEST_F(TerminalServiceTest, TrafficOnlyWhileItIsWatched) {
    start();
    bus.open_bus_port("COM1:", 9600, 0, 8, 1);
    for (const bool watched : {true, true, false}) {
        terminal->take(act::WatchTraffic{watched});
        traffic.clear();
        terminal->take(act::TypeText{std::string(300, 'x')});
        receive("in");
        std::string reply;
        bus.bus_command(3, "\x11", reply);
        std::string seen_of_it;
        for (std::size_t i = 0; i < std::min<std::size_t>(traffic.size(), 4); ++i)
            seen_of_it += std::to_string(traffic[i].unit) + (traffic[i].sent ? " out " : " in ") +
                          std::to_string(traffic[i].bytes.size()) + ";";
        EXPECT_EQ(seen_of_it, watched ? "0 out 256;0 out 44;0 in 2;3 out 6;" : "");
    }
    terminal->take(act::WatchTraffic{true});
    terminal.reset();
    EXPECT_EQ(bus.on_traffic, nullptr);
}

// The end loses output that would still have left or a text that has come, waits for ever for what cannot
// leave, says nothing of it, or leaves the port or the log open.
TEST_F(TerminalServiceTest, TheEndWaitsForTheOutput) {
    for (const auto leaves : {0ms, 2900ms, 9000ms}) {
        SCOPED_TRACE(leaves.count());
        make();
        start();
        terminal->take(act::OpenLog{folder / "log"});
        const std::string path = folder / std::to_string(leaves.count());
        terminal->take(act::BeginTransfer{TransferDirection::receive, false, path});
        receive("hello");
        const Instant begun = clock.now();
        modem.drained = leaves == 0ms;
        terminal->begin_finish();
        while (!terminal->finished() && terminal->due() && clock.now() < begun + 4s) {
            clock.sleep_until(std::max<Instant>(*terminal->due(), clock.now() + 1ms));
            modem.drained = clock.now() - begun >= leaves;
            terminal->step();
        }
        EXPECT_LE(clock.now() - begun, std::min(leaves + 300ms, 3000ms));
        EXPECT_FALSE(!terminal->finished() || modem.is_open() || seen.log_open);
        EXPECT_EQ(person.take_texts(), leaves > 3s ? Texts{"Data cannot be sent"} : Texts{});
        EXPECT_EQ(file_bytes(path), "hello");
        terminal->take(act::UseTerminalSettings{{.port = 2}});
        EXPECT_FALSE(modem.is_open());
    }
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
