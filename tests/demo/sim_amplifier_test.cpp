// The simulated amplifier as the station sees it: command bytes in, reply data out.
#include "demo/sim_amplifier.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"

namespace ampdesk::demo {
namespace {

using namespace std::chrono_literals;

struct AmplifierTest : testing::Test {
    AmplifierTest() { start({.noise = 0}); }
    // "ACK" or "NAK" and the data behind the echo in hexadecimal; a reply that does not begin with
    // the whole command shows as "no echo".
    std::string ask(const std::string& command_hex) {
        const std::string command = hex_bytes(command_hex);
        const SimAmplifier::Reply reply = amplifier->answer(command);
        if (reply.data.substr(0, command.size()) != command)
            return "no echo";
        const std::string payload = to_hex(reply.data.substr(command.size()));
        return std::string(reply.accepted ? "ACK" : "NAK") + (payload.empty() ? "" : " ") + payload;
    }
    void expect(const char* answer, std::initializer_list<const char*> commands) {
        for (const char* command : commands) EXPECT_EQ(ask(command), answer) << command;
    }
    std::string ask_text(const std::string& command_hex) {
        return amplifier->answer(hex_bytes(command_hex)).data.substr(3);
    }
    std::string alarm() { return ask_text("A0 17 00"); }
    std::string event(int n) { return ask_text("A0 1A " + to_hex(std::string(1, static_cast<char>(n)))); }
    // Words of the analog block.
    std::string words(std::size_t from, std::size_t count) {
        return ask("12").substr(4 + 6 * (from - 1), 6 * count - 1);
    }
    void start(const SimModel& model) { amplifier = std::make_unique<SimAmplifier>(model, clock); }
    void transmit() { start({.hv_on = true, .rf_on = true, .noise = 0}); }

