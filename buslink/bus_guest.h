// Somebody who speaks to the amplifiers now and then, one exchange at a time and never waiting: an nvRam
// transfer, the console, a remote station's line, the opening of an amplifier. Who holds the bus asks each
// guest in turn what it wants.
#pragma once

#include <optional>

#include "buslink/bus_link.h"

namespace ampdesk {

class BusGuest {
  public:
    virtual ~BusGuest() = default;

    // When next() is worth a call; nothing while only somebody else's act can bring something. Any instant
    // that has passed means now.
    virtual std::optional<Instant> due() const = 0;

    // Called with no exchange under way. What it wants to be exchanged now; nothing when it wants nothing, or
    // has done what there was to do (as opening a line) without an exchange.
    virtual std::optional<BusCommand> next() = 0;

    // What came of the last one. None is left out, and the next next() comes after it.
    virtual void ended(const BusReply& reply) = 0;
};

// For whoever has no plan of who is next. Lets the guest have the exchange that it wants now; false when it
// wants none. Blocks for that exchange.
bool exchange_once(BusLink& bus, BusGuest& guest);

// The same until the guest wants nothing by itself any more, with the waits that it asks for.
void carry_out(BusLink& bus, BusGuest& guest);

}  // namespace ampdesk
