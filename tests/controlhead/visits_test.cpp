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

class VisitTest : public HeadTest {
  protected:
    VisitTest() { set_menu(head); }
    void visit(int times = 1) {
        for (int i = 0; i < times; ++i) {
            clock.advance(milliseconds(500));
            updateLogic(head);
            updateDisplay(head);
        }
    }
};

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
        updateLogic(head);
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
        set_alarm("1,Overdrive");
        const auto beeps_after = [&](milliseconds wait) {
            clock.advance(wait - milliseconds(40));  // two reads of 20 ms
            updateDisplay(head);
            return person.beeps.size();
        };
        EXPECT_EQ(beeps_after(milliseconds(40)), 1U);
        EXPECT_EQ(beeps_after(milliseconds(100)), 1U) << "while it sounds";
        EXPECT_EQ(beeps_after(milliseconds(15'100)), 1U) << "15 s from its end";
        EXPECT_EQ(beeps_after(milliseconds(200)), 2U);
        set_alarm("0,Standby");
        EXPECT_EQ(beeps_after(seconds(20)), 2U);
    }
    head.status.in_shutdown = true;
    head.shutdown_shown = true;
    take_sent();
    for (int i = 0; i < 3; ++i) updateDisplay(head);
    EXPECT_EQ(person.beeps.size(), 5U) << "each tick of a shutdown";
    EXPECT_EQ(person.beeps.back(), milliseconds(300));
    EXPECT_EQ(sent, Texts{});
}

// Catches a silent amplifier that holds up the others: a look is one read, tried once.
TEST_F(VisitTest, SilentAmplifierIsOnlyLookedFor) {
    silent = true;
    visit(2);
    EXPECT_EQ(lines(), k_error);
    take_sent();
    const Instant start = clock.now();
    visit(2);
    EXPECT_EQ(take_sent(), (Texts(2, std::string(k_status_request))));
    EXPECT_LE(clock.now() - start, milliseconds(2 * (500 + 50 + 300)));
    EXPECT_EQ(head.link_fail_count, 3);
    EXPECT_EQ(lines(), k_error);
    // It answers the look and nothing else: the visit ends there and the error screen stays.
    silent = false;
    go_mute(k_alarm_request);
    visit();
    EXPECT_EQ(lines(), k_error);
    EXPECT_EQ(count_sent(k_alarm_request), 2U) << "after the look reads are tried twice again";
    EXPECT_TRUE(head.comm_error_shown);
    EXPECT_EQ(head.link_fail_count, 3);
}

// Catches an HV or RF key that is dropped, doubled or kept because a screen waits to be drawn, a value
// cannot be shown, or the amplifier was not heard of lately.
TEST_F(VisitTest, EveryPressOfAHardKeyIsOneFrame) {
    const auto mute = [&](std::initializer_list<std::int16_t> keys) {
        go_mute(k_analog_request);
        press(keys);
    };
    const struct {
        const char* after;
        std::function<void()> what;
    } cases[] = {
        {"BAND", [&] { press({1}); }},
        {"a MORE that fails", [&] { mute({3}); }},
        {"an EXIT that fails", [&] { mute({4}); }},
        {"an ATTN that fails", [&] { mute({0}); }},
        {"an ATTN that fails in its readout",
         [&] {
             go_mute(k_alarm_request);
             press({0});
         }},
        {"leaving the attenuation",
         [&] {
             press({0});
             mute({0});
         }},
        {"leaving a sub-menu",
         [&] {
             press({3, 0});
             mute({4});
         }},
        {"a setup page that fails",
         [&] {
             press({3});
             go_mute(k_status_request);
             press({0});
         }},
        {"a value that cannot be shown",
         [&] {
             set_analog("1=-1");
             visit();
         }},
        {"a new legend",
         [&] {
             set_status(0, 0, 2, 0, 1);
             updateLogic(head);
         }},
        {"an acknowledged shutdown",
         [&] {
             set_shutdown("12,Arc");
             visit();
             press({3});
         }},
        {"a shutdown that is over",
         [&] {
             set_shutdown("12,Arc");
             visit();
             set_status(0);
             updateLogic(head);
         }},
        {"silence",
         [&] {
             silent = true;
             visit(2);
             ASSERT_EQ(lines(), k_error);
         }},
        {"silence that goes on", [&] { silent = true; }},
    };
    const auto answers = replies;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.after);
        c.what();
        take_sent();
        for (std::int16_t lamp = 4; lamp <= 7; ++lamp) picLight_Click(head, lamp);
        cmdHardkey_Click(head, 3);
        EXPECT_EQ(take_settings(), (Texts{"\x10\x12", "\x10\x13", "\x10\x16", "\x10\x17", "\x10\x17"}));
        person.take_texts();
        silent = false;
        replies = answers;
        visit(2);
        press({4});
        visit();
        EXPECT_EQ(lines(), k_screen_1);
        EXPECT_EQ(take_settings(), Texts{});
    }
}

