#include "demo/sim_warnings.h"

#include <algorithm>

namespace ampdesk::demo {

namespace {

struct Watch {
    AnalogItem item;
    bool too_low;
    int margin;
    int excess;  // beyond the level when that is crossed on purpose
    std::string_view text;
};

constexpr std::array<Watch, SimWarnings::k_count> k_watches = {{
    {k_cabinet_temperature, false, 2, 5, "Cabinet Temp"},
    {k_baseplate_temperature, false, 2, 5, "TWT Temp"},
    {k_helix_current, false, 20, 50, "Helix Current"},
    {k_forward_power, false, 5, 10, "Fwd Power High"},
    {k_forward_power, true, 5, 20, "Fwd Power Low"},
    {k_reverse_power, false, 5, 10, "Rev Power High"},
}};

}  // namespace

std::vector<std::string_view> SimWarnings::check(const AnalogWords& words, bool rf_on) {
    std::vector<std::string_view> fresh;
    for (std::size_t i = 0; i < k_count; ++i) {
        const Watch& watch = k_watches[i];
        const int excess = (words[watch.item] - k_limits[i]) * (watch.too_low ? -1 : 1);
        const bool before = raised_[i];
        const bool watched = rf_on || !watch.too_low || crossed_[i];
        raised_[i] = watched && excess > (before ? -watch.margin : 0);
        if (raised_[i] && !before)
            fresh.push_back(watch.text);
    }
    return fresh;
}

std::string_view SimWarnings::active() const {
    for (std::size_t i = 0; i < k_count; ++i) {
        if (raised_[i])
            return k_watches[i].text;
    }
    return {};
}

void SimWarnings::cross(WarningLevel level, bool crossed) {
    const auto index = static_cast<std::size_t>(level);
    for (std::size_t i = 0; crossed && i < k_count; ++i) {
        if (k_watches[i].item == k_watches[index].item)
            crossed_[i] = false;
    }
    crossed_[index] = crossed;
}

void SimWarnings::apply_crossed(AnalogWords& words) const {
    for (std::size_t i = 0; i < k_count; ++i) {
        const Watch& watch = k_watches[i];
        if (!crossed_[i])
            continue;
        const bool power = watch.item == k_forward_power || watch.item == k_reverse_power;
        const int beyond = k_limits[i] + (watch.too_low ? -watch.excess : watch.excess);
        words[watch.item] = std::max(0, beyond - (power ? words[k_attenuation] : 0));
    }
}

}  // namespace ampdesk::demo
