// Walks over the panel, keys in and rows out: through everything that it can show, once with all that an
// amplifier can be fitted with and once with nothing of it, and through what can go wrong.
#include <span>

#include "demo/faults.h"
#include "tests/controlhead/head_fixture.h"

namespace ampdesk {
namespace {

struct Step {
    // "key" and soft keys, "hard" and hard keys, "bar" and a value, "visit", "box" and the text that must
    // have been shown, or a fault of the simulator; ";" between several.
    std::string actions;
    std::string rows{};    // of the display, joined by bars; empty: nothing has changed
    std::string beside{};  // the scroll bar while it is shown, value/maximum; "*" lamp 1 is lit, "!" lamp 4
};

class Walk : public Bench {
  protected:
    void start(const demo::SimModel& model) {
        sim.add(model);
        services.options.shipped_folder = TEST_DATA "/../../data";
        if (model.signed_words)
            services.options.negative_words = NegativeWords::two_complement;
        const auto address = static_cast<std::int16_t>(model.address);
        station.emplace(services, HeadIdentity{1, 1, address, "1234", model.name});
        station->start();
    }

    std::string shown() const {
        const Panel& panel = station->head.panel();
        const ScrollBar& bar = panel.scroll();
        const auto lit = [&](int lamp) { return panel.lamp(lamp) == LampColour::yellow; };
        return lines_of(panel) + "|" +
               (bar.visible ? std::to_string(bar.value) + "/" + std::to_string(bar.maximum) : "") +
               (lit(1) ? "*" : "") + (lit(4) ? "!" : "");
    }

    void carry_out(const std::string& actions) {
        std::istringstream all(actions);
        for (std::string action; std::getline(all >> std::ws, action, ';');) {
            std::istringstream words(action);
            std::string what;
            words >> what;
            const std::vector<std::int16_t> numbers{std::istream_iterator<std::int16_t>(words), {}};
            if (what == "visit")
                station->visit();
            else if (what == "box")
                EXPECT_EQ(person.take_texts(), Texts{action.substr(4)});
            else if (what != "key" && what != "hard" && what != "bar")
                ASSERT_EQ(demo::make_fault(sim, action).text, "ok");
            else
                for (const std::int16_t number : numbers) act(what, number);
        }
    }
    void act(const std::string& what, std::int16_t number) {
        if (what == "key")
            station->head.press_key(number, key_name(station->head.state(), number));
        else if (what == "hard")
            station->head.press_hard_key(number);
        else
            station->head.move_scroll_bar(number, station->head.panel().scroll());
        station->serve();
    }

    void walk(std::span<const Step> steps) {
        std::string expected;
        for (const Step& step : steps) {
            SCOPED_TRACE("step " + std::to_string(&step - steps.data() + 1) + ": " + step.actions);
            carry_out(step.actions);
            if (!step.rows.empty())
                expected = step.rows + "|" + step.beside;
            ASSERT_EQ(shown(), expected);
        }
    }

