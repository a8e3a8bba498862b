// Which band the amplifier works in, and which bands its model can work in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "controlhead/head.h"

namespace ampdesk {

// Capability 0..4 of a model text: "C/KU/X" 1, "C/KU" 2, "KU/K" 3, "KU/DBS" 4, else what is
// configured for the designation, else 0.
std::int16_t band_capability(const HeadOptions& options, std::string_view model);

// Asks the amplifier for its band, unless it is being asked already. What it says sets band name, index and
// forward-power label; a change has to be read twice in a row, else what stands is left.
void find_band(Head& head);

// A reply to that has come, or none has.
void take_band(Head& head, const Reading& reading);

// The command that steps to the next band, empty when the capability offers none.
std::string next_band_command(const Head& head);

}  // namespace ampdesk
