// A simulated amplifier's own list of what happened to it, newest first.
#pragma once

#include <deque>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace ampdesk::demo {

class SimEventLog {
  public:
    static constexpr std::size_t k_most_entries = 100;

    // The entry is "HH:MM " and the text. Ten characters of it fit a line of the event list.
    void add(const CivilTime& now, std::string_view text);

    // Replaces the newest entry when it begins, after its time, with that stem, else adds one: a
    // control that is being turned fills one line only.
    void add_or_replace(const CivilTime& now, std::string_view stem, std::string_view text);

    // Entry n, 0 being the newest; 16 blanks past the end.
    std::string entry(std::size_t n) const;

  private:
    std::deque<std::string> entries_;
};

}  // namespace ampdesk::demo
