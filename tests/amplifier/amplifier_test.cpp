// What goes out for a request or a setting, how long it is waited for, and what a reply is taken for. Frames
// are literal; whether their CRC is right has been seen to before.
#include "amplifier/amplifier.h"

#include <gtest/gtest.h>

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

// A refusal taken for an acceptance, or told in the wrong words.
TEST_F(AmplifierTest, WhatBecomesOfASetting) {
    using enum Setting::Outcome;
    const struct {
        const char* reply;
        Setting::Outcome outcome;
        const char* refusal = "";
        BusFailure failure = BusFailure::none;
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
    };
    for (const auto& c : cases) {
        const BusReply reply{.failure = c.failure, .bytes = hex_bytes(c.reply)};
        const Setting told = amplifier.take("\x10\x12", Origin::key, reply);
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

// The late answer to 2.0 dB is taken for the one to 5.2 dB, which was lost.
TEST_F(AmplifierTest, AnAnswerToAnotherValueIsNone) {
    const std::string asked("\x10\x18\x34\x00", 4);
    const auto outcome = [&](const char* reply) {
        return amplifier.take(asked, Origin::key, {.bytes = hex_bytes(reply)}).outcome;
    };
    EXPECT_EQ(outcome("06 07 04 10 18 14 00 00 00"), Setting::Outcome::unanswered);
    EXPECT_EQ(outcome("15 07 05 10 18 14 00 04 00 00"), Setting::Outcome::unanswered);
    EXPECT_EQ(outcome("06 07 04 10 18 34 00 00 00"), Setting::Outcome::taken);
}

}  // namespace
}  // namespace ampdesk
