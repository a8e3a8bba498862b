// What a head does about a reading that has come in.
#pragma once

#include "controlhead/head.h"

namespace ampdesk {

// Keeps the value, lets the screen that asked for it have it, sets the lamps and draws. A failure after its
// second try is counted; a good reading ends the count, and the communication error screen.
void take_reading(Head& head, const Reading& reading);

}  // namespace ampdesk
