#include "tests/support/manual_clock.h"

namespace ampdesk {

CivilTime ManualClock::local_time() const {
    using std::chrono::duration_cast;
    const auto total = duration_cast<std::chrono::milliseconds>(wall_).count();
    constexpr long long k_day = 86'400'000;
    const long long in_day = ((total % k_day) + k_day) % k_day;
    CivilTime t;
    t.year = 2026;
    t.month = 3;
    t.day = 10 + static_cast<int>((total - in_day) / k_day);
    t.hour = static_cast<int>(in_day / 3'600'000);
    t.minute = static_cast<int>(in_day / 60'000 % 60);
    t.second = static_cast<int>(in_day / 1000 % 60);
    t.millisecond = static_cast<int>(in_day % 1000);
    return t;
}

}  // namespace ampdesk
