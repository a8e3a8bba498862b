#include "demo/sim_amplifier.h"

#include <algorithm>

#include "platform/numbers.h"

namespace ampdesk::demo {

SimAmplifier::SimAmplifier(SimModel model, const Clock& clock)
    : nvram(model.serial), model_(std::move(model)), clock_(clock), tube_(model_, clock.now()) {
    log("Power on");
    warming_up_ = model_.warm_up.count() > 0;
    if (tube_.hv_on())
        log("HV on");
    if (tube_.rf_on())
        log("RF on");
    refresh();
}

// Catches up with the time and looks at what has come of it.
void SimAmplifier::refresh() {
    tube_.advance(clock_.now());
    if (warming_up_ && tube_.warm_up_left() == 0) {
        warming_up_ = false;
        log("Ready");
    }
    words_ = tube_.measure();
    for (std::size_t i = 1; i <= k_analog_words; ++i) {
        if (faults.analog[i])
            words_[i] = static_cast<std::int16_t>(*faults.analog[i]);
    }
    const std::string_view fresh = warnings_.check(words_, tube_.rf_on());
    if (!fresh.empty())
        log(fresh);
}

Refusal SimAmplifier::set_hv(bool on) {
    if (on && (warming_up_ || shutdown_))
        return Refusal::invalid_data;
    if (tube_.hv_on() != on)
        log(on ? "HV on" : "HV off");
    tube_.switch_hv(on);
    return Refusal::none;
}

Refusal SimAmplifier::set_rf(bool on) {
    if (on && !tube_.hv_on())
        return Refusal::invalid_data;
    if (tube_.rf_on() != on)
        log(on ? "RF on" : "RF off");
    tube_.switch_rf(on);
    return Refusal::none;
}

Refusal SimAmplifier::acknowledge_shutdown() {
    if (shutdown_ && interlock_open_)
        return Refusal::invalid_data;
    if (shutdown_)
        log("Ack #" + std::to_string(shutdown_number_));
    shutdown_ = false;
    return Refusal::none;
}

Refusal SimAmplifier::throw_switch() {
    if (!model_.has_switch)
        return Refusal::command_not_found;
    tube_.at_load = !tube_.at_load;
    log(tube_.at_load ? "To load" : "To antenna");
    return Refusal::none;
}

Refusal SimAmplifier::set_switch_mode(int mode) {
    if (!model_.has_switch)
        return Refusal::command_not_found;
    if (mode < 0 || mode > 2)
        return Refusal::invalid_data;
    switch_mode_ = mode;
    constexpr std::string_view k_texts[] = {"Sw off", "Sw manual", "Sw auto"};
    log(k_texts[mode]);
    return Refusal::none;
}

Refusal SimAmplifier::set_attenuation(int tenths) {
    if (tenths < 0 || tenths > SimTube::k_most_attenuation)
        return Refusal::invalid_data;
    if (tube_.attenuation != tenths)
        log_.add_or_replace(clock_.local_time(), "ATTN ", "ATTN " + fixed_point(tenths / 10.0, 1));
    tube_.attenuation = tenths;
    return Refusal::none;
}

Refusal SimAmplifier::set_band(int number) {
    const std::vector<int> bands = band_numbers(model_.name);
    if (std::find(bands.begin(), bands.end(), number) == bands.end())
        return Refusal::invalid_data;
    if (band_ != number)
        log("Band " + std::to_string(number));
    band_ = number;
    return Refusal::none;
}

void SimAmplifier::shut_down(int number, std::string_view text) {
    tube_.advance(clock_.now());
    tube_.switch_hv(false);
    shutdown_ = true;
    shutdown_number_ = number;
    shutdown_text_ = text;
    log("Fault #" + std::to_string(number));
}

void SimAmplifier::set_interlock(bool open) {
    if (open && !interlock_open_)
        shut_down(1, "Interlock Open");
    interlock_open_ = open;
}

void SimAmplifier::set_remote(bool on) {
    if (remote_ != on)
        log(on ? "Remote on" : "Remote off");
    remote_ = on;
    faults.status[2].reset();
}

void SimAmplifier::clear_faults() {
    set_remote(true);
    faults = {};
    line = {};
    interlock_open_ = false;
    acknowledge_shutdown();
}

}  // namespace ampdesk::demo
