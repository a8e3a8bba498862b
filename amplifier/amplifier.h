// One amplifier on the bus: what is asked of it comes back as a reading, what it is told is sent once.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "amplifier/readings.h"
#include "buslink/bus_link.h"

namespace ampdesk {

class Amplifier {
  public:
    Amplifier(BusLink& bus, std::int16_t address, NegativeWords negative)
        : unit_address(address), bus_(bus), negative_(negative) {}

    // Each asks, once more when the first reply is bad. All throw error 100 when both fail.
    Status read_status();
    Analog read_analog();
    Limits read_limits();
    AlarmState read_alarm_state();
    Shutdown read_shutdown();
    // Nothing for an amplifier that answers, but does not say who it is.
    std::optional<Identity> read_identity();

    // Sends the command, once more when the first reply is bad, and returns the payload, two bytes at least.
    // Throws error 100 when both fail. The exchange compares the first two bytes of the command with their
    // echo; with `whole_echo` a reply that does not echo all of it is bad too.
    std::string read_itemAll(std::string_view command, bool whole_echo = false);

    // Sends the word as a text command, once more when it fails or the reply holds no "=", and returns the
    // text after the first "=", or all of it when the second reply has none either. Throws error 100.
    std::string read_item(std::string_view word);

    // Sends the setting exactly once. Returns 0 when the amplifier took it; tells a refusal by
    // on_refusal and returns 1. Never throws.
    std::int16_t set_item(std::string_view command);

    // Gets the words for a refused setting. Opens no box itself: the caller is in the middle of its work.
    std::function<void(const std::string& text)> on_refusal;

    // While set, a read is tried once and for no longer than look_limit(): how a silent amplifier is
    // looked for without holding up the others. After eight exchanges in a row that nobody has answered
    // all reads are like that until somebody does.
    void look_for_only(bool on) { look_only_ = on; }

    // How long a look for this silent amplifier may wait: three times the longest answer seen of
    // it, 0.3 s to 1.0 s. Every twelfth look waits the full second.
    Duration look_limit() const;

    const std::int16_t unit_address;
    std::int16_t comm_error = 0;  // 1 when the last read failed

  private:
    void tell_refusal(const std::string& text) const;
    bool only_looks() const;
    bool exchange(std::string_view command, std::string& payload, bool whole_echo);

    BusLink& bus_;
    NegativeWords negative_;
    bool look_only_ = false;
    int looks_ = 0;
    Duration longest_reply_{};
};

}  // namespace ampdesk
