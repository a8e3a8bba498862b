#include "bench/soak_weather.h"

#include "demo/sim_tube.h"

namespace ampdesk::bench {

void Weather::set_values(int address) {
    demo::SimAmplifier* amplifier = bus_.find(address);
    if (amplifier == nullptr)
        return;
    const auto step = static_cast<int>(clock_.now().time_since_epoch() / std::chrono::milliseconds(300));
    const auto put = [&](std::size_t item, int value) {
        amplifier->faults.analog[item] = static_cast<std::uint16_t>(value);
    };
    put(demo::k_forward_power, 190 + 70 * address + step % 60);
    put(demo::k_reverse_power, 100 * address - 90 + step % 90);
    put(demo::k_cathode_voltage, -2000 * address - 10 * (step % 50));
    put(demo::k_helix_current, 10 * (10 * address - 8 + step % 7));
    put(demo::k_filament_voltage, 5000 + 500 * address + 10 * (step % 50));
    put(demo::k_filament_current, -1000 * address - 10 * (step % 50));
    put(demo::k_baseplate_temperature, 20 * address - 10 + step % 15);
    put(demo::k_cabinet_temperature, 10 * address + step % 10);
    put(demo::k_console_hours, 1000 * address + step % 200);
    put(demo::k_console_minutes, step % 60);
    put(demo::k_rf_hours, 5000 + 1000 * address + step % 200);
    put(demo::k_rf_minutes, (step + 7) % 60);
    put(demo::k_beam_voltage, -2000 * address - 500 - 10 * (step % 50));
    if (!amplifier->faults.alarm.empty())
        amplifier->faults.alarm = "Amp " + std::to_string(address) + " is " + std::to_string(step % 1000);
}

void Weather::turn() {
    demo::SimAmplifier& a = *bus_.find(chance_.number(1, static_cast<int>(bus_.amplifiers().size())));
    if (chance_.one_in(80))
        a.faults.alarm = a.faults.alarm.empty() ? "soon" : "";
    if (chance_.one_in(300))
        a.throw_switch();
    if (chance_.one_in(500))
        a.set_remote(!a.remote_on());
    if (chance_.one_in(500))  // power save comes and goes
        a.faults.status[2] = static_cast<std::uint8_t>(chance_.one_in(2) ? 1 : 17);
    if (chance_.one_in(1500)) {
        a.shut_down(chance_.number(1, 9), "Reason " + std::to_string(chance_.number(10, 99)));
        ++shutdowns;
    }
    if (chance_.one_in(300))  // by somebody else
        a.acknowledge_shutdown();
    if (a.line.wrong_address ? chance_.one_in(300) : chance_.one_in(5000)) {
        ++replacements;
        a.line.wrong_address = a.line.wrong_address ? std::nullopt : std::optional<std::uint8_t>(0);
    }
    if (chance_.one_in(10'000)) {  // the line is dead
        ++dead_lines;
        for (const auto& amplifier : bus_.amplifiers()) amplifier->line.silent = true;
    }
    if (a.line.silent ? chance_.one_in(100) : chance_.one_in(1500)) {
        outages += a.line.silent ? 0 : 1;
        a.line.silent = !a.line.silent;
    }
}

}  // namespace ampdesk::bench
