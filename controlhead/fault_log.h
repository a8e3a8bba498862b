// The head's own short list of what went wrong, newest first.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace ampdesk {

class FaultLog {
  public:
    // Stores hour ":" minute blank text, without leading blanks in the figures, at entry 0; the
    // older ones move up. An entry is 17 characters wide.
    void log_fault(const CivilTime& now, std::string_view text);

    std::int16_t count() const { return count_; }  // 0..98
    const std::string& entry(std::size_t i) const { return entries_.at(i); }

  private:
    std::array<std::string, 101> entries_;
    std::int16_t count_ = 0;
};

}  // namespace ampdesk
