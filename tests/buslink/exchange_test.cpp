// Exchanges on a scripted line and a clock that the test moves: what goes out, what counts as an
// answer, and when a wait ends.
#include <gtest/gtest.h>

#include "buslink/bus_link.h"
#include "buslink/wire/text_frame.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/recording_operator.h"
#include "tests/support/scripted_port.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

const std::string k_request = hex_bytes("01 01 01 11 91 A0");
const std::string k_reply = hex_bytes("06 01 04 11 61 62 63 AB BA");
const std::string k_text_reply = "RDBAND=1\x03\r";

class Exchange : public testing::Test {
  protected:
    Exchange() {
        bus.open_bus_port("COM2:", 9600, 0, 8, 1);
        settle();
    }

    // One good exchange: after it, nothing old is waited for.
    void settle() {
        clock.advance(milliseconds(5000));
        port.answer(k_reply);
        EXPECT_EQ(status(), 9);
        port.written.clear();
        reply = "left over";
    }

    std::int16_t status() { return bus.bus_command(1, "\x11", reply); }

    // How long the call took on the steady clock.
    template <class Call>
    long long took(Call call) {
        const Instant start = clock.now();
        call();
        return std::chrono::duration_cast<milliseconds>(clock.now() - start).count();
    }

    ManualClock clock;
    ScriptedPort port{clock};
    RecordingOperator person;
    BusLink bus{port, clock, person};
    std::string reply = "left over";
};

// A wait that is cut early, stretched, or restarted by every byte.
TEST_F(Exchange, WaitsOneSecondFromTheSending) {
    const struct {
        const char* fault;
        ScriptedPort::Answer arrivals;
        int result;
        long long least, most;  // milliseconds
    } table[] = {
        {"at once", {{milliseconds(0), k_reply}}, 9, 0, 0},
        {"at the last instant", {{milliseconds(1000), k_reply}}, 9, 1000, 1000},
        {"a millisecond late", {{milliseconds(1001), k_reply}}, 0, 1000, 1000},
        {"silence", {}, 0, 1000, 1000},
        {"a drip inside the limit",
         {{milliseconds(300), k_reply.substr(0, 3)},
          {milliseconds(600), k_reply.substr(3, 3)},
          {milliseconds(990), k_reply.substr(6)}},
         9,
         990,
         990},
        {"a drip past the limit",
         {{milliseconds(600), k_reply.substr(0, 8)}, {milliseconds(1200), k_reply.substr(8)}},
         0,
         1000,
         1000},
        {"a bad CRC ends it at once", {{milliseconds(20), k_reply.substr(0, 8) + "?"}}, 0, 20, 20},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.fault);
        port.answer(row.arrivals);
        int result = -1;
        const long long time = took([&] { result = status(); });
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(to_hex(reply), row.result > 0 ? to_hex(k_reply) : "");
        EXPECT_GE(time, row.least);
        EXPECT_LE(time, row.most);
        EXPECT_EQ(port.written, std::vector{k_request});
        EXPECT_EQ(bus.last_bus_frame, k_request);
        settle();
    }
}

// An amplifier's refusal reported as silence; the callers word it from the code in the reply.
TEST_F(Exchange, HandsBackARefusal) {
    port.answer(hex_bytes("15 01 02 11 04 A0 6C"));
    EXPECT_EQ(status(), 7);
    EXPECT_EQ(reply[0], '\x15');
}

// Midnight or a clock that is put right must neither end a wait nor stretch it.
TEST_F(Exchange, DoesNotLookAtTheWallClock) {
    for (const milliseconds wall : {milliseconds(86'399'900), milliseconds(-3'600'000), milliseconds(0)}) {
        clock.set_wall(wall);
        port.answer({{milliseconds(900), k_reply}});
        EXPECT_EQ(status(), 9);
        port.silence();
        EXPECT_EQ(took([&] { status(); }), 1000);
        settle();
    }
}

// Noise that never stops would hold the program up for ever, or past the limit.
TEST_F(Exchange, EndsAtTheLimitUnderEndlessNoise) {
    ScriptedPort::Answer noise;
    for (int i = 1; i < 1400; ++i) noise.push_back({milliseconds(i), "\x06\x15~"});
    port.answer(noise);
    EXPECT_EQ(took([&] { EXPECT_EQ(status(), 0); }), 1000);
    port.answer(k_reply);
    const long long next = took([&] { status(); });
    EXPECT_LE(next, 1300);  // settles for 300 ms at most
}

// The late answer to one request taken for the answer to the next.
TEST_F(Exchange, ThrowsALateAnswerAway) {
    port.answer({{milliseconds(1030), hex_bytes("06 01 04 11 78 79 7A B1 47")}});
    EXPECT_EQ(status(), 0);
    port.answer({{milliseconds(5), k_reply}});
    EXPECT_EQ(took([&] { EXPECT_EQ(status(), 9); }), 30 + 50 + 5);  // the line is quiet for 50 ms first
    EXPECT_EQ(to_hex(reply), to_hex(k_reply));
    port.answer(k_reply);
    EXPECT_EQ(took([&] { status(); }), 0);  // after an answer nothing is waited for
}

