#include "amplifier/readings.h"

#include <span>

#include "platform/numbers.h"

namespace ampdesk {

namespace {

// What a word is divided by to be in its unit, and what it is called. Item 1 first.
struct Scale {
    double divisor;
    const char* name;
};
constexpr Scale k_analog[] = {
    {10, "forward power"},
    {10, "reverse power"},
    {-1000, "cathode voltage Ek"},
    {100, "helix current Iw"},
    {1000, "filament voltage Ef"},
    {-1000, "filament current If"},
    {1, "item 7"},
    {1, "baseplate temperature"},
    {1, "cabinet temperature"},
    {1, "system running hours"},
    {1, "RF running hours"},
    {10, "attenuation"},
    {1, "system running minutes"},
    {1, "RF running minutes"},
    {-1000, "voltage Eb"},
};
constexpr Scale k_limits[] = {
    {1, "the warning level of the cabinet temperature"}, {1, "the warning level of the tube temperature"},
    {100, "the warning level of the helix current"},     {10, "the warning level over forward power"},
    {10, "the warning level under forward power"},       {10, "the warning level over reverse power"},
};

int byte_at(std::string_view payload, std::size_t at) {
    return at < payload.size() ? static_cast<unsigned char>(payload[at]) : 0;
}

// Words are sent low byte first.
Quantity quantity(std::string_view payload, std::size_t item, double divisor, NegativeWords negative) {
    if (2 * (item + 1) > payload.size())
        return {};
    constexpr int k_negative = 0x8000;
    const int word = byte_at(payload, 2 * item) + 256 * byte_at(payload, 2 * item + 1);
    if (word >= k_negative && negative == NegativeWords::overflow)
        return {.kind = Quantity::Kind::overflowed};
    return {.kind = Quantity::Kind::value,
            .value = (word >= k_negative ? word - 2 * k_negative : word) / divisor};
}

template <class Block>
Block block(std::string_view payload, std::span<const Scale> scales, NegativeWords negative) {
    Block result;
    for (std::size_t i = 0; i < result.items.size(); ++i)
        result.items[i] = quantity(payload, i, scales[i].divisor, negative);
    return result;
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

}  // namespace

std::optional<Status> Status::parse(std::string_view payload) {
    if (payload.empty())
        return std::nullopt;
    const auto bit = [&](std::size_t character, int value) {
        return (byte_at(payload, character - 1) & value) != 0;
    };
    return Status{.hv_on = bit(1, 4),
                  .rf_on = bit(1, 8),
                  .in_shutdown = bit(1, 16),
                  .remote_on = bit(2, 1),
                  .fahrenheit = bit(2, 2),
                  .forward_in_watts = bit(2, 4),
                  .reverse_in_watts = bit(2, 8),
                  .power_save_fitted = bit(2, 16),
                  .filament_in_ma = bit(3, 1),
                  .has_switch = bit(3, 2),
                  .switch_locked = bit(5, 1),
                  .switch_positions = byte_at(payload, 5)};
}

std::optional<Analog> Analog::parse(std::string_view payload, NegativeWords negative) {
    return payload.empty() ? std::nullopt : std::optional(block<Analog>(payload, k_analog, negative));
}

const char* Analog::name(Item item) {
    return k_analog[item - 1].name;
}

std::optional<Limits> Limits::parse(std::string_view payload, NegativeWords negative) {
    return payload.empty() ? std::nullopt : std::optional(block<Limits>(payload, k_limits, negative));
}

const char* Limits::name(Item item) {
    return k_limits[item - 1].name;
}

std::optional<AlarmState> AlarmState::parse(std::string_view payload) {
    if (payload.empty())
        return std::nullopt;
    return AlarmState{.active = payload[0] == '1',
                      .text = std::string(payload.substr(payload.find(',') + 1)),  // npos + 1 is 0
                      .standby = contains(payload, "Standby"),
                      .rf_off = contains(payload, "RF off")};
}

std::optional<Shutdown> Shutdown::parse(std::string_view payload) {
    if (payload.empty())
        return std::nullopt;
    const std::size_t comma = payload.find(',');
    Shutdown shutdown;
    if (comma != std::string_view::npos)
        shutdown.number = payload.substr(0, comma);
    shutdown.reason = trimmed(payload.substr(comma + 1));  // npos + 1 is 0
    return shutdown;
}

std::optional<Identity> Identity::parse(std::string_view payload) {
    constexpr std::size_t k_shortest = 6;
    if (payload.size() < k_shortest)
        return std::nullopt;
    // The next field behind a star; nothing when there is no star any more.
    const auto next = [&]() -> std::optional<std::string> {
        const std::size_t star = payload.find('*');
        if (star == std::string_view::npos)
            return std::nullopt;
        payload.remove_prefix(star + 1);
        return std::string(trimmed(payload.substr(0, payload.find('*'))));
    };
    Identity identity;
    identity.model = next().value_or("");
    identity.serial_number = next();
    identity.revision = next();
    return identity;
}

}  // namespace ampdesk
