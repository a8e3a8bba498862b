// Command lines that a remote station sends through the terminal port: ">" + unit address + "," +
// command, or a request to open the bus port. The outcome is text for the remote station.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "buslink/bus_guest.h"

namespace ampdesk {

class RemoteCommands : public BusGuest {
  public:
    // `output` takes every line that is answered, CR LF included: the terminal port and, when the
    // terminal is visible, its text box. "rs422.dat" is looked for in `folder`.
    RemoteCommands(BusLink& bus, std::function<void(std::string_view)> output, std::string folder = ".");

    // Takes one command line to be carried out; not while busy(). Never throws: a run-time error on the way
    // is answered by its text.
    //
    // A line with the port command marker and "RS422" opens the bus port from "rs422.dat". One with
    // the status command marker sends its command as a text frame and then asks for "RDSTAT"; any
    // other line sends its command in a binary frame. The answer tells whether there was a reply.
    // While bus_link_on is 0 nothing is sent and nothing is answered.
    void commCommandProc(std::string_view line);

    // A line is being carried out.
    bool busy() const { return stage_ != Stage::idle || asked_; }

    // Whoever asked is gone: what is left of the line is not done, and nothing of it is answered.
    void forget() { stage_ = Stage::idle; }

    std::optional<Instant> due() const override;
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    // Whether commCommandProc would send nothing and answer that the command is wrong: more than 50
    // characters, no ",", an address that is no number or rounds to none from 0 to 99, or a command that
    // is empty or does not print.
    bool orders_nothing(std::string_view line) const;
    void answer_wrong_command();

    std::string port_command_marker = "\x02\x02";
    std::string status_command_marker = "\x03\x03";

  private:
    enum class Stage {
        idle,
        port,  // to be opened
        text,  // a text frame, with a status behind it
        binary,
    };
    void open_port();
    void answer(std::string_view text);

    BusLink& bus_;
    std::function<void(std::string_view)> output_;
    std::string folder_;
    Stage stage_ = Stage::idle;
    bool asked_ = false;                // an exchange is under way
    BusCommand command_;                // of the line in hand
    std::optional<LineSettings> line_;  // that its text frame went out on
};

}  // namespace ampdesk
