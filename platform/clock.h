// Time as the program sees it. Deadlines are steady; the seconds since midnight are only for
// what shows or stores such seconds. Tests hand in a clock that they move themselves.
#pragma once

#include <chrono>
#include <memory>

namespace ampdesk {

using Duration = std::chrono::steady_clock::duration;
using Instant = std::chrono::steady_clock::time_point;

// Local wall-clock time. month and day count from 1, hour 0..23, millisecond 0..999.
struct CivilTime {
    int year = 1970;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

class Clock {
  public:
    virtual ~Clock() = default;

    // Never steps back and ignores every change of the wall clock.
    virtual Instant now() const = 0;

    virtual CivilTime local_time() const = 0;

    // Blocks the caller; returns at once when the instant has passed.
    virtual void sleep_until(Instant instant) = 0;

    // Local seconds since midnight, 0 <= value < 86400, with a fraction in milliseconds.
    double seconds_since_midnight() const {
        const CivilTime t = local_time();
        return t.hour * 3600.0 + t.minute * 60.0 + t.second + t.millisecond / 1000.0;
    }
};

// The clock of the machine: steady time from boot, wall time in the local zone.
std::unique_ptr<Clock> make_system_clock();

// Seconds from `start` to `now` on the seconds-since-midnight clock; a clock that reads less than
// the start has passed midnight once.
inline double seconds_elapsed(double start, double now) {
    return now < start ? now - (start - 86400.0) : now - start;
}

}  // namespace ampdesk
