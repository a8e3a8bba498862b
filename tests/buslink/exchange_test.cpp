// The bus on a scripted line and a clock that the test moves: opening it, and what of an exchange is
// no fault of the line.
#include <gtest/gtest.h>

#include "buslink/bus_link.h"
#include "buslink/wire/text_frame.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/scripted_port.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

const std::string k_reply = hex_bytes("06 01 04 11 61 62 63 AB BA");
const std::string k_nak = hex_bytes("15 01 02 11 03 E1 AE");

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
    BusLink bus{port, clock};
    std::string reply = "left over";
};

// Noise beside an exchange that stays on the line, and wakes who watches it again and again.
TEST_F(Exchange, WhatComesUnaskedIsThrownAway) {
    port.answer({{milliseconds(0), "noise"}});
    port.write("x", clock.now());
    clock.advance(milliseconds(1));
    EXPECT_FALSE(bus.poll());
    EXPECT_EQ(port.read_waiting(), "");
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

// An amplifier that is taken for one that sends its address, or for none, on too little; that stays
// unheard when another one has taken its place; another line's that is judged by what was learnt here.
TEST_F(Exchange, LearnsWhoSendsItsAddress) {
    const std::string eight = "oooooooo";
    const struct {
        // o its reply, n its NAK, x a reply with another byte, b both, s silence, t a text, p the same line
        // opened anew, q another one
        std::string comes;
        std::string taken;  // of the last ones: "." no reply, else which one
        ReplyAddress rule = ReplyAddress::learned;
    } table[] = {
        {"ooooooox", "ox"},
        {"ooooooo"
         "x"
         "ooooooo"
         "x",
         "ox"},
        {eight + "x", "o."},
        {"nnnntoooo"
         "x",
         "o."},
        {eight + "xb", ".o"},
        {eight + "xxxxxx", ".....x"},
        {eight + "xxxxsxxxxxx", "..........x"},
        {eight + "xxxxoxxxxox", "....o....o."},
        {eight + "xxxxtxx", "....t.x"},
        {eight + "px", "p."},
        {eight + "qx", "qx"},
        {eight + "x", "ox", ReplyAddress::ignored},
        {"x", ".", ReplyAddress::checked},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.comes + " gives " + row.taken);
        BusLink link{port, clock, {.crc = {}, .reply_address = row.rule, .ports = {}}};
        link.open_bus_port("COM2:", 9600, 0, 8, 1);
        const std::string other = hex_bytes("06 07 04 11 78 62 63 7A 1B");
        std::string taken;
        for (const char c : row.comes) {
            if (c == 'p' || c == 'q')
                link.open_bus_port(c == 'p' ? "COM2:" : "COM3:", 9600, 0, 8, 1);
            if (c == 't') {
                port.answer("RDBAND=1\x03\r");
                link.text_command(1, "RDBAND", reply);
            }
            if (c == 'p' || c == 'q' || c == 't') {
                taken += c;
                continue;
            }
            port.answer({{milliseconds(10), c == 'x' || c == 'b' ? other : ""},
                         {milliseconds(20), c == 'b' || c == 'o' ? k_reply
                                            : c == 'n'           ? k_nak
                                                                 : ""}});
            link.bus_command(1, "\x11", reply);
            taken += reply.empty() ? '.' : reply == other ? 'x' : 'o';
        }
        EXPECT_EQ(taken.substr(taken.size() - row.taken.size()), row.taken);
    }
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

// A spoilt reply that is taken for silence, also when its last byte could begin another one; silence that
// is taken for a line that carried nothing out.
TEST_F(Exchange, TellsWhyThereIsNoReply) {
    using enum BusFailure;
    const std::pair<const char*, BusFailure> replies[] = {
        {"06 01 04 11 61 62 63 AB BB", bad_crc}, {"06 01 04 11 61 62 63 AB BA", none},
        {"06 01 04 11 61 62 63 AB 06", bad_crc}, {"06 01 04 11 61 62 63 AB", silence},
        {"06 01 04 12 61 62 63 AB BB", silence}, {"", silence}};
    for (const auto& [bytes, failure] : replies) {
        port.answer(hex_bytes(bytes));
        const BusReply result = bus.carry_out({.address = 1, .command = "\x11"});
        EXPECT_EQ(result.failure, failure) << bytes;
        EXPECT_EQ(result.bytes.empty(), failure != none) << bytes;
    }
    EXPECT_EQ(bus.carry_out({.address = 1, .command = std::string(256, 'A')}).failure, not_sent);
    status();
    port.unplugged = true;
    EXPECT_EQ(bus.carry_out({.address = 1, .command = "\x11"}).failure, not_sent);
}

// A wait that cannot be cut; the answer of a cut exchange taken for the next one's; a line that is spoken on
// during its rest; an exchange that outlives its line.
TEST_F(Exchange, IsBegunFedAndEnded) {
    const auto poll_at = [&](milliseconds after, const Instant& start) {
        clock.sleep_until(start + after);
        return bus.poll();
    };
    port.answer({{milliseconds(130), k_nak}});
    Instant start = clock.now();
    bus.begin({.address = 1, .command = "\x11"});
    EXPECT_FALSE(poll_at(milliseconds(0), start));
    EXPECT_FALSE(poll_at(milliseconds(99), start));
    bus.cut();
    EXPECT_EQ(poll_at(milliseconds(100), start)->failure, BusFailure::cut);

    port.answer({{milliseconds(20), k_reply}});
    bus.begin({.address = 1, .command = "\x11", .rest = milliseconds(200)});
    bus.cut();  // not sent yet
    for (const int after : {100, 149, 150, 199}) EXPECT_FALSE(poll_at(milliseconds(after), start)) << after;
    EXPECT_EQ(port.written.size(), 2U) << "50 ms after the late answer";
    for (const int after : {219, 418}) EXPECT_FALSE(poll_at(milliseconds(after), start)) << after;
    const auto reply_after_rest = poll_at(milliseconds(419), start);
    ASSERT_TRUE(reply_after_rest);
    EXPECT_EQ(reply_after_rest->bytes, k_reply);

    start = clock.now();
    bus.begin({.address = 1, .command = "\x11"});
    EXPECT_FALSE(bus.poll());
    bus.close_bus_port();
    EXPECT_EQ(bus.poll()->failure, BusFailure::silence);
    bus.begin({.address = 1, .command = "\x11"});
    EXPECT_EQ(bus.poll()->failure, BusFailure::not_sent);
}

// A second sending that is not waited for, and a wait that does not follow the baud rate.
TEST_F(Exchange, SendsATextOnceMore) {
    port.silence();
    port.answer({{milliseconds(390), "RDBAND=1\x03\r"}});
    EXPECT_EQ(bus.text_command(1, "RDBAND", reply), 0);
    EXPECT_EQ(reply, "RDBAND=1\x03\r");
    EXPECT_EQ(port.written, std::vector(2U, build_text_frame(1, "RDBAND")));

    bus.open_bus_port("COM2:", 1200, 0, 8, 1);
    settle();
    port.answer({{milliseconds(1170), "RDBAND=1\x03\r"}});
    EXPECT_EQ(bus.text_command(1, "RDBAND", reply), 0);
    EXPECT_EQ(port.written.size(), 1U);
    const BusCommand unawaited{.address = 1, .command = "RDBAND", .form = CommandForm::text_only};
    EXPECT_EQ(took([&] { EXPECT_EQ(bus.carry_out(unawaited).failure, BusFailure::none); }), 0);
    EXPECT_EQ(port.written.size(), 2U);

    // The answer that nobody waited for comes between a binary frame, which does not wait for it, and its
    // reply; and that to a second one when the next text is asked for.
    port.answer({{milliseconds(20), "RDBAND=7\x03\r"}, {milliseconds(30), k_reply}});
    EXPECT_EQ(took([&] { EXPECT_EQ(status(), 9); }), 30);
    port.answer({{milliseconds(20), "RDBAND=8\x03\r"}});
    bus.carry_out(unawaited);
    port.answer({{milliseconds(30), "RDBAND=1\x03\r"}});
    EXPECT_EQ(bus.text_command(1, "RDBAND", reply), 0);
    EXPECT_EQ(reply, "RDBAND=1\x03\r");
}

// Wrong parity, device or stop bits handed to the line, and ports or rates that do not exist.
TEST_F(Exchange, OpensThePort) {
    const std::pair<LineSettings, std::vector<PortSettings>> table[] = {
        {{"COM1:", 19200, 1, 7, 2}, {{"/dev/ttyS0", 19200, 'o', 7, 2}}},
        {{"COM4:", 110, 2, 5, 1}, {{"/dev/ttyS3", 110, 'e', 5, 1}}},
        {{"COM2:", 9600, 7, 8, 1}, {{"/dev/ttyS1", 9600, 'n', 8, 1}}},
        {{"COM5:", 9600, 0, 8, 1}, {}},
        {{"", 9600, 0, 8, 1}, {}},
        {{"COM1:", 14400, 0, 8, 1}, {}},
    };
    for (const auto& [settings, opened] : table) {
        SCOPED_TRACE(settings.port_name + " " + settings_string(settings));
        port.opened.clear();
        EXPECT_EQ(bus.open_bus_port(settings), opened.empty() ? 1 : 0);
        EXPECT_EQ(bus.settings(), opened.empty() ? std::nullopt : std::optional(settings));
        EXPECT_EQ(bus.open_failure().empty(), !opened.empty());
        EXPECT_EQ(port.opened, opened);
    }
    port.open_result = {PortError::in_use, "COM2: is in use"};
    EXPECT_EQ(bus.open_bus_port("COM2:", 9600, 0, 8, 1), 1);
    EXPECT_EQ(bus.open_failure(), "COM2: is in use");
    EXPECT_EQ(bus.settings(), std::nullopt);
}

// A port of another number, or one that is taken for one of the four.
TEST(LineSettingsText, PortNames) {
    const std::pair<const char*, int> names[] = {{"COM4", 4}, {"com1:", 1}, {"COM5:", 0}, {"COM0", 0},
                                                 {"COM", 0},  {"COM12", 0}, {"cog1", 0}};
    for (const auto& [name, com] : names) EXPECT_EQ(com_number(name), com) << name;
    EXPECT_EQ(port_number("COM12"), 12);
}

}  // namespace
}  // namespace ampdesk
