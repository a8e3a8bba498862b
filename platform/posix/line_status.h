// What a serial line's driver tells beside its bytes: modem lines, error counts, DTR, output that has
// not left. All of it goes through one call that a test can stand in for, since a pseudo-terminal has
// none of it.
#pragma once

#include <functional>
#include <optional>

#include "platform/serial_port.h"

namespace ampdesk {

// As ioctl(): 0 or more on success, -1 when the device has no such thing or is gone.
using LineCall = std::function<int(int fd, unsigned long request, void* argument)>;

int system_line_call(int fd, unsigned long request, void* argument);

// TIOCMGET; nothing where the device has no modem lines.
std::optional<ModemLines> read_modem_lines(const LineCall& call, int fd);

// TIOCGICOUNT; nothing where the driver does not count.
std::optional<LineCounts> read_line_counts(const LineCall& call, int fd);

// TIOCMBIS, TIOCMBIC; false where there is no DTR.
bool set_line_dtr(const LineCall& call, int fd, bool on);

// TIOCOUTQ and, where the chip tells it, TIOCSERGETLSR: whether the last bit is on the line. A driver
// that tells nothing counts as empty.
bool line_output_left(const LineCall& call, int fd);

}  // namespace ampdesk
