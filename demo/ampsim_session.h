// ampsim at work: a pseudo-terminal between a station and the simulated bus, fault commands from the
// standard input and their answers on the standard output.
#pragma once

#include <string>
#include <string_view>

#include "demo/sim_bus.h"
#include "platform/clock.h"
#include "platform/line_host.h"

namespace ampdesk::demo {

class AmpsimSession {
  public:
    AmpsimSession(SimBus& bus, const Clock& clock) : bus_(bus), clock_(clock) {}
    ~AmpsimSession();  // removes the link
    AmpsimSession(const AmpsimSession&) = delete;
    AmpsimSession& operator=(const AmpsimSession&) = delete;

    // Makes the pseudo-terminal and, unless the path is empty, a symbolic link to it. A link that
    // leads nowhere, or to this very device, is replaced; anything else there is left alone. Returns
    // an empty text, or in one line why it cannot.
    std::string open(const std::string& link);

    // The device that a station opens, for example "/dev/pts/3".
    const std::string& device() const { return host_.device(); }

    // Runs until the "quit" command or until the program is asked to end; sleeps whenever nothing is due.
    // The end of the standard input ends the commands only. Returns false when the terminal failed.
    bool run();

  private:
    std::string make_link(const std::string& link);
    void obey_input(const LineHost::Heard& heard);
    void obey(std::string_view line);

    SimBus& bus_;
    const Clock& clock_;
    LineHost host_;
    std::string link_;
    std::string command_text_;  // an unfinished command line
    bool quit_ = false;
};

}  // namespace ampdesk::demo
