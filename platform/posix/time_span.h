// Spans of time as the operating system's calls take them.
#pragma once

#include <algorithm>
#include <ctime>

#include "platform/clock.h"

namespace ampdesk {

// Nothing for a negative one.
inline timespec time_span(Duration duration) {
    const auto positive = std::max(duration, Duration::zero());
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(positive);
    return {.tv_sec = whole.count(), .tv_nsec = std::chrono::nanoseconds(positive - whole).count()};
}

}  // namespace ampdesk
