// The display of an amplifier that has shut down.
#pragma once

#include "controlhead/head.h"

namespace ampdesk {

// Shows the reason on all four lines; ends sub-menu and attenuation mode, so that nothing but the
// acknowledgement is left.
void show_shutdown(Head& head, const Shutdown& shutdown);

}  // namespace ampdesk
