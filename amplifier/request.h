// What can be asked of an amplifier, as a value.
#pragma once

#include <compare>
#include <cstdint>

namespace ampdesk {

struct Request {
    enum class Kind : std::uint8_t { status, analog, alarm_state, shutdown, limits, identity, event, band };
    Kind kind = Kind::status;
    int entry = 0;       // of the event log, 0..255
    bool guess = false;  // whether it is there: tried once, and not worth the wait of a read

    auto operator<=>(const Request&) const = default;
};

}  // namespace ampdesk
