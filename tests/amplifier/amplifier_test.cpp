// What goes out for a request or a setting, how long it is waited for, what a reply is taken for, and what an
// amplifier answers, from literal bytes. Whether the frames' CRC is right has been seen to before.
#include <gtest/gtest.h>

#include "amplifier/amplifier.h"
#include "amplifier/readings.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using Kind = Request::Kind;
using std::chrono::milliseconds;

struct AmplifierTest : testing::Test {
    ManualClock clock;
    Amplifier amplifier{clock, 7, NegativeWords::overflow};
};

// A request that asks for something else, or in the other kind of frame.
TEST_F(AmplifierTest, RequestsOnTheWire) {
    const std::pair<Request, const char*> cases[] = {
        {{Kind::status}, "11"},
        {{Kind::analog}, "12"},
        {{Kind::limits}, "A0 15 00"},
        {{Kind::identity}, "A0 16 00"},
        {{Kind::alarm_state}, "A0 17 00"},
        {{Kind::shutdown}, "A0 18 00"},
        {{.kind = Kind::event, .entry = 200}, "A0 1A C8"},
        {{Kind::band}, "52 44 42 41 4E 44"},
    };
    for (const auto& [request, bytes] : cases) {
        const BusCommand command = amplifier.command_of(request);
        EXPECT_EQ(to_hex(command.command), bytes);
        EXPECT_EQ(command.address, 7);
        EXPECT_EQ(command.form == CommandForm::text, request.kind == Kind::band) << bytes;
    }
}

// A reply judged good or cut otherwise than byte for byte; a text without its name taken for none; the late
// reply to the request for another event.
TEST_F(AmplifierTest, RepliesAreJudged) {
    using enum Reading::Outcome;
    const Request event{.kind = Kind::event, .entry = 1};
    const struct {
        const char* what;
        Request request;
        BusReply reply;
        Reading::Outcome outcome;
        const char* text = nullptr;
    } cases[] = {
        {"shortest payload", event, {.bytes = hex_bytes("06 07 05 A0 1A 01 41 42 00 00")}, good, "AB"},
        {"payload of one", event, {.bytes = hex_bytes("06 07 04 A0 1A 01 41 00 00")}, unusable},
        {"another event", event, {.bytes = hex_bytes("06 07 05 A0 1A 02 41 42 00 00")}, unusable},
        {"NAK", event, {.bytes = hex_bytes("15 07 05 A0 1A 01 41 42 00 00")}, unusable},
        {"nameless", {Kind::identity}, {.bytes = hex_bytes("06 07 05 A0 16 00 2A 4B 00 00")}, good},
        {"silence", {Kind::status}, {.failure = BusFailure::silence}, silence},
        {"bad CRC", {Kind::status}, {.failure = BusFailure::bad_crc}, bad_crc},
        {"not sent", {Kind::status}, {.failure = BusFailure::not_sent}, not_sent},
        {"name", {Kind::band}, {.bytes = "NAME=  12.5\x03junk\r"}, good, "12.5"},
        {"two signs", {Kind::band}, {.bytes = "RDBAND=1=2 \x03\r"}, good, "1=2"},
        {"no name", {Kind::band}, {.bytes = "\x02 2 \x03\r"}, good, "2"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Reading told = amplifier.take({c.request, clock.now()}, c.reply);
        EXPECT_EQ(told.outcome, c.outcome);
        const std::string* text = told.get<std::string>();
        EXPECT_STREQ(text == nullptr ? nullptr : text->c_str(), c.text);
    }
}

// A refusal taken for an acceptance, or told in the wrong words; the late answer to 2.0 dB taken for the one
// to 5.2 dB, which was lost.
TEST_F(AmplifierTest, WhatBecomesOfASetting) {
    using enum Setting::Outcome;
    const std::string to_5_2_db("\x10\x18\x34\x00", 4);
    const struct {
        const char* reply;
        Setting::Outcome outcome;
        const char* refusal = "";
        BusFailure failure = BusFailure::none;
        std::string setting = "\x10\x12";
    } cases[] = {
        {"06 07 02 10 12 00 00", taken},
        {"06 07 00 00 00", unanswered},
        {"", unanswered, "", BusFailure::silence},
        {"", not_sent, "", BusFailure::not_sent},
        {"15 07 02 10 12 00 00", refused},
        {"15 07 03 10 12 01 00 00", refused, "Command Not Found"},
        {"15 07 03 10 12 03 00 00", refused, "Remote Is Not On"},
        {"15 07 05 10 12 78 78 04 00 00", refused, "Invalid Data"},
        {"15 07 03 10 12 1A 00 00", refused, "Setting Failed, code H1A"},
        {"06 07 04 10 18 14 00 00 00", unanswered, "", BusFailure::none, to_5_2_db},
        {"15 07 05 10 18 14 00 04 00 00", unanswered, "", BusFailure::none, to_5_2_db},
        {"06 07 04 10 18 34 00 00 00", taken, "", BusFailure::none, to_5_2_db},
    };
    for (const auto& c : cases) {
        const BusReply reply{.failure = c.failure, .bytes = hex_bytes(c.reply)};
        const Setting told = amplifier.take(c.setting, Origin::key, reply);
        EXPECT_EQ(told.outcome, c.outcome) << c.reply;
        EXPECT_EQ(told.refusal, c.refusal) << c.reply;
    }
}

// A silent amplifier that holds up the others, one that is given up too soon, and a slow one that is never
// waited for as long as it takes.
TEST_F(AmplifierTest, HowLongAReadIsWaitedFor) {
    const struct {
        int answers_in, limit, before_order;  // milliseconds
    } cases[] = {{20, 300, 100}, {50, 300, 150}, {150, 450, 300}, {600, 1000, 300}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.answers_in);
        Amplifier one(clock, 7, NegativeWords::overflow);
        const auto limit = [&](bool guess = false) {
            return one.command_of({.kind = Kind::event, .guess = guess}).limit;
        };
        const milliseconds shorter(c.limit);
        const auto answer = [&](Kind kind, int took) { one.take({{kind}}, {.took = milliseconds(took)}); };
        answer(Kind::band, 900);  // a text takes its own time
        answer(Kind::status, 1);
        answer(Kind::status, c.answers_in);
        EXPECT_EQ(one.patience_before_order(), milliseconds(c.before_order));
        EXPECT_EQ(limit(), milliseconds(1000)) << "it answers";
        one.suspect_line(true);
        EXPECT_EQ(limit(), shorter);
        one.suspect_line(false);
        for (int silences = 1; silences <= 24; ++silences) {
            one.take({{Kind::status}}, {.failure = BusFailure::silence});
            EXPECT_EQ(limit(), silences % 12 == 0 ? milliseconds(1000) : shorter) << silences;
            EXPECT_EQ(limit(true), shorter);
            EXPECT_EQ(one.command_of("\x10\x12").limit, milliseconds(1000)) << "of a setting";
            one.take({{Kind::status}}, {.failure = BusFailure::bad_crc});
        }
        answer(Kind::status, 1);
        EXPECT_EQ(limit(), milliseconds(1000)) << "it answers again";
        for (int i = 0; i < 300; ++i) answer(Kind::status, 20);
        EXPECT_LT(one.patience_before_order(), milliseconds(110)) << "one slow answer for ever";
    }
}

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
