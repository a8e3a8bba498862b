// The six warning levels of a simulated amplifier and the alarms that they raise.
#pragma once

#include <array>
#include <string_view>
#include <vector>

#include "demo/sim_tube.h"

namespace ampdesk::demo {

using AnalogWords = std::array<int, k_analog_words + 1>;  // index 0 unused

// In the order of the limits block.
enum class WarningLevel : std::size_t {
    cabinet,
    baseplate,
    helix,
    over_forward,
    under_forward,
    over_reverse
};

class SimWarnings {
  public:
    static constexpr std::size_t k_count = 6;

    // The words of the limits block, in the units of the words they watch.
    static constexpr std::array<int, k_count> k_limits = {50, 95, 500, 580, 250, 450};

    // Compares the words with the levels. The forward power can only be too low while RF is on. An
    // alarm goes on until its word is back by a small margin, so that noise does not make it flicker.
    // Returns the texts of the alarms that have just been raised.
    std::vector<std::string_view> check(const AnalogWords& words, bool rf_on);

    // The text of the first alarm that is on, at most 16 characters; empty when none is.
    std::string_view active() const;

    // A level that is crossed on purpose: the word it watches then reads a little beyond it, a power
    // less what is attenuated, whether or not RF is on. Ends another level's hold on that word.
    void cross(WarningLevel level, bool crossed);
    bool crossed(WarningLevel level) const { return crossed_[static_cast<std::size_t>(level)]; }
    void apply_crossed(AnalogWords& words) const;

  private:
    std::array<bool, k_count> crossed_{};
    std::array<bool, k_count> raised_{};
};

}  // namespace ampdesk::demo
