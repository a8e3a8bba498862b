// What the walk does not come by: odd values, refusals and silence on the screens.
#include <gtest/gtest.h>

#include "buslink/wire/control_characters.h"
#include "controlhead/band.h"
#include "controlhead/keypad.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "platform/run_time_error.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

// A wrong band table, and a band that is asked for where there is none or at each refresh.
TEST_F(HeadTest, BandLabels) {
    services.options.model_capabilities = {{"VX1", 4}};
    const struct {
        const char* model;
        const char* reply;
        const char* row;  // empty: the band is not known, and the values come with the next refresh
    } cases[] = {{"KU", "RDBAND=1", "Fwd Power      0 dBm"},
                 {"C/KU/X", "RDBAND=2.4", "C Fwd Pwr      0 dBm"},
                 {"C/KU", "RDBAND=2", "C Fwd Pwr      0 dBm"},
                 {"KU/K", "RDBAND=2", "K Fwd Pwr      0 dBm"},
                 {"KU/DBS", "RDBAND=2", "DBS Fwd Pw     0 dBm"},
                 {"VX1", "RDBAND=2", "DBS Fwd Pw     0 dBm"},
                 {"C/KU", "RDBAND=2.7", ""},
                 {"C/KU", "RDBAND=-1", ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.model) + " " + c.reply);
        Head one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = c.model});
        one.menu_ptr = 1;
        one.panel.set_line(1, "another screen");
        replies["RDBAND"] = c.reply;
        set_menu(one);
        const bool known = *c.row != '\0';
        EXPECT_EQ(one.panel.line(1), known ? c.row : std::string(20, ' '));
        EXPECT_EQ(one.panel.legend(1), std::string(c.model) == "KU" ? "" : "BAND");
        EXPECT_EQ(person.take_texts(), known ? Texts{} : Texts{"Read Band Error"});
        take_sent();
        update_menu(one);
        EXPECT_EQ(count_sent("RDBAND"), 0U);
        EXPECT_EQ(one.panel.line(1).substr(11), "    0 dBm");
    }
}

// A wrong step through the bands of an amplifier with two, or a step without bands.
TEST_F(HeadTest, BandSteps) {
    const std::pair<std::int16_t, bool> capabilities[] = {{0, false}, {2, true}, {4, true}, {5, false}};
    for (const auto& [capability, two] : capabilities) {
        head.band.band_count = capability;
        head.band.band_index = 0;
        EXPECT_EQ(next_band_command(head), two ? "SBAND 2" : "") << capability;
        head.band.band_index = 2;
        EXPECT_EQ(next_band_command(head), two ? "SBAND 0" : "") << capability;
    }
}

// A damaged band number that is taken for band 0 or for the band it reads like, and a label that is left
// standing when only the reply to the change got lost.
TEST_F(HeadTest, DamagedBandIsAskedForOnceMore) {
    Head one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = "C/KU/X"});
    one.menu_ptr = 1;
    std::string damaged;
    std::string usual_reply = "RDBAND=1";
    port.responder = [&, usual = port.responder](const std::string& frame) {
        if (frame[0] == k_stx)
            replies["RDBAND"] = std::exchange(damaged, usual_reply);
        return usual(frame);
    };
    for (const char* reply : {"RDBAND=\xB1", "=~RDBAND=1", "RDBAND=", "RDBAND=0", "RDBAND=2"}) {
        damaged = reply;
        set_menu(one);
        EXPECT_EQ(one.panel.line(1), "X Fwd Pwr      0 dBm") << reply;
    }
    usual_reply = damaged = "RDB?AND=A1N";
    set_menu(one);
    EXPECT_EQ(one.panel.line(1), "X Fwd Pwr      0 dBm");
    usual_reply = "RDBAND=1";
    silent = true;
    cmdKey_Click(one, 1);
    EXPECT_EQ(take_settings(), Texts{"SBAND 0"});
    EXPECT_TRUE(one.redraw_request);
}

