// The bus on a scripted line and a clock that the test moves: opening it, and what of an exchange is
// no fault of the line.
#include <gtest/gtest.h>

#include "tests/support/bus_rig.h"
#include "tests/support/hex_bytes.h"

namespace ampdesk {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

const std::string k_reply = hex_bytes("06 01 04 11 61 62 63 AB BA");
const std::string k_nak = hex_bytes("15 01 02 11 03 E1 AE");
const std::string k_text_reply = "RDBAND=1\x03\r";
const std::string k_ask_band = hex_bytes("02 3E 30 31 20 52 44 42 41 4E 44 03 30 32 0D");
const BusCommand k_status{.address = 1, .command = "\x11"};
const BusCommand k_text{.address = 1, .command = "RDBAND", .form = CommandForm::text};
const BusCommand k_unawaited{.address = 1, .command = "RDBAND", .form = CommandForm::text_only};

class Exchange : public testing::Test, protected BusRig {
  protected:
    Exchange() { settle(); }

    // One good exchange: after it, nothing old is waited for.
    void settle() {
        clock.advance(5000ms);
        port.answer(k_reply);
        EXPECT_EQ(status(), 9);
        port.written.clear();
        reply = "left over";
    }

    std::int16_t status() { return bus.bus_command(1, "\x11", reply); }
    int text() { return bus.text_command(1, "RDBAND", reply); }

    // How many milliseconds the call took on the steady clock.
    int took(const std::function<void()>& call) {
        const Instant start = clock.now();
        call();
        return static_cast<int>((clock.now() - start) / 1ms);
    }

