// What the walk does not come by: odd values, refusals and silence on the screens.
#include <gtest/gtest.h>

#include "controlhead/band.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "controlhead/screens.h"
#include "platform/run_time_error.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

// A text that is cut elsewhere, a value that is cut at all, a half that is rounded down.
TEST_F(HeadTest, StatusScreensWithOddValues) {
    services.options.negative_words_signed = true;
    const struct {
        std::int16_t screen;
        int flags, switch_state;
        const char* words;
        const char* alarm;
        const char* rows;
    } cases[] = {
        {1, 2, 1, "1=-5", "0,A text longer than it",
         "Fwd Power   -0.5 dBm|Rev Power      0 dBm|A text longer thLOAD|ATTN            MORE"},
        {1, 2, 0, "1=-32767", "1,Helix, over current",
         "Fwd Power  -3276.7 dBm|Rev Power      0 dBm|Helix, over current |ATTN       ANT  MORE"},
        {2, 0, 0, "10=7 13=59", "0,", " --System Hours--   |00007:59]Console    |00000:00<RF On      |"},
        {3, 0, 0, "9=5 8=104", "0,", " --System Temps--   |  5\260C<Inside Cabinet|104\260C<TWT Baseplate |"},
        {4, 0, 0, "5=6300 3=-12000 4=355", "0,",
         "Ef  6.30v  If 0.00A |Eb  0.00kV          |Ek 12.00kV Iw  3.6ma|"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rows);
        head.menu_ptr = c.screen;
        set_analog(c.words);
        set_status(0, 0, c.flags, c.switch_state, 1);
        set_alarm(c.alarm);
        updateLogic(head);
        set_menu(head);
        EXPECT_EQ(lines().find(c.rows), 0U) << lines();
    }
}

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
    const struct {
        std::int16_t capability, index;
        const char* command;
    } cases[] = {{0, 0, ""},        {5, 1, ""},        {1, 1, "SBAND 0"}, {1, 2, "SBAND 1"},
                 {2, 0, "SBAND 2"}, {2, 2, "SBAND 0"}, {3, 1, "SBAND 0"}, {4, 2, "SBAND 0"}};
    for (const auto& c : cases) {
        head.band_count = c.capability;
        head.band_index = c.index;
        EXPECT_EQ(next_band_command(head), c.command) << c.capability << ' ' << c.index;
    }
}

// A gauge that shows a power nobody measures any more.
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
    EXPECT_EQ(head.panel.gauge(), std::nullopt);
    leave_sub_menu(head);
    EXPECT_EQ(head.panel.gauge(), 50);
}

// A bar left at a value that the amplifier does not have, or a second setting sent by its move back.
TEST_F(HeadTest, ARefusedAttenuationPutsTheBarBack) {
    const auto setting = [](char value) { return Texts{{16, 24, value, 0}}; };
    set_analog("4=12345 12=125");
    press({0});
    EXPECT_EQ(head.panel.line(3), "Helix Current123.5ma");
    refusal = 3;
    VScroll1_Change(head, 120);
    EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, 300, 125}));
    VScroll1_Change(head, 125);  // the window reports that move
    EXPECT_EQ(take_settings(), setting(120));
    EXPECT_EQ(person.take_texts(), Texts{"Remote Is Not On"});
    silent = true;
    VScroll1_Change(head, 121);
    EXPECT_EQ(head.panel.scroll().value, 125) << "what the amplifier had when last heard of";
    silent = false;
    refusal = 0;
    take_sent();
    VScroll1_Change(head, 122);
    EXPECT_EQ(take_settings(), setting(122)) << "the operator's next move counts";
    set_attenuation(head, -1);
    set_attenuation(head, 301);
    EXPECT_EQ(take_settings(), Texts{});
    for (const auto& [to, at] : {std::pair{-5, 0}, {301, 300}, {17, 17}}) {
        assign_potValue(head, to);
        EXPECT_EQ(head.panel.scroll().value, at);
    }
}

// A switch mode shown though the amplifier refused it; a page number past the pages of a shorter status;
// an operator left behind in a dead menu.
TEST_F(HeadTest, SetupWithRefusalsAndWithoutStatus) {
    set_status(0, k_settings_power_save, 2);
    open(2, 0);
    refusal = 3;
    press({3, 0});
    EXPECT_EQ(person.take_texts(), Texts{"Remote Is Not On"});
    EXPECT_EQ(head.panel.line(2), "Mode:[Off   ]       ");
    EXPECT_EQ(take_settings(), (Texts{{16, 27, 1}}));
    press({3, 3, 3, 3});
    EXPECT_EQ(head.panel.line(1), "Reverse Power reads ");
    reply_to(k_status_request) = std::string(2, '\0');
    press({1});
    EXPECT_EQ(head.panel.line(2), "  Remote       OFF  ");
    go_mute(k_status_request);
    press({3});
    EXPECT_EQ(person.take_texts(), Texts{"The amplifier did not answer"});
    EXPECT_EQ(head.panel.line(4), "SETUP INFO HELP MORE");
}

// A display torn by an overflow, a level made up of bytes that the block does not have.
TEST_F(HeadTest, OddWarningLevels) {
    const std::pair<std::string, const char*> blocks[] = {{block("4=585"), "[     58.5 dBm]     "},
                                                          {block("4=32768"), "[     58.5 dBm]     "},
                                                          {std::string(7, '\1'), "[      0.0 dBm]     "}};
    open(3, 0);
    for (const auto& [limits, row] : blocks) {
        reply_to(k_limits_request) = limits;
        updateDisplay(head);
        EXPECT_EQ(head.panel.line(3), row);
    }
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
        VScroll1_Change(head, move.moved_to);
        expect_numbered("event ", move.first, move.count, move.maximum);
        press({4});
    }
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
    expect_numbered("event ", 0, 10, 99);
    VScroll1_Change(head, 4);
    take_sent();
    updateDisplay(head);  // once more after a move of the bar
    updateDisplay(head);
    EXPECT_EQ(count_sent("\xA0\x1A\x04"), 1U);
}

}  // namespace
}  // namespace ampdesk
