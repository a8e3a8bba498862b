// What happens to the soak's amplifiers by themselves or by hand.
#pragma once

#include "bench/line_faults.h"
#include "demo/sim_bus.h"

namespace ampdesk::bench {

class Weather {
  public:
    Weather(demo::SimBus& bus, FaultyLine& chance, const Clock& clock)
        : bus_(bus), chance_(chance), clock_(clock) {}

    // Gives every word of the amplifier a value that no other amplifier ever has and that it keeps for
    // 0.3 s only, so that a value tells whose it is and from when.
    void set_values(int address);

    // Once a visit, of which there are about eight a second.
    void turn();

    long shutdowns = 0;
    long outages = 0;
    long dead_lines = 0;    // all of them at once
    long replacements = 0;  // by an amplifier that does not send its address, or back

  private:
    demo::SimBus& bus_;
    FaultyLine& chance_;
    const Clock& clock_;
};

}  // namespace ampdesk::bench
