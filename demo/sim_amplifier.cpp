#include "demo/sim_amplifier.h"

#include <algorithm>

#include "platform/numbers.h"

namespace ampdesk::demo {

namespace {

// Limits at which the amplifier protects itself, by what is measured; forced words do not trip them.
struct Trip {
    AnalogItem item;
    int level;
    ShutdownCause cause;
};
constexpr Trip k_trips[] = {
    {k_baseplate_temperature, 110, ShutdownCause::over_temperature},
    {k_cabinet_temperature, 60, ShutdownCause::cabinet_temperature},
};

}  // namespace

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
    if (trip(words_))
        words_ = tube_.measure();
    warnings.apply_crossed(words_);
    for (std::size_t i = 1; i <= k_analog_words; ++i) {
        if (faults.analog[i])
            words_[i] = static_cast<std::int16_t>(*faults.analog[i]);
    }
    for (const std::string_view fresh : warnings.check(words_, tube_.rf_on())) log(fresh);
}

// True when a limit has just been passed.
bool SimAmplifier::trip(const AnalogWords& measured) {
    bool tripped = false;
    for (const Trip& limit : k_trips) {
        const bool over = measured[limit.item] > limit.level;
        if (over && shutdowns_.find(limit.cause) == nullptr) {
            shut_down(limit.cause);
            tripped = true;
        }
        shutdowns_.hold(limit.cause, over);
    }
    return tripped;
}

Refusal SimAmplifier::set_hv(bool on) {
    if (on && (warming_up_ || shutdowns_.latest() != nullptr))
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
    const auto* latest = shutdowns_.latest();
    const std::string entry = latest == nullptr ? "" : "Ack #" + std::to_string(latest->number);
    if (!shutdowns_.acknowledge())
        return Refusal::invalid_data;
    if (!entry.empty())
        log(entry);
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

void SimAmplifier::shut_down(const SimShutdowns::Entry& entry) {
    tube_.advance(clock_.now());
    if (tube_.hv_on())
        log("HV off");
    tube_.switch_hv(false);
    shutdowns_.add(entry);
    log("Fault #" + std::to_string(entry.number));
}

void SimAmplifier::shut_down(int number, std::string_view text) {
    shut_down({ShutdownCause::told, number, std::string(text), false});
}

// A cause that has not gone since is no new shutdown.
void SimAmplifier::shut_down(ShutdownCause cause) {
    const CauseText& told = text_of(cause);
    const SimShutdowns::Entry* present = shutdowns_.find(cause);
    if (present == nullptr || !present->held)
        shut_down({cause, told.number, std::string(told.text), told.lasting});
}

void SimAmplifier::end_shutdown(ShutdownCause cause) {
    if (const auto* shutdown = shutdowns_.find(cause))
        log("Clear #" + std::to_string(shutdown->number));
    shutdowns_.end(cause);
}

void SimAmplifier::raise_alarm(std::string_view text) {
    faults.alarm = text;
    log(text);
}

void SimAmplifier::stop_fan(bool stopped) {
    tube_.advance(clock_.now());
    tube_.stop_fan(stopped);
}

void SimAmplifier::set_remote(bool on) {
    if (remote_ != on)
        log(on ? "Remote on" : "Remote off");
    remote_ = on;
}

void SimAmplifier::clear_faults() {
    set_remote(true);
    faults = {};
    line = {};
    warnings = {};
    stop_fan(false);
    while (const auto* shutdown = shutdowns_.latest()) end_shutdown(shutdown->cause);
}

}  // namespace ampdesk::demo
