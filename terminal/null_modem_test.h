// The Null Modem Test: looks at the modem lines, sends a text that nobody else would send and sees
// whether it comes back, and says in plain words what it found.
#pragma once

#include "platform/serial_port.h"
#include "terminal/transfer.h"

namespace ampdesk {

// A transfer of its own kind; message() is the report, one finding a line.
class NullModemTest : public Transfer {
  public:
    static constexpr std::chrono::seconds k_limit{1};  // for the text to come back, once it has left

    // `lines` as they stand now, nothing where the device has none. `stamp` makes the text unique:
    // any number that is not the last test's. `character_time` is that of one character on the line.
    NullModemTest(std::optional<ModemLines> lines, unsigned stamp, Duration character_time, Instant now);

    void feed(std::string_view bytes, Instant now) override;
    void tick(Instant now) override;

  private:
    void report(std::string_view loop_back);

    std::optional<ModemLines> lines_;
    std::string text_;
    std::string received_;
    Instant start_;
    Instant deadline_;
};

}  // namespace ampdesk
