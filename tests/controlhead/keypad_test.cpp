// What every key of the panel does on every screen, and what it sends.
#include "controlhead/keypad.h"

#include "controlhead/band.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

using Sent = std::vector<std::string>;

class KeypadTest : public HeadTest {
  protected:
    KeypadTest() {
        reply_to(k_identity_request) = "JEX*KU*1234*A";
        for (char entry = 0; entry < 4; ++entry) reply_to(std::string{'\xA0', '\x1A', entry}) = "entry";
    }
    void go_to(std::int16_t screen) {
        head.menu_ptr = screen;
        head.sub_menu = k_no_sub_menu;
        head.gain_mode = false;
        rest_markers(head);
        set_menu(head);
        take_sent();
    }
};

// Catches a key that goes to the wrong place from one of the screens, or that sends a setting.
TEST_F(KeypadTest, SoftKeysOfTheStatusScreens) {
    struct Case {
        std::int16_t screen;
        std::int16_t key;
        std::int16_t to_screen;
        std::int16_t to_sub_menu;
        bool to_attenuation;
        char right_marker;
    };
    const Case cases[] = {
        {1, 0, 1, 0, true, ']'},  {2, 0, 0, 2, false, '<'}, {3, 0, 0, 3, false, ']'},
        {4, 0, 4, 0, true, ']'},  {1, 1, 1, 0, false, ']'}, {2, 1, 0, 4, false, '<'},
        {3, 1, 3, 0, false, ']'}, {4, 1, 0, 5, false, ']'}, {1, 2, 0, 1, false, ']'},
        {2, 2, 0, 1, false, '<'}, {3, 2, 0, 1, false, ']'}, {4, 2, 0, 1, false, ']'},
        {1, 3, 2, 0, false, '<'}, {2, 3, 3, 0, false, ']'}, {3, 3, 4, 0, false, ']'},
        {4, 3, 1, 0, false, ']'}, {1, 4, 1, 0, false, ']'}, {2, 4, 1, 0, false, ']'},
        {3, 4, 1, 0, false, ']'}, {4, 4, 1, 0, false, ']'},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("screen " + std::to_string(c.screen) + " key " + std::to_string(c.key));
        go_to(c.screen);
        head.key_activity = false;
        if (c.key < 4)
            picLight_Click(head, c.key);  // the first four lamps are soft keys too
        else
            cmdKey_Click(head, c.key);
        EXPECT_EQ(head.menu_ptr, c.to_screen);
        EXPECT_EQ(head.sub_menu, c.to_sub_menu);
        EXPECT_EQ(head.gain_mode, c.to_attenuation);
        EXPECT_EQ(head.right_marker, c.right_marker);
        EXPECT_EQ(head.left_marker, c.to_attenuation ? '>' : '[');
        EXPECT_TRUE(head.key_activity);
        if (c.to_sub_menu != 0) {
            EXPECT_EQ(head.menu_saved, c.screen);
            cmdKey_Click(head, 4);
            EXPECT_EQ(head.menu_ptr, c.screen);
            EXPECT_EQ(head.right_marker, c.screen == 2 ? '<' : ']');
        }
        EXPECT_EQ(take_settings(), Sent{}) << "nobody asked for a setting";
    }
}

// Catches an output switch thrown although it is locked, absent or not on the display.
TEST_F(KeypadTest, OutputSwitch) {
    struct Case {
        int flags;
        int state;
        int count;
        Sent sent;
        bool help;
    };
    for (const Case& c : {Case{0, 0, 1, {}, true}, Case{2, 0, 0, {}, false}, Case{2, 1, 1, {}, false},
                          Case{2, 2, 1, {"\x10\x1A"}, false}}) {
        go_to(1);
        set_status(0, 0, c.flags, c.state, c.count);
        updateLogic(head);
        if (!c.help)
            cmdKey_Click(head, 2);  // the legend is still the old one
        EXPECT_EQ(take_settings(), Sent{});
        updateDisplay(head);
        cmdKey_Click(head, 2);
        EXPECT_EQ(take_settings(), c.sent);
        EXPECT_EQ(head.sub_menu == k_help_pages, c.help);
    }
}

// Catches a wrong step through the bands, and a label that is left standing for the old band.
TEST_F(KeypadTest, BandSteps) {
    struct Case {
        std::int16_t capability;
        std::int16_t index;
        const char* command;
    };
    const Case cases[] = {{0, 0, ""},        {5, 1, ""},        {1, 0, "SBAND 2"}, {1, 1, "SBAND 0"},
                          {1, 2, "SBAND 1"}, {2, 0, "SBAND 2"}, {2, 2, "SBAND 0"}, {3, 1, "SBAND 0"},
                          {4, 0, "SBAND 2"}, {4, 2, "SBAND 0"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.capability) + " " + std::to_string(c.index));
        go_to(1);
        head.band_count = c.capability;
        head.band_index = c.index;
        reply_to("RDBAND") = "RDBAND=1";
        const bool stepping = *c.command != '\0';
        cmdKey_Click(head, 1);
        EXPECT_EQ(take_settings(), stepping ? Sent{c.command} : Sent{});
        EXPECT_EQ(head.redraw_request, stepping);
        head.band_count = 0;
    }
    go_to(1);
    head.band_count = 1;
    refusal = 4;
    cmdKey_Click(head, 1);
    EXPECT_EQ(head.last_command_status, 1);
    EXPECT_TRUE(head.redraw_request) << "the band may have changed and only the reply be lost";
    EXPECT_EQ(person.take_texts(), Sent{"Invalid Data"});
}

