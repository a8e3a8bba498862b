// A clock that only moves when it is told to, or when somebody sleeps on it.
#pragma once

#include "platform/clock.h"

namespace ampdesk {

class ManualClock : public Clock {
  public:
    Instant now() const override { return Instant{} + std::chrono::hours(1) + steady_; }
    CivilTime local_time() const override;
    void sleep_until(Instant instant) override {
        if (instant > now())
            advance(instant - now());
    }

    // Both the steady and the wall clock move on.
    void advance(Duration d) {
        steady_ += d;
        wall_ += d;
    }

    // Of the wall clock only; the steady clock knows nothing of it. Any value; the date follows.
    void set_wall(Duration since_midnight) { wall_ = since_midnight; }
    void step_wall(Duration by) { wall_ += by; }

  private:
    Duration steady_{};
    Duration wall_ = std::chrono::hours(12);
};

}  // namespace ampdesk
