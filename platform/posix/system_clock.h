// The clock that make_system_clock makes.
#pragma once

#include "platform/clock.h"

namespace ampdesk {

class SystemClock : public Clock {
  public:
    Instant now() const override { return std::chrono::steady_clock::now(); }
    CivilTime local_time() const override;
    void sleep_until(Instant instant) override;
};

}  // namespace ampdesk
