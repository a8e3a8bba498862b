// What an amplifier answers, from literal bytes.
#include "amplifier/readings.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace ampdesk {
namespace {

using enum Quantity::Kind;

// A field taken from another's bit, or from beyond a short reply.
TEST(Status, EveryFieldFromItsOwnBit) {
    const std::pair<const char*, Status> cases[] = {
        {"04 12 00 00 00 00", {.hv_on = true, .fahrenheit = true, .power_save_fitted = true}},
        {"08 01", {.rf_on = true, .remote_on = true}},
        {"10 04 01", {.in_shutdown = true, .forward_in_watts = true, .filament_in_ma = true}},
        {"E3 08 02 00 01 FE",
         {.reverse_in_watts = true, .has_switch = true, .switch_locked = true, .switch_positions = 254}},
        {"E3 E0 FC FF FE", {}},
    };
    for (const auto& [payload, expected] : cases)
        EXPECT_EQ(Status::parse(hex_bytes(payload)), expected) << payload;
    EXPECT_EQ(Status::parse(""), std::nullopt);
}

// A word of another item, scale or sign; a negative word that passes for a large one; a value where the block
// has none.
TEST(Analog, WordsInTheirUnits) {
    const std::string block = hex_bytes(
        "0B 02  D3 00  40 D4  D7 00  9C 18  BA FA  00 00  2E 00  1F 00  39 30  72 2E  7D 00  07 00  2A 00  "
        "D4 E5");
    const double values[] = {52.3, 21.1, 11.2, 2.15, 6.3, 1.35, 0, 46, 31, 12345, 11890, 12.5, 7, 42, 6.7};
    const auto analog = Analog::parse(block, NegativeWords::two_complement);
    for (std::size_t i = 0; i < Analog::k_items; ++i)
        EXPECT_DOUBLE_EQ(analog->items[i].value, values[i]) << i;
    const auto cautious = Analog::parse(block, NegativeWords::overflow);
    for (std::size_t i = 0; i < Analog::k_items; ++i)
        EXPECT_EQ(cautious->items[i].kind, i == 2 || i == 5 || i == 14 ? overflowed : value) << i;

    const auto shorter = Analog::parse(hex_bytes("FF 7F 00"), NegativeWords::overflow);
    EXPECT_EQ((*shorter)[Analog::forward_power], (Quantity{value, 3276.7}));
    EXPECT_EQ((*shorter)[Analog::reverse_power], Quantity{});
    EXPECT_STREQ(Analog::name(Analog::eb_voltage), "voltage Eb");
    EXPECT_EQ(Analog::parse("", NegativeWords::overflow), std::nullopt);

    const auto limits =
        Limits::parse(hex_bytes("37 00  55 00  90 01  26 02  2C 01  00 80"), NegativeWords::overflow);
    const double levels[] = {55, 85, 4, 55, 30};
    for (std::size_t i = 0; i < std::size(levels); ++i)
        EXPECT_DOUBLE_EQ(limits->items[i].value, levels[i]) << i;
    EXPECT_EQ((*limits)[Limits::over_reverse_power].kind, overflowed);
    EXPECT_STREQ(Limits::name(Limits::cabinet), "the warning level of the cabinet temperature");
}

// A text cut at the wrong comma or star, a flag that is read as text, a state that is not found in it.
TEST(Readings, TextsAreTakenApart) {
    const std::pair<const char*, std::optional<AlarmState>> cases[] = {
        {"", std::nullopt},
        {"0,Standby, RF off", AlarmState{false, "Standby, RF off", true, true}},
        {"1,Helix Current High", AlarmState{true, "Helix Current High", false, false}},
        {",x", AlarmState{false, "x", false, false}},
        {"Standby", AlarmState{false, "Standby", true, false}},
    };
    for (const auto& [payload, expected] : cases) EXPECT_EQ(AlarmState::parse(payload), expected) << payload;
    EXPECT_EQ(Shutdown::parse("12, Helix, over "), (Shutdown{"12", "Helix, over"}));
    EXPECT_EQ(Shutdown::parse(" no number "), (Shutdown{std::nullopt, "no number"}));
    EXPECT_EQ(Shutdown::parse(""), std::nullopt);
    EXPECT_EQ(Identity::parse("JEX* KU *0042 * Rev 1 *more"), (Identity{"KU", "0042", "Rev 1"}));
    EXPECT_EQ(Identity::parse("JEX*KU-4"), (Identity{"KU-4", std::nullopt, std::nullopt}));
    EXPECT_EQ(Identity::parse("no star"), Identity{});
    EXPECT_EQ(Identity::parse("*KU*1"), std::nullopt);
}

}  // namespace
}  // namespace ampdesk
