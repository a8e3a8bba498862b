// Which port the terminal has and how it is set: the settings and their file, the opening, and what the
// status label says of it.
#pragma once

#include <string>

#include "buslink/bus_link.h"
#include "platform/operator.h"
#include "terminal/port_events.h"
#include "terminal/terminal_line.h"
#include "terminal/terminal_settings.h"

namespace ampdesk {

class TerminalPort {
  public:
    // Settings files are in `folder`, those of the bus, too.
    TerminalPort(TerminalLine& line, BusLink& bus, Operator& person, std::string folder);

    // Reads "ampdesk.dat" when it is there. Throws what read_terminal_settings throws.
    void load_settings();
    const TerminalSettings& settings() const { return settings_; }

    // Opens the port that the settings name. A failure is told in the status label only; a port that the
    // amplifiers use is left to them.
    void open_at_start();

    // Keeps the settings. The port is opened anew only when its own have changed, as that ends a call.
    // Failures are told.
    void use(const TerminalSettings& chosen);

    // "COM2:", or "No port".
    std::string name() const;

    // Name and settings of the line, or what has become of it; below it the modem lines where there are some.
    std::string state(const LineState& seen) const;

    // What is so of the line now replaces what the status label said.
    void tell_line();

  private:
    PortResult open(const PortSettings& wanted);

    TerminalLine& line_;
    BusLink& bus_;
    Operator& operator_;
    std::string folder_;
    TerminalSettings settings_;
    std::string line_name_;  // of the port that was opened last, or tried
};

}  // namespace ampdesk
