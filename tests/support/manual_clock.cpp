#include "tests/support/manual_clock.h"

namespace ampdesk {

CivilTime ManualClock::local_time() const {
    using namespace std::chrono;
    const auto day = floor<days>(wall_);
    const year_month_day date(sys_days(year(2026) / 3 / 10) + day);
    const hh_mm_ss time(floor<milliseconds>(wall_ - day));
    return {.year = static_cast<int>(date.year()),
            .month = static_cast<int>(static_cast<unsigned>(date.month())),
            .day = static_cast<int>(static_cast<unsigned>(date.day())),
            .hour = static_cast<int>(time.hours().count()),
            .minute = static_cast<int>(time.minutes().count()),
            .second = static_cast<int>(time.seconds().count()),
            .millisecond = static_cast<int>(time.subseconds().count())};
}

}  // namespace ampdesk
