// The physics of a simulated amplifier: warm-up, high voltage, RF drive, powers, voltages, currents,
// temperatures and hour meters, all as functions of the time that has passed.
#pragma once

#include <array>
#include <cstdint>
#include <random>

#include "demo/sim_model.h"
#include "platform/clock.h"

namespace ampdesk::demo {

// Words of the analog block, counted from 1.
inline constexpr std::size_t k_analog_words = 15;
enum AnalogItem : std::size_t {
    k_forward_power = 1,          // tenths of a dBm
    k_reverse_power = 2,          // tenths of a dBm
    k_cathode_voltage = 3,        // V, a negative quantity
    k_helix_current = 4,          // hundredths of a mA
    k_filament_voltage = 5,       // mV
    k_filament_current = 6,       // mA, a negative quantity
    k_baseplate_temperature = 8,  // °C
    k_cabinet_temperature = 9,    // °C
    k_console_hours = 10,
    k_rf_hours = 11,
    k_attenuation = 12,  // tenths of a dB
    k_console_minutes = 13,
    k_rf_minutes = 14,
    k_beam_voltage = 15,  // V, a negative quantity
};

class SimTube {
  public:
    // Attenuation range in tenths of a dB.
    static constexpr int k_most_attenuation = 300;

    SimTube(const SimModel& model, Instant now);

    // Lets everything happen that was due since the last call.
    void advance(Instant now);

    // Whole seconds of warm-up that are left, rounded up; 0 when warm.
    int warm_up_left() const;
    bool hv_on() const { return hv_on_; }
    bool rf_on() const { return rf_on_; }

    // Switching high voltage off takes the RF with it. The caller has checked what is allowed.
    void switch_hv(bool on);
    void switch_rf(bool on) { rf_on_ = on; }

    // Without its fan the tube and the cabinet get much hotter. With the fan back they are at once no
    // hotter than they would have become with it.
    void stop_fan(bool stopped);
    bool fan_stopped() const { return fan_stopped_; }

    // All words as magnitudes, index 0 unused. Draws fresh noise.
    std::array<int, k_analog_words + 1> measure();

    int attenuation = 0;   // tenths of a dB, 0..k_most_attenuation
    bool at_load = false;  // the output feeds the load, which reflects less than the antenna

  private:
    int jitter(int most);
    double drive() const;
    double baseplate_target() const;
    double cabinet_target() const;

    int noise_;
    std::minstd_rand random_;
    Instant now_;
    Instant warm_at_;
    Duration console_time_;
    Duration rf_time_{};
    bool hv_on_ = false;
    bool rf_on_ = false;
    bool fan_stopped_ = false;
    double baseplate_ = 31;  // °C
    double cabinet_ = 24;    // °C
};

}  // namespace ampdesk::demo
