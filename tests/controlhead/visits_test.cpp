// Visits and keys: what the walks over the panel do not reach.
#include "controlhead/keypad.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

const std::string k_error =
    "RS485 Communication |Error,              |Check Connection    |                    ";
const std::string k_screen_1 =
    "Fwd Power      0 dBm|Rev Power      0 dBm|Standby             |ATTN       HELP MORE";

using VisitTest = HeadTest;

// Catches a lamp with another's colour, bit or word.
TEST_F(VisitTest, Lamps) {
    const std::tuple<int, const char*, const char*> cases[] = {{0, "0,On", "........"},
                                                               {4, "0,On", "....R..."},
                                                               {8, "0,On", "......R."},
                                                               {0, "0,Standby", ".....G.."},
                                                               {12, "1,Standby, RF off", "....RGRG"}};
    for (const auto& [status, alarm, shown] : cases) {
        set_status(status);
        set_alarm(alarm);
        station.hear();
        EXPECT_EQ(lamps(), shown);
    }
}

// Catches an alarm that beeps at every tick, never again, or wrongly about midnight.
TEST_F(VisitTest, AlarmBeeps) {
    for (const int start : {0, 86'399'800, 86'399'900, 86'390'000}) {  // milliseconds of the day
        SCOPED_TRACE(start);
        clock.set_wall(milliseconds(start));
        head.last_beep_time = -86400;
        person.beeps.clear();
        head.alarm = AlarmState::parse("1,Overdrive");
        const auto beeps_after = [&](int wait) {
            clock.advance(milliseconds(wait));
            updateDisplay(head);
            return person.beeps.size();
        };
        EXPECT_EQ(beeps_after(40), 1U);
        EXPECT_EQ(beeps_after(100), 1U) << "while it sounds";
        EXPECT_EQ(beeps_after(15'100), 1U) << "15 s from its end";
        EXPECT_EQ(beeps_after(200), 2U);
        head.alarm = AlarmState{};
        EXPECT_EQ(beeps_after(20'000), 2U);
    }
    person.beeps.clear();
    set_shutdown("12,Waveguide arc");
    visit(3);
    EXPECT_EQ(person.beeps, std::vector(3, milliseconds(300))) << "each tick of a shutdown";
}

// Catches a first try, a guess or the end of the event log that is counted as a failure, and a dead line that
// is not one at once. The walk through errors counts the others.
TEST_F(VisitTest, FailuresAreCounted) {
    const Request event{.kind = Request::Kind::event, .entry = 7};
    for (int i = 0; i < 2; ++i) {
        control.take({.request = {Request::Kind::analog}});
        control.take({.request = {Request::Kind::analog}, .last_try = false});
        control.take({.request = {.kind = event.kind, .entry = 7, .guess = true}});
        control.take({.request = event, .outcome = Reading::Outcome::unusable});
    }
    EXPECT_EQ(lines(), k_screen_1);
    head.want({Request::Kind::identity});
    control.line_is_dead();
    EXPECT_EQ(lines(), k_error);
    EXPECT_TRUE(head.requests.empty()) << "of a page that is covered";
}

// Catches a key of a panel without a line that acts when the line is back, or is lost without a word.
TEST_F(VisitTest, HardKeysWithoutALineAreRefusedAtOnce) {
    const auto press_rf_off = [&](std::size_t orders) {
        control.press_hard_key(3);
        EXPECT_EQ(control.orders().size(), orders);
        station.serve();
        EXPECT_EQ(std::exchange(person.beeps, {}).size(), 1U);
        return std::exchange(person.status, {});
    };
    port.unplugged = true;
    EXPECT_EQ(press_rf_off(0), "JEX Amplifier 1234: RF Off not sent, the line is lost");
    port.unplugged = false;
    bus.close_bus_port();
    EXPECT_EQ(press_rf_off(0), "JEX Amplifier 1234: RF Off not sent, the port is not open");
    bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    visit(2);
    EXPECT_EQ(take_settings(), Texts{});
    // The plug is pulled while the frame is under way.
    port.responder = [&](const std::string&) {
        port.unplugged = true;
        return ScriptedPort::Answer{};
    };
    EXPECT_EQ(press_rf_off(1), "JEX Amplifier 1234: RF Off not sent, the line is lost");
    port.unplugged = false;
}

// Catches a hard key that is another one or two, one that does not exist and does something, lamps that wait
// for the next visit after a key, and a lamp lit by the status of before the silence.
TEST_F(VisitTest, HardKeysAndTheirLamps) {
    set_status(4);
    set_alarm("0,Standby, RF off");
    set(k_set_rf_on, "");  // without HV it would be refused
    for (std::int16_t lamp = 4; lamp <= 8; ++lamp) control.click_lamp(lamp);
    control.press_hard_key(-1);
    control.press_hard_key(4);
    press_at_once({-1, 5});
    station.serve();
    EXPECT_EQ(lamps(), "....RG.G");
    amplifier.line.silent = true;
    visit(3);
    press_hard(3);
    EXPECT_EQ(take_settings(), (Texts{"10 12", "10 13", "10 16", "10 17", "10 17"}));
    control.tick();
    EXPECT_EQ(lamps(), "........");
    EXPECT_EQ(lines(), k_error);
}

// Catches an OK that acknowledges a shutdown nobody has seen, is still on the panel when the shutdown has
// gone, or puts the reason over what the operator is just doing; a reason shown although it could not be
// read, and one without a comma left out.
TEST_F(VisitTest, ShutdownsAndKeysAtOnce) {
    set_shutdown(" no number ");
    set(k_shutdown_request, std::nullopt);
    visit();
    EXPECT_EQ(lines(), k_screen_1);
    set_shutdown(" no number ");
    visit();
    EXPECT_EQ(lines(), k_screen_1.substr(0, 42) + "no number           |                 OK ");
    press_at_once({3, 3});
    station.serve();
    EXPECT_EQ(take_settings(), Texts{"10 15"});
    EXPECT_EQ(lines(), k_screen_1);
    set_shutdown("12,Waveguide arc");
    visit(2);
    EXPECT_EQ(lines(), "System Shutdown, #12|--------------------|Waveguide arc       |                 OK ");
    EXPECT_TRUE(control.view().shutdown_shown);
    set_status(0);
    station.hear();
    Reading reason{.request = {Request::Kind::shutdown}, .outcome = Reading::Outcome::good};
    reason.value = Shutdown{"12", "Waveguide arc"};
    control.take(reason);  // late
    EXPECT_EQ(lines(), k_screen_1);
    set_shutdown("12,Waveguide arc");
    set(k_shutdown_request, std::nullopt);
    visit();
    press_at_once({0});
    control.take(reason);
    EXPECT_EQ(lines(), k_screen_1);
    control.tick();
    EXPECT_EQ(head.requests, std::deque{reason.request});
}

// Catches a page that is drawn anew at every tick because something was to be drawn while it came up, one
// that is read when it has gone, and one that is drawn over the error screen.
TEST_F(VisitTest, WhatComesForAScreenThatHasGone) {
    head.band.band_count = 2;
    set("RDBAND", "RDBAND=0");
    set_status(0, 0, 2, 0, 1);
    press({4});
    sent.clear();
    press_at_once({1, 3, 1});  // BAND, MORE, INFO
    station.serve();
    visit(4);
    EXPECT_EQ(count_sent(k_identity_request), 1);
    EXPECT_EQ(head.panel.line(3), "  Serial#   1001    ");
    press_at_once({4, 1, 4, 3, 3, 1, 4});  // INFO and EVENT, left at once
    EXPECT_EQ(head.requests, std::deque<Request>{});
    press({4, 3, 0});
    press_at_once({0, 0});  // SET
    for (int i = 0; i < 3; ++i) control.take({.request = {Request::Kind::analog}});
    ASSERT_EQ(lines(), k_error);
    station.serve();
    EXPECT_EQ(lines(), k_error);
    EXPECT_EQ(take_settings(), (Texts{"SBAND 2", "10 1B 01", "10 1B 02"}));
    visit();
    EXPECT_EQ(head.panel.line(2), "Mode:[Auto  ]       ");
    press_at_once({0, 4});  // SET, left at once
    station.serve();
    EXPECT_EQ(head.panel.line(1), " --System Hours--   ");
}

}  // namespace
}  // namespace ampdesk
