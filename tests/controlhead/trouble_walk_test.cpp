// Walks through what can go wrong: refusals, silence, odd values, shutdowns.
#include "tests/controlhead/walk.h"

namespace ampdesk {
namespace {

// clang-format off
const Step k_troubles[] = {
    {"visit", k_powers},
    // A value too wide for its columns is not cut, and an alarm hides the switch.
    {"analog 1 -32767; analog 2 -5; visit", "Ku Fwd Pwr -3276.7 dBm|Rev Power   -0.5 dBm|Fwd Power Low       |ATTN  BAND ANT  MORE"},
    {"clear; analog 8 104; analog 9 5; key 3 3", " --System Temps--   |  5\260C<Inside Cabinet|104\260C<TWT Baseplate |WARNINGS   HELP MORE"},
    {"clear; analog 4 355; key 3", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  3.6ma|ATTN EVENT HELP MORE"},
    // What cannot be read is not drawn, and no key acts under the legend of another screen.
    {"silent on; key 3", "                    |                    |                    |ATTN  BAND ANT  MORE"},
    {"clear; visit", k_powers},
    {"silent on; key 0"},
    {"clear; key 3 3 0 ", "Warning level for   |over forward power: |    [ 58.0 dBm]     |                MORE"},
    {"visit; short 3; visit", "Warning level for   |Ku over fwd power:  |[      0.0 dBm]     |                MORE"},
    {"clear; visit", k_over},
    {"silent on; key 4", " --System Temps--   |                    |                    |WARNINGS   HELP MORE"},
    {"clear; key 0; hard 2", "Warning level for   |over forward power: |    [ 58.0 dBm]     |                MORE"},
    {"key 4 4", k_powers},
    // An attenuation that the amplifier does not take puts the bar back, without another command.
    {"analog 12 400; key 0", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN>  40dB     MORE", "300*"},
    {"clear; bar 120", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 00.7ma|ATTN>  12dB     MORE", "120*"},
    {"refuse 3; bar 200; box Remote Is Not On"},
    {"refuse 0; bar 120"},
    {"silent on; bar 201"},
    {"clear; analog 12 400; refuse 3; bar 202; box Remote Is Not On", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 00.7ma|ATTN>  40dB     MORE", "300*"},
    {"clear; bar 0", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN>   0dB     MORE", "0*"},
    {"key 0", k_powers},
    // Setup: a refused mode is not shown; the pages follow the status, and without one are left.
    {"key 3 0 3", k_sw_off},
    {"refuse 26; key 0; box Setting Failed, code H1A"},
    {"key 3 3 3 3", "Reverse Power reads |in:  [dBm  ]        |                    |                MORE"},
    {"status 2 0; status 3 0; key 1", "                    |  Remote       OFF  |                    |                MORE"},
    {"silent on; key 3; box The amplifier did not answer", " --System Hours--   |                    |                    |SETUP INFO HELP MORE"},
    {"clear; visit; visit", k_hours},
    {"key 4", k_powers},
    // A shutdown while a redraw is pending; its OK is refused, then taken although the status stays.
    {"key 1; shutdown 12 Helix arc; visit"},
    {"visit; visit; visit", k_down, "!"},
    {"key 0 1 2 4; hard 0 1 2 3"},
    {"refuse 3; key 3; box Remote Is Not On"},
    {"status 1 16; refuse 0; key 3", "C Fwd Pwr      0 dBm|Rev Power      0 dBm|Standby RF off   ANT|ATTN  BAND ANT  MORE"},
    {"hard 0; key 0 3; visit"},
    {"visit", "System Shutdown, #0 |--------------------|No Shutdown         |                 OK ", "!"},
    {"clear; visit", "C Fwd Pwr      0 dBm|Rev Power      0 dBm|Standby RF off   ANT|ATTN  BAND ANT  MORE"},
    // One in attenuation, and silence during it.
    {"hard 0; key 0; visit", "C Fwd Pwr      0 dBm|Rev Power      0 dBm|Helix Current 00.6ma|ATTN    0dB     MORE", "0*"},
    {"shutdown 12 Helix arc; visit", k_down, "!"},
    {"silent on; visit; visit"},
    {"visit", k_error},
    {"silent off; visit", k_down, "!"},
    {"key 3; visit", "C Fwd Pwr      0 dBm|Rev Power      0 dBm|Standby RF off   ANT|ATTN  BAND ANT  MORE"},
    // An OK that is not on the display yet does nothing.
    {"shutdown 3 Waveguide arc; hard 1; key 3"},
    {"visit; visit", "System Shutdown, #3 |--------------------|Waveguide arc       |                 OK ", "!"},
};

const Step k_errors[] = {
    {"visit", k_p_powers},
    // The third overflow in a row is told, and it begins to count anew.
    {"overflow on; visit; visit"},
    {"visit; box Overflow"},
    {"visit; visit; overflow off; visit; overflow on; visit; visit"},
    {"visit; box Overflow"},
    // Silence is an error screen from the third failure in a row on.
    {"clear; visit"},
    {"silent on; visit; silent off; visit; silent on; visit"},
    {"visit", k_error},
    // An amplifier that comes back with a bad value is no longer silent.
    {"clear; overflow on; visit; box Overflow", k_blank},
    {"clear; visit", k_p_powers},
};
// clang-format on

// A setting sent twice, unasked, or from a dead key; a display that lies; an operator who is stuck.
TEST_F(Walk, ThroughTroubles) {
    start(k_fitted_model);
    walk(k_troubles);
    EXPECT_EQ(settings, (Texts{"10 16",  // hard key on a page
                               "10 18 78 00", "10 18 C8 00", "10 18 C9 00", "10 18 CA 00", "10 18 00 00",
                               "10 1B 01", "SBAND 2", "10 15", "10 15",  // refused, taken
                               "10 12", "10 15", "10 13"}));
    const FaultLog& log = head->state().faults;
    EXPECT_EQ(log.count(), 5);
    EXPECT_EQ(log.entry(0), "12:0 Waveguide ar");
}

// An error that is told at once, never, or for ever; one that is counted as another.
TEST_F(Walk, ThroughErrors) {
    start(k_bare_model);
    walk(k_errors);
}

// A header, page, bar or mode that is not there again when the amplifier answers after a silence.
TEST_F(Walk, ASilenceLeavesEverythingAsItWas) {
    start(k_fitted_model);
    for (const std::string keys : {"0", "3 3", "3 0 3", "3 1", "3 2 1", "3 3 0 3", "3 3 0 0", "3 3 3 1 1"}) {
        SCOPED_TRACE(keys);
        carry_out("visit; key 4 4 4 " + keys + "; visit");
        const std::string before = shown();
        carry_out("silent on; visit; visit; visit; visit");
        EXPECT_EQ(shown(), k_error + "|");
        for (int lamp = 1; lamp <= 8; ++lamp) EXPECT_EQ(head->panel().lamp(lamp), LampColour::dark);
        EXPECT_EQ(head->panel().gauge(), std::nullopt);
        carry_out("silent off; visit; visit");  // then the markers have come round
        EXPECT_EQ(shown(), before);
        EXPECT_EQ(head->state().link_fail_count, 0);
    }
}

}  // namespace
}  // namespace ampdesk