    std::optional<Pump> station;
};

// clang-format off
const std::string k_error   = "RS485 Communication |Error,              |Check Connection    |                    ";
const std::string k_down    = "System Shutdown, #12|--------------------|Helix arc           |                 OK ";
// On the air, with output switch, power save and three bands.
const demo::SimModel k_fitted_model = {
    .serial = 1234, .signed_words = true, .hv_on = true, .rf_on = true, .noise = 0};
const std::string k_powers  = "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Transmit         ANT|ATTN  BAND ANT  MORE";
const std::string k_hours   = " --System Hours--   |01234:05<Console    |00987:40<RF On      |SETUP INFO HELP MORE";
const std::string k_temps   = " --System Temps--   | 36\260C<Inside Cabinet| 76\260C<TWT Baseplate |WARNINGS   HELP MORE";
const std::string k_tube    = "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  2.4ma|ATTN EVENT HELP MORE";
const std::string k_sw_off  = "Redundant switch    |Mode:[Off   ]       |Press SET to Change.|SET             MORE";
const std::string k_over    = "Warning level for   |Ku over fwd power:  |[     58.0 dBm]     |                MORE";
const std::string k_sw_hand = "Redundant switch    |Mode:[Manual]       |Press SET to Change.|SET             MORE";
const std::string k_adjust  = "Warning level for   |Ku over fwd power:  |>     58.0 dBm<     |                MORE";
const std::string k_twt     = "Warning level for   |TWT Temperature:    |[     95\260C]         |                MORE";
const std::string k_helix   = "Warning level for   |Helix Current:      |>      5.0mA<       |                MORE";
const std::string k_events  = "  0 12:00 ATTN 0.0  |  1 12:00 Overdrive |  2 12:00 ATTN 12.5 |  3 12:00 Sw off    ";

const Step k_fitted[] = {
    {"visit", k_powers},
    {"key 3", k_hours},
    {"visit", " --System Hours--   |01234:05 Console    |00987:40 RF On      |SETUP INFO HELP MORE"},
    {"key 3", k_temps},
    {"key 1; visit; key 3", k_tube},
    {"visit; key 3", k_powers},
    // The band key goes 0, 2, 1, 0; the label follows with the next visit.
    {"key 1; visit; visit", "C Fwd Pwr     56 dBm|Rev Power     36 dBm|Transmit         ANT|ATTN  BAND ANT  MORE"},
    {"key 1; visit; visit", "X Fwd Pwr     56 dBm|Rev Power     36 dBm|Transmit         ANT|ATTN  BAND ANT  MORE"},
    {"key 1; visit; visit", k_powers},
    // Setup: only the switch mode can be set.
    {"key 3 0", "Power save mode.    |Press SET to Change.|Shut supply  [OFF ] |SET             MORE"},
    {"key 0 1 2 3", k_sw_off},
    {"key 0", k_sw_hand},
    {"key 0", "Redundant switch    |Mode:[Auto  ]       |Press SET to Change.|SET             MORE"},
    {"key 0", k_sw_off},
    {"key 1 2 3", "                    |  Remote        ON  |                    |                MORE"},
    {"key 0 3", "Temperature reads   |in:  [\260C]           |                    |                MORE"},
    {"key 3", "Forward Power reads |in:  [dBm  ]        |                    |                MORE"},
    // Information; help from the screens 2 and 4.
    {"key 4 1", "JEX Quorvalitics Inc|   Model C/KU/X BAND|  Serial#   1234    |Simulator Rev 1.0   "},
    {"visit; key 2 2", "RUNNING HOURS       |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0/27"},
    {"visit; key 0 1", "Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4|by a page. EXIT ends", "1/27"},
    {"key 3", "it.                 |--------------------|Hours and minutes   |are counted by the  ", "5/27"},
    {"key 2 0", "RUNNING HOURS       |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0/27"},
    {"bar 25", "Have them at hand   |when you call for   |service.            |HELP: this text.    ", "25/27"},
    {"key 3 3", "service.            |HELP: this text.    |MORE: next screen.  |EXIT: screen 1.     ", "27/27"},
    {"key 4 3 3 2", "VOLTAGE AND CURRENT |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0/33"},
    {"key 4", k_tube},
    // Warning levels: on entry, as refreshed, and in the adjust state, whose bar runs upside down.
    {"key 4 3 3 0", "Warning level for   |over forward power: |    [ 58.0 dBm]     |                MORE"},
    {"visit", k_over},
    {"key 1 2 3", "Warning level for   |Ku under fwd power: |[     25.0 dBm]     |                MORE"},
    {"key 3", "Warning level for   |Ku over rev power:  |[     45.0 dBm]     |                MORE"},
    {"key 3", "Warning level for   |Cabinet Temperature:|[     50\260C]         |                MORE"},
    {"key 3", k_twt},
    {"key 3", "Warning level for   |Helix Current:      |[      5.0mA]       |                MORE"},
    {"key 3", k_over},
    {"key 0", k_adjust, "5/5*"},
    {"visit", "Warning level for   |Ku over fwd power:  |      58.0 dBm      |                MORE", "5/5*"},
    {"key 1 3; visit", k_adjust, "5/5*"},
    {"bar 3", "Warning level for   |Ku over rev power:  |>     45.0 dBm<     |                MORE", "3/5*"},
    {"bar 0", k_helix, "0/5*"},
    {"key 2 1", "Warning level for   |TWT Temperature:    |>     95\260C<         |                MORE", "1/5*"},
    {"key 0", k_twt},
    {"key 0 2", k_helix, "0/5*"},
    {"key 1 4", k_twt},
    {"bar 5"},
    {"key 4", k_temps},
    // Attenuation on screens 4 and 1; any key leaves it. An alarm blinks where the helix current stood.
    {"key 3 0", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  2.4ma|ATTN>   0dB     MORE", "0/300*"},
    {"bar 300", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  0.6ma|ATTN>  30dB     MORE", "300/300*"},
    {"bar 0; key 4 3 0", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN>   0dB     MORE", "0/300*"},
    {"visit", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN    0dB     MORE", "0/300*"},
    {"bar 125; visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Helix Current 00.7ma|ATTN>12.5dB     MORE", "125/300*"},
    {"alarm Overdrive; visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|                    |ATTN 12.5dB     MORE", "125/300*"},
    {"visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Overdrive           |ATTN>12.5dB     MORE", "125/300*"},
    {"key 1; clear; visit", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Transmit         ANT|ATTN  BAND ANT  MORE"},
    {"key 0", "Ku Fwd Pwr  43.5 dBm|Rev Power   23.5 dBm|Helix Current 00.7ma|ATTN>12.5dB     MORE", "125/300*"},
    {"bar 0", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN>   0dB     MORE", "0/300*"},
    // The event list; twelve entries by now.
    {"key 3 3 3 3 1", k_events, "0/99"},
    {"visit; key 0 1", "  1 12:00 Overdrive |  2 12:00 ATTN 12.5 |  3 12:00 Sw off    |  4 12:00 Sw auto   ", "1/99"},
    {"key 3", "  5 12:00 Sw manual |  6 12:00 Band 0    |  7 12:00 Band 1    |  8 12:00 Band 2    ", "5/99"},
    {"bar 60", " 11 12:00 Power on  |                    |                    |                    ", "11/11"},
    {"key 1 3 2 0", "  6 12:00 Band 0    |  7 12:00 Band 1    |  8 12:00 Band 2    |  9 12:00 RF on     ", "6/11"},
    {"bar 0", k_events, "0/11"},
    // The output switch: not without positions, and not back once it is locked.
    {"key 4 4; status 6 0; visit", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Transmit            |ATTN  BAND      MORE"},
    {"key 2; clear; visit", k_powers},
    {"key 2; visit", "Ku Fwd Pwr    56 dBm|Rev Power     26 dBm|Transmit        LOAD|ATTN  BAND      MORE"},
    // A shutdown takes the display from a sub-menu, but not under a key just pressed; only OK ends it.
    {"key 2; visit; key 3 3 0 0", k_adjust, "5/5*"},
    {"shutdown 12 Helix arc; visit"},
    {"visit", k_down, "!"},
    {"visit; key 0 1 2 4 3", "Ku Fwd Pwr     0 dBm|Rev Power      0 dBm|Standby RF off  LOAD|ATTN  BAND      MORE"},
    {"key 3; visit", " --System Hours--   |01234:05 Console    |00987:40<RF On      |SETUP INFO HELP MORE"},
    // Silence, on a status screen and on a page.
    {"silent on; visit; visit; visit", k_error},
    {"visit; key 0 1 2 3 4; silent off; visit", k_hours},
    {"key 0 3", k_sw_off},
    {"key 0", k_sw_hand},
};

// On the air, with none of that; its voltages are positive words.
const demo::SimModel k_bare_model = {
    .address = 9, .serial = 7, .name = "KU", .has_switch = false, .power_save = false, .filament_in_ma = true,
    .fahrenheit = true, .forward_in_watts = true, .hv_on = true, .rf_on = true,
    .console_time = std::chrono::minutes(7), .rf_time = std::chrono::minutes(0), .noise = 0};
const std::string k_p_powers = "Fwd Power     56 dBm|Rev Power     36 dBm|Transmit            |ATTN       HELP MORE";

const Step k_bare[] = {
    {"visit", k_p_powers},
    {"key 1 2", "POWERS AND ALARMS   |Soft keys 1 and 2   |scroll this text by |a line, keys 3 and 4", "0/36"},
    {"key 4; alarm Fans, both of them; visit", "Fwd Power     56 dBm|Rev Power     36 dBm|Fans, both of them  |ATTN       HELP MORE"},
    {"clear; key 3", " --System Hours--   |00000:07<Console    |00000:00<RF On      |SETUP INFO HELP MORE"},
    {"key 0", "                    |  Remote        ON  |                    |                MORE"},
    {"key 3", "Temperature reads   |in:  [\260F]           |                    |                MORE"},
    {"key 3", "Forward Power reads |in:  [Watts]        |                    |                MORE"},
    {"key 3", "Reverse Power reads |in:  [dBm  ]        |                    |                MORE"},
    {"key 3; status 2 12; key 0", "                    |  Remote       OFF  |                    |                MORE"},
    {"key 3 3 3", "Reverse Power reads |in:  [Watts]        |                    |                MORE"},
    {"key 4 1", "JEX Quorvalitics Inc|   Model KU BAND    |  Serial#   7       |Simulator Rev 1.0   "},
    {"key 4 3", k_temps},
    {"key 0", "Warning level for   |over forward power: |    [ 58.0 dBm]     |                MORE"},
    {"key 3", "Warning level for   |under forward power:|[     25.0 dBm]     |                MORE"},
    {"key 3", "Warning level for   |over reverse power: |[     45.0 dBm]     |                MORE"},
    {"key 3 3 3 3 4 3", "Ef  6.30v  If-1.50ma|Eb -4.57kV          |Ek -9.16kV Iw  2.4ma|ATTN EVENT HELP MORE"},
    {"key 0", "Ef  6.30v  If-1.50ma|Eb -4.57kV          |Ek -9.16kV Iw  2.4ma|ATTN>   0dB     MORE", "0/300*"},
    {"key 2 1", "  0 12:00 Fans, both|  1 12:00 RF on     |  2 12:00 HV on     |  3 12:00 Power on  ", "0/99"},
    {"key 3", "  3 12:00 Power on  |                    |                    |                    ", "3/3"},
    {"key 4; visit; shutdown 7 Fan; visit", "System Shutdown, #7 |--------------------|Fan                 |                 OK ", "!"},
    {"clear; visit", "Ef  6.30v  If-1.50ma|Eb  0.00kV          |Ek  0.00kV Iw  0.0ma|ATTN EVENT HELP MORE"},
    {"hard 0; key 4 3; visit", " --System Hours--   |00000:07 Console    |00000:00<RF On      |SETUP INFO HELP MORE"},
};

const Step k_troubles[] = {
    // A value too wide for its columns is not cut, and an alarm hides the switch.
    {"visit; analog 1 -32767; analog 2 -5; visit", "Ku Fwd Pwr -3276.7 dBm|Rev Power   -0.5 dBm|Fwd Power Low       |ATTN  BAND ANT  MORE"},
    {"clear; analog 8 104; analog 9 5; visit; key 3 3", " --System Temps--   |  5\260C<Inside Cabinet|104\260C<TWT Baseplate |WARNINGS   HELP MORE"},
    {"clear; analog 4 355; visit; key 3", "Ef  6.30v  If 1.50A |Eb  4.57kV          |Ek  9.16kV Iw  3.6ma|ATTN EVENT HELP MORE"},
    // What cannot be read is not drawn, and no key acts under the legend of another screen.
    {"silent on; visit; visit; key 3", "                    |                    |                    |ATTN  BAND ANT  MORE"},
    {"clear; visit; silent on; visit; visit; key 0", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|                    |ATTN>    dB     MORE", "*"},
    {"clear; visit", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN    0dB     MORE", "0/300*"},
    {"key 3 3 3 0", "Warning level for   |over forward power: |    [ 58.0 dBm]     |                MORE"},
    {"visit; short 3; visit", "Warning level for   |Ku over fwd power:  |[      0.0 dBm]     |                MORE"},
    {"clear; visit; key 4; silent on; visit; visit; key 0", "Warning level for   |over forward power: |                    |                MORE"},
    {"clear; key 4 0; hard 2", "Warning level for   |over forward power: |    [ 58.0 dBm]     |                MORE"},
    // An attenuation that the amplifier does not take puts the bar back, without another command.
    {"key 4 4; analog 12 400; visit; key 0", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN>  40dB     MORE", "300/300*"},
    {"clear; bar 120", "Ku Fwd Pwr    44 dBm|Rev Power     24 dBm|Helix Current 00.7ma|ATTN>  12dB     MORE", "120/300*"},
    {"refuse 3; bar 200; box Remote Is Not On"},
    {"refuse 0; bar 120; silent on; bar 201"},
    {"clear; analog 12 400; refuse 3; bar 202; box Remote Is Not On", "Ku Fwd Pwr    44 dBm|Rev Power     24 dBm|Helix Current 00.7ma|ATTN>  40dB     MORE", "300/300*"},
    {"clear; bar 0", "Ku Fwd Pwr    56 dBm|Rev Power     36 dBm|Helix Current 02.4ma|ATTN>   0dB     MORE", "0/300*"},
    // Setup: a refused mode is not shown; the pages follow the status, and without one are left.
    {"key 0 3 0 3", k_sw_off},
    {"refuse 26; key 0; box Setting Failed, code H1A"},
    {"refuse 0; key 0", k_sw_hand},
    {"key 3 3 3", "Forward Power reads |in:  [dBm  ]        |                    |                MORE"},
    {"status 2 0; status 3 0; key 1", "                    |  Remote       OFF  |                    |                MORE"},
    {"silent on; key 3; box The amplifier did not answer", " --System Hours--   |                    |                    |SETUP INFO HELP MORE"},
    {"clear; visit; visit", k_hours},
    // A shutdown while a redraw is pending; its OK is refused, then taken although the status stays.
    {"key 4 1; shutdown 12 Helix arc; visit; visit; visit; visit", k_down, "!"},
    {"key 0 1 2 4; hard 0 1 2 3; refuse 3; key 3; box Remote Is Not On"},
    {"status 1 16; refuse 0; key 3", "Ku Fwd Pwr     0 dBm|Rev Power      0 dBm|Helix arc           |ATTN  BAND ANT  MORE"},
    {"hard 1; key 0 3; visit; visit", "System Shutdown, #0 |--------------------|No Shutdown         |                 OK ", "!"},
    {"clear; visit", "C Fwd Pwr      0 dBm|Rev Power      0 dBm|Standby RF off   ANT|ATTN  BAND ANT  MORE"},
    // One in attenuation, and silence during it.
    {"hard 0 2 3; key 0; visit", "C Fwd Pwr      0 dBm|Rev Power      0 dBm|Helix Current 00.6ma|ATTN    0dB     MORE", "0/300*"},
    {"shutdown 12 Helix arc; visit", k_down, "!"},
    {"silent on; visit; visit; visit", k_error},
    {"silent off; visit", k_down, "!"},
    {"key 3; visit", "C Fwd Pwr      0 dBm|Rev Power      0 dBm|Standby RF off   ANT|ATTN  BAND ANT  MORE"},
    // An OK that is not on the display yet does nothing.
    {"shutdown 3 Waveguide arc; hard 1; key 3; visit; visit", "System Shutdown, #3 |--------------------|Waveguide arc       |                 OK ", "!"},
};

const Step k_errors[] = {
    // The third overflow in a row is told, once until the value was good again.
    {"overflow on; visit; visit; overflow off; visit; overflow on; visit; visit; overflow off; visit", k_p_powers},
    {"overflow on; visit; visit", "                    |                    |Transmit            |ATTN       HELP MORE"},
    {"visit; box Overflow"},
    {"visit; visit; visit; visit; visit; visit; overflow off; visit; overflow on; visit; visit"},
    {"visit; box Overflow"},
    // Silence is an error screen from the third failure in a row on.
    {"clear; visit", k_p_powers},
    {"silent on; visit; visit; silent off; visit; silent on; visit; visit"},
    {"visit", k_error},
    // An amplifier that comes back with a bad value is no longer silent.
    {"clear; overflow on; visit; visit", "                    |                    |Transmit            |ATTN       HELP MORE"},
    {"visit; box Overflow"},
    // An attenuation that cannot be shown: without its bar the mode is of no use.
    {"clear; analog 12 65535; visit; key 0", k_p_powers},
};
// clang-format on

// A row, page, marker, bar or lamp that is not what the key or the amplifier calls for; a setting that
// nobody asked for.
TEST_F(Walk, ThroughAnAmplifierWithEverything) {
    start(k_fitted_model);
    walk(k_fitted);
    EXPECT_EQ(take_settings(), (Texts{"SBAND 2", "SBAND 1", "SBAND 0",              // bands
                                      "10 1B 01", "10 1B 02", "10 1B 00",           // switch modes
                                      "10 18 2C 01", "10 18 00 00", "10 18 7D 00",  // 30, 0 and 12.5 dB
                                      "10 18 00 00", "10 1A", "10 15", "10 1B 01"}));
}

TEST_F(Walk, ThroughAnAmplifierWithNothing) {
    start(k_bare_model);
    walk(k_bare);
    EXPECT_EQ(take_settings(), Texts{"10 12"});
}

// A setting sent twice, unasked, or from a dead key; a display that lies; an operator who is stuck.
TEST_F(Walk, ThroughTroubles) {
    start(k_fitted_model);
    walk(k_troubles);
    EXPECT_EQ(take_settings(),
              (Texts{"10 16",  // hard key on a page
                     "10 18 78 00", "10 18 C8 00", "10 18 C9 00", "10 18 CA 00", "10 18 00 00", "10 1B 01",
                     "10 1B 01", "SBAND 2", "10 15", "10 15", "10 13",  // refused, taken
                     "10 12", "10 16", "10 17", "10 15", "10 13"}));
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
        for (int lamp = 1; lamp <= 8; ++lamp) EXPECT_EQ(station->head.panel().lamp(lamp), LampColour::dark);
        EXPECT_EQ(station->head.panel().gauge(), std::nullopt);
        EXPECT_EQ(station->head.panel().key_name(0), "");
        EXPECT_TRUE(station->head.view().silent);
        carry_out("silent off; visit");
        if (shown() != before)
            carry_out("visit");  // then the markers have come round
        EXPECT_EQ(shown(), before);
        EXPECT_EQ(station->head.state().link_fail_count, 0);
    }
}

}  // namespace
}  // namespace ampdesk
