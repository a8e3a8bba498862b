// From the settings of a serial line to the modes of its terminal driver, and whether the driver
// kept them.
#pragma once

#include <termios.h>

#include <optional>
#include <string>

#include "platform/serial_port.h"

namespace ampdesk {

// Raw bytes both ways, modem lines ignored, a read that gives nothing means a lost line (VMIN = 1).
// Nothing for a rate, a character size, a parity or a stop bit count that no driver has.
std::optional<termios> line_modes(const PortSettings& settings);

// Whether `kept`, as read back, does what `wanted` asks for. A pseudo-terminal always carries whole
// bytes without parity, so that these are not compared for one.
bool modes_kept(const termios& wanted, const termios& kept, bool pseudo_terminal);

// "19200,n,8,1"
std::string settings_text(const PortSettings& settings);

}  // namespace ampdesk
