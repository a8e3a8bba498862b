// Visits and keys: what the walks over the panel do not reach.
#include "controlhead/band.h"
#include "controlhead/comm_faults.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const std::string k_error =
    "RS485 Communication |Error,              |Check Connection    |                    ";
const std::string k_shutdown =
    "System Shutdown, #12|--------------------|Waveguide arc       |                 OK ";
const std::string k_screen_1 =
    "Fwd Power      0 dBm|Rev Power      0 dBm|Standby             |ATTN       HELP MORE";

using VisitTest = HeadTest;

// Catches a lamp with another's colour, bit or word, and group numbers that darken the wrong lamps.
TEST_F(VisitTest, Lamps) {
    const struct {
        int status;
        const char* alarm;
        const char* shown;
    } cases[] = {{0, "0,On", "........"},
                 {4, "0,On", "....R..."},
                 {8, "0,On", "......R."},
                 {0, "0,Standby", ".....G.."},
                 {12, "1,Standby, RF off", "....RGRG"}};
    for (const auto& c : cases) {
        set_status(c.status);
        set_alarm(c.alarm);
        station.hear();
        EXPECT_EQ(lamps(), c.shown);
    }
    for (const auto& [number, left] :
         {std::pair{0, "........"}, {88, "....RGRG"}, {99, "YYYYRGRG"}, {9, "YYYYRGRG"}}) {
        for (std::int16_t lamp = 1; lamp <= 8; ++lamp) lite_service(head, lamp, 1);
        lite_service(head, static_cast<std::int16_t>(number), 0);
        EXPECT_EQ(lamps(), left) << number;
    }
}

// Catches a reason shown although it could not be read, and one without a comma left out.
TEST_F(VisitTest, ShutdownReason) {
    set_shutdown(" no number ");
    go_mute(k_shutdown_request);
    visit();
    EXPECT_EQ(lines(), k_screen_1);
    set_shutdown(" no number ");
    visit();
    EXPECT_EQ(lines(), k_screen_1.substr(0, 42) + "no number           |                 OK ");
}

