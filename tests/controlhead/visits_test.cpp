// The polling visits: lamps, shutdown, alarm beep, a silent amplifier and its return.
#include "controlhead/band.h"
#include "controlhead/comm_faults.h"
#include "controlhead/keypad.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Texts = std::vector<std::string>;

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
    void fall_silent() {
        silent = true;
        visit(2);
        ASSERT_EQ(lines(), k_error);
    }
    void press(std::initializer_list<std::int16_t> keys) {
        for (const std::int16_t key : keys) cmdKey_Click(head, key);
    }
    void press_hard_keys() {
        for (std::int16_t key = 0; key < 4; ++key) cmdHardkey_Click(head, key);
    }
    std::string lamps() const {
        std::string colours;
        for (int lamp = 1; lamp <= 8; ++lamp) colours += ".YRG"[static_cast<int>(head.panel.lamp(lamp))];
        return colours;
    }
};

// Catches a lamp with another's colour, bit or word, and group numbers that darken the wrong lamps.
TEST_F(VisitTest, Lamps) {
    struct Case {
        int status;
        const char* alarm;
        const char* shown;
    };
    for (const Case& c :
         {Case{0, "0,On", "........"}, Case{4, "0,On", "....R..."}, Case{8, "0,On", "......R."},
          Case{0, "0,Standby", ".....G.."}, Case{12, "1,Standby, RF off", "....RGRG"}}) {
        set_status(c.status);
        set_alarm(c.alarm);
        updateLogic(head);
        EXPECT_EQ(lamps(), c.shown);
    }
    const auto lit = [&] {
        for (std::int16_t lamp = 1; lamp <= 8; ++lamp) lite_service(head, lamp, 1);
        return lamps();
    };
    for (const auto& [number, left] :
         {std::pair{0, "........"}, {88, "....RGRG"}, {99, "YYYYRGRG"}, {9, "YYYYRGRG"}}) {
        EXPECT_EQ(lit(), "YYYYRGRG");
        lite_service(head, static_cast<std::int16_t>(number), 0);
        EXPECT_EQ(lamps(), left) << number;
    }
}

// Catches a field taken from the wrong place, and a legend that no longer says what its key does.
TEST_F(VisitTest, StatusFieldsAndLegend) {
    set_status(1, 2, 3, 0xFF, 5);
    updateLogic(head);
    EXPECT_EQ(head.settings_byte, 2);
    EXPECT_TRUE(head.has_switch && head.filament_in_ma);
    EXPECT_EQ(head.switch_state, 255);
    EXPECT_EQ(head.switch_count, 5);
    EXPECT_TRUE(head.redraw_request);
    updateDisplay(head);
    EXPECT_EQ(head.panel.line(4), "ATTN            MORE");
    visit();
    EXPECT_FALSE(head.redraw_request);
    set_status(0, 0, 2, 0, 1);
    visit();
    EXPECT_EQ(head.panel.line(4), "ATTN       ANT  MORE");
    replies[std::string(k_status_request)] = "\x08\x04";
    updateLogic(head);
    EXPECT_FALSE(head.has_switch || head.filament_in_ma || head.switch_state != 0 || head.switch_count != 0);
}

// Catches logic that goes on although the operator is at the keys, and a flag that then stays set.
TEST_F(VisitTest, KeyActivityCutsTheLogicShort) {
    head.key_activity = true;
    take_sent();
    updateLogic(head);
    EXPECT_EQ(take_sent(), Texts{std::string(k_status_request)});
    updateDisplay(head);
    set_shutdown("12,Waveguide arc");
    EXPECT_FALSE(head.key_activity);
    person.on_events = [&] { head.key_activity = true; };  // a key pressed during the short wait
    updateLogic(head);
    EXPECT_EQ(lines(), k_screen_1);
    person.on_events = nullptr;
    updateDisplay(head);
    updateLogic(head);
    EXPECT_EQ(lines(), k_shutdown);
}

// Catches a shutdown that is missed, drawn over, drawn twice, or from which keys still act.
TEST_F(VisitTest, ShutdownTakesTheDisplayFromEveryMode) {
    struct Case {
        const char* what;
        std::function<void()> before;
    };
    const Case cases[] = {{"status screen", [] {}},
                          {"sub-menu", [&] { enter_sub_menu(head, k_warning_levels); }},
                          {"attenuation", [&] { cmdKey_Click(head, 0); }},
                          {"redraw pending", [&] { head.redraw_request = true; }}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        c.before();
        head.key_activity = false;
        set_shutdown("12, Waveguide arc ");
        const int logged = head.faults.count();
        take_sent();
        visit(3);
        EXPECT_EQ(lines(), k_shutdown);
        EXPECT_EQ(lamps(), "...Y.G..");
        EXPECT_EQ(count_sent(k_shutdown_request), 1U);
        EXPECT_EQ(head.faults.count(), logged + 1);
        EXPECT_EQ(head.faults.entry(0), "12:0 Waveguide ar");
        EXPECT_FALSE(head.gain_mode || head.panel.scroll().visible || head.panel.gauge());
        press({0, 1, 2, 4});
        press_hard_keys();
        EXPECT_EQ(take_settings(), Texts{});
        EXPECT_EQ(lines(), k_shutdown);
        set_status(0);
        visit();
        EXPECT_EQ(lines(), k_screen_1);
        EXPECT_EQ(lamps(), ".....G..");
    }
}