    ManualClock clock;  // the wall clock starts at 12:00
    std::unique_ptr<SimAmplifier> amplifier;
};

// A setting that is acknowledged without effect, or takes effect in spite of a refusal.
TEST_F(AmplifierTest, SettingsActAndRefusalsDoNot) {
    // RF without HV, 30.1 dB, half a number, a mode too many, nvRam behind its end and without data, bands 3,
    // x.
    expect("NAK 04", {"10 16", "10 18 2D 01", "10 18 7D", "10 1B 03", "40 20 40 00 00 A1 FF 3C 5A 07",
                      "40 20 0C 00 5A 07", "53 42 41 4E 44 20 33", "53 42 41 4E 44 20 78"});
    expect("NAK 01", {"10 14", "A0 17"});
    expect("ACK 00 11 02 00 00 02", {"11"});
    expect("ACK", {"10 12", "53 42 41 4E 44 20 31", "40 20 0C 00 A1 5A 07"});
    expect("ACK 04 11 02 00 00 02", {"11"});
    expect("ACK", {"10 16", "10 1A"});
    expect("ACK 0C 11 02 00 01 02", {"11"});
    expect("ACK", {"10 17", "10 16", "10 13"});  // HV off takes the RF with it
    expect("ACK 00 11 02 00 01 02", {"11"});
    expect("ACK A1 5A 07", {"20 20 0C 00"});
    const std::pair<const char*, const char*> texts[] = {
        {"RDBAND", "RDBAND=1"},
        {"SBAND 3", "NAK 4"},
        {"RDBANDS", "NAK 1"},
        {"RDSTAT", "RDSTAT=Standby RF off,Fwd 0.0 dBm,Attn 0.0 dB,Remote on"}};
    for (const auto& [command, answer] : texts) EXPECT_EQ(amplifier->answer_text(command), answer);

    amplifier->set_remote(false);
    expect("NAK 03", {"10 12", "53 42 41 4E 44 20 30", "40 20 00 00 01 02 03"});
    expect("ACK 00 10 02 00 01 02", {"11"});
    EXPECT_EQ(amplifier->answer_text("SBAND 0"), "NAK 3");
    // The length byte of a reply holds no more than that.
    EXPECT_EQ(amplifier->answer(std::string(255, '?')).data, std::string(254, '?') + '\x01');

    start({.name = "KU/K", .has_switch = false});
    expect("NAK 01", {"10 1A", "10 1B 01"});
    EXPECT_EQ(amplifier->answer_text("SBAND 1") + amplifier->answer_text("SBAND 2"), "NAK 4SBAND=2");
}

// HV accepted too early or never, and a countdown that runs wrong.
TEST_F(AmplifierTest, HighVoltageWaitsForTheWarmUp) {
    start({.warm_up = 80s});
    EXPECT_EQ(alarm(), "0,Warm-up 1:20");
    clock.advance(62'500ms);
    EXPECT_EQ(alarm(), "0,Warm-up 0:18");
    clock.advance(17'499ms);
    EXPECT_EQ(ask("10 12"), "NAK 04");
    clock.advance(1ms);
    EXPECT_EQ(ask("10 12"), "ACK");
    EXPECT_EQ(event(1), "12:01 Ready");
}

// A tube that gets hot without protecting itself, a shutdown that goes while the heat is still there,
// or a fan that does not cool.
TEST_F(AmplifierTest, LimitsTripWhenTheFanStops) {
    transmit();
    amplifier->stop_fan(true);
    clock.advance(60s);
    EXPECT_EQ(alarm(), "1,TWT Temp");
    clock.advance(60s);
    EXPECT_EQ(ask_text("A0 18 00"), "3, Over-Temperature");
    EXPECT_EQ(ask("10 15"), "NAK 04");
    EXPECT_EQ(event(0) + event(1), "12:02 Fault #312:02 HV off");
    clock.advance(10min);
    EXPECT_EQ(ask_text("A0 18 00"), "4, Cabinet Temperature");
    amplifier->stop_fan(false);
    EXPECT_EQ(ask("10 15"), "ACK");
    EXPECT_EQ(alarm(), "0,Standby RF off");
}

// A limit that watches the wrong word or compares the wrong way, an alarm that flickers, and one for too much
// power that the attenuation does not end.
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
        transmit();
        const auto alarm_at = [&](std::uint16_t word) {
            amplifier->faults.analog[c.item] = word;
            return alarm();
        };
        EXPECT_EQ(alarm_at(c.harmless), "0,Transmit");
        EXPECT_EQ(alarm_at(c.excessive), c.text);
        EXPECT_EQ(alarm_at(c.still), c.text);
        EXPECT_EQ(alarm_at(c.over), "0,Transmit");
        EXPECT_EQ(event(0) + event(1), "12:00 " + c.text.substr(2) + "12:00 RF on");
    }
    transmit();
    amplifier->warnings.cross(WarningLevel::over_forward, true);
    EXPECT_EQ(alarm(), "1,Fwd Power High");
    amplifier->set_attenuation(10);
    amplifier->set_attenuation(20);
    EXPECT_EQ(alarm(), "0,Transmit");
    EXPECT_EQ(event(0) + event(1), "12:00 ATTN 2.012:00 Fwd Power High");
    amplifier->set_rf(false);
    amplifier->warnings = {};
    EXPECT_EQ(alarm(), "0,HV on RF off");  // no power is not too little without RF
}

// Hour meters that stand still, count RF time in standby or lose the minutes; temperatures that do
// not drift to where they settle; an event list that grows for months, or is not told in the time of day.
TEST_F(AmplifierTest, HoursCountAndTemperaturesDrift) {
    clock.advance(56min);
    EXPECT_EQ(words(10, 5), "D3 04 DB 03 00 00 01 00 28 00");
    amplifier->set_hv(true);
    amplifier->set_rf(true);
    clock.advance(3h + 5min);
    EXPECT_EQ(words(8, 7), "4E 00 25 00 D6 04 DE 03 00 00 06 00 2D 00");
    for (int i = 0; i < 300; ++i) amplifier->set_hv(i % 2 == 1);
    EXPECT_EQ(event(99) + event(100), "16:01 HV off                ");
}

}  // namespace
}  // namespace ampdesk::demo