// A move left over from a longer bar, and settings that the display does not offer: a switch whose
// legend is blank, SET on the page before, BAND under the readout of an attenuation mode that failed.
TEST_F(HeadTest, OnlyWhatTheDisplayOffersIsDone) {
    head.panel.set_scroll({.visible = true, .minimum = 0, .maximum = 5, .value = 2});
    VScroll1_Change(head, 6);
    head.gain_mode = true;
    head.status.in_shutdown = true;  // seen by the visit that is still under way
    VScroll1_Change(head, 4);
    head.status.in_shutdown = false;
    head.gain_mode = false;
    EXPECT_EQ(head.panel.scroll().value, 2);
    head.menu_ptr = 1;
    head.status.has_switch = true;
    head.status.switch_positions = 2;
    head.panel.set_line(4, "ATTN            MORE");
    cmdKey_Click(head, 2);
    EXPECT_EQ(count_sent("\x10\x1A"), 0U);
    head.panel.set_line(4, "ATTN       ANT  MORE");
    cmdKey_Click(head, 2);
    EXPECT_EQ(count_sent("\x10\x1A"), 1U);

    set_status(0, k_power_save, 2);
    open(2, 0);
    set_status(0, 0, 2, 0, 1);
    updateLogic(head);
    take_sent();
    press({0});  // on the power-save page still
    EXPECT_EQ(take_settings(), Texts{});
    press({0});
    EXPECT_EQ(take_settings(), Texts{std::string("\x10\x1B\1")});

    press({4, 4});
    head.band.band_count = 1;
    go_mute(k_alarm_request);
    press({0});
    EXPECT_EQ(head.panel.line(4), "ATTN  BAND ANT  MORE");
    head.panel.set_line(4, "ATTN>   0dB     MORE");
    press({1});
    EXPECT_EQ(take_settings(), Texts{});
}

// A gauge that shows a power nobody measures any more, or stands still beside a sub-menu.
TEST_F(HeadTest, GaugeFollowsTheForwardPower) {
    set_analog("1=563");
    set_menu(head);
    EXPECT_EQ(head.panel.gauge(), 56.3);
    set_analog("1=-10");
    EXPECT_THROW(update_menu(head), RunTimeError);
    EXPECT_EQ(head.panel.gauge(), std::nullopt);
    set_analog("1=500");
    set_menu(head);
    enter_sub_menu(head, k_information);
    set_analog("1=480");
    updateDisplay(head);
    EXPECT_EQ(head.panel.gauge(), 48);
    set_shutdown("12,Arc");
    updateLogic(head);
    EXPECT_EQ(head.panel.gauge(), std::nullopt);
}

// A level that cannot be read shown as the one before it, and a text that is cut elsewhere than before the
// switch.
TEST_F(HeadTest, OddRows) {
    reply_to(k_limits_request) = block("4=585");
    open(3, 0);
    reply_to(k_limits_request) = block("5=32768");
    press({3});
    EXPECT_EQ(lines().substr(21, 41), "under forward power:|                    ");
    set_status(0, 0, 2, 1, 1);
    set_alarm("0,A text longer than it");
    updateLogic(head);
    press({4, 4});
    EXPECT_EQ(lines().substr(42), "A text longer thLOAD|ATTN            MORE");
}

// A field taken for its neighbour, a line of the status screen left standing, a line too long.
TEST_F(HeadTest, InformationOfOddIdentities) {
    services.options.identity_patterns = {{"(", "x"}, {"([0-9]+)-([A-Z]+)", "$2 of $1"}, {"Rev", "Revision"}};
    const std::string blank(20, ' ');
    const std::string nothing = blank + "|  Serial#   ----    |" + blank;
    const std::pair<std::string, std::string> cases[] = {
        {"HPA*CKX*1234*110-AB Rev C", "   Model CKX BAND   |  Serial#   1234    |AB of 110 Revision C"},
        {"*DESIGNATION* 0017 A *123456789012345678901",
         "   Model DESIGNATION|  Serial#   17      |12345678901234567890"},
        {"*\x01\x85\xB0*9*\x7F\r\xFF",
         "   Model   \260 BAND   |  Serial#   9       |  \377                 "},
        {"HPA*KU", "   Model KU BAND    |  Serial#   ----    |" + blank},
        {"*KU*9", nothing},
        {"", nothing},
    };
    for (const auto& [identity, rows] : cases) {
        SCOPED_TRACE(identity);
        reply_to(k_identity_request) = identity;
        open(2, 1);
        EXPECT_EQ(lines(), "JEX Quorvalitics Inc|" + rows);
        press({2});
    }
}