// Catches an acknowledgement that is repeated, sent unasked, or taken for the end of the shutdown.
TEST_F(VisitTest, ShutdownIsAcknowledgedByItsOkOnly) {
    const Texts ack = {{16, 21}};
    set_shutdown("12,Waveguide arc");
    cmdHardkey_Click(head, 0);  // reads the new status
    take_sent();
    press({3});
    EXPECT_EQ(take_sent(), Texts{}) << "this OK is not on the display yet";
    visit(2);
    refusal = 3;
    press({3});
    EXPECT_EQ(take_settings(), ack);
    EXPECT_EQ(person.take_texts(), Texts{"Remote Is Not On"});
    EXPECT_EQ(lines(), k_shutdown);
    refusal = 0;
    press({3});
    cmdHardkey_Click(head, 0);
    EXPECT_EQ(take_settings(), ack) << "hard keys wait for the next status";
    EXPECT_EQ(lines(), k_screen_1);
    visit(2);
    EXPECT_EQ(lines(), k_shutdown) << "it is still shut down";
    press({3});
    set_status(0);
    visit(2);
    EXPECT_EQ(lines(), k_screen_1);
    EXPECT_FALSE(head.redraw_request) << "the hard keys would stay locked";
}

// Catches a reason shown although it could not be read, and one without a comma left out.
TEST_F(VisitTest, ShutdownReason) {
    set_shutdown("12,Waveguide arc");
    go_mute(k_shutdown_request);
    visit();
    EXPECT_EQ(lines(), k_screen_1);
    reply_to(k_shutdown_request) = "12,Waveguide arc";
    visit();
    EXPECT_EQ(lines(), k_shutdown);
    set_status(0);
    visit();
    set_shutdown(" no number ");
    visit();
    EXPECT_EQ(lines(), k_screen_1.substr(0, 42) + "no number           |                 OK ");
}

