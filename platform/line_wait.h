// Waits for input on several serial lines at once; another thread can end the wait.
#pragma once

#include <memory>
#include <span>

#include "platform/clock.h"
#include "platform/serial_port.h"

namespace ampdesk {

class LineWait {
  public:
    virtual ~LineWait() = default;

    // Blocks until one of the ports has input, has lost its line, wake() was called, or the deadline has
    // passed; may end early for nothing. Never spins, as long as the caller then reads every port: input or a
    // loss that nobody has taken note of ends the next wait at once. A closed port, or one whose loss is
    // known, is not waited for: the deadline is to cover the next attempt at it.
    virtual void wait(std::span<SerialPort* const> ports, Instant deadline) = 0;

    // Ends the wait that is under way, else the next one at once; several calls may end a single wait. From
    // any thread, and never blocks.
    virtual void wake() = 0;
};

// The operating system's. Deadlines are read on that clock, which must be steady and outlive it. Throws
// std::system_error when the program may open nothing more.
std::unique_ptr<LineWait> make_line_wait(Clock& clock);

}  // namespace ampdesk
