// The simulated amplifier as the station sees it: command bytes in, reply data out.
#include "demo/sim_amplifier.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"

namespace ampdesk::demo {
namespace {

using namespace std::chrono_literals;

SimModel steady() {
    return {.noise = 0};
}

SimModel transmitting() {
    return {.hv_on = true, .rf_on = true, .noise = 0};
}

struct AmplifierTest : testing::Test {
    ManualClock clock;  // the wall clock starts at 12:00

    // "ACK" or "NAK" and the data behind the echo in hexadecimal; a reply that does not begin with
    // the whole command shows as "no echo".
    static std::string ask(SimAmplifier& amplifier, const std::string& command_hex) {
        const std::string command = hex_bytes(command_hex);
        const SimAmplifier::Reply reply = amplifier.answer(command);
        if (reply.data.substr(0, command.size()) != command)
            return "no echo";
        const std::string payload = to_hex(std::string_view(reply.data).substr(command.size()));
        return std::string(reply.accepted ? "ACK" : "NAK") + (payload.empty() ? "" : " ") + payload;
    }

    static std::string ask_text(SimAmplifier& amplifier, const std::string& command_hex) {
        const std::string command = hex_bytes(command_hex);
        return amplifier.answer(command).data.substr(command.size());
    }

    // Asks in turn and compares.
    static void expect_dialogue(SimAmplifier& amplifier,
                                const std::vector<std::pair<std::string, std::string>>& dialogue) {
        for (const auto& [command, answer] : dialogue) {
            SCOPED_TRACE(command);
            EXPECT_EQ(ask(amplifier, command), answer);
        }
    }
};

// A setting that is acknowledged without effect, or takes effect in spite of a refusal.
TEST_F(AmplifierTest, SettingsActAndRefusalsDoNot) {
    SimAmplifier amplifier(steady(), clock);
    expect_dialogue(amplifier, {
                                   {"10 16", "NAK 04"},  // RF without HV
                                   {"10 12", "ACK"},
                                   {"11", "ACK 04 11 02 00 00 02"},
                                   {"10 16", "ACK"},
                                   {"11", "ACK 0C 11 02 00 00 02"},
                                   {"10 18 2D 01", "NAK 04"},  // 30.1 dB
                                   {"10 18 7D", "NAK 04"},     // half a number
                                   {"10 1A", "ACK"},           // to the load
                                   {"11", "ACK 0C 11 02 00 01 02"},
                                   {"10 1B 03", "NAK 04"},
                                   {"10 17", "ACK"},
                                   {"10 16", "ACK"},
                                   {"10 13", "ACK"},  // takes the RF with it
                                   {"11", "ACK 00 11 02 00 01 02"},
                                   {"10 14", "NAK 01"},
                                   {"A0 17", "NAK 01"},
                                   {"20 20 40 00", "NAK 20"},  // behind the nvRam's end
                                   {"40 20 40 00 00 A1 FF 3C 5A 07", "NAK 04"},
                                   {"40 20 0C 00 5A 07", "NAK 04"},     // no data
                                   {"53 42 41 4E 44 20 31", "ACK"},     // SBAND 1
                                   {"53 42 41 4E 44 20 33", "NAK 04"},  // SBAND 3
                                   {"53 42 41 4E 44 20 78", "NAK 04"},  // SBAND x
                               });
    const std::pair<const char*, const char*> texts[] = {
        {"RDBAND", "RDBAND=1"},
        {"SBAND 3", "NAK 4"},
        {"RDBANDS", "NAK 1"},
        {"RDSTAT", "RDSTAT=Standby RF off,Fwd 0.0 dBm,Attn 0.0 dB,Remote on"}};
    for (const auto& [command, answer] : texts) EXPECT_EQ(amplifier.answer_text(command), answer);

    amplifier.set_remote(false);
    expect_dialogue(amplifier, {{"10 12", "NAK 03"},
                                {"53 42 41 4E 44 20 30", "NAK 03"},
                                {"40 20 00 00 01 02 03", "NAK 03"},
                                {"11", "ACK 00 10 02 00 01 02"}});
    EXPECT_EQ(amplifier.answer_text("SBAND 0"), "NAK 3");

    SimAmplifier no_switch({.has_switch = false}, clock);
    expect_dialogue(no_switch, {{"10 1A", "NAK 01"}, {"10 1B 01", "NAK 01"}});
}

// HV accepted too early or never, and a countdown that runs wrong.
TEST_F(AmplifierTest, HighVoltageWaitsForTheWarmUp) {
    SimAmplifier amplifier({.warm_up = 80s}, clock);
    EXPECT_EQ(ask_text(amplifier, "A0 17 00"), "0,Warm-up 1:20");
    clock.advance(62'500ms);
    EXPECT_EQ(ask_text(amplifier, "A0 17 00"), "0,Warm-up 0:18");
    clock.advance(17'499ms);
    EXPECT_EQ(ask(amplifier, "10 12"), "NAK 04");
    clock.advance(1ms);
    EXPECT_EQ(ask(amplifier, "10 12"), "ACK");
    EXPECT_EQ(ask_text(amplifier, "A0 1A 01"), "12:01 Ready");
}

// A tube that gets hot without protecting itself, a shutdown that goes while the heat is still there,
// or a fan that does not cool.
TEST_F(AmplifierTest, LimitsTripWhenTheFanStops) {
    SimAmplifier amplifier(transmitting(), clock);
    amplifier.stop_fan(true);
    clock.advance(60s);
    EXPECT_EQ(ask_text(amplifier, "A0 17 00"), "1,TWT Temp");
    clock.advance(60s);
    EXPECT_EQ(ask_text(amplifier, "A0 18 00"), "3, Over-Temperature");
    EXPECT_EQ(ask(amplifier, "10 15"), "NAK 04");
    EXPECT_EQ(ask_text(amplifier, "A0 1A 00"), "12:02 Fault #3");
    EXPECT_EQ(ask_text(amplifier, "A0 1A 01"), "12:02 HV off");
    clock.advance(10min);
    EXPECT_EQ(ask_text(amplifier, "A0 18 00"), "4, Cabinet Temperature");
    amplifier.stop_fan(false);
    EXPECT_EQ(ask(amplifier, "10 15"), "ACK");
    EXPECT_EQ(ask_text(amplifier, "A0 17 00"), "0,Standby RF off");
}

// An alarm for too much power that the attenuation does not end.
TEST_F(AmplifierTest, LessPowerEndsTheAlarmOfTooMuch) {
    SimAmplifier amplifier(transmitting(), clock);
    amplifier.warnings.cross(WarningLevel::over_forward, true);
    EXPECT_EQ(ask_text(amplifier, "A0 17 00"), "1,Fwd Power High");
    amplifier.set_attenuation(20);
    EXPECT_EQ(ask_text(amplifier, "A0 17 00"), "0,Transmit");
}

// A limit that watches the wrong word or compares the wrong way, and an alarm that flickers.
TEST_F(AmplifierTest, WarningLevelsRaiseAlarms) {
    const struct {
        std::size_t item;
        std::uint16_t harmless, excessive, still, over;
        std::string text;
    } cases[] = {
        {9, 50, 51, 49, 48, "1,Cabinet Temp"},      {8, 95, 96, 94, 93, "1,TWT Temp"},
        {4, 500, 501, 481, 480, "1,Helix Current"}, {1, 580, 581, 576, 575, "1,Fwd Power High"},
        {1, 250, 249, 254, 255, "1,Fwd Power Low"}, {2, 450, 451, 446, 445, "1,Rev Power High"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        SimAmplifier amplifier(transmitting(), clock);
        const auto alarm_at = [&](std::uint16_t word) {
            amplifier.faults.analog[c.item] = word;
            return ask_text(amplifier, "A0 17 00");
        };
        EXPECT_EQ(alarm_at(c.harmless), "0,Transmit");
        EXPECT_EQ(alarm_at(c.excessive), c.text);
        EXPECT_EQ(alarm_at(c.still), c.text);
        EXPECT_EQ(alarm_at(c.over), "0,Transmit");
        EXPECT_EQ(ask_text(amplifier, "A0 1A 00"), "12:00 " + c.text.substr(2));
        EXPECT_EQ(ask_text(amplifier, "A0 1A 01"), "12:00 RF on");
    }
    SimAmplifier idle(steady(), clock);
    EXPECT_EQ(ask_text(idle, "A0 17 00"), "0,Standby RF off");  // no power is not too little without RF
}

// Hour meters that stand still, count RF time in standby or lose the minutes; temperatures that do
// not drift to where they settle.
TEST_F(AmplifierTest, HoursCountAndTemperaturesDrift) {
    SimAmplifier amplifier(steady(), clock);
    clock.advance(56min);
    EXPECT_EQ(ask(amplifier, "12").substr(4 + 3 * 18, 29), "D3 04 DB 03 00 00 01 00 28 00");
    amplifier.set_hv(true);
    amplifier.set_rf(true);
    clock.advance(5min);
    const std::string warming = ask(amplifier, "12");
    EXPECT_EQ(warming.substr(4 + 3 * 14, 11), "3F 00 21 00");  // 63 °C on the way to 78, 33 °C to 37
    clock.advance(3h);
    EXPECT_EQ(ask(amplifier, "12").substr(4 + 3 * 14, 41), "4E 00 25 00 D6 04 DE 03 00 00 06 00 2D 00");
}

// An event list that grows for months, or is not told in the time of day.
TEST_F(AmplifierTest, TheLastHundredEventsAreKept) {
    SimAmplifier amplifier(steady(), clock);
    clock.advance(65min);
    for (int i = 0; i < 300; ++i) amplifier.set_hv(i % 2 == 1);
    EXPECT_EQ(ask_text(amplifier, "A0 1A 63"), "13:05 HV off");
    EXPECT_EQ(ask_text(amplifier, "A0 1A 64"), "                ");
}

// A reply that does not fit its length byte.
TEST_F(AmplifierTest, TheLongestCommandIsStillAnswered) {
    SimAmplifier amplifier(steady(), clock);
    const SimAmplifier::Reply reply = amplifier.answer(std::string(255, '?'));
    EXPECT_FALSE(reply.accepted);
    EXPECT_EQ(reply.data, std::string(254, '?') + '\x01');
}

// Readings that differ from run to run, or are the same on every amplifier.
TEST_F(AmplifierTest, NoiseIsRepeatableAndItsOwn) {
    SimAmplifier first({.serial = 7}, clock);
    SimAmplifier again({.serial = 7}, clock);
    SimAmplifier other({.serial = 8}, clock);
    bool all_alike = true;
    for (int i = 0; i < 20; ++i) {
        const std::string reading = ask(first, "12");
        EXPECT_EQ(ask(again, "12"), reading);
        all_alike = ask(other, "12") == reading && all_alike;
    }
    EXPECT_FALSE(all_alike);
}

}  // namespace
}  // namespace ampdesk::demo