// A traffic view that hides the late answer, or takes it for one of the next amplifier spoken to.
TEST_F(Exchange, TellsAWatcherOfALateAnswer) {
    std::vector<std::string> seen;
    bus.on_traffic = [&](const BusTraffic& traffic) {
        seen.push_back((traffic.sent ? "to " : "from ") + std::to_string(traffic.address));
    };
    port.answer({{milliseconds(1030), k_reply}});
    status();
    bus.bus_command(2, "\x11", reply);
    EXPECT_EQ(seen, (std::vector<std::string>{"to 1", "from 1", "to 2"}));
}

// A command that no length byte holds, and an adapter that is gone, are failures like any other.
TEST_F(Exchange, FailsWithoutAnException) {
    EXPECT_EQ(bus.bus_command(1, std::string(256, 'A'), reply), 0);
    EXPECT_TRUE(port.written.empty());
    port.unplugged = true;
    EXPECT_EQ(took([&] { EXPECT_EQ(status(), 0); }), 0);
    EXPECT_EQ(bus.text_command(1, "RDBAND", reply), 1);
    EXPECT_EQ(reply, "");
}

// A text command that is not sent again, is sent three times, or whose wait has the wrong length.
TEST_F(Exchange, SendsATextOnceMore) {
    const std::string frame = build_text_frame(1, "RDBAND");
    long long time = took([&] { EXPECT_EQ(bus.text_command(1, "RDBAND", reply), 1); });
    EXPECT_EQ(reply, "");
    EXPECT_EQ(port.written, (std::vector<std::string>{frame, frame}));
    EXPECT_NEAR(static_cast<double>(time), 2 * 394 + 50, 2);  // 9600 baud, and 50 ms of quiet between

    settle();
    port.silence();
    port.answer({{milliseconds(390), "RDBAND=1\x03\r trailing"}});
    EXPECT_EQ(bus.text_command(1, "RDBAND", reply), 0);
    EXPECT_EQ(reply, k_text_reply);
    EXPECT_EQ(port.written.size(), 2U);

    bus.open_bus_port("COM2:", 1200, 0, 8, 1);
    settle();
    port.answer({{milliseconds(1170), k_text_reply}});
    EXPECT_EQ(bus.text_command(1, "RDBAND", reply), 0);
    EXPECT_EQ(port.written.size(), 1U);

    time = took([&] { EXPECT_EQ(bus.text_send(1, "RDBAND"), 0); });
    EXPECT_EQ(time, 0);
    EXPECT_EQ(port.written.back(), frame);
}

// Wrong parity, device or stop bits handed to the line, and ports or rates that do not exist.
TEST_F(Exchange, OpensThePort) {
    const struct {
        LineSettings settings;
        int result;
        PortSettings opened{};
    } table[] = {
        {{"COM1:", 19200, 1, 7, 2},
         0,
         {.device = "/dev/ttyS0", .baud = 19200, .parity = 'o', .data_bits = 7, .stop_bits = 2}},
        {{"COM4:", 110, 2, 5, 1}, 0, {.device = "/dev/ttyS3", .baud = 110, .parity = 'e', .data_bits = 5}},
        {{"COM2:", 9600, 7, 8, 1}, 0, {.device = "/dev/ttyS1"}},
        {{"COM5:", 9600, 0, 8, 1}, 1},
        {{"", 9600, 0, 8, 1}, 1},
        {{"COM1:", 14400, 0, 8, 1}, 1},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.settings.port_name + " " + settings_string(row.settings));
        port.opened.clear();
        EXPECT_EQ(bus.open_bus_port(row.settings), row.result);
        EXPECT_EQ(bus.bus_link_on(), row.result == 0);
        EXPECT_EQ(bus.open_failure().empty(), row.result == 0);
        EXPECT_EQ(port.opened, row.result == 0 ? std::vector{row.opened} : std::vector<PortSettings>());
    }
    port.open_result = {PortError::in_use, "COM2: is in use"};
    EXPECT_EQ(bus.open_bus_port("COM2:", 9600, 0, 8, 1), 1);
    EXPECT_EQ(bus.open_failure(), "COM2: is in use");
}

// A probe that counts a reply without data as an answer, or leaves the busy pointer behind.
TEST_F(Exchange, Probes) {
    bus.bus_address = 1;
    port.answer(k_reply);
    EXPECT_EQ(bus.probe_link(), 0);
    EXPECT_EQ(bus.probe_marker, "\x11");
    port.answer(hex_bytes("06 01 00 E1 91"));
    EXPECT_EQ(bus.probe_link(), 1);
    EXPECT_EQ(bus.probe_failed, 1);
    EXPECT_EQ(bus.probe_marker, "");
    EXPECT_EQ(person.pointer, (std::vector<bool>{true, false, true, false}));
}

TEST(LineSettingsText, NamesAndCodes) {
    EXPECT_EQ(settings_string({"COM3:", 9600, 0, 8, 1}), "9600,n,8,1");
    EXPECT_EQ(settings_string({"COM3:", 19200, 2, 7, 2}), "19200,e,7,2");
    for (const auto& [name, com] : {std::pair{"COM3:", 3},
                                    {"COM4", 4},
                                    {"com1:", 1},
                                    {"COM5:", 0},
                                    {"COM", 0},
                                    {"", 0},
                                    {"COM12", 0},
                                    {"tty1", 0}})
        EXPECT_EQ(com_number(name), com) << name;
    EXPECT_EQ(port_number("COM12"), 12);
}

}  // namespace
}  // namespace ampdesk
