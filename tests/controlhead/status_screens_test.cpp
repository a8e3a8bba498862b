// The rows of the four status screens, character by character.
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "platform/run_time_error.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

using Rows = std::vector<std::string>;

// Catches a wrong item, scale, width or word, and a refresh that formats otherwise than the drawing.
TEST_F(HeadTest, StatusScreenRows) {
    services.options.negative_words_signed = true;
    struct Case {
        const char* what;
        std::int16_t screen;
        Words words;
        int flags;
        int switch_state;
        int switch_count;
        const char* alarm;
        Rows rows;
    };
    const Case cases[] = {
        {"no switch",
         1,
         {{1, 563}, {2, 120}},
         0,
         0,
         0,
         "0,Standby",
         {"Fwd Power   56.3 dBm", "Rev Power     12 dBm", "Standby             ", "ATTN       HELP MORE"}},
        {"switch at antenna",
         1,
         {{1, 560}},
         2,
         0,
         1,
         "0,Standby",
         {"Fwd Power     56 dBm", "Rev Power      0 dBm", "Standby          ANT", "ATTN       ANT  MORE"}},
        {"switch at load, text cut",
         1,
         {{1, -5}},
         2,
         1,
         1,
         "0,A text longer than it",
         {"Fwd Power   -0.5 dBm", "Rev Power      0 dBm", "A text longer thLOAD", "ATTN            MORE"}},
        {"switch not usable",
         1,
         {},
         2,
         0,
         0,
         "0,Standby",
         {"Fwd Power      0 dBm", "Rev Power      0 dBm", "Standby             ", "ATTN            MORE"}},
        {"alarm hides the switch",
         1,
         {},
         2,
         0,
         1,
         "1,Helix, over current",
         {"Fwd Power      0 dBm", "Rev Power      0 dBm", "Helix, over current ", "ATTN       ANT  MORE"}},
        {"a value too wide is not cut",
         1,
         {{1, -32767}},
         0,
         0,
         0,
         "0,",
         {"Fwd Power  -3276.7 dBm", "Rev Power      0 dBm", "                    ", "ATTN       HELP MORE"}},
        {"hours",
         2,
         {{10, 123}, {13, 5}, {11, 7}, {14, 59}},
         0,
         0,
         0,
         "0,x",
         {" --System Hours--   ", "00123:05]Console    ", "00007:59<RF On      ", "SETUP INFO HELP MORE"}},
        {"temperatures",
         3,
         {{9, 35}, {8, 104}},
         0,
         0,
         0,
         "0,x",
         {" --System Temps--   ",
          " 35\xB0"
          "C<Inside Cabinet",
          "104\xB0"
          "C<TWT Baseplate ",
          "WARNINGS   HELP MORE"}},
        {"tube",
         4,
         {{5, 6300}, {6, -1234}, {15, -4567}, {3, -12000}, {4, 355}},
         0,
         0,
         0,
         "0,x",
         {"Ef  6.30v  If 1.23A ", "Eb  4.57kV          ", "Ek 12.00kV Iw  3.6ma", "ATTN EVENT HELP MORE"}},
        {"tube with the other sign",
         4,
         {{6, 900}, {3, 100}},
         1,
         0,
         0,
         "0,x",
         {"Ef  0.00v  If-0.90ma", "Eb  0.00kV          ", "Ek -0.10kV Iw  0.0ma", "ATTN EVENT HELP MORE"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        head.menu_ptr = c.screen;
        set_analog(c.words);
        set_status(0, 0, c.flags, c.switch_state, c.switch_count);
        set_alarm(c.alarm);
        updateLogic(head);
        set_menu(head);
        EXPECT_EQ(lines(), c.rows);
        Rows live = c.rows;
        for (int line : {1, 2, 3, 4}) {
            const bool fixed = line == 4 || (line == 1 && (c.screen == 2 || c.screen == 3));
            head.panel.set_line(line, "untouched");
            if (fixed)
                live[static_cast<std::size_t>(line - 1)] = "untouched           ";
        }
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
        const char* legend;
        Rows boxes;
    };
    const char* plain = "ATTN       HELP MORE";
    const char* banded = "ATTN  BAND HELP MORE";
    const Case cases[] = {
        {"KU", "RDBAND=1", "", "Fwd Power      0 dBm", plain, {}},
        {"C/KU/X", "RDBAND=0", "KU", "Ku Fwd Pwr     0 dBm", banded, {}},
        {"C/KU/X", "RDBAND=1", "X", "X Fwd Pwr      0 dBm", banded, {}},
        {"C/KU/X", "RDBAND=2.4", "C", "C Fwd Pwr      0 dBm", banded, {}},
        {"C/KU", "RDBAND=2", "C", "C Fwd Pwr      0 dBm", banded, {}},
        {"KU/K", "RDBAND=2", "K", "K Fwd Pwr      0 dBm", banded, {}},
        {"KU/DBS", "RDBAND=2", "DBS", "DBS Fwd Pw     0 dBm", banded, {}},
        {"VX1", "RDBAND=2", "DBS", "DBS Fwd Pw     0 dBm", banded, {}},
        // The values come with the next refresh, under the label that stands.
        {"C/KU", "RDBAND=2.7", "", "                    ", banded, {"Read Band Error"}},
        {"C/KU", "RDBAND=-1", "", "                    ", banded, {"Read Band Error"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.model) + " " + c.reply);
        Head one(services, {.slot = 1, .unit_address = 7, .number = "1", .model = c.model});
        one.menu_ptr = 1;
        replies["RDBAND"] = c.reply;
        set_menu(one);
        EXPECT_EQ(one.band_name, c.name);
        EXPECT_EQ(one.panel.line(1), c.row);
        EXPECT_EQ(one.panel.line(4), c.legend);
        EXPECT_EQ(person.take_texts(), c.boxes);
        take_sent();
        update_menu(one);
        EXPECT_EQ(count_sent("RDBAND"), 0U);
        EXPECT_EQ(one.panel.line(1).substr(11), "    0 dBm");
    }
}

// Catches a gauge that shows a power nobody measures any more.
TEST_F(HeadTest, GaugeFollowsTheForwardPower) {
    set_analog({{1, 563}});
    set_menu(head);
    EXPECT_EQ(head.panel.gauge(), 56.3);
    set_analog({{1, -10}});
    EXPECT_THROW(update_menu(head), RunTimeError);
    EXPECT_EQ(head.panel.gauge(), std::nullopt);
    set_analog({{1, 500}});
    set_menu(head);
    enter_sub_menu(head, k_information);
    EXPECT_EQ(head.panel.gauge(), std::nullopt);
    leave_sub_menu(head);
    EXPECT_EQ(head.panel.gauge(), 50);
}

}  // namespace
}  // namespace ampdesk