// Catches a wrong setting, and lamps that wait for the next visit.
TEST_F(KeypadTest, HardKeys) {
    const char items[] = {18, 19, 22, 23};
    for (std::int16_t key = 0; key < 4; ++key) {
        SCOPED_TRACE(key);
        set_status(k_status_hv_on);
        set_alarm("0,Standby, RF off");
        lite_service(head, 0, 0);
        head.status_byte = 0;
        take_sent();
        picLight_Click(head, static_cast<std::int16_t>(key + 4));
        EXPECT_EQ(sent,
                  (Sent{{16, items[key]}, std::string(k_status_request), std::string(k_alarm_request)}));
        for (const auto& [lamp, colour] :
             {std::pair{5, LampColour::red}, {6, LampColour::green}, {8, LampColour::green}})
            EXPECT_EQ(head.panel.lamp(lamp), colour);
    }
    // A failed read does not keep the next statement from running.
    go_mute(k_status_request);
    set_alarm("0,On");
    cmdHardkey_Click(head, 0);
    EXPECT_EQ(head.panel.lamp(6), LampColour::dark);
}

// Catches a key that still acts while the link fails, a redraw is pending or the key does not exist.
TEST_F(KeypadTest, DeadKeys) {
    go_to(2);
    head.link_fail_count = 3;
    for (std::int16_t key = 0; key < 8; ++key) picLight_Click(head, key);
    cmdKey_Click(head, 4);
    head.link_fail_count = 0;
    head.redraw_request = true;
    cmdHardkey_Click(head, 1);
    head.redraw_request = false;
    for (const int none : {-1, 4, 8}) {
        cmdHardkey_Click(head, static_cast<std::int16_t>(none));
        picLight_Click(head, static_cast<std::int16_t>(none == 4 ? 9 : none));
    }
    cmdKey_Click(head, 5);
    EXPECT_EQ(sent, Sent{});
    EXPECT_FALSE(head.key_activity);
    head.menu_ptr = 0;
    cmdKey_Click(head, 0);
    EXPECT_EQ(person.take_texts(), Sent{"menu ptr 0 fault"});
}

// Catches keys that act under the legend of a screen that is no longer theirs: from screen 4, whose
// second key is EVENT, to screen 1, whose second key changes the band.
TEST_F(KeypadTest, ScreenThatCannotBeDrawnShowsItsLegendAlone) {
    go_to(4);
    head.band_count = 1;
    silent = true;
    cmdKey_Click(head, 3);
    EXPECT_EQ(lines(), "                    |                    |                    |ATTN  BAND HELP MORE");
    EXPECT_TRUE(head.redraw_request);
    silent = false;
    reply_to("RDBAND") = "RDBAND=1";
    updateDisplay(head);
    EXPECT_EQ(head.panel.line(1), "X Fwd Pwr      0 dBm");
    EXPECT_FALSE(head.redraw_request);
    go_to(3);
    cmdKey_Click(head, 0);
    silent = true;
    cmdKey_Click(head, 4);
    EXPECT_EQ(lines(), " --System Temps--   |                    |                    |WARNINGS   HELP MORE");
}

// Catches attenuation mode without its scroll bar.
TEST_F(KeypadTest, AttenuationThatCannotBeReadIsNotEntered) {
    go_to(1);
    silent = true;
    cmdKey_Click(head, 0);
    EXPECT_FALSE(head.gain_mode);
    EXPECT_FALSE(head.panel.scroll().visible);
    EXPECT_EQ(head.panel.lamp(1), LampColour::dark);
    EXPECT_EQ(head.left_marker, '[');
}

// Catches a scroll position that is taken for a soft key, or passed on the wrong way round.
TEST_F(KeypadTest, ScrollBarPositions) {
    go_to(3);
    head.redraw_request = true;
    cmdKey_Click(head, 0);
    EXPECT_FALSE(head.redraw_request) << "the hard keys would be dead in the sub-menu";
    cmdKey_Click(head, 0);  // adjust state: the bar is shown, page 0 at its upper end
    EXPECT_EQ(head.panel.scroll(), (ScrollBar{true, 0, 5, 5}));
    VScroll1_Change(head, 2);
    VScroll1_Change(head, 6);  // left over from a longer bar
    EXPECT_EQ(head.warn_page, 3);
    EXPECT_EQ(head.panel.scroll().value, 2);
    cmdKey_Click(head, 4);
    cmdKey_Click(head, 4);
    VScroll1_Change(head, 0);
    EXPECT_EQ(head.warn_page, 3) << "hidden bar";

    go_to(4);
    cmdKey_Click(head, 1);
    for (char entry = 4; entry < 9; ++entry) reply_to(std::string{'\xA0', '\x1A', entry}) = "late";
    VScroll1_Change(head, 5);
    EXPECT_EQ(head.panel.line(1), "  5 late            ");
    EXPECT_TRUE(head.event_refresh);
    reply_to("\xA0\x1A\x05") = "new";
    updateDisplay(head);
    EXPECT_EQ(head.panel.line(1), "  5 new             ");
    EXPECT_FALSE(head.event_refresh);
    updateDisplay(head);
    EXPECT_EQ(count_sent("\xA0\x1A\x05"), 2U);
}

}  // namespace
}  // namespace ampdesk