    std::string reply = "left over";
};

// Whoever asks gets bytes, at once and for ever; only reading takes time, a millisecond.
struct NoisyPort : ScriptedPort {
    explicit NoisyPort(ManualClock& clock) : ScriptedPort(clock), time(clock) {}
    std::string read_waiting() override {
        if (++reads > 20'000)
            throw std::runtime_error("the exchange never ends");
        time.advance(1ms);
        return "\x06\x15~\r";
    }
    WaitResult wait_readable(Instant) override { return WaitResult::data; }
    ManualClock& time;
    int reads = 0;
};

// A clock that is looked at only when nothing comes in: noise without end then holds the program for good.
TEST_F(Exchange, EndsAtItsLimitThoughBytesNeverEnd) {
    NoisyPort noisy(clock);
    BusLink link(noisy, clock);
    link.open_bus_port("COM2:", 9600, 0, 8, 1);
    for (int i = 0; i < 2; ++i) EXPECT_NEAR(took([&] { link.bus_command(1, "\x11", reply); }), 300 + 1000, 2);
    EXPECT_NEAR(took([&] { link.text_command(1, "RDBAND", reply); }), 2 * (300 + 394), 4);
    EXPECT_EQ(noisy.written.size(), 4U);
}

// Noise beside an exchange that stays on the line, and wakes who watches it again and again; a traffic view
// that hides a late answer, or takes it for one of the next amplifier spoken to.
TEST_F(Exchange, WhatComesUnaskedIsToldAndThrownAway) {
    port.arrive("noise");
    EXPECT_FALSE(bus.poll());
    EXPECT_EQ(port.read_waiting(), "");
    std::string seen;
    bus.on_traffic = [&](const BusTraffic& traffic) {
        seen += (traffic.sent ? ">" : "<") + std::to_string(traffic.address);
    };
    port.answer({{1030ms, k_reply}});
    status();
    bus.bus_command(2, "\x11", reply);
    EXPECT_EQ(seen, ">1<1>2");
}

// An amplifier that is taken for one that sends its address, or for none, on too little; that stays
// unheard when another one has taken its place; another line's that is judged by what was learnt here.
TEST_F(Exchange, LearnsWhoSendsItsAddress) {
    const std::string eight = "oooooooo";
    const struct {
        // o its reply, n its NAK, x a reply with another byte, b both, w one to another request, s silence,
        // t a text, p the same line opened anew, q another one
        std::string comes;
        std::string taken;  // of the last ones: "." no reply, else which one
        ReplyAddress rule = ReplyAddress::learned;
    } table[] = {
        {"ooooooox", "ox"},
        {"oooooooxooooooox", "ox"},
        {eight + "x", "o."},
        {"nnnntoooox", "o."},
        {eight + "xb", ".o"},
        {eight + "xxxxxx", ".....x"},
        {eight + "xxxxsxxxxxx", "..........x"},
        {eight + "xxxxwxx", "......."},
        {eight + "xxxxoxxxxox", "....o....o."},
        {eight + "xxxxtxx", "....t.x"},
        {eight + "px", "p."},
        {eight + "qx", "qx"},
        {eight + "x", "ox", ReplyAddress::ignored},
        {"x", ".", ReplyAddress::checked},
    };
    const std::string other = hex_bytes("06 07 04 11 78 62 63 7A 1B");
    const std::map<char, ScriptedPort::Answer> answers{
        {'o', {{20ms, k_reply}}},
        {'n', {{20ms, k_nak}}},
        {'x', {{10ms, other}}},
        {'b', {{10ms, other}, {20ms, k_reply}}},
        {'w', {{10ms, hex_bytes("06 07 04 12 78 62 63 7A 5F")}}},
        {'s', {}},
        {'t', {{0ms, k_text_reply}}}};
    for (const auto& row : table) {
        SCOPED_TRACE(row.comes + " gives " + row.taken);
        BusLink link{port, clock, {.crc = {}, .reply_address = row.rule, .ports = {}}};
        link.open_bus_port("COM2:", 9600, 0, 8, 1);
        std::string taken;
        for (const char c : row.comes) {
            taken += c;
            if (c == 'p' || c == 'q') {
                link.open_bus_port(c == 'p' ? "COM2:" : "COM3:", 9600, 0, 8, 1);
                continue;
            }
            port.answer(answers.at(c));
            const std::string bytes = link.carry_out(c == 't' ? k_text : k_status).bytes;
            if (c != 't')
                taken.back() = bytes.empty() ? '.' : bytes == other ? 'x' : 'o';
        }
        EXPECT_TRUE(taken.ends_with(row.taken)) << taken;
    }
}

// A spoilt reply that is taken for silence, also when its last byte could begin another one; silence that
// is taken for a line that carried nothing out; a command that no length byte holds, or a lost adapter, that
// throws or is waited for.
TEST_F(Exchange, TellsWhyThereIsNoReply) {
    using enum BusFailure;
    const std::pair<const char*, BusFailure> replies[] = {
        {"06 01 04 11 61 62 63 AB BB", bad_crc}, {"06 01 04 11 61 62 63 AB BA", none},
        {"06 01 04 11 61 62 63 AB 06", bad_crc}, {"06 01 04 11 61 62 63 AB", silence},
        {"06 01 04 12 61 62 63 AB BB", silence}, {"", silence}};
    for (const auto& [bytes, failure] : replies) {
        port.answer(hex_bytes(bytes));
        const BusReply result = bus.carry_out(k_status);
        EXPECT_EQ(result.failure, failure) << bytes;
        EXPECT_EQ(result.bytes.empty(), failure != none) << bytes;
    }
    settle();
    EXPECT_EQ(bus.carry_out({.address = 1, .command = std::string(256, 'A')}).failure, not_sent);
    for (const BusCommand& command : {k_status, k_text}) {
        settle();
        bus.begin(command);
        bus.poll();
        port.unplugged = true;
        EXPECT_EQ(bus.poll().value().failure, silence) << "in its midst";
        EXPECT_EQ(took([&] { EXPECT_EQ(bus.carry_out(command).failure, not_sent); }), 0);
        port.unplugged = false;
    }
    EXPECT_EQ(port.written.size(), 1U);
}

// A wait that cannot be cut; the answer of a cut exchange taken for the next one's; a line that is spoken on
// during its rest; an exchange that outlives its line.
TEST_F(Exchange, IsBegunFedAndEnded) {
    const auto poll_at = [&](int after, const Instant& start) {
        clock.sleep_until(start + milliseconds(after));
        return bus.poll();
    };
    for (const BusCommand& command : {k_text, k_status}) {
        settle();
        port.answer({{130ms, k_nak}});
        Instant start = clock.now();
        bus.begin(command);
        bus.cut();  // not sent yet
        for (const int after : {0, 99}) EXPECT_FALSE(poll_at(after, start)) << after;
        bus.cut();
        EXPECT_EQ(poll_at(100, start).value().failure, BusFailure::cut);

        port.answer({{20ms, k_reply}});
        bus.begin({.address = 1, .command = "\x11", .rest = 200ms});
        for (const int after : {100, 149, 150, 199}) EXPECT_FALSE(poll_at(after, start)) << after;
        EXPECT_EQ(port.written.size(), 2U) << "50 ms after the late answer";
        for (const int after : {219, 418}) EXPECT_FALSE(poll_at(after, start)) << after;
        const BusReply after_rest = poll_at(419, start).value();
        EXPECT_EQ(after_rest.bytes, k_reply);
        EXPECT_EQ(after_rest.took, 20ms);
    }
    bus.begin(k_status);
    EXPECT_FALSE(bus.poll());
    bus.close_bus_port();
    EXPECT_EQ(bus.poll().value().failure, BusFailure::silence);
    bus.begin(k_status);
    EXPECT_EQ(bus.poll().value().failure, BusFailure::not_sent);

    // What still comes of the time before the line was opened.
    bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    settle();
    bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    port.arrive(k_reply, 20ms);
    EXPECT_EQ(took([&] { EXPECT_EQ(bus.bus_command(1, "\x11", reply, 300ms), 0); }), 20 + 50 + 300);
    // Somebody's exchange that another one breaks into.
    port.answer({{20ms, k_reply}});
    bus.begin(k_status);
    port.answer({{20ms, k_text_reply}});
    EXPECT_EQ(text(), 0);
    EXPECT_TRUE(bus.under_way());
    EXPECT_EQ(bus.poll().value().bytes, k_reply);
}

// A wait for a text that does not follow the baud rate; an answer that nobody waited for, taken for
// another's.
TEST_F(Exchange, TextsTakeTheirTime) {
    bus.open_bus_port("COM2:", 1200, 0, 8, 1);
    settle();
    port.answer({{1170ms, k_text_reply}});
    EXPECT_EQ(text(), 0);
    EXPECT_EQ(took([&] { EXPECT_EQ(bus.carry_out(k_unawaited).failure, BusFailure::none); }), 0);
    EXPECT_EQ(port.written, std::vector(2U, k_ask_band));

    // The answer that nobody waited for comes between a binary frame, which does not wait for it, and its
    // reply; and that to a second one when the next text is asked for.
    port.answer({{20ms, "RDBAND=7\x03\r"}, {30ms, k_reply}});
    EXPECT_EQ(took([&] { EXPECT_EQ(status(), 9); }), 30);
    port.answer({{20ms, "RDBAND=8\x03\r"}});
    bus.carry_out(k_unawaited);
    port.answer({{30ms, k_text_reply}});
    EXPECT_EQ(text(), 0);
    EXPECT_EQ(reply, k_text_reply);
}

// Wrong parity, device or stop bits handed to the line, and ports or rates that do not exist.
TEST_F(Exchange, OpensThePort) {
    const std::pair<LineSettings, std::vector<PortSettings>> table[] = {
        {{"COM1:", 19200, 1, 7, 2}, {{"/dev/ttyS0", 19200, 'o', 7, 2}}},
        {{"COM4:", 110, 2, 5, 1}, {{"/dev/ttyS3", 110, 'e', 5, 1}}},
        {{"COM2:", 9600, 7, 8, 1}, {{"/dev/ttyS1", 9600, 'n', 8, 1}}},
        {{"COM5:", 9600, 0, 8, 1}, {}},
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
    bus.open_bus_port("COM2:", 9600, 0, 8, 1);
    EXPECT_EQ(bus.give_back(std::nullopt), "");
    EXPECT_FALSE(bus.bus_link_on());
    BusRig other({.crc = {.initial = 0xFFFF}, .reply_address = {}, .ports = {}});
    other.bus.carry_out(k_status);
    EXPECT_EQ(to_hex(other.port.written.back()), "01 01 01 11 91 84");
    port.open_result = {PortError::in_use, "COM2: is in use"};
    EXPECT_EQ(bus.open_bus_port("COM2:", 9600, 0, 8, 1), 1);
    EXPECT_EQ(bus.open_failure(), "COM2: is in use");
    EXPECT_EQ(bus.settings(), std::nullopt);

    const std::pair<const char*, int> names[] = {{"COM4", 4}, {"com1:", 1}, {"COM5:", 0},
                                                 {"COM0", 0}, {"COM", 0},   {"cog1", 0}};
    for (const auto& [name, com] : names) EXPECT_EQ(com_number(name), com) << name;
}

}  // namespace
}  // namespace ampdesk
