// What a control head asks of an amplifier and tells it, once and by name. The bytes are those of
// docs/wire-format.md, sections 7 and 8.
#pragma once

#include <string>
#include <string_view>

namespace ampdesk {

// Requests.
inline constexpr std::string_view k_status_request{"\x11", 1};
inline constexpr std::string_view k_analog_request{"\x12", 1};
inline constexpr std::string_view k_limits_request{"\xA0\x15\x00", 3};
inline constexpr std::string_view k_identity_request{"\xA0\x16\x00", 3};
inline constexpr std::string_view k_alarm_request{"\xA0\x17\x00", 3};
inline constexpr std::string_view k_shutdown_request{"\xA0\x18\x00", 3};

// Entry 0..255 of the amplifier's event log.
inline std::string event_request(int entry) {
    return {'\xA0', '\x1A', static_cast<char>(entry)};
}

// A request in a text frame.
inline constexpr std::string_view k_band_word = "RDBAND";

// Settings.
inline constexpr std::string_view k_set_hv_on{"\x10\x12", 2};
inline constexpr std::string_view k_set_hv_off{"\x10\x13", 2};
inline constexpr std::string_view k_acknowledge_shutdown{"\x10\x15", 2};
inline constexpr std::string_view k_set_rf_on{"\x10\x16", 2};
inline constexpr std::string_view k_set_rf_off{"\x10\x17", 2};
inline constexpr std::string_view k_throw_switch{"\x10\x1A", 2};

// Attenuation 0..300, in tenths of a dB.
inline std::string set_attenuation_command(int tenths) {
    return {'\x10', '\x18', static_cast<char>(tenths % 256), static_cast<char>(tenths / 256)};
}

// Mode of the redundant switch: 0 off, 1 manual, 2 auto.
inline std::string set_switch_mode_command(int mode) {
    return {'\x10', '\x1B', static_cast<char>(mode)};
}

// Band 0, 1 or 2.
inline std::string set_band_command(int band) {
    return "SBAND " + std::to_string(band);
}

}  // namespace ampdesk
