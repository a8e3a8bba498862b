#include "demo/sim_warnings.h"

namespace ampdesk::demo {

namespace {

struct Watch {
    AnalogItem item;
    bool too_low;
    int margin;
    std::string_view text;
};

constexpr std::array<Watch, SimWarnings::k_count> k_watches = {{
    {k_cabinet_temperature, false, 2, "Cabinet Temp"},
    {k_baseplate_temperature, false, 2, "TWT Temp"},
    {k_helix_current, false, 20, "Helix Current"},
    {k_forward_power, false, 5, "Fwd Power High"},
    {k_forward_power, true, 5, "Fwd Power Low"},
    {k_reverse_power, false, 5, "Rev Power High"},
}};

}  // namespace

std::string_view SimWarnings::check(const AnalogWords& words, bool rf_on) {
    std::string_view fresh;
    for (std::size_t i = 0; i < k_count; ++i) {
        const Watch& watch = k_watches[i];
        const int excess = (words[watch.item] - k_limits[i]) * (watch.too_low ? -1 : 1);
        const bool before = raised_[i];
        raised_[i] = excess > (before ? -watch.margin : 0) && (rf_on || !watch.too_low);
        if (raised_[i] && !before)
            fresh = watch.text;
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

}  // namespace ampdesk::demo