// Catches a key of a panel without a line that acts when the line is back, or is lost without a word.
TEST_F(VisitTest, HardKeysWithoutALineAreRefusedAtOnce) {
    const auto press_rf_off = [&] {
        const Instant start = clock.now();
        cmdHardkey_Click(head, 3);
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

// Catches an operator locked up in a page that the amplifier has nothing for.
TEST_F(VisitTest, PageThatIsNeverAnsweredIsLeft) {
    for (const auto& [command, keys] :
         {std::pair{k_limits_request, Texts{"330"}}, {k_identity_request, Texts{"31"}}}) {
        SCOPED_TRACE(keys.front());
        press({4});
        go_mute(command);
        for (const char key : keys.front()) press({static_cast<std::int16_t>(key - '0')});
        for (int i = 0; i < 3; ++i) guarded(head, [] { throw RunTimeError::no_answer(); });
        visit();
        EXPECT_EQ(lines(), k_error);
        visit(3);
        EXPECT_FALSE(head.comm_error_shown);
        EXPECT_NE(head.menu_ptr, 0);
        press({4});
        EXPECT_EQ(lines(), k_screen_1);
    }
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

// Catches lamps that wait for the next visit after a hard key, a failed read that ends it, and a lamp lit by
// the status of before the silence.
TEST_F(VisitTest, HardKeysShowTheirLamps) {
    set_status(k_hv_on);
    set_alarm("0,Standby, RF off");
    picLight_Click(head, 4);
    EXPECT_EQ(lamps(), "....RG.G");
    go_mute(k_status_request);
    set_alarm("0,On");
    cmdHardkey_Click(head, 1);
    EXPECT_EQ(lamps(), "....R...");
    EXPECT_EQ(take_settings(), (Texts{{16, 18}, {16, 19}}));
    silent = true;
    visit(2);
    const Instant start = clock.now();
    cmdHardkey_Click(head, 1);
    EXPECT_EQ(lamps(), "........");
    EXPECT_LE(clock.now() - start, milliseconds(1000 + 50)) << "the next key waits for nothing else";
}

// Catches a soft key that acts while the link fails, a hard key that acts on the shutdown display, and one
// that does not exist.
TEST_F(VisitTest, DeadKeys) {
    silent = true;
    visit(2);
    take_sent();
    for (std::int16_t lamp = 0; lamp < 4; ++lamp) picLight_Click(head, lamp);
    press({4});
    EXPECT_EQ(sent, Texts{});
    EXPECT_EQ(lines(), k_error);
    silent = false;
    set_shutdown("12,Waveguide arc");
    visit(2);
    EXPECT_EQ(lines(), k_shutdown);
    for (std::int16_t lamp = 4; lamp < 8; ++lamp) picLight_Click(head, lamp);
    press({0, 1, 2, 4});
    EXPECT_EQ(take_settings(), Texts{});
    set_status(0);
    visit();
    take_sent();
    for (const std::int16_t none : {std::int16_t{-1}, std::int16_t{8}}) {
        cmdHardkey_Click(head, none);
        picLight_Click(head, none);
        press({none});
    }
    cmdHardkey_Click(head, 4);
    press({5});
    EXPECT_EQ(sent, Texts{});
    EXPECT_FALSE(head.key_activity);
    head.menu_ptr = 0;
    picLight_Click(head, 0);
    EXPECT_EQ(person.take_texts(), Texts{"menu ptr 0 fault"});
}

}  // namespace
}  // namespace ampdesk
