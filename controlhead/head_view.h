// What is to be seen of a control head, by whoever has no part in it: a window, the line that tells of
// amplifiers in trouble, another desk. A value, to be copied.
#pragma once

#include "controlhead/panel.h"

namespace ampdesk {

struct HeadView {
    Panel panel{};
    bool silent = false;          // the communication error screen is up
    bool in_shutdown = false;     // the amplifier says so
    bool shutdown_shown = false;  // … and the display tells why
    bool operator==(const HeadView&) const = default;
};

}  // namespace ampdesk
