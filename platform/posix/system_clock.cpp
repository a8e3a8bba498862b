#include "platform/posix/system_clock.h"

#include <cerrno>
#include <ctime>

#include "platform/posix/time_span.h"

namespace ampdesk {

std::unique_ptr<Clock> make_system_clock() {
    return std::make_unique<SystemClock>();
}

CivilTime SystemClock::local_time() const {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    return {.year = local.tm_year + 1900,
            .month = local.tm_mon + 1,
            .day = local.tm_mday,
            .hour = local.tm_hour,
            .minute = local.tm_min,
            // A leap second reads as the last ordinary one, so that a day never exceeds 86400 s.
            .second = local.tm_sec > 59 ? 59 : local.tm_sec,
            .millisecond = static_cast<int>(now.tv_nsec / 1'000'000)};
}

// The steady clock of the library is CLOCK_MONOTONIC, so that its instants can be slept on as they
// are and a signal in between costs nothing.
void SystemClock::sleep_until(Instant instant) {
    const timespec until = time_span(instant.time_since_epoch());
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

}  // namespace ampdesk
