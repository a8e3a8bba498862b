#include "demo/sim_tube.h"

#include <algorithm>
#include <cmath>

namespace ampdesk::demo {

using std::chrono::duration;
using std::chrono::duration_cast;

namespace {

constexpr int k_rated_power = 560;     // 56.0 dBm, 400 W
constexpr int k_antenna_return = 200;  // the antenna sends 20.0 dB less back, the load 30.0 dB
constexpr int k_load_return = 300;
constexpr double k_baseplate_seconds = 300;  // time constants of the temperatures
constexpr double k_cabinet_seconds = 600;

// A quantity on its exponential way to where it settles.
void approach(double& value, double target, double seconds, double time_constant) {
    value = target + (value - target) * std::exp(-seconds / time_constant);
}

int rounded(double value) {
    return static_cast<int>(std::lround(value));
}

int whole_hours(Duration time) {
    return static_cast<int>(duration_cast<std::chrono::hours>(time).count() % 32768);
}

int minutes_of_hour(Duration time) {
    return static_cast<int>(duration_cast<std::chrono::minutes>(time).count() % 60);
}

}  // namespace

SimTube::SimTube(const SimModel& model, Instant now)
    : noise_(model.noise),
      random_(static_cast<unsigned>(model.serial)),
      now_(now),
      warm_at_(now + model.warm_up),
      console_time_(model.console_time),
      rf_time_(model.rf_time) {
    if (model.warm_up.count() > 0)
        return;
    // It has been running for a while.
    hv_on_ = model.hv_on;
    rf_on_ = model.hv_on && model.rf_on;
    baseplate_ = rf_on_ ? 76 : hv_on_ ? 54 : 38;
    cabinet_ = rf_on_ ? 36 : 30;
}

void SimTube::advance(Instant now) {
    const Duration passed = std::max(now - now_, Duration{});
    now_ = std::max(now, now_);
    console_time_ += passed;
    if (rf_on_)
        rf_time_ += passed;
    const double seconds = duration<double>(passed).count();
    approach(baseplate_, baseplate_target(), seconds, k_baseplate_seconds);
    approach(cabinet_, cabinet_target(), seconds, k_cabinet_seconds);
}

// The share of the rated power that is put out.
double SimTube::drive() const {
    return rf_on_ ? std::pow(10.0, -attenuation / 100.0) : 0;
}

double SimTube::baseplate_target() const {
    return 38 + (hv_on_ ? 16 : 0) + 24 * drive() + (fan_stopped_ ? 110 : 0);
}

double SimTube::cabinet_target() const {
    return 30 + (hv_on_ ? 3 : 0) + 4 * drive() + (fan_stopped_ ? 50 : 0);
}

void SimTube::stop_fan(bool stopped) {
    fan_stopped_ = stopped;
    if (stopped)
        return;
    baseplate_ = std::min(baseplate_, baseplate_target());
    cabinet_ = std::min(cabinet_, cabinet_target());
}

int SimTube::warm_up_left() const {
    if (now_ >= warm_at_)
        return 0;
    return static_cast<int>(std::chrono::ceil<std::chrono::seconds>(warm_at_ - now_).count());
}

void SimTube::switch_hv(bool on) {
    hv_on_ = on;
    rf_on_ = rf_on_ && on;
}

// An even spread of -most..most, times the model's noise.
int SimTube::jitter(int most) {
    const auto span = static_cast<unsigned>(2 * most + 1);
    return noise_ * (static_cast<int>((random_() >> 8U) % span) - most);
}

std::array<int, k_analog_words + 1> SimTube::measure() {
    std::array<int, k_analog_words + 1> words{};
    if (rf_on_) {
        const int forward = std::max(0, k_rated_power - attenuation + jitter(1));
        words[k_forward_power] = forward;
        words[k_reverse_power] =
            std::max(0, forward - (at_load ? k_load_return : k_antenna_return) + jitter(2));
    }
    if (hv_on_) {
        words[k_cathode_voltage] = (rf_on_ ? 9160 : 9200) + jitter(6);
        words[k_beam_voltage] = (rf_on_ ? 4570 : 4600) + jitter(4);
        words[k_helix_current] = 60 + jitter(3);
        words[k_helix_current] += rounded(180 * drive());
    }
    // A cold filament draws more; what is left of the excess fades with the warm-up.
    words[k_filament_voltage] = 6300 + jitter(5);
    words[k_filament_current] = 1500 + std::min(700, warm_up_left() * 20) + jitter(4);
    words[k_baseplate_temperature] = rounded(baseplate_);
    words[k_cabinet_temperature] = rounded(cabinet_);
    words[k_console_hours] = whole_hours(console_time_);
    words[k_console_minutes] = minutes_of_hour(console_time_);
    words[k_rf_hours] = whole_hours(rf_time_);
    words[k_rf_minutes] = minutes_of_hour(rf_time_);
    words[k_attenuation] = attenuation;
    return words;
}

}  // namespace ampdesk::demo
