// What a simulated amplifier tells about itself: the payloads of its replies to reads.
#include "demo/sim_amplifier.h"
#include "platform/numbers.h"

namespace ampdesk::demo {

namespace {

void add_word(std::string& block, int value) {
    const auto word = static_cast<std::uint16_t>(value);
    block += static_cast<char>(word & 0xFFU);
    block += static_cast<char>(word >> 8U);
}

bool is_negative_quantity(std::size_t item) {
    return item == k_cathode_voltage || item == k_filament_current || item == k_beam_voltage;
}

unsigned bit(bool set, unsigned value) {
    return set ? value : 0;
}

void cut_to_words(std::string& block, std::size_t words) {
    if (words != 0 && block.size() > 2 * words)
        block.resize(2 * words);
}

}  // namespace

// Character 1 the status byte, 2 the settings byte, 3 the fittings, 4 spare, 5 the switch state,
// 6 the count of switch positions.
std::uint8_t SimAmplifier::status_character(std::size_t position) const {
    if (faults.status[position])
        return *faults.status[position];
    unsigned value = 0;
    switch (position) {
        case 1:
            value = bit(tube_.hv_on(), 4) | bit(tube_.rf_on(), 8) | bit(shutdowns_.latest() != nullptr, 16);
            break;
        case 2:
            value = bit(remote_, 1) | bit(model_.fahrenheit, 2) | bit(model_.forward_in_watts, 4) |
                    bit(model_.reverse_in_watts, 8) | bit(model_.power_save, 16);
            break;
        case 3:
            value = bit(model_.filament_in_ma, 1) | bit(model_.has_switch, 2);
            break;
        case 5:
            value = bit(tube_.at_load, 1);
            break;
        case 6:
            value = bit(model_.has_switch, 2);
            break;
        default:
            break;
    }
    return static_cast<std::uint8_t>(value);
}

std::string SimAmplifier::status_block() const {
    std::string block;
    for (std::size_t position = 1; position <= 6; ++position)
        block += static_cast<char>(status_character(position));
    return block;
}

std::string SimAmplifier::analog_block() {
    std::string block;
    for (std::size_t i = 1; i <= k_analog_words; ++i) {
        int word = words_[i];
        if (!faults.analog[i] && model_.signed_words && is_negative_quantity(i))
            word = -word;
        if (faults.overflow_words)
            word |= 0x8000;
        add_word(block, word);
    }
    cut_to_words(block, faults.short_words);
    return block;
}

std::string SimAmplifier::limits_block() const {
    std::string block;
    for (const int limit : SimWarnings::k_limits) add_word(block, limit);
    cut_to_words(block, faults.short_words);
    return block;
}

std::string SimAmplifier::identity_text() const {
    return "JEX TWTA*" + model_.name.substr(0, model_.name.find(' ')) + "*" + std::to_string(model_.serial) +
           "*Simulator Rev 1.0";
}

std::string SimAmplifier::state_text() const {
    const int left = tube_.warm_up_left();
    if (left > 0)
        return "Warm-up " + std::to_string(left / 60) + ":" + zero_padded(left % 60, 2);
    if (tube_.rf_on())
        return "Transmit";
    return tube_.hv_on() ? "HV on RF off" : "Standby RF off";
}

std::string SimAmplifier::alarm_state() const {
    if (const auto* shutdown = shutdowns_.latest())
        return "1," + shutdown->text;
    if (!faults.alarm.empty())
        return "1," + faults.alarm;
    if (!warnings.active().empty())
        return "1," + std::string(warnings.active());
    return "0," + state_text();
}

std::string SimAmplifier::shutdown_state() const {
    const auto* shutdown = shutdowns_.latest();
    return shutdown == nullptr ? "0, No Shutdown" : std::to_string(shutdown->number) + ", " + shutdown->text;
}

std::string SimAmplifier::readable_status() {
    const auto* shutdown = shutdowns_.latest();
    return (shutdown != nullptr ? "Shutdown " + std::to_string(shutdown->number) : state_text()) + ",Fwd " +
           fixed_point(words_[k_forward_power] / 10.0, 1) + " dBm,Attn " +
           fixed_point(tube_.attenuation / 10.0, 1) + " dB,Remote " + (remote_on() ? "on" : "off");
}

}  // namespace ampdesk::demo
