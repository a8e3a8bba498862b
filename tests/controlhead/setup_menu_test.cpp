// The setup menus as rows of the display.
#include "controlhead/lamps.h"
#include "tests/controlhead/screen_test.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

const std::string k_save =
    "Power save mode.    |Press SET to Change.|Shut supply  [OFF ] |SET             MORE";
const std::string k_none =
    "Redundant switch    |Mode:[Off   ]       |Press SET to Change.|SET             MORE";
const std::string k_hand =
    "Redundant switch    |Mode:[Manual]       |Press SET to Change.|SET             MORE";
const std::string k_auto =
    "Redundant switch    |Mode:[Auto  ]       |Press SET to Change.|SET             MORE";
const std::string k_off =
    "                    |  Remote       OFF  |                    |                MORE";
const std::string k_on =
    "                    |  Remote        ON  |                    |                MORE";
const std::string k_c =
    "Temperature reads   |in:  [\260C]           |                    |                MORE";
const std::string k_f =
    "Temperature reads   |in:  [\260F]           |                    |                MORE";
const std::string k_fwd_w =
    "Forward Power reads |in:  [Watts]        |                    |                MORE";
const std::string k_fwd_d =
    "Forward Power reads |in:  [dBm  ]        |                    |                MORE";
const std::string k_rev_w =
    "Reverse Power reads |in:  [Watts]        |                    |                MORE";
const std::string k_rev_d =
    "Reverse Power reads |in:  [dBm  ]        |                    |                MORE";

using SetupMenu = ScreenTest;

// An optional page missing or out of place, a bit read for another, an exit to another screen.
TEST_F(SetupMenu, ShowsThePagesThatTheAmplifierHas) {
    const struct {
        int settings;
        int flags;
        Texts pages;
    } cases[] = {
        {0, 0, {k_off, k_c, k_fwd_d, k_rev_d}},
        {1, 1, {k_on, k_c, k_fwd_d, k_rev_d}},
        {2, 0, {k_off, k_f, k_fwd_d, k_rev_d}},
        {4, 0, {k_off, k_c, k_fwd_w, k_rev_d}},
        {8, 0, {k_off, k_c, k_fwd_d, k_rev_w}},
        {16, 0, {k_save, k_off, k_c, k_fwd_d, k_rev_d}},
        {0, 2, {k_none, k_off, k_c, k_fwd_d, k_rev_d}},
        {31, 2, {k_save, k_none, k_on, k_f, k_fwd_w, k_rev_w}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.settings) + " " + std::to_string(c.flags));
        set_status(0, c.settings, c.flags);
        open(2, 0);
        for (const std::string& page : c.pages) {
            press(1);  // not SET; only draws again
            EXPECT_EQ(lines(), page);
            press(3);
        }
        EXPECT_EQ(lines(), c.pages.front());
        press(4);
        EXPECT_EQ(head.panel.line(1), " --System Hours--   ");
    }
    EXPECT_TRUE(take_settings().empty());
}

// A setting sent twice or from the wrong page; a mode shown though the amplifier refused it.
TEST_F(SetupMenu, SetStepsTheSwitchModeOnly) {
    set_status(0, k_settings_power_save, 2);
    open(2, 0);
    press(0);
    EXPECT_EQ(lines(), k_save);
    set_status(0, 0, 2);
    updateLogic(head);
    press(0);  // the page that SET would act on is not on the display yet
    EXPECT_EQ(lines(), k_none);
    refusal = 3;
    press(0);
    EXPECT_EQ(person.take_texts(), Texts{"Remote Is Not On"});
    EXPECT_EQ(lines(), k_none);
    refusal = 0;
    for (const std::string& page : {k_hand, k_auto, k_none}) {
        press(0);
        EXPECT_EQ(lines(), page);
    }
    const std::string set{"\x10\x1B"};
    EXPECT_EQ(take_settings(), (Texts{set + '\1', set + '\1', set + '\2', set + '\0'}));
}

// A page number past the pages of a shorter status; an operator left behind in a dead menu.
TEST_F(SetupMenu, FollowsTheStatusAndLeavesWithoutOne) {
    set_status(0, k_settings_power_save, 2);
    open(2, 0);
    for (int i = 0; i < 5; ++i) press(3);
    EXPECT_EQ(lines(), k_rev_d);
    reply_to(k_status_request) = std::string(2, '\0');
    press(1);
    EXPECT_EQ(lines(), k_off);
    go_mute(k_status_request);
    press(3);
    EXPECT_EQ(person.take_texts(), Texts{"The amplifier did not answer"});
    EXPECT_EQ(head.panel.line(4), "SETUP INFO HELP MORE");
}

}  // namespace
}  // namespace ampdesk
