// ampsim at work: a pseudo-terminal between a station and the simulated bus, fault commands from one
// descriptor and their answers to another.
#pragma once

#include <string>
#include <string_view>

#include "demo/sim_bus.h"
#include "platform/clock.h"

namespace ampdesk::demo {

class AmpsimSession {
  public:
    AmpsimSession(SimBus& bus, const Clock& clock) : bus_(bus), clock_(clock) {}
    ~AmpsimSession();  // closes the pseudo-terminal and removes the link
    AmpsimSession(const AmpsimSession&) = delete;
    AmpsimSession& operator=(const AmpsimSession&) = delete;

    // Makes the pseudo-terminal and, unless the path is empty, a symbolic link to it. A link that
    // leads nowhere, or to this very device, is replaced; anything else there is left alone. Returns
    // an empty text, or in one line why it cannot.
    std::string open(const std::string& link);

    // The device that a station opens, for example "/dev/pts/3".
    const std::string& device() const { return device_; }

    // Runs until the "quit" command or until `stop` can be read; sleeps whenever nothing is due.
    // The end of `commands` ends the commands only. Returns false when the terminal failed.
    bool run(int commands, int answers, int stop);

  private:
    std::string make_link(const std::string& link);
    void obey_input(int& commands, int answers);
    void obey(std::string_view line, int answers);
    bool hear_station();
    void speak();

    SimBus& bus_;
    const Clock& clock_;
    int master_ = -1;
    int slave_ = -1;  // kept open, so that a station that hangs up does not hang up the terminal
    std::string device_;
    std::string link_;
    std::string command_text_;  // an unfinished command line
    bool quit_ = false;
};

}  // namespace ampdesk::demo
