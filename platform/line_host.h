// A serial line without hardware: a pseudo-terminal that another program opens by its name, and what its
// host hears besides: commands on the standard input, and being asked to end.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/descriptor.h"
#include "platform/stop_signals.h"

namespace ampdesk {

class LineHost {
  public:
    // Makes the pseudo-terminal. An empty text, or in one line why it cannot.
    std::string open();

    // What the other program opens, for example "/dev/pts/3".
    const std::string& device() const { return device_; }

    struct Heard {
        bool stop = false;            // the program is asked to end
        bool failed = false;          // the pseudo-terminal is of no use any more
        std::string line;             // what the other program has sent
        std::string commands;         // what came on the standard input, cut anywhere
        bool commands_ended = false;  // told once: there is no more to come
    };

    // Waits for any of it, at most so long; without a limit until something comes.
    Heard wait(std::optional<Duration> limit);

    // To the other program. Never waits: what does not fit because nobody reads is lost, as on a line.
    void send(std::string_view bytes);

    // On the standard output.
    void answer(std::string_view text);

  private:
    void hear_line(Heard& heard);
    void hear_commands(Heard& heard);

    StopSignals stop_;
    Descriptor line_;
    Descriptor far_end_;  // kept open, so that a program that closes it does not hang up the line
    std::string device_;
    bool commands_open_ = true;
};

}  // namespace ampdesk
