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
    // terminal is visible, its text box. "rs422.dat" is looked for in `folder`.
    RemoteCommands(BusLink& bus, std::function<void(std::string_view)> output, std::string folder = ".");

    // Executes one command line. Blocks for the exchanges it makes. Never throws: a run-time error
    // on the way is answered by its text.
    //
    // A line with the port command marker and "RS422" opens the bus port from "rs422.dat". One with
    // the status command marker sends its command as a text frame and then asks for "RDSTAT"; any
    // other line sends its command in a binary frame. The answer is the reply up to its first CR.
    // While bus_link_on is 0 nothing is sent and nothing is answered.
    void commCommandProc(std::string_view line);

    // Whether commCommandProc would send nothing and answer that the command is wrong: more than 50
    // characters, no ",", an address that is no number or rounds to none from 0 to 99, or a command that
    // is empty or does not print.
    bool orders_nothing(std::string_view line) const;
    void answer_wrong_command();

    std::string port_command_marker = "\x02\x02";
    std::string status_command_marker = "\x03\x03";

    std::int16_t serial_initialised = 0;
    std::int16_t bus_mode = 0;  // 9 once the port was opened from "rs422.dat"
    std::int16_t terminal_address = 0;
    std::int16_t last_bus_result = 0;

  private:
    void open_port();
    void exchange(std::string_view line, bool as_text);
    void answer(std::string_view text);

    BusLink& bus_;
    std::function<void(std::string_view)> output_;
    std::string folder_;
};

}  // namespace ampdesk
