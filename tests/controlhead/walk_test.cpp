// Walks through everything that the panel can show, once with all that an amplifier can be fitted with,
// once with nothing of it.
#include "tests/controlhead/walk.h"

namespace ampdesk {
namespace {

// clang-format off
const std::string k_save    = "Power save mode.    |Press SET to Change.|Shut supply  [OFF ] |SET             MORE";
const std::string k_sw_hand = "Redundant switch    |Mode:[Manual]       |Press SET to Change.|SET             MORE";
const std::string k_adjust  = "Warning level for   |Ku over fwd power:  |>     58.0 dBm<     |                MORE";
const std::string k_twt     = "Warning level for   |TWT Temperature:    |[     95\260C]         |                MORE";
const std::string k_helix   = "Warning level for   |Helix Current:      |>      5.0mA<       |                MORE";
const std::string k_events  = "  0 12:00 ATTN 0.0  |  1 12:00 Sw off    |  2 12:00 Sw auto   |  3 12:00 Sw manual ";

const Step k_fitted[] = {
    {"visit", k_powers},
    {"key 3", k_hours},
    {"visit", " --System Hours--   |01234:05 Console    |00987:40 RF On      |SETUP INFO HELP MORE"},
    {"visit", k_hours},
    {"key 4", k_powers},
    {"key 3 3", k_temps},
    {"key 1; visit"},
    {"key 4", k_powers},
    {"key 3 3 3", k_tube},
    {"visit"},
    {"key 4", k_powers},
    {"key 3 3 3 3"},
    // The band key goes 0, 2, 1, 0; the label follows with the next visit.
    {"key 1"},
    {"visit", "C Fwd Pwr     56 dBm|Rev Power     36 dBm|Transmit         ANT|ATTN  BAND ANT  MORE"},
    {"key 1; visit", "X Fwd Pwr     56 dBm|Rev Power     36 dBm|Transmit         ANT|ATTN  BAND ANT  MORE"},
    {"key 1; visit", k_powers},
    // Setup: only the switch mode can be set.
    {"key 3 0", k_save},
    {"key 0 1 2"},
    {"key 3", k_sw_off},
    {"key 0", k_sw_hand},
    {"key 0", "Redundant switch    |Mode:[Auto  ]       |Press SET to Change.|SET             MORE"},
    {"key 0", k_sw_off},
    {"visit; key 1 2"},
    {"key 3", "                    |  Remote        ON  |                    |                MORE"},
    {"key 0"},
    {"key 3", "Temperature reads   |in:  [\260C]           |                    |                MORE"},
    {"key 3", "Forward Power reads |in:  [dBm  ]        |                    |                MORE"},
    {"key 3", "Reverse Power reads |in:  [dBm  ]        |                    |                MORE"},
    {"key 3", k_save},
    {"key 4", k_hours},
    // Information; help from the screens 2, 3 and 4.
    {"key 1", "JEX Quorvalitics Inc|   Model C/KU/X BAND|  Serial#   1234    |Simulator Rev 1.0   "},
    {"visit"},
    {"key 2", k_hours},
    {"key 2", "RUNNING HOURS       |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0"},
    {"visit"},
    {"key 0 1", "Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4|by a page. EXIT ends", "1"},
    {"key 3", "it.                 |--------------------|Hours and minutes   |are counted by the  ", "5"},
    {"key 2 0", "RUNNING HOURS       |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0"},
    {"bar 3", "a line, keys 3 and 4|by a page. EXIT ends|it.                 |--------------------", "3"},
    {"bar 25", "Have them at hand   |when you call for   |service.            |HELP: this text.    ", "25"},
    {"key 3 3", "service.            |HELP: this text.    |MORE: next screen.  |EXIT: screen 1.     ", "27"},
    {"key 4", k_hours},
    {"key 3 2", "TEMPERATURES        |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0"},
    {"key 4", k_temps},
    {"key 3 2", "VOLTAGE AND CURRENT |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0"},
    {"key 4", k_tube},
    // Warning levels: on entry, as refreshed, and in the adjust state, whose bar runs upside down.
    {"key 4 3 3 0", "Warning level for   |over forward power: |    [ 58.0 dBm]     |                MORE"},
    {"visit", k_over},
    {"key 1 2"},
    {"key 3", "Warning level for   |Ku under fwd power: |[     25.0 dBm]     |                MORE"},
    {"key 3", "Warning level for   |Ku over rev power:  |[     45.0 dBm]     |                MORE"},
    {"key 3", "Warning level for   |Cabinet Temperature:|[     50\260C]         |                MORE"},
    {"key 3", k_twt},
    {"key 3", "Warning level for   |Helix Current:      |[      5.0mA]       |                MORE"},
    {"key 3", k_over},
    {"key 0", k_adjust, "5*"},
    {"visit", "Warning level for   |Ku over fwd power:  |      58.0 dBm      |                MORE", "5*"},
    {"visit", k_adjust, "5*"},
    {"key 1 3"},
    {"bar 3", "Warning level for   |Ku over rev power:  |>     45.0 dBm<     |                MORE", "3*"},
    {"bar 0", k_helix, "0*"},
    {"key 2 1", "Warning level for   |TWT Temperature:    |>     95\260C<         |                MORE", "1*"},
    {"key 0", k_twt},
    {"key 0 2", k_helix, "0*"},
    {"key 1 4", k_twt},
    {"bar 5"},
    {"key 4", k_temps},
    // Attenuation on screens 4 and 1; any key leaves it. An alarm blinks where the helix current stood.
    {"key 3 0", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  2.4ma|ATTN>   0dB     MORE", "0*"},
    {"visit", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  2.4ma|ATTN    0dB     MORE", "0*"},
    {"bar 300", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  2.4ma|ATTN   30dB     MORE", "300*"},
    {"visit", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  0.6ma|ATTN>  30dB     MORE", "300*"},
    {"bar 0", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  0.6ma|ATTN>   0dB     MORE", "0*"},
    {"key 4", k_tube},
    {"key 3 0", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN>   0dB     MORE", "0*"},
    {"visit", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN    0dB     MORE", "0*"},
    {"bar 125", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 00.7ma|ATTN 12.5dB     MORE", "125*"},
    {"visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Helix Current 00.7ma|ATTN>12.5dB     MORE", "125*"},
    {"alarm Overdrive; visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|                    |ATTN 12.5dB     MORE", "125*"},
    {"visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Overdrive           |ATTN>12.5dB     MORE", "125*"},
    {"visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|                    |ATTN 12.5dB     MORE", "125*"},
    {"key 1", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Overdrive           |ATTN  BAND ANT  MORE"},
    {"clear; visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Transmit         ANT|ATTN  BAND ANT  MORE"},
    {"key 0", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Helix Current 00.7ma|ATTN>12.5dB     MORE", "125*"},
    {"bar 0", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Helix Current 02.4ma|ATTN>   0dB     MORE", "0*"},
    {"key 3", k_powers},
    // The event list; ten entries by now.
    {"key 3 3 3 1", k_events, "0"},
    {"visit; key 0"},
    {"key 1", "  1 12:00 Sw off    |  2 12:00 Sw auto   |  3 12:00 Sw manual |  4 12:00 Band 0    ", "1"},
    {"key 3", "  5 12:00 Band 1    |  6 12:00 Band 2    |  7 12:00 RF on     |  8 12:00 HV on     ", "5"},
    {"key 3", "  9 12:00 Power on  |                    |                    |                    ", "9"},
    {"key 1 3"},
    {"key 2 0", "  4 12:00 Band 0    |  5 12:00 Band 1    |  6 12:00 Band 2    |  7 12:00 RF on     ", "4"},
    {"bar 8", "  8 12:00 HV on     |  9 12:00 Power on  |                    |                    ", "8"},
    {"visit"},
    {"bar 0", k_events, "0"},
    {"key 4", k_tube},
    // The output switch: not without positions, and not back once it is locked.
    {"key 4", k_powers},
    {"status 6 0; visit", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Transmit            |ATTN  BAND      MORE"},
    {"key 2"},
    {"clear; visit", k_powers},
    {"key 2; visit", "Ku Fwd Pwr    56 dBm|Rev Power     26 dBm|Transmit        LOAD|ATTN  BAND      MORE"},
    {"key 2; visit"},
    // A shutdown takes the display from a sub-menu, but not under a key just pressed; only OK ends it.
    {"key 3 3 0 0", k_adjust, "5*"},
    {"shutdown 12 Helix arc; visit"},
    {"visit", k_down, "!"},
    {"visit; key 0 1 2 4"},
    {"key 3", "Ku Fwd Pwr     0 dBm|Rev Power      0 dBm|Standby RF off  LOAD|ATTN  BAND      MORE"},
    {"visit"},
    {"key 3", k_hours},
    {"visit", " --System Hours--   |01234:05 Console    |00987:40<RF On      |SETUP INFO HELP MORE"},
    // Silence, on a status screen and on a page.
    {"silent on; visit"},
    {"visit", k_error},
    {"visit; key 0 1 2 3 4"},
    {"silent off; visit", k_hours},
    {"key 0 3", k_sw_off},
    {"silent on; visit"},
    {"visit", k_error},
    {"silent off; visit", k_sw_off},
    {"key 0", k_sw_hand},
};

// With none of that; its voltages are positive words.
const std::string k_p_hours  = " --System Hours--   |00000:07<Console    |00000:00<RF On      |SETUP INFO HELP MORE";
const std::string k_p_remote = "                    |  Remote        ON  |                    |                MORE";
const std::string k_p_watts  = "Forward Power reads |in:  [Watts]        |                    |                MORE";
const std::string k_p_tube   = "Ef  6.30v  If-1.50ma|Eb -4.57kV          |Ek -9.16kV Iw  2.4ma|ATTN EVENT HELP MORE";
const std::string k_p_over   = "Warning level for   |over forward power: |[     58.0 dBm]     |                MORE";

const Step k_bare[] = {
    {"visit", k_p_powers},
    {"key 1"},
    {"key 2", "POWERS AND ALARMS   |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0"},
    {"key 4", k_p_powers},
    {"alarm Fans, both of them; visit", "Fwd Power     56 dBm|Rev Power     36 dBm|Fans, both of them  |ATTN       HELP MORE"},
    {"clear; key 3", k_p_hours},
    {"key 0", k_p_remote},
    {"key 3", "Temperature reads   |in:  [\260F]           |                    |                MORE"},
    {"key 3", k_p_watts},
    {"key 3", "Reverse Power reads |in:  [dBm  ]        |                    |                MORE"},
    {"key 3", k_p_remote},
    {"status 2 12; key 0", "                    |  Remote       OFF  |                    |                MORE"},
    {"key 3", "Temperature reads   |in:  [\260C]           |                    |                MORE"},
    {"key 3", k_p_watts},
    {"key 3", "Reverse Power reads |in:  [Watts]        |                    |                MORE"},
    {"key 4", k_p_hours},
    {"key 1", "JEX Quorvalitics Inc|   Model KU BAND    |  Serial#   7       |Simulator Rev 1.0   "},
    {"key 4", k_p_hours},
    {"key 3", k_temps},
    {"key 0", "Warning level for   |over forward power: |    [ 58.0 dBm]     |                MORE"},
    {"visit", k_p_over},
    {"key 3", "Warning level for   |under forward power:|[     25.0 dBm]     |                MORE"},
    {"key 3", "Warning level for   |over reverse power: |[     45.0 dBm]     |                MORE"},
    {"key 3", "Warning level for   |Cabinet Temperature:|[     50\260C]         |                MORE"},
    {"key 3 3 3", k_p_over},
    {"key 4", k_temps},
    {"key 3", k_p_tube},
    {"key 0", "Ef  6.30v  If-1.50ma|Eb -4.57kV          |Ek -9.16kV Iw  2.4ma|ATTN>   0dB     MORE", "0*"},
    {"key 2", k_p_tube},
    {"key 1", "  0 12:00 RF on     |  1 12:00 HV on     |  2 12:00 Power on  |                    ", "0"},
    {"key 2 3", "  2 12:00 Power on  |                    |                    |                    ", "2"},
    {"key 4", k_p_tube},
    {"visit; shutdown 7 Fan; visit", "System Shutdown, #7 |--------------------|Fan                 |                 OK ", "!"},
    {"clear; visit", "Ef  6.30v  If-1.50ma|Eb  0.00kV          |Ek  0.00kV Iw  0.0ma|ATTN EVENT HELP MORE"},
};
// clang-format on

// A row, page, marker, bar or lamp that is not what the key or the amplifier calls for; a setting that
// nobody asked for.
TEST_F(Walk, ThroughAnAmplifierWithEverything) {
    start(k_fitted_model);
    walk(k_fitted);
    EXPECT_EQ(settings, (Texts{"SBAND 2", "SBAND 1", "SBAND 0",              // bands
                               "10 1B 01", "10 1B 02", "10 1B 00",           // switch modes
                               "10 18 2C 01", "10 18 00 00", "10 18 7D 00",  // 30, 0 and 12.5 dB
                               "10 18 00 00", "10 1A", "10 15", "10 1B 01"}));
}

TEST_F(Walk, ThroughAnAmplifierWithNothing) {
    start(k_bare_model);
    walk(k_bare);
    EXPECT_EQ(settings, Texts{});
}

// A value that collides with a key of the panel, 87 and 98 above all, or a wrong byte order.
TEST_F(Walk, EveryAttenuationReachesTheAmplifier) {
    start(k_fitted_model);
    head->press_key(0);
    for (int value = 300; value >= 0; --value) {
        head->move_scroll_bar(value);
        const std::string word = sim.find(1)->analog_block().substr(22, 2);  // item 12
        ASSERT_EQ(word[0] & 0xFF, value % 256);
        ASSERT_EQ(word[1], value / 256);
    }
    EXPECT_EQ(settings.size(), 301U);
    EXPECT_EQ(settings[300 - 87], "10 18 57 00");
    EXPECT_EQ(settings[300 - 98], "10 18 62 00");
}

}  // namespace
}  // namespace ampdesk
