// What kind of amplifier is simulated: who it is, what it is fitted with and how it starts.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace ampdesk::demo {

struct SimModel {
    int address = 1;                // unit address, 0..99
    long serial = 1001;             // serial number
    std::string name = "C/KU/X";    // model text; its first word chooses the bands
    bool has_switch = true;         // antenna/load output switch
    bool power_save = true;         // power save is fitted
    bool filament_in_ma = false;    // the filament current is to be read in mA, else in A
    bool fahrenheit = false;        // settings byte only: the temperature words stay in °C
    bool forward_in_watts = false;  // settings byte only: the power words stay in tenths of a dBm
    bool reverse_in_watts = false;
    // The filament current, the beam voltage and the cathode voltage are negative quantities. They
    // go out as two's complement when set, else as their magnitudes.
    bool signed_words = false;
    std::chrono::seconds warm_up{0};                   // from power-on until HV is accepted
    bool hv_on = false;                                // at the start; ignored during warm-up
    bool rf_on = false;                                // at the start; needs hv_on
    std::chrono::minutes console_time{1234 * 60 + 5};  // on the hour meters at the start
    std::chrono::minutes rf_time{987 * 60 + 40};
    int noise = 1;  // scale of the measuring noise, 0 for steady readings
};

// The band numbers that a model can be switched to, by the first word of its text: "C/KU/X" 0, 1
// and 2; "C/KU", "KU/K" and "KU/DBS" 0 and 2; any other 0 only. Number 0 is KU, 1 is X, 2 the
// model's third one (C, K or DBS).
std::vector<int> band_numbers(std::string_view model_name);

}  // namespace ampdesk::demo