class EventScreen : public HeadTest {
  protected:
    std::string& entry(int n) { return reply_to("\xA0\x1A" + std::string(1, static_cast<char>(n))); }
    void put_entries(int count) {
        std::erase_if(replies, [](const auto& r) { return r.first.starts_with("\xA0\x1A"); });
        for (int n = 0; n < count; ++n) entry(n) = "event " + std::to_string(n);
    }
    void expect_from(int first, int count, int maximum) const {
        for (int i = first; i < first + 4; ++i) {
            const std::string n = std::to_string(i);
            std::string row = i < count ? std::string(3 - n.size(), ' ') + n + " event " + n : "";
            row.resize(20, ' ');
            EXPECT_EQ(head.panel.line(i - first + 1), row);
        }
        EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, maximum, first}));
    }
};

// Text in the wrong column or cut at the wrong place; an empty reply taken for an entry; a blank one in
// the middle taken for the end.
TEST_F(EventScreen, LaysOutAnEntry) {
    entry(0) = "1234567890123456789";
    entry(1) = "  ";
    entry(2) = "a\nb\x90\xB0";
    entry(3) = "";
    open(4, 1);
    EXPECT_EQ(lines(),
              "  0 1234567890123456|  1                 |  2 a b \260           |                    ");
}

// A bar that runs past the end of the log, or cannot reach what is there.
TEST_F(EventScreen, BarStopsAtTheEndOfTheLog) {
    const struct {
        int count, moved_to, first, maximum;
    } moves[] = {{10, 60, 9, 9},    {10, 3, 3, 99},   {2, 99, 1, 1},      {0, 50, 0, 0},
                 {100, 96, 96, 99}, {99, 97, 97, 98}, {150, 99, 99, 252}, {256, 252, 252, 252}};
    for (const auto& move : moves) {
        SCOPED_TRACE(std::to_string(move.count) + " entries, to " + std::to_string(move.moved_to));
        put_entries(256);
        open(4, 1);
        put_entries(move.count);
        if (move.moved_to > 99)
            VScroll1_Change(head, 99);  // makes the bar longer
        VScroll1_Change(head, move.moved_to);
        expect_from(move.first, move.count, move.maximum);
        press({4});
    }
}

// An amplifier that says nothing past its end holds the others up; a lost reply taken for that end.
TEST_F(EventScreen, FindsTheEndOfALogWithSilenceBehindIt) {
    put_entries(10);
    open(4, 1);
    port.responder = [usual = port.responder, lost = 1](const std::string& frame) mutable {
        const bool dropped = frame[4] == '\x1A' && (frame[5] > 9 || (frame[5] == 6 && lost-- > 0));
        return dropped ? ScriptedPort::Answer{} : usual(frame);
    };
    const Instant start = clock.now();
    VScroll1_Change(head, 60);
    expect_from(9, 10, 9);
    EXPECT_LT(clock.now() - start, std::chrono::seconds(8));
}

// The late reply to the request for one entry shown as the next one.
TEST_F(EventScreen, TakesNoEntryForAnother) {
    put_entries(10);
    port.responder = [usual = port.responder, late = 1](const std::string& frame) mutable {
        std::string asked = frame;
        if (frame[5] == '\1' && late-- > 0)
            asked[5] = '\0';
        return usual(asked);
    };
    open(4, 1);
    expect_from(0, 10, 99);
}

// A silent amplifier taken for an empty log; a page that is not tried again, or tried for ever.
TEST_F(EventScreen, SilenceIsNotTheEndOfTheLog) {
    silent = true;
    open(4, 1);
    EXPECT_EQ(lines().find_first_not_of(" |"), std::string::npos);
    silent = false;
    go_mute(k_status_request);
    updateDisplay(head);  // refused, but nothing says that it is there
    set_status(0);
    put_entries(10);
    updateDisplay(head);
    expect_from(0, 10, 99);
    VScroll1_Change(head, 4);
    take_sent();
    updateDisplay(head);  // once more after a move of the bar
    updateDisplay(head);
    EXPECT_EQ(count_sent("\xA0\x1A\x04"), 1U);
}

}  // namespace
}  // namespace ampdesk
