#include "buslink/bus_guest.h"

namespace ampdesk {

bool exchange_once(BusLink& bus, BusGuest& guest) {
    const auto command = guest.next();
    if (command)
        guest.ended(bus.carry_out(*command));
    return command.has_value();
}

void carry_out(BusLink& bus, BusGuest& guest) {
    while (const auto due = guest.due()) {
        bus.clock().sleep_until(*due);
        exchange_once(bus, guest);
    }
}

}  // namespace ampdesk
