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

// Takes a status over. A change of the switch makes the legend of status screen 1 another.
void take_status(Head& head, const Status& status);

// The first half of a visit's logic: reads the status. False when there is nothing to go on with: the
// amplifier did not answer, or a key was pressed since the last display tick. Errors end in
// Error_handler_local.
bool poll_status(Head& head);

// The status tells of a shutdown that the display does not show yet. Window events are to run before it
// does: a key that waits there comes first.
bool shutdown_waits(const Head& head);

// The second half: takes over the display on a shutdown, sets the lamps; nothing after a key. Errors end in
// Error_handler_local.
void show_state(Head& head);

}  // namespace ampdesk
