// What an amplifier answers, from literal bytes.
#include "amplifier/readings.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace ampdesk {
namespace {

using enum Quantity::Kind;

// A field taken from another's bit, or from beyond a short reply.
TEST(Status, EveryFieldFromItsOwnBit) {
    const struct {
        const char* payload;
        Status expected;
    } cases[] = {
        {"00 00 00 00 00 00", {}},
        {"04 00", {.hv_on = true}},
        {"08 00", {.rf_on = true}},
        {"10 00", {.in_shutdown = true}},
        {"E3", {}},
        {"00 01", {.remote_on = true}},
        {"00 02", {.fahrenheit = true}},
        {"00 04", {.forward_in_watts = true}},
        {"00 08", {.reverse_in_watts = true}},
        {"00 10", {.power_save_fitted = true}},
        {"00 00 01", {.filament_in_ma = true}},
        {"00 00 02", {.has_switch = true}},
        {"00 00 FC FF", {}},
        {"00 00 00 00 01", {.switch_locked = true}},
        {"00 00 00 00 FE FF", {.switch_positions = 255}},
    };
    for (const auto& c : cases) EXPECT_EQ(Status::parse(hex_bytes(c.payload)), c.expected) << c.payload;
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
    ASSERT_TRUE(analog);
    for (std::size_t i = 0; i < Analog::k_items; ++i) {
        EXPECT_EQ(analog->items[i].kind, value) << i;
        EXPECT_DOUBLE_EQ(analog->items[i].value, values[i]) << i;
    }
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
}

// A text cut at the wrong comma, a flag that is read as text, a state that is not found in it.
TEST(AlarmState, FlagTextAndStates) {
    const struct {
        const char* payload;
        AlarmState expected;
    } cases[] = {
        {"0,Standby, RF off", {false, "Standby, RF off", true, true}},
        {"1,Helix Current High", {true, "Helix Current High", false, false}},
        {"10", {true, "10", false, false}},
        {",x", {false, "x", false, false}},
        {"Standby", {false, "Standby", true, false}},
    };
    for (const auto& c : cases) EXPECT_EQ(AlarmState::parse(c.payload), c.expected) << c.payload;
    EXPECT_EQ(AlarmState::parse(""), std::nullopt);
}

TEST(Shutdown, NumberAndReason) {
    const struct {
        const char* payload;
        Shutdown expected;
    } cases[] = {{"12, Helix, over ", {"12", "Helix, over"}},
                 {" no number ", {std::nullopt, "no number"}},
                 {",x", {"", "x"}}};
    for (const auto& c : cases) EXPECT_EQ(Shutdown::parse(c.payload), c.expected) << c.payload;
    EXPECT_EQ(Shutdown::parse(""), std::nullopt);
}

TEST(Identity, FieldsBetweenStars) {
    const struct {
        const char* payload;
        std::optional<Identity> expected;
    } cases[] = {{"JEX*KU-400*1001*2.1", Identity{"KU-400", "1001", "2.1"}},
                 {"JEX* KU *0042 * Rev 1 *more", Identity{"KU", "0042", "Rev 1"}},
                 {"JEX*KU-4", Identity{"KU-4", std::nullopt, std::nullopt}},
                 {"no star", Identity{}},
                 {"*KU*1", std::nullopt}};
    for (const auto& c : cases) EXPECT_EQ(Identity::parse(c.payload), c.expected) << c.payload;
}

}  // namespace
}  // namespace ampdesk
