// The rows of the four status screens, character by character.
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "platform/run_time_error.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

// Catches a wrong item, scale, width or word, and a refresh that formats otherwise than the drawing.
TEST_F(HeadTest, StatusScreenRows) {
    services.options.negative_words_signed = true;
    struct Case {
        std::int16_t screen;
        int flags, switch_state, switch_count;
        const char* words;
        const char* alarm;
        std::string rows;
    };
    const Case cases[] = {
        // no switch; switch at antenna; at load, the text cut; not usable; hidden by an alarm
        {1, 0, 0, 0, "1=563 2=120", "0,Standby",
         "Fwd Power   56.3 dBm|Rev Power     12 dBm|Standby             |ATTN       HELP MORE"},
        {1, 2, 0, 1, "1=560", "0,Standby",
         "Fwd Power     56 dBm|Rev Power      0 dBm|Standby          ANT|ATTN       ANT  MORE"},
        {1, 2, 1, 1, "1=-5", "0,A text longer than it",
         "Fwd Power   -0.5 dBm|Rev Power      0 dBm|A text longer thLOAD|ATTN            MORE"},
        {1, 2, 0, 0, "", "0,Standby",
         "Fwd Power      0 dBm|Rev Power      0 dBm|Standby             |ATTN            MORE"},
        {1, 2, 0, 1, "", "1,Helix, over current",
         "Fwd Power      0 dBm|Rev Power      0 dBm|Helix, over current |ATTN       ANT  MORE"},
        // a value too wide is not cut
        {1, 0, 0, 0, "1=-32767", "0,",
         "Fwd Power  -3276.7 dBm|Rev Power      0 dBm|                    |ATTN       HELP MORE"},
        {2, 0, 0, 0, "10=123 13=5 11=7 14=59", "0,x",
         " --System Hours--   |00123:05]Console    |00007:59<RF On      |SETUP INFO HELP MORE"},
        {3, 0, 0, 0, "9=35 8=104", "0,x",
         " --System Temps--   | 35\xB0\x43<Inside Cabinet|104\xB0\x43<TWT Baseplate |WARNINGS   HELP MORE"},
        {4, 0, 0, 0, "5=6300 6=-1234 15=-4567 3=-12000 4=355", "0,x",
         "Ef  6.30v  If 1.23A |Eb  4.57kV          |Ek 12.00kV Iw  3.6ma|ATTN EVENT HELP MORE"},
        {4, 1, 0, 0, "6=900 3=100", "0,x",
         "Ef  0.00v  If-0.90ma|Eb  0.00kV          |Ek -0.10kV Iw  0.0ma|ATTN EVENT HELP MORE"},
    };
    for (Case c : cases) {
        SCOPED_TRACE(c.rows);
        head.menu_ptr = c.screen;
        set_analog(c.words);
        set_status(0, 0, c.flags, c.switch_state, c.switch_count);
        set_alarm(c.alarm);
        updateLogic(head);
        set_menu(head);
        EXPECT_EQ(lines(), c.rows);
        const std::string mark = "not to be touched   ";
        std::string live = c.rows.replace(c.rows.size() - 20, 20, mark);
        if (c.screen == 2 || c.screen == 3)
            live.replace(0, 20, mark);
        for (const int line : {1, 2, 3, 4}) head.panel.set_line(line, mark);
        update_menu(head);
        EXPECT_EQ(lines(), live) << "refresh";
    }
}

// Catches a marker that does not blink with RF on, or blinks without.
TEST_F(HeadTest, HoursMarkers) {
    head.menu_ptr = 2;
    head.right_marker = ' ';
    set_menu(head);
    EXPECT_EQ(head.panel.line(2), "00000:00 Console    ");
    EXPECT_EQ(head.panel.line(3), "00000:00<RF On      ");
    head.status_byte = k_status_rf_on;
    update_menu(head);
    EXPECT_EQ(head.panel.line(3), "00000:00 RF On      ");
}

// Catches a wrong band table, and a band that is asked for where there is none or at each refresh.
TEST_F(HeadTest, BandLabels) {
    services.options.model_capabilities = {{"VX1", 4}};
    struct Case {
        const char* model;
        const char* reply;
        const char* name;
        const char* row;
        bool unknown = false;
    };
    const Case cases[] = {{"KU", "RDBAND=1", "", "Fwd Power      0 dBm"},
                          {"C/KU/X", "RDBAND=0", "KU", "Ku Fwd Pwr     0 dBm"},
                          {"C/KU/X", "RDBAND=1", "X", "X Fwd Pwr      0 dBm"},
                          {"C/KU/X", "RDBAND=2.4", "C", "C Fwd Pwr      0 dBm"},
                          {"C/KU", "RDBAND=2", "C", "C Fwd Pwr      0 dBm"},
                          {"KU/K", "RDBAND=2", "K", "K Fwd Pwr      0 dBm"},
                          {"KU/DBS", "RDBAND=2", "DBS", "DBS Fwd Pw     0 dBm"},
                          {"VX1", "RDBAND=2", "DBS", "DBS Fwd Pw     0 dBm"},
                          // the values come with the next refresh, under the label that stands
                          {"C/KU", "RDBAND=2.7", "", "                    ", true},
                          {"C/KU", "RDBAND=-1", "", "                    ", true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.model) + " " + c.reply);
        Head one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = c.model});
        one.menu_ptr = 1;
        one.panel.set_line(1, "another screen");
        replies["RDBAND"] = c.reply;
        set_menu(one);
        EXPECT_EQ(one.band_name, c.name);
        EXPECT_EQ(one.panel.line(1), c.row);
        EXPECT_EQ(one.panel.line(4).substr(5, 5), std::string(c.model) == "KU" ? "     " : " BAND");
        EXPECT_EQ(person.take_texts(), c.unknown ? Texts{"Read Band Error"} : Texts{});
        take_sent();
        update_menu(one);
        EXPECT_EQ(count_sent("RDBAND"), 0U);
        EXPECT_EQ(one.panel.line(1).substr(11), "    0 dBm");
    }
}

// Catches a damaged band number that is taken for band 0.
TEST_F(HeadTest, BandWithoutANumberIsAskedForOnceMore) {
    Head one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = "C/KU/X"});
    one.menu_ptr = 1;
    std::string damaged;
    port.responder = [&, usual = port.responder](const std::string& frame) {
        if (frame[0] == k_stx)
            replies["RDBAND"] = std::exchange(damaged, "RDBAND=1");
        return usual(frame);
    };
    for (const char* reply : {"RDBAND=\xB1", "=~RDBAND=1", "RDBAND="}) {
        damaged = reply;
        set_menu(one);
        EXPECT_EQ(one.panel.line(1), "X Fwd Pwr      0 dBm") << reply;
    }
}

// Catches a gauge that shows a power nobody measures any more.
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

}  // namespace
}  // namespace ampdesk
