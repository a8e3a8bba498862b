// A clock that only moves when it is told to, or when somebody sleeps on it.
#pragma once

#include "platform/clock.h"

namespace ampdesk {

class ManualClock : public Clock {
  public:
    Instant now() const override { return Instant{} + std::chrono::hours(1) + steady_; }
    CivilTime local_time() const override {
        using namespace std::chrono;
        const auto midnight = floor<days>(wall_);
        const year_month_day date(sys_days(year(2026) / 3 / 10) + midnight);
        const auto month = static_cast<int>(unsigned{date.month()});
        const auto day = static_cast<int>(unsigned{date.day()});
        const auto ms = static_cast<int>(floor<milliseconds>(wall_ - midnight).count());
        return {int{date.year()}, month, day, ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60, ms % 1000};
    }
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
