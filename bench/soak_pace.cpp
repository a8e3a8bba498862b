#include "bench/soak_pace.h"

#include <algorithm>

#include "amplifier/commands.h"
#include "bench/soak_claims.h"

namespace ampdesk::bench {

void PaceWatch::look(bool active) {
    const Instant now = clock_.now();
    const Head& state = head_.state();
    const bool alarm = state.menu_ptr == 1;
    if (!active)
        active_since_ = now;
    if (!active || !alarm)
        alarm_since_ = now;
    if (state.sub_menu != k_warning_levels)
        limits_since_ = now;
    if (state.menu_ptr != 1 || state.sub_menu != k_no_sub_menu || state.gain_mode ||
        !shows_status_screen(head_))
        label_since_ = now;
    if (shows_error(head_.panel())) {
        heard_since_ = now;
        error_since_ = error_since_.value_or(now);
        return asked_within(k_status_request, *error_since_, limit::k_look, counts_.look, "look");
    }
    error_since_.reset();
    look_at_band();
    asked_within(k_status_request, heard_since_, limit::k_status, counts_.status, "status");
    if (active)
        asked_within(k_analog_request, std::max(heard_since_, active_since_), limit::k_front, counts_.front,
                     "values in front");
    if (active && alarm)
        asked_within(k_alarm_request, std::max(heard_since_, alarm_since_), limit::k_front, counts_.front,
                     "alarm state in front");
    asked_within(k_analog_request, heard_since_, limit::k_behind_it, counts_.behind_it, "values");
    asked_within(k_alarm_request, heard_since_, limit::k_behind_it, counts_.behind_it, "alarm state");
    if (state.sub_menu == k_warning_levels)
        asked_within(k_limits_request, std::max(heard_since_, limits_since_), limit::k_behind_it,
                     counts_.behind_it, "warning levels");
}

// The first screen has the label of the band; the next tick asks for it.
void PaceWatch::look_at_band() {
    if (!band_set_ || label_since_ == clock_.now() || head_.state().band.band_count == 0)
        return;
    const Instant from = std::max({*band_set_, label_since_, heard_since_});
    const Duration all = clock_.now() - from;
    findings_.judge("band", own(), all - line_.lost_or_failing(from, own()) - left_alone(k_band_word),
                    limit::k_band, counts_.band, "to be asked for after its key", "not asked");
}

void PaceWatch::asked_within(std::string_view command, Instant from, Duration limit, Duration& longest,
                             const std::string& what) {
    const auto asked = asked_.find(command);
    if (asked != asked_.end())
        from = std::max(from, asked->second);
    const Duration all = clock_.now() - from;
    Duration age = all - line_.lost(from);
    if (age > limit / 3 && command != k_status_request) {
        age = all - line_.lost_or_failing(from, own()) - left_alone(command);
        if (age < all / 4)
            return;  // what little is left goes to the statuses and to whatever is made a second time
    }
    findings_.judge(what, own(), age, limit, longest, "to be asked for", "not asked");
}

// What nobody has answered four times is left alone for that long, as something that has no answer.
Duration PaceWatch::left_alone(std::string_view command) const {
    constexpr std::chrono::seconds k_pause{5};
    constexpr int k_hopeless = 4;
    int spoilt = 0;
    for (auto one = line_.log().rbegin(); one != line_.log().rend() && spoilt < k_hopeless; ++one) {
        if (one->order.address != own() || !one->asked_by_head() || one->order.command != command)
            continue;
        if (one->sound)
            return {};
        ++spoilt;
    }
    return k_pause;
}

// A look that was cut for an order may be made again at once.
void PaceWatch::watch(const LineRequest& order) {
    constexpr std::chrono::milliseconds k_look_period{4500};
    constexpr int k_most = 2;
    const Instant now = clock_.now();
    asked_[order.command] = now;
    if (order.command.starts_with("SBAND"))
        band_set_ = now;
    else if (order.command == k_band_word)
        band_set_.reset();
    if (!error_since_ || order.setting())
        return;
    int looks = 1;
    bool cut = false;
    const auto& log = line_.log();
    for (auto one = log.rbegin(); one != log.rend() && one->at > std::max(now - k_look_period, *error_since_);
         ++one) {
        looks += one->order.address == own() && one->order.read() && !cut ? 1 : 0;
        cut = one->order.setting();
    }
    if (looks <= k_most)
        return;
    ++counts_.hasty_looks;
    findings_.tell("silent amplifier", own(), "a look every 5 s",
                   std::to_string(looks) + " within " + in_seconds(k_look_period));
}

}  // namespace ampdesk::bench