// Catches a shut-down amplifier that falls silent without anybody noticing, and a shutdown that is
// not on the display when it is back.
TEST_F(VisitTest, SilenceDuringAShutdown) {
    set_shutdown("12,Waveguide arc");
    visit();
    silent = true;
    visit(2);
    EXPECT_EQ(lines(), k_shutdown);
    visit();
    EXPECT_EQ(lines(), k_error);
    silent = false;
    visit();
    EXPECT_EQ(lines(), k_shutdown);
    take_settings();
    press({3});
    EXPECT_EQ(take_settings(), (Texts{{16, 21}}));
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
        EXPECT_EQ(beeps_after(milliseconds(14'700)), 1U);
        EXPECT_EQ(beeps_after(milliseconds(900)), 2U);
        set_alarm("0,Standby");
        EXPECT_EQ(beeps_after(seconds(20)), 2U);
    }
    head.status_byte = k_status_shutdown;
    head.shutdown_shown = true;
    take_sent();
    for (int i = 0; i < 3; ++i) updateDisplay(head);
    EXPECT_EQ(person.beeps.size(), 5U) << "each tick of a shutdown";
    EXPECT_EQ(person.beeps.back(), milliseconds(300));
    EXPECT_EQ(sent, Texts{});
}

// Catches an error screen after a single lost reply, one that comes late, and keys that still act.
TEST_F(VisitTest, ThreeFailuresShowTheErrorScreen) {
    set_analog("1=500");
    visit();
    silent = true;
    updateLogic(head);
    updateDisplay(head);
    EXPECT_EQ(lines().substr(42), k_screen_1.substr(42));
    EXPECT_EQ(head.link_fail_count, 2);
    silent = false;
    visit();
    EXPECT_EQ(head.link_fail_count, 0);
    silent = true;
    visit();
    EXPECT_FALSE(head.comm_error_shown);
    visit();
    EXPECT_EQ(lines(), k_error);
    EXPECT_EQ(lamps(), "........");
    EXPECT_EQ(head.panel.gauge(), std::nullopt);
    take_sent();
    press({0, 1, 2, 3, 4});
    press_hard_keys();
    EXPECT_EQ(sent, Texts{});
    EXPECT_EQ(lines(), k_error);
}

// Catches a silent amplifier that holds up the others: a look is one read, tried once.
TEST_F(VisitTest, SilentAmplifierIsOnlyLookedFor) {
    fall_silent();
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

// Catches a page drawn over the error screen with what could not be read.
TEST_F(VisitTest, ErrorScreenStaysWhenThePageCannotBeRead) {
    enter_sub_menu(head, k_information);
    for (int i = 0; i < 3; ++i) guarded(head, [] { throw RunTimeError::no_answer(); });
    visit();
    EXPECT_EQ(lines(), k_error);
    reply_to(k_identity_request) = "JEX*KU*1234*A";
    visit();
    EXPECT_EQ(head.panel.line(2), "   Model KU BAND    ");
}

// Catches a header, bar or mode that is not there again when the amplifier answers.
TEST_F(VisitTest, ReturnRedrawsWhatWasShown) {
    reply_to(k_identity_request) = "JEX*KU*1234*A";
    for (char entry = 0; entry < 9; ++entry) reply_to(std::string{'\xA0', '\x1A', entry}) = "entry";
    set_status(0);
    struct Case {
        const char* what;
        std::initializer_list<std::int16_t> keys;
        bool bar;
    };
    const Case cases[] = {{"temperatures", {3, 3}, false},
                          {"setup, second page", {3, 0, 3}, false},
                          {"information", {3, 1}, false},
                          {"warning levels", {3, 3, 0, 3}, false},
                          {"warning adjust", {3, 3, 0, 0}, true},
                          {"events", {3, 3, 3, 1, 1}, true},
                          {"attenuation", {0}, true},
                          {"no help file", {2}, false}};
    services.options.folder = services.options.shipped_folder = "/nonexistent";
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        press({4, 4, 4});
        press(c.keys);
        visit();
        const std::string before = lines();
        const ScrollBar bar = head.panel.scroll();
        EXPECT_EQ(bar.visible, c.bar);
        silent = true;
        visit(4);
        EXPECT_EQ(lines(), k_error);
        EXPECT_FALSE(head.panel.scroll().visible);
        silent = false;
        visit(2);  // then the markers have come round
        EXPECT_EQ(head.link_fail_count, 0);
        EXPECT_EQ(lines(), before);
        EXPECT_EQ(head.panel.scroll(), bar);
    }
}

// Catches another error that is counted as a silence, or shown at once.
TEST_F(VisitTest, OtherErrorsAreShownEveryThirdTime) {
    set_analog("1=-1");
    visit(2);
    EXPECT_EQ(person.take_texts(), Texts{});
    // The tick ends in the error before it can call the link good.
    visit();
    EXPECT_EQ(person.take_texts(), Texts{"Overflow"});
    EXPECT_EQ(head.link_fail_count, 0);
    // A silent amplifier that comes back with a bad value is no longer silent.
    fall_silent();
    silent = false;
    visit();
    EXPECT_EQ(person.take_texts(), Texts{"Overflow"});
    EXPECT_FALSE(head.comm_error_shown);
    EXPECT_EQ(lines().substr(0, 20), std::string(20, ' '));
    set_analog("");
    visit();
    EXPECT_EQ(lines(), k_screen_1);
}

// Catches a head whose RF Off is dead for as long as a value of its screen cannot be shown.
TEST_F(VisitTest, HardKeysLiveBesideABadValue) {
    set_analog("1=-1");
    press({3, 4});
    visit();
    take_sent();
    cmdHardkey_Click(head, 3);
    EXPECT_EQ(take_settings(), Texts{"\x10\x17"});
    EXPECT_EQ(head.panel.line(4), "ATTN       HELP MORE");
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
    DispCommError(head, 2);
    const std::string modem =
        "Modem Connection    |Error, Hangup Modem,|Then Try Connect    |Again.              ";
    EXPECT_EQ(lines(), modem);
    head.panel.set_line(1, "");
    DispCommError(head, 0);
    EXPECT_EQ(lines(), modem);
}

// Catches a sub-menu left with half of its state.
TEST_F(VisitTest, HomeRequest) {
    enter_sub_menu(head, k_warning_levels);
    head.home_request = true;
    head.link_fail_count = 1;
    updateDisplay(head);
    EXPECT_EQ(lines(), k_screen_1);
    EXPECT_EQ(head.sub_menu, 0);
    EXPECT_EQ(head.link_fail_count, 1) << "this path leaves the count alone";
    EXPECT_FALSE(head.home_request);
    set_shutdown("12,Waveguide arc");
    head.home_request = true;
    visit();
    EXPECT_EQ(lines(), k_shutdown) << "not before it is over";
}

}  // namespace
}  // namespace ampdesk
