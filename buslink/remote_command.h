// Command lines that a remote station sends through the terminal port: ">" + unit address + "," +
// command, or a request to open the bus port. The outcome is text for the remote station.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "buslink/bus_link.h"

namespace ampdesk {

class RemoteCommands {
  public:
    // `output` takes every line that is answered, CR LF included: the terminal port and, when the
    // terminal is visible, its text box.
    RemoteCommands(BusLink& bus, std::function<void(std::string_view)> output);

    // Executes one command line. Blocks for the exchanges it makes. Never throws.
    void commCommandProc(std::string_view line);

    std::string port_command_marker = "\x02\x02";
    std::string status_command_marker = "\x03\x03";

    std::int16_t serial_initialised = 0;
    std::int16_t bus_mode = 0;  // 9 once the port was opened from "rs422.dat"
    std::int16_t terminal_address = 0;
    std::int16_t last_bus_result = 0;

  private:
    BusLink& bus_;
    std::function<void(std::string_view)> output_;
};

}  // namespace ampdesk
