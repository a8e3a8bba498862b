// The simulated bus and the port on it: which bytes are answered, with which bytes, and when.
#include "demo/sim_bus.h"

#include <gtest/gtest.h>

#include <array>

#include "demo/faults.h"
#include "demo/sim_port.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"
#include "tests/support/manual_line_wait.h"

namespace ampdesk::demo {
namespace {

using namespace std::chrono_literals;

const std::string k_ask_1 = "01 01 01 11 91 A0";                       // status of address 1
const std::string k_status_1 = "06 01 07 11 00 11 02 00 00 02 D1 12";  // its answer

struct BusTest : testing::Test {
    BusTest() {
        bus.add({.address = 1, .noise = 0});
        bus.add({.address = 12, .serial = 1002, .noise = 0});
    }
    std::string answer(const std::string& bytes) {
        bus.receive(bytes);
        return to_hex(bus.take_due());
    }
    ManualClock clock;
    SimBus bus{clock};
};

// A frame that is answered though it must not be, is not answered though it must, or is answered
// with other bytes.
TEST_F(BusTest, AnswersWholeSoundFramesForItsAmplifiers) {
    const std::string& status = k_status_1;
    const std::string band = "02 52 44 42 41 4E 44 3D 30 03 30 32 0D";  // STX RDBAND=0 ETX 02 CR
    const struct {
        const char* what;
        std::string sent;
        std::string answer;
    } cases[] = {
        {"a request", "01 01 01 11 91 A0", status},
        {"a setting that is refused", "01 01 02 10 16 11 F2", "15 01 03 10 16 04 31 27"},
        {"nobody's address", "01 02 01 11 61 A0", ""},
        {"a bad CRC", "01 01 01 11 91 A1", ""},
        {"a lost byte", "01 01 11 91 A0", ""},
        {"noise in front", "FF 06 00 01 01 01 01 11 91 A0", status},
        {"a frame that broke off", "01 01 20 41 42 01 01 01 11 91 A0", status},
        {"a text frame that broke off", "02 3E 30 31 20 52 44 01 01 01 11 91 A0", status},
        {"two requests", "01 01 01 11 91 A0 01 01 01 11 91 A0", status + " " + status},
        {"a text request", "02 3E 30 31 20 52 44 42 41 4E 44 03 30 32 0D", band},
        {"a text request to 12", "02 3E 31 32 20 52 44 42 41 4E 44 03 30 32 0D", band},
        {"a text request to nobody", "02 3E 30 33 20 52 44 42 41 4E 44 03 30 32 0D", ""},
        {"a text request with a bad checksum", "02 3E 30 31 20 52 44 42 41 4E 44 03 30 33 0D", ""},
        {"a text request without its CR", "02 3E 30 31 20 52 44 42 41 4E 44 03 30 32 0A", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        for (const bool bytewise : {false, true}) {
            SimBus one(clock);
            one.add({.address = 1, .noise = 0});
            one.add({.address = 12, .noise = 0});
            const std::string bytes = hex_bytes(c.sent);
            const std::size_t piece = bytewise ? 1 : bytes.size();
            for (std::size_t at = 0; at < bytes.size(); at += piece) one.receive(bytes.substr(at, piece));
            EXPECT_EQ(to_hex(one.take_due()), c.answer);
        }
    }
}

// A pending false start that keeps the line deaf for good, or noise that ends the simulator.
TEST_F(BusTest, HearsRequestsAfterAnyAmountOfNoise) {
    std::string noise;
    for (int i = 0; i < 5000; ++i) noise += static_cast<char>(i * 7 % 11 < 2 ? i % 3 : i * 31);
    EXPECT_EQ(answer(noise), "");
    EXPECT_EQ(answer(hex_bytes(k_ask_1)), k_status_1);
    // A text frame with a sum that no checksum holds.
    EXPECT_EQ(answer("\x02>01 " + std::string(200, '\xFF') + "\x03" + "FF\r"), "");
    EXPECT_EQ(answer(hex_bytes(k_ask_1)), k_status_1);
}

// Bytes that come faster than the line carries them, replies that run into one another, and a reply
// that begins before the command can have been heard.
TEST_F(BusTest, PacesTheBytesOfReplies) {
    SimBus slow(clock, 1ms);
    slow.add({.address = 1, .noise = 0});
    slow.receive(hex_bytes(k_ask_1) + hex_bytes(k_ask_1));
    EXPECT_EQ(slow.take_due(), "");
    EXPECT_EQ(*slow.next_due() - clock.now(), 1ms);
    clock.advance(3ms);
    EXPECT_EQ(to_hex(slow.take_due()), "06 01 07");
    clock.advance(11ms);
    EXPECT_EQ(to_hex(slow.take_due()), "11 00 11 02 00 00 02 D1 12 06 01");
    clock.advance(9ms);
    EXPECT_EQ(slow.take_due().size(), 9U);
    clock.advance(1ms);
    EXPECT_EQ(slow.take_due().size(), 1U);
    EXPECT_FALSE(slow.next_due());
    slow.pace_commands(5ms);
    slow.receive(hex_bytes(k_ask_1));
    EXPECT_EQ(*slow.next_due() - clock.now(), 6ms + 5ms + 1ms);
}

struct PortTest : BusTest {
    PortTest() { port.open({}); }
    // Sends the status request and waits that long; the wait's outcome, how long it took, the bytes.
    std::string exchange(std::chrono::milliseconds limit) {
        const Instant start = clock.now();
        port.write(hex_bytes(k_ask_1), start + 1s);
        const WaitResult result = port.wait_readable(start + limit);
        const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(clock.now() - start);
        return (result == WaitResult::data ? "data " : "nothing ") + std::to_string(took.count()) + " " +
               to_hex(port.read_waiting());
    }
    SimPort port{bus, clock};
};

// A wait that ends too early or too late, a time in another unit, a fault that outlives its replies.
TEST_F(PortTest, FaultsDelayAndSilenceReplies) {
    const std::string& status = k_status_1;
    const auto only = [&](const char* fault) {
        make_fault(bus, "clear");
        EXPECT_EQ(make_fault(bus, fault).text, "ok");
    };
    EXPECT_EQ(exchange(1000ms), "data 0 " + status);
    only("delay 700");
    EXPECT_EQ(exchange(1000ms), "data 700 " + status);
    EXPECT_EQ(exchange(699ms), "nothing 699 ");
    EXPECT_EQ(port.wait_readable(clock.now() + 10ms), WaitResult::data);  // the same reply, late
    EXPECT_EQ(to_hex(port.read_waiting()), status);
    only("late 1500");
    EXPECT_EQ(exchange(1000ms), "nothing 1000 ");
    EXPECT_EQ(exchange(100ms), "data 0 " + status);  // only that one was late
    EXPECT_EQ(port.wait_readable(clock.now() + 1s), WaitResult::data);
    EXPECT_EQ(to_hex(port.read_waiting()), status);
    only("drip 20");
    EXPECT_EQ(exchange(1000ms), "data 20 06");
    clock.advance(219ms);
    EXPECT_EQ(port.read_waiting().size(), 10U);
    clock.advance(1ms);
    EXPECT_EQ(port.read_waiting().size(), 1U);
    only("silent on");
    EXPECT_EQ(exchange(1000ms), "nothing 1000 ");
}

// A wait over lines that sleeps past the answer, ends before it, or is held up by one that is closed.
TEST_F(PortTest, AnswersEndAWaitOverSeveralLines) {
    ManualLineWait line_wait(clock);
    SimBus other_bus(clock);
    SimPort closed(other_bus, clock);
    const std::array<SerialPort*, 2> ports{&closed, &port};
    const auto waited = [&] {
        const Instant start = clock.now();
        line_wait.wait(ports, start + 1s);
        return clock.now() - start;
    };
    EXPECT_EQ(waited(), 1s);
    make_fault(bus, "delay 700");
    port.write(hex_bytes(k_ask_1), clock.now());
    line_wait.wake();
    EXPECT_EQ(waited(), 0s);
    EXPECT_EQ(waited(), 700ms);
    EXPECT_EQ(waited(), 0s);  // nobody has read it yet
    EXPECT_EQ(to_hex(port.read_waiting()), k_status_1);
    EXPECT_EQ(waited(), 1s);
}

// A closed port that still speaks, or an answer from before that greets the next opener.
TEST_F(PortTest, ClosingForgetsTheAnswers) {
    EXPECT_EQ(port.write(hex_bytes(k_ask_1), clock.now()), PortError::none);
    port.close();
    EXPECT_EQ(port.write(hex_bytes(k_ask_1), clock.now()), PortError::failed);
    EXPECT_EQ(port.wait_readable(clock.now() + 1s), WaitResult::lost);
    port.open({});
    EXPECT_EQ(port.read_waiting(), "");
}

}  // namespace
}  // namespace ampdesk::demo
