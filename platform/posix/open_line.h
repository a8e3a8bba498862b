// Opening a serial device by name: checks what it is, locks it, sets its modes, and puts every
// reason why that fails into words.
#pragma once

#include "platform/descriptor.h"
#include "platform/serial_port.h"

namespace ampdesk {

// On success the descriptor of the line, locked and set; on failure none. Never blocks, whatever
// the name stands for, and opens nothing that is not a character device.
PortResult open_line(const PortSettings& settings, Descriptor& line);

}  // namespace ampdesk
