// The eight lamps and the logic that polls an amplifier's status and shutdown.
#pragma once

#include <cstdint>

#include "controlhead/head.h"

namespace ampdesk {

// Lamp 1..8 is lit when state is 1 and dark otherwise; lamp 0 darkens all, lamp 88 lamps 1 to 4.
// Any other number does nothing.
void lite_service(Head& head, std::int16_t lamp, std::int16_t state);

// Sets lamps 5 to 8.
void show_state_lamps(Head& head);

// A status or alarm state has come: takes over the display on a shutdown, but not right after a key, and sets
// the lamps.
void updateLogic(Head& head);

}  // namespace ampdesk
