// The display of an amplifier that has shut down.
#pragma once

#include "controlhead/head.h"

namespace ampdesk {

// Reads the reason and shows it on all four lines; ends sub-menu and attenuation mode, so that
// nothing but the acknowledgement is left. Throws error 100; nothing is changed then.
void show_shutdown(Head& head);

}  // namespace ampdesk
