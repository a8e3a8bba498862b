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
#include "tests/support/sent_frame.h"

namespace ampdesk {
namespace {

// A wrong band table, and a band that is asked for where there is none or at each refresh.
TEST_F(HeadTest, BandLabels) {
    services.options.model_capabilities = {{"VX1", 4}};
    const struct {
        const char* model;
        const char* reply;
        const char* row;
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
        Pump one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = c.model});
        const Panel& panel = one.head.panel();
        replies["RDBAND"] = c.reply;
        one.start();
        const bool known = *c.row != '\0';
        EXPECT_EQ(panel.line(1), known ? c.row : "Fwd Power      0 dBm");
        EXPECT_EQ(panel.legend(1), std::string(c.model) == "KU" ? "" : "BAND");
        EXPECT_EQ(person.take_texts(), known ? Texts{} : Texts{"Read Band Error"});
        take_sent();
        one.visit();
        EXPECT_EQ(count_sent("RDBAND"), 0U);
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
    Pump one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = "C/KU/X"});
    const Panel& panel = one.head.panel();
    std::string damaged;
    std::string usual_reply = "RDBAND=1";
    port.responder = [&, usual = port.responder](const std::string& frame) {
        if (frame[0] == k_stx)
            replies["RDBAND"] = std::exchange(damaged, usual_reply);
        return usual(frame);
    };
    one.start();
    for (const char* reply : {"RDBAND=\xB1", "=~RDBAND=1", "RDBAND=", "RDBAND=0", "RDBAND=2"}) {
        damaged = reply;
        one.head.press_key(4);
        one.hear();
        EXPECT_EQ(panel.line(1), "X Fwd Pwr      0 dBm") << reply;
    }
    usual_reply = damaged = "RDB?AND=A1N";
    one.head.press_key(4);
    one.hear();
    EXPECT_EQ(panel.line(1), "X Fwd Pwr      0 dBm");
    usual_reply = "RDBAND=1";
    silent = true;
    one.head.press_key(1);
    one.serve();
    EXPECT_EQ(take_settings(), Texts{"SBAND 0"});
    EXPECT_TRUE(one.inside().redraw_request);
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
    press({2});
    EXPECT_EQ(count_sent("\x10\x1A"), 0U);
    head.panel.set_line(4, "ATTN       ANT  MORE");
    press({2});
    EXPECT_EQ(count_sent("\x10\x1A"), 1U);

    set_status(0, k_power_save, 2);
    open(2, 0);
    set_status(0, 0, 2, 0, 1);
    station.hear();
    take_sent();
    press({0});  // on the power-save page still
    EXPECT_EQ(take_settings(), Texts{});
    press({0});
    EXPECT_EQ(take_settings(), Texts{std::string("\x10\x1B\1")});

    press({4, 4});
    head.band.band_count = 1;
    head.panel.set_line(4, "ATTN>   0dB     MORE");
    press({1});
    EXPECT_EQ(take_settings(), Texts{});
}

// A gauge that shows a power nobody measures any more, or stands still beside a sub-menu.
TEST_F(HeadTest, GaugeFollowsTheForwardPower) {
    set_menu(head);
    const auto after = [&](const char* analog) {
        set_analog(analog);
        station.hear();
        return head.panel.gauge();
    };
    EXPECT_EQ(after("1=563"), 56.3);
    EXPECT_EQ(after("1=-10"), std::nullopt);
    enter_sub_menu(head, k_information);
    EXPECT_EQ(after("1=480"), 48);
    set_shutdown("12,Arc");
    EXPECT_EQ(after("1=480"), std::nullopt);
    EXPECT_EQ(after("1=470"), std::nullopt);
}

// A level that cannot be read shown as the one before it, and a text that is cut elsewhere than before the
// switch.
TEST_F(HeadTest, OddRows) {
    reply_to(k_limits_request) = block("4=585");
    open(3, 0);
    reply_to(k_limits_request) = block("5=32768");
    visit();
    press({3});
    EXPECT_EQ(lines().substr(21, 41), "under forward power:|                    ");
    set_status(0, 0, 2, 1, 1);
    set_alarm("0,A text longer than it");
    station.hear();
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
            move_bar(99);  // makes the bar longer
        move_bar(move.moved_to);
        expect_from(move.first, move.count, move.maximum);
        press({4});
    }
}

// An amplifier that says nothing past its end holds the others up; a lost reply taken for that end.
TEST_F(EventScreen, FindsTheEndOfALogWithSilenceBehindIt) {
    put_entries(10);
    open(4, 1);
    port.responder = [usual = port.responder, lost = 1](const std::string& frame) mutable {
        const std::string command = sent_frame(frame).command;
        const bool dropped = command[1] == '\x1A' && (command[2] > 9 || (command[2] == 6 && lost-- > 0));
        return dropped ? ScriptedPort::Answer{} : usual(frame);
    };
    const Instant start = clock.now();
    move_bar(60);
    expect_from(9, 10, 9);
    EXPECT_LT(clock.now() - start, std::chrono::seconds(8));
}

// A silent amplifier taken for an empty log; a page that is not tried again, or tried for ever.
TEST_F(EventScreen, SilenceIsNotTheEndOfTheLog) {
    station.hear();
    silent = true;
    open(4, 1);
    EXPECT_EQ(lines().find_first_not_of(" |"), std::string::npos);
    EXPECT_EQ(head.requests, std::deque<Request>{}) << "before the next tick";
    silent = false;
    put_entries(10);
    visit();
    station.serve();
    expect_from(0, 10, 99);
    move_bar(4);
    take_sent();
    visit(2);  // once more after a move of the bar
    EXPECT_EQ(count_sent("\xA0\x1A\x04"), 1U);
}

// A key that is lost because the page of the one before it is still being read, and what came for that page.
TEST_F(EventScreen, KeysAddUp) {
    put_entries(20);
    open(4, 1);
    press_at_once({3, 1, 3});
    station.serve();
    expect_from(9, 20, 99);
}

}  // namespace
}  // namespace ampdesk
