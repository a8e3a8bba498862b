// What an amplifier answers, decoded once, where it comes in: a value type for each reply, in the units that
// people read. Layouts are those of docs/wire-format.md, section 7. A payload is what stands between the echo
// of the request and the CRC.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ampdesk {

struct Status {
    // Nothing for an empty payload; what a short one lacks is off, or 0.
    static std::optional<Status> parse(std::string_view payload);

    bool hv_on = false;
    bool rf_on = false;
    bool in_shutdown = false;
    bool remote_on = false;
    bool fahrenheit = false;
    bool forward_in_watts = false;
    bool reverse_in_watts = false;
    bool power_save_fitted = false;
    bool filament_in_ma = false;
    bool has_switch = false;     // between antenna and load
    bool switch_locked = false;  // or at load
    int switch_positions = 0;    // reported; the switch can be used from 1 on
    bool operator==(const Status&) const = default;
};

// How a word with its highest bit set is to be read.
enum class NegativeWords { overflow, two_complement };

// One word of a block, in the unit of its quantity.
struct Quantity {
    enum class Kind {
        value,
        missing,     // the block is shorter: 0 on a display, nothing in a record
        overflowed,  // a negative word that nobody has declared as such
    };
    Kind kind = Kind::missing;
    double value = 0;  // 0 unless kind says value
    bool operator==(const Quantity&) const = default;
};

// The analog block.
struct Analog {
    // Item i of the block is the word i, from 1.
    enum Item : std::uint8_t {
        forward_power = 1,     // dBm
        reverse_power = 2,     // dBm
        cathode_voltage = 3,   // Ek, kV; sent with its sign turned round
        helix_current = 4,     // Iw, mA
        filament_voltage = 5,  // Ef, V
        filament_current = 6,  // If, mA or A by the status; sent with its sign turned round
        baseplate = 8,         // degrees C
        cabinet = 9,           // degrees C
        console_hours = 10,    // h
        rf_hours = 11,         // h
        attenuation = 12,      // dB
        console_minutes = 13,  // beside console_hours
        rf_minutes = 14,       // beside rf_hours
        eb_voltage = 15,       // Eb, kV; sent with its sign turned round
    };
    static constexpr std::size_t k_items = 15;

    static std::optional<Analog> parse(std::string_view payload, NegativeWords negative);
    static const char* name(Item item);

    const Quantity& operator[](Item item) const { return items[item - 1U]; }
    std::array<Quantity, k_items> items;
    bool operator==(const Analog&) const = default;
};

// The warning levels.
struct Limits {
    enum Item : std::uint8_t {
        cabinet = 1,             // degrees C
        tube = 2,                // degrees C
        helix_current = 3,       // mA
        over_forward_power = 4,  // dBm
        under_forward_power = 5,
        over_reverse_power = 6,
    };
    static constexpr std::size_t k_items = 6;

    static std::optional<Limits> parse(std::string_view payload, NegativeWords negative);
    static const char* name(Item item);

    const Quantity& operator[](Item item) const { return items[item - 1U]; }
    std::array<Quantity, k_items> items;
    bool operator==(const Limits&) const = default;
};

// State and alarm in one text: a flag, a comma, the text.
struct AlarmState {
    // Nothing for an empty payload.
    static std::optional<AlarmState> parse(std::string_view payload);

    bool active = false;   // an alarm, which the text names
    std::string text;      // behind the first comma, as it came; all of it when there is none
    bool standby = false;  // the payload says so
    bool rf_off = false;
    bool operator==(const AlarmState&) const = default;
};

// Why the amplifier has shut down.
struct Shutdown {
    static std::optional<Shutdown> parse(std::string_view payload);

    std::optional<std::string> number;  // before the comma; nothing when there is none
    std::string reason;                 // without the blanks around it
    bool operator==(const Shutdown&) const = default;
};

// Who it is: company, model, serial number and revision with stars between.
struct Identity {
    // Nothing for a payload of five characters or fewer.
    static std::optional<Identity> parse(std::string_view payload);

    std::string model;                         // may be empty
    std::optional<std::string> serial_number;  // as it came, trimmed
    std::optional<std::string> revision;
    bool operator==(const Identity&) const = default;
};

}  // namespace ampdesk
