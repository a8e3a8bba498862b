// The six warning levels of a simulated amplifier and the alarms that they raise.
#pragma once

#include <array>
#include <string_view>

#include "demo/sim_tube.h"

namespace ampdesk::demo {

using AnalogWords = std::array<int, k_analog_words + 1>;  // index 0 unused

class SimWarnings {
  public:
    static constexpr std::size_t k_count = 6;

    // The words of the limits block, in its order and in the units of the words they watch: cabinet
    // temperature, baseplate temperature, helix current, forward power too high, forward power too
    // low, reverse power.
    static constexpr std::array<int, k_count> k_limits = {50, 95, 500, 580, 250, 450};

    // Compares the words with the levels. The forward power can only be too low while RF is on. An
    // alarm goes on until its word is back by a small margin, so that noise does not make it flicker.
    // Returns the text of an alarm that has just been raised, else an empty one.
    std::string_view check(const AnalogWords& words, bool rf_on);

    // The text of the first alarm that is on, at most 16 characters; empty when none is.
    std::string_view active() const;

  private:
    std::array<bool, k_count> raised_{};
};

}  // namespace ampdesk::demo
