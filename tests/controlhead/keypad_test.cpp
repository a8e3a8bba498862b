// Keys that must not act, and what the hard keys send and show.
#include "controlhead/keypad.h"

#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

class KeypadTest : public HeadTest {
  protected:
    void go_to(std::int16_t screen) {
        head.menu_ptr = screen;
        rest_markers(head);
        set_menu(head);
        take_sent();
    }
};

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
                  (Texts{{16, items[key]}, std::string(k_status_request), std::string(k_alarm_request)}));
        EXPECT_EQ(lamps(), "....RG.G");
    }
    // A failed read does not keep the next statement from running.
    go_mute(k_status_request);
    set_alarm("0,On");
    cmdHardkey_Click(head, 0);
    EXPECT_EQ(lamps(), "....R...");
}

// Catches a key that still acts while the link fails, a redraw is pending or the key does not exist.
TEST_F(KeypadTest, DeadKeys) {
    go_to(2);
    head.link_fail_count = 3;
    for (std::int16_t key = 0; key < 8; ++key) picLight_Click(head, key);
    press({4});
    head.link_fail_count = 0;
    head.redraw_request = true;
    cmdHardkey_Click(head, 1);
    head.redraw_request = false;
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
    EXPECT_TRUE(head.key_activity);
}

// Catches keys that act under the legend of a screen that is no longer theirs: from screen 4, whose
// second key is EVENT, to screen 1, whose second key changes the band.
TEST_F(KeypadTest, ScreenThatCannotBeDrawnShowsItsLegendAlone) {
    go_to(4);
    head.band_count = 1;
    silent = true;
    press({3});
    EXPECT_EQ(lines(), "                    |                    |                    |ATTN  BAND HELP MORE");
    EXPECT_TRUE(head.redraw_request);
    silent = false;
    reply_to("RDBAND") = "RDBAND=1";
    updateDisplay(head);
    EXPECT_EQ(head.panel.line(1), "X Fwd Pwr      0 dBm");
    EXPECT_FALSE(head.redraw_request);
    go_to(3);
    head.redraw_request = true;
    press({0});
    EXPECT_FALSE(head.redraw_request) << "the hard keys would be dead in the sub-menu";
    silent = true;
    press({4});
    EXPECT_EQ(lines(), " --System Temps--   |                    |                    |WARNINGS   HELP MORE");
}

// Catches attenuation mode without its scroll bar.
TEST_F(KeypadTest, AttenuationThatCannotBeReadIsNotEntered) {
    go_to(1);
    silent = true;
    press({0});
    EXPECT_FALSE(head.gain_mode || head.panel.scroll().visible);
    EXPECT_EQ(lamps(), "........");
    EXPECT_EQ(head.left_marker, '[');
}

}  // namespace
}  // namespace ampdesk
