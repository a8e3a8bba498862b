// The named faults: what each does to a reply, that "clear" ends it, and what is said to mistakes.
#include "demo/faults.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"

namespace ampdesk::demo {
namespace {

using namespace std::chrono_literals;

struct FaultTest : testing::Test {
    FaultTest() {
        bus.add({.address = 1, .noise = 0});
        bus.add({.address = 2, .noise = 0});
    }
    // The reply of amplifier 1 without its CRC; "bad CRC" in front when that is wrong.
    std::string ask(const std::string& frame_hex) {
        bus.receive(hex_bytes(frame_hex));
        clock.advance(1h);
        const std::string reply = bus.take_due();
        if (reply.size() < 5)
            return to_hex(reply);
        const bool sound = Crc16().c_chkCRC(reply) == 0;
        return (sound ? "" : "bad CRC ") + to_hex(std::string_view(reply).substr(0, reply.size() - 2));
    }
    ManualClock clock;
    SimBus bus{clock};
};

constexpr const char* k_status = "01 01 01 11 91 A0";
constexpr const char* k_analog = "01 01 01 12 D1 A1";
constexpr const char* k_limits = "01 01 03 A0 15 00 32 E7";
constexpr const char* k_alarm = "01 01 03 A0 17 00 33 87";
constexpr const char* k_shutdown = "01 01 03 A0 18 00 36 77";
constexpr const char* k_hv_on = "01 01 02 10 12 10 31";
constexpr const char* k_acknowledge = "01 01 02 10 15 51 F3";

// A fault without its effect, an effect on the wrong amplifier, or one that "clear" leaves behind.
TEST_F(FaultTest, EachFaultShowsAndClearEndsIt) {
    const struct {
        std::vector<std::string> lines;
        const char* request;
        const char* reply;
    } cases[] = {
        {{"shutdown 12 Helix arc"}, k_shutdown, "06 01 10 A0 18 00 31 32 2C 20 48 65 6C 69 78 20 61 72 63"},
        {{"  @1   shutdown  7  A, b "}, k_shutdown, "06 01 0A A0 18 00 37 2C 20 41 2C 20 62"},
        {{"interlock open"}, k_acknowledge, "15 01 03 10 15 04"},
        {{"alarm Hot"}, k_alarm, "06 01 08 A0 17 00 31 2C 48 6F 74"},
        {{"remote off"}, k_hv_on, "15 01 03 10 12 03"},
        {{"@1 silent on"}, k_status, ""},
        {{"@2 silent on"}, k_status, "06 01 07 11 00 11 02 00 00 02"},
        {{"silent on", "silent off"}, k_status, "06 01 07 11 00 11 02 00 00 02"},
        {{"badcrc 1"}, k_status, "bad CRC 06 01 07 11 00 11 02 00 00 02"},
        {{"refuse 26"}, k_hv_on, "15 01 03 10 12 1A"},
        {{"refuse 0x1A", "refuse 0"}, k_hv_on, "06 01 02 10 12"},
        {{"delay 60000"}, k_status, "06 01 07 11 00 11 02 00 00 02"},
        {{"address 9"}, k_status, "06 09 07 11 00 11 02 00 00 02"},
        {{"address 9", "address off"}, k_status, "06 01 07 11 00 11 02 00 00 02"},
        {{"short 2", "analog 2 513"}, k_analog, "06 01 05 12 00 00 01 02"},
        {{"short 2"}, k_limits, "06 01 07 A0 15 00 32 00 5F 00"},
        {{"short 1", "overflow on"}, k_analog, "06 01 03 12 00 80"},
        {{"short 1", "analog 1 -2"}, k_analog, "06 01 03 12 FE FF"},
        {{"status 1 4", "status 6 0"}, k_status, "06 01 07 11 04 11 02 00 00 00"},
        {{"status 2 16"}, k_hv_on, "15 01 03 10 12 03"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lines[0]);
        for (const std::string& line : c.lines) EXPECT_EQ(make_fault(bus, line).text, "ok");
        EXPECT_EQ(ask(c.request), c.reply);
        bus.find(1)->set_hv(false);
        EXPECT_EQ(make_fault(bus, "clear").text, "ok");
        EXPECT_EQ(ask(k_shutdown), "06 01 11 A0 18 00 30 2C 20 4E 6F 20 53 68 75 74 64 6F 77 6E");
        EXPECT_EQ(ask(k_alarm), "06 01 13 A0 17 00 30 2C 53 74 61 6E 64 62 79 20 52 46 20 6F 66 66");
        EXPECT_EQ(ask(k_status), "06 01 07 11 00 11 02 00 00 02");
        EXPECT_EQ(ask(k_analog).substr(0, 21), "06 01 1F 12 00 00 00 ");
        EXPECT_EQ(ask(k_hv_on), "06 01 02 10 12");
        bus.find(1)->set_hv(false);
    }
}

// A count that spoils one reply too many or too few.
TEST_F(FaultTest, CountedFaultsSpoilSoManyReplies) {
    const std::string whole = hex_bytes("06 01 07 11 00 11 02 00 00 02 D1 12");
    make_fault(bus, "noise 2");
    for (const bool noisy : {true, true, false}) {
        bus.receive(hex_bytes(k_status));
        const std::string reply = bus.take_due();
        EXPECT_EQ(reply.size() > whole.size(), noisy);
        EXPECT_EQ(reply.substr(reply.size() - whole.size()), whole);
    }
    make_fault(bus, "badcrc 2");
    for (const char* front : {"bad CRC 06", "bad CRC 06", "06 01 07 11"})
        EXPECT_EQ(ask(k_status).find(front), 0U);
}

// A mistake that is taken for a command, or changes something before it is noticed.
TEST_F(FaultTest, MistakesAreToldAndChangeNothing) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "error: no fault is named \"\""},
        {"explode", "error: no fault is named \"explode\""},
        {"@3 clear", "error: no amplifier at @3"},
        {"@1", "error: no fault is named \"\""},
        {"shutdown 12", "error: shutdown wants a text of 1 to 60 characters"},
        {"interlock", "error: interlock wants open or closed"},
        {"alarm", "error: alarm wants a text of 1 to 60 characters"},
        {"clear all", "error: clear takes no argument"},
        {"remote yes", "error: remote wants on or off"},
        {"silent", "error: silent wants on or off"},
        {"noise -1", "error: noise wants a number from 0 to 9999"},
        {"badcrc 1 2", "error: badcrc wants a number from 0 to 9999"},
        {"refuse 256", "error: refuse wants a number from 0 to 255"},
        {"delay 60001", "error: delay wants a number from 0 to 60000"},
        {"late 1s", "error: late wants a number from 0 to 60000"},
        {"address on", "error: address wants a number from 0 to 255 or off"},
        {"short 16", "error: short wants a number from 0 to 15"},
        {"overflow 1", "error: overflow wants on or off"},
        {"analog 0 1", "error: analog wants a number from 1 to 15"},
        {"analog 1 65536", "error: analog wants a number from -32768 to 65535"},
        {"status 7 1", "error: status wants a number from 1 to 6"},
        {"status 1", "error: status wants a number from 0 to 255"},
    };
    for (const auto& [line, answer] : cases) {
        SCOPED_TRACE(line);
        const FaultAnswer given = make_fault(bus, line);
        EXPECT_EQ(given.text, answer);
        EXPECT_FALSE(given.quit);
        EXPECT_EQ(ask(k_status), "06 01 07 11 00 11 02 00 00 02");
    }
    EXPECT_TRUE(make_fault(bus, "quit").quit);
}

}  // namespace
}  // namespace ampdesk::demo
