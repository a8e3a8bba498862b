// The simulated bus and the port on it: which bytes are answered, with which bytes, and when.
#include "demo/sim_bus.h"

#include <gtest/gtest.h>

#include "demo/faults.h"
#include "demo/sim_port.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"

namespace ampdesk::demo {
namespace {

using namespace std::chrono_literals;

const std::string k_ask_1 = hex_bytes("01 01 01 11 91 A0");           // status of address 1
const std::string k_status = "06 01 07 11 00 11 02 00 00 02 D1 12";   // its answer
const std::string k_band = "02 52 44 42 41 4E 44 3D 30 03 30 32 0D";  // STX RDBAND=0 ETX 02 CR

struct BusTest : testing::Test {
    BusTest() { fill(bus); }
    static void fill(SimBus& bus) {
        bus.add({.address = 1, .noise = 0});
        bus.add({.address = 12, .signed_words = true, .hv_on = true, .rf_on = true, .noise = 0});
    }
    ManualClock clock;
    SimBus bus{clock};
};

// A frame that is answered though it must not be, is not answered though it must, or is answered with other
// bytes: a mistake in them that the station makes, too, would show nowhere else.
TEST_F(BusTest, AnswersWholeSoundFramesForItsAmplifiers) {
    const std::pair<const char*, std::string> cases[] = {
        {"01 01 01 11 91 A0", k_status},
        {"01 0C 01 12 40 62",
         "06 0C 1F 12 30 02 68 01 38 DC F0 00 9C 18 24 FA 00 00 4C 00 24 00 "
         "D2 04 DB 03 00 00 05 00 28 00 26 EE E8 C7"},
        {"01 01 03 A0 15 00 32 E7", "06 01 0F A0 15 00 32 00 5F 00 F4 01 44 02 FA 00 C2 01 02 3D"},
        {"01 01 03 A0 18 00 36 77", "06 01 11 A0 18 00 30 2C 20 4E 6F 20 53 68 75 74 64 6F 77 6E 18 7E"},
        {"01 01 03 A0 1A 00 37 17", "06 01 11 A0 1A 00 31 32 3A 30 30 20 50 6F 77 65 72 20 6F 6E 31 D4"},
        {"01 01 02 10 12 10 31", "06 01 02 10 12 A5 F1"},
        {"01 01 02 10 16 11 F2", "15 01 03 10 16 04 31 27"},
        {"01 01 07 53 42 41 4E 44 20 32 82 B3", "06 01 07 53 42 41 4E 44 20 32 33 69"},
        {"01 01 04 20 20 0C 00 EF DB",
         "06 01 16 20 20 0C 00 4A 01 A3 53 8B A4 BE 96 16 A3 51 9C 0A 86 60 90 04 58 D0 31"},
        {"01 01 04 20 20 40 00 DB 1B", "15 01 05 20 20 40 00 20 5B AD"},  // behind the last block
        {"01 02 01 11 61 A0", ""},                                        // nobody's address
        {"01 01 01 11 91 A1", ""},                                        // a bad CRC
        {"01 01 11 91 A0", ""},                                           // a lost byte
        // Behind noise, frames that broke off, another request.
        {"FF 06 00 01 01 01 01 11 91 A0", k_status},
        {"01 01 20 41 42 01 01 01 11 91 A0", k_status},
        {"02 3E 30 31 20 52 44 01 01 01 11 91 A0", k_status},
        {"01 01 01 11 91 A0 01 01 01 11 91 A0", k_status + " " + k_status},
        // Texts: to 1, to 12, to nobody, with a bad checksum, without its CR.
        {"02 3E 30 31 20 52 44 42 41 4E 44 03 30 32 0D", k_band},
        {"02 3E 31 32 20 52 44 42 41 4E 44 03 30 32 0D", k_band},
        {"02 3E 30 33 20 52 44 42 41 4E 44 03 30 32 0D", ""},
        {"02 3E 30 31 20 52 44 42 41 4E 44 03 30 33 0D", ""},
        {"02 3E 30 31 20 52 44 42 41 4E 44 03 30 32 0A", ""},
        {"02 3E 30 31 20 52 44 53 2F 4E 03 30 32 0D", "02 52 44 53 2F 4E 3D 31 30 30 31 03 30 32 0D"},
        {"02 3E 30 31 20 2A 49 44 4E 3F 03 30 32 0D",
         "02 4A 45 58 2A 43 2F 4B 55 2F 58 20 34 30 30 57 20 54 57 54 41 03 30 35 0D"},
    };
    for (const auto& [sent, expected] : cases) {
        for (const bool bytewise : {false, true}) {
            SimBus one(clock);
            fill(one);
            const std::string bytes = hex_bytes(sent);
            const std::size_t piece = bytewise ? 1 : bytes.size();
            for (std::size_t at = 0; at < bytes.size(); at += piece) one.receive(bytes.substr(at, piece));
            EXPECT_EQ(to_hex(one.take_due()), expected) << sent;
        }
    }
    // A pending false start that keeps the line deaf for good, or noise that ends the simulator.
    std::string noise;
    for (int i = 0; i < 5000; ++i) noise += static_cast<char>(i * 7 % 11 < 2 ? i % 3 : i * 31);
    // The other is a text frame with a sum that no checksum holds.
    for (const std::string& bytes : {noise, "\x02>01 " + std::string(200, '\xFF') + "\x03" + "FF\r"}) {
        bus.receive(bytes);
        EXPECT_EQ(bus.take_due(), "");
        bus.receive(k_ask_1);
        EXPECT_EQ(to_hex(bus.take_due()), k_status);
    }
}

// Bytes that come faster than the line carries them, replies that run into one another, and a reply
// that begins before the command can have been heard.
TEST_F(BusTest, PacesTheBytesOfReplies) {
    SimBus slow(clock, 1ms);
    fill(slow);
    slow.receive(k_ask_1 + k_ask_1);
    EXPECT_EQ(slow.take_due(), "");
    EXPECT_EQ(*slow.next_due() - clock.now(), 1ms);
    clock.advance(3ms);
    EXPECT_EQ(to_hex(slow.take_due()), "06 01 07");
    clock.advance(20ms);
    EXPECT_EQ(to_hex(slow.take_due()), k_status.substr(9) + " " + k_status.substr(0, 32));
    clock.advance(1ms);
    EXPECT_EQ(to_hex(slow.take_due()), "12");
    EXPECT_FALSE(slow.next_due());
    slow.pace_commands(5ms);
    slow.receive(k_ask_1);
    EXPECT_EQ(*slow.next_due() - clock.now(), 6ms + 5ms + 1ms);
}

struct PortTest : BusTest {
    PortTest() { port.open({}); }
    // Sends the status request and waits that long; the wait's outcome, how long it took, the bytes.
    std::string exchange(std::chrono::milliseconds limit) {
        port.write(k_ask_1, clock.now() + 1s);
        return waited(limit);
    }
    std::string waited(Duration limit) {
        const Instant start = clock.now();
        const WaitResult result = port.wait_readable(start + limit);
        return (result == WaitResult::data ? "data " : "nothing ") +
               std::to_string((clock.now() - start) / 1ms) + " " + to_hex(port.read_waiting());
    }
    SimPort port{bus, clock};
};

// A wait that ends too early or too late, a time in another unit, a fault that outlives its replies.
TEST_F(PortTest, FaultsDelayAndSilenceReplies) {
    const auto only = [&](const char* fault) {
        make_fault(bus, "clear");
        EXPECT_EQ(make_fault(bus, fault).text, "ok");
    };
    EXPECT_EQ(exchange(1000ms), "data 0 " + k_status);
    only("delay 700");
    EXPECT_EQ(exchange(1000ms), "data 700 " + k_status);
    EXPECT_EQ(exchange(699ms), "nothing 699 ");
    EXPECT_EQ(waited(10ms), "data 1 " + k_status);  // the same reply, late
    only("late 1500");
    EXPECT_EQ(exchange(1000ms), "nothing 1000 ");
    EXPECT_EQ(exchange(100ms), "data 0 " + k_status);  // only that one was late
    clock.advance(600ms);
    EXPECT_EQ(waited(-200ms), "data 0 " + k_status);
    only("drip 20");
    EXPECT_EQ(exchange(1000ms), "data 20 06");
    clock.advance(219ms);
    EXPECT_EQ(port.read_waiting().size(), 10U);
    EXPECT_EQ(waited(1ms), "data 1 12");
    only("silent on");
    EXPECT_EQ(exchange(1000ms), "nothing 1000 ");
}

// A closed port that still speaks, or an answer from before that greets the next opener.
TEST_F(PortTest, ClosingForgetsTheAnswers) {
    make_fault(bus, "delay 700");
    EXPECT_EQ(port.write(k_ask_1, clock.now()), PortError::none);
    EXPECT_EQ(port.input_due(), clock.now() + 700ms);
    clock.advance(1s);
    port.close();
    EXPECT_EQ(port.input_due(), std::nullopt);
    EXPECT_EQ(port.write(k_ask_1, clock.now()), PortError::failed);
    EXPECT_EQ(port.wait_readable(clock.now() + 1s), WaitResult::lost);
    port.open({});
    EXPECT_EQ(port.read_waiting(), "");
}

}  // namespace
}  // namespace ampdesk::demo
