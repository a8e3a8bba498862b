// The turns that a station takes on a simulated bus, on a clock that only waits move.
#pragma once

#include <algorithm>

#include "demo/sim_bus.h"
#include "station/station.h"

namespace ampdesk {

// One step, and the wait for what comes next: a reply, something that is due, or the instant that `latest`
// gives after the step.
template <class Latest>
void turn(Station& station, const demo::SimBus& sim, Clock& clock, Latest latest) {
    const Instant due = station.step();
    Instant next = std::min<Instant>(due, latest());
    if (const auto reply = sim.next_due())
        next = std::min(next, *reply);
    clock.sleep_until(std::max(next, clock.now() + std::chrono::microseconds(100)));
}

}  // namespace ampdesk