// Catches an alarm that beeps at every tick, never again, or wrongly about midnight.
TEST_F(VisitTest, AlarmBeeps) {
    for (const int start : {0, 86'399'800, 86'399'900, 86'390'000}) {  // milliseconds of the day
        SCOPED_TRACE(start);
        clock.set_wall(milliseconds(start));
        head.last_beep_time = -86400;
        person.beeps.clear();
        head.alarm = AlarmState::parse("1,Overdrive");
        const auto beeps_after = [&](milliseconds wait) {
            clock.advance(wait);
            updateDisplay(head);
            return person.beeps.size();
        };
        EXPECT_EQ(beeps_after(milliseconds(40)), 1U);
        EXPECT_EQ(beeps_after(milliseconds(100)), 1U) << "while it sounds";
        EXPECT_EQ(beeps_after(milliseconds(15'100)), 1U) << "15 s from its end";
        EXPECT_EQ(beeps_after(milliseconds(200)), 2U);
        head.alarm = AlarmState{};
        EXPECT_EQ(beeps_after(seconds(20)), 2U);
    }
    head.status.in_shutdown = true;
    head.shutdown_shown = true;
    for (int i = 0; i < 3; ++i) updateDisplay(head);
    EXPECT_EQ(person.beeps.size(), 5U) << "each tick of a shutdown";
    EXPECT_EQ(person.beeps.back(), milliseconds(300));
}

// Catches a first try, a guess or the end of the event log that is counted as a failure, and an error screen
// too early, or over an amplifier that answers something.
TEST_F(VisitTest, FailuresAreCounted) {
    const Reading failed{.request = {Request::Kind::analog}};
    Reading first = failed;
    first.last_try = false;
    const Reading guess{.request = {.kind = Request::Kind::event, .entry = 7, .guess = true}};
    Reading no_entry{.request = {.kind = Request::Kind::event, .entry = 7}};
    no_entry.outcome = Reading::Outcome::unusable;
    for (int i = 0; i < 2; ++i)
        for (const Reading& reading : {failed, first, guess, no_entry}) take_reading(head, reading);
    EXPECT_EQ(head.link_fail_count, 2);
    visit();
    EXPECT_EQ(head.link_fail_count, 0);
    silent = true;
    visit(2);
    EXPECT_NE(lines(), k_error);
    head.want({Request::Kind::identity});
    visit();
    EXPECT_EQ(lines(), k_error);
    EXPECT_TRUE(head.requests.empty()) << "of a page that is covered";
    visit();
    EXPECT_EQ(head.link_fail_count, 3);
    silent = false;
    visit();
    EXPECT_EQ(lines(), k_screen_1);
}

// Catches a key of a panel without a line that acts when the line is back, or is lost without a word.
TEST_F(VisitTest, HardKeysWithoutALineAreRefusedAtOnce) {
    const auto press_rf_off = [&] {
        const Instant start = clock.now();
        press_hard(3);
        EXPECT_EQ(clock.now(), start);
        EXPECT_EQ(std::exchange(person.beeps, {}).size(), 1U);
        return std::exchange(person.status, {});
    };
    port.unplugged = true;
    EXPECT_EQ(press_rf_off(), "JEX Amplifier 1234: RF Off not sent, the line is lost");
    port.unplugged = false;
    bus.close_bus_port();
    EXPECT_EQ(press_rf_off(), "JEX Amplifier 1234: RF Off not sent, the port is not open");
    bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    visit(2);
    EXPECT_EQ(take_settings(), Texts{});
    // The plug is pulled while the frame is under way.
    port.responder = [&](const std::string&) {
        port.unplugged = true;
        return ScriptedPort::Answer{};
    };
    EXPECT_EQ(press_rf_off(), "JEX Amplifier 1234: RF Off not sent, the line is lost");
    port.unplugged = false;
}

// Catches the modem screen lost to the bus's one, and an unknown kind that paints.
TEST_F(VisitTest, ErrorScreenKinds) {
    DispCommError(head, 0);
    EXPECT_EQ(lines(), k_screen_1);
    for (const std::int16_t kind : {std::int16_t{2}, std::int16_t{0}}) {
        DispCommError(head, kind);
        EXPECT_EQ(lines(),
                  "Modem Connection    |Error, Hangup Modem,|Then Try Connect    |Again.              ");
        head.panel.set_line(1, "");
    }
}

// Catches a hard key that is another one or two, lamps that wait for the next visit after it, and a lamp lit
// by the status of before the silence.
TEST_F(VisitTest, HardKeysAndTheirLamps) {
    set_status(k_hv_on);
    set_alarm("0,Standby, RF off");
    for (std::int16_t lamp = 4; lamp <= 7; ++lamp) picLight_Click(head, lamp);
    station.serve();
    EXPECT_EQ(lamps(), "....RG.G");
    silent = true;
    visit(3);
    press_hard(3);
    EXPECT_EQ(take_settings(), (Texts{"\x10\x12", "\x10\x13", "\x10\x16", "\x10\x17", "\x10\x17"}));
    updateDisplay(head);
    EXPECT_EQ(lamps(), "........");
    EXPECT_EQ(lines(), k_error);
}

// Catches a key that does not exist and does something.
TEST_F(VisitTest, DeadKeys) {
    take_sent();
    for (const std::int16_t none : {std::int16_t{-1}, std::int16_t{8}}) {
        cmdHardkey_Click(head, none);
        picLight_Click(head, none);
        press({none});
    }
    press_hard(4);
    press({5});
    EXPECT_EQ(sent, Texts{});
    EXPECT_FALSE(head.key_activity);
    head.menu_ptr = 0;
    press({0});
    EXPECT_EQ(person.take_texts(), Texts{"menu ptr 0 fault"});
}

// Catches an OK that acknowledges a shutdown nobody has seen, is still on the panel when the shutdown has
// gone, or puts the reason over what the operator is just doing.
TEST_F(VisitTest, ShutdownsAndKeysAtOnce) {
    set_shutdown("12,Waveguide arc");
    visit();
    ASSERT_EQ(lines(), k_shutdown);
    press_at_once({3, 3});
    station.serve();
    EXPECT_EQ(take_settings(), Texts{"\x10\x15"});
    EXPECT_EQ(lines(), k_screen_1);
    visit(2);
    EXPECT_EQ(lines(), k_shutdown) << "it has come again";
    set_status(0);
    station.hear();
    EXPECT_EQ(lines(), k_screen_1);
    set_shutdown("12,Waveguide arc");
    go_mute(k_shutdown_request);
    visit();
    cmdKey_Click(head, 0);
    Reading reason{.request = {Request::Kind::shutdown}, .outcome = Reading::Outcome::good};
    reason.value = Shutdown{"12", "Waveguide arc"};
    take_reading(head, reason);
    EXPECT_EQ(lines(), k_screen_1);
    updateDisplay(head);
    EXPECT_EQ(head.requests, std::deque{reason.request});
}

// Catches a page that is drawn anew at every tick because something was to be drawn while it came up, one
// that is read when it has gone, and one that is drawn over the error screen.
TEST_F(VisitTest, WhatComesForAScreenThatHasGone) {
    head.band.band_count = 2;
    reply_to("RDBAND") = "RDBAND=0";
    reply_to(k_identity_request) = "JEX*KU*1001*2.1";
    set_status(0, 0, 2, 0, 1);
    press({4});
    press_at_once({1, 3, 1});  // BAND, MORE, INFO
    station.serve();
    visit(4);
    EXPECT_EQ(count_sent(k_identity_request), 1U);
    EXPECT_EQ(head.panel.line(3), "  Serial#   1001    ");
    press_at_once({4, 1, 4, 3, 3, 1, 4});  // INFO and EVENT, left at once
    EXPECT_EQ(head.requests, std::deque<Request>{});
    press({4, 3, 0});
    press_at_once({0, 0});  // SET
    for (int i = 0; i < 3; ++i) take_reading(head, {.request = {Request::Kind::analog}});
    ASSERT_EQ(lines(), k_error);
    station.serve();
    EXPECT_EQ(lines(), k_error);
    EXPECT_EQ(take_settings(), (Texts{"SBAND 2", "\x10\x1B\1", "\x10\x1B\2"}));
    visit();
    EXPECT_EQ(head.panel.line(2), "Mode:[Auto  ]       ");
}

}  // namespace
}  // namespace ampdesk
