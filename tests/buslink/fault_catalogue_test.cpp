// The faults of the line, one by one: what an exchange gives and how long it takes, and that the
// exchange after it, with whomever, gets the answer of its own and not what was left over.
#include <gtest/gtest.h>

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "tests/support/bus_rig.h"
#include "tests/support/hex_bytes.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using Answer = ScriptedPort::Answer;

// What there is to make a fault of.
struct Frames {
    const std::string& request;
    const std::string& reply;
    std::string data() const { return reply.substr(3, reply.size() - 5); }
    std::string without(std::size_t last) const { return reply.substr(0, reply.size() - last); }
};
using F = const Frames&;
using Bytes = std::function<std::string(F)>;
using Arrivals = std::function<Answer(F)>;

// What an exchange makes of it.
enum Result {
    own,      // the amplifier's reply
    as_sent,  // whatever came, as it came: it is sound, if not what was expected
    nothing,
    anothers,  // the reply of another amplifier, unless addresses are checked; then the own one
};

struct LineFault {
    std::string name;
    Arrivals line;  // what arrives, and when after the request
    Result result = nothing;
    int ends = 1000;  // milliseconds that the exchange takes
    // A whole reply comes in while the next request is under way. Where that one is put alike nothing
    // on the line tells whose answer it is.
    bool outlives = false;
};

constexpr int k_turn = 20;  // milliseconds between a request and what answers it

std::string with_byte(std::string bytes, std::size_t at, int value) {
    bytes[at] = static_cast<char>(value);
    return bytes;
}

// A sound frame in place of the reply.
std::string framed(F f, const std::string& data, char first = k_ack, int address = 0) {
    return build_reply_frame(Crc16{}, first, static_cast<std::uint8_t>(f.reply[1] + address), data);
}

// The same reply but for its last data byte.
std::string other_value(F f, int address = 0) {
    return framed(f, with_byte(f.data(), f.data().size() - 1, f.data().back() ^ 0x20), k_ack, address);
}

std::string reply_of(F f) {
    return f.reply;
}

// These bytes so long after the request, then more of them.
Arrivals at(int time, const Bytes& bytes, int later = 0, const Bytes& more = nullptr) {
    return [=](F f) {
        Answer answer{{milliseconds(time), bytes(f)}};
        if (more)
            answer.push_back({milliseconds(later), more(f)});
        return answer;
    };
}

// The reply byte by byte, the last one at that time.
Arrivals drips(int end) {
    return [end](F f) {
        Answer answer;
        const int steps = static_cast<int>(f.reply.size()) - 1;
        for (int time = end - steps * ((end - k_turn) / steps); const char c : f.reply) {
            answer.push_back({milliseconds(time), std::string(1, c)});
            time += (end - k_turn) / steps;
        }
        return answer;
    };
}

// These bytes every 2 ms until that time, and no reply.
Arrivals without_end(const std::string& bytes, int end) {
    return [=](F) {
        Answer answer;
        for (int time = 1; time < end; time += 2) answer.push_back({milliseconds(time), bytes});
        return answer;
    };
}

constexpr int k_text_both = 394 + 50 + 394;  // two sendings at 9600 baud, and the quiet between them

const LineFault k_faults[] = {
    {"Silence", without_end("", 0)},
    {"AtTheLastInstant", at(1000, reply_of), own},
    {"AMillisecondLate", at(1001, reply_of)},
    {"LateAfterTheNextRequest", at(1080, reply_of), nothing, 1000, true},
    {"AnotherAddressFirst", at(k_turn, [](F f) { return other_value(f, 1) + f.reply; }), anothers, k_turn},
    {"DuplicateAfterTheNextRequest", at(k_turn, reply_of, k_turn + 40, reply_of), own, k_turn, true},
    {"TwoRepliesInOneRead", at(k_turn, [](F f) { return f.reply + other_value(f); }), own, k_turn},
    {"EchoBefore", at(k_turn, [](F f) { return f.request + f.reply; }), own, k_turn},
    {"EchoAlone", at(k_turn, [](F f) { return f.request; })},
    // It begins as a refusal does then, and has the echo of one.
    {"EchoAlteredToANak",
     at(
         2, [](F f) { return with_byte(f.request, 0, k_nak); }, k_turn, reply_of),
     nothing, 2},
    {"NoiseWithoutEnd", without_end("\x06\x15~", 1700)},
    {"BadData", at(k_turn, [](F f) { return with_byte(f.reply, 5, f.reply[5] ^ 0x10); }), nothing, k_turn},
    {"Length255",
     at(k_turn, [](F f) { return framed(f, f.data() + std::string(255 - f.data().size(), '\0')); }), as_sent,
     k_turn},
    {"Length0", at(k_turn, [](F f) { return framed(f, ""); }), as_sent, k_turn},
    {"Length0ButLonger", at(k_turn, [](F f) { return with_byte(f.reply, 2, 0); })},
    {"DeclaredTooShort", at(k_turn, [](F f) { return with_byte(f.reply, 2, f.reply[2] - 1); }), nothing,
     k_turn},
    {"Truncated", at(k_turn, [](F f) { return f.without(1); })},
    {"BadCrcThenWhole", at(k_turn, [](F f) { return f.without(2) + f.reply; }), own, k_turn},
    {"BadCrcThenAStart", at(k_turn, [](F f) { return f.without(2) + f.reply.substr(0, 2); })},
    {"TruncatedThenWhole", at(k_turn, [](F f) { return f.reply.substr(0, 5) + f.reply; }), own, k_turn},
    {"DripInsideTheDeadline", drips(990), own, 990},
    {"DripPastTheDeadline", drips(1200)},
    {"NakOfAnUnknownCode", at(k_turn, [](F f) { return framed(f, f.data().substr(0, 1) + '\x77', k_nak); }),
     as_sent, k_turn},
    {"AnotherCommandBefore",
     at(k_turn, [](F f) { return framed(f, with_byte(f.data(), 0, f.reply[3] + 1)) + f.reply; }), own,
     k_turn},
    {"NoiseLikeALongNakBefore", at(k_turn, [](F f) { return "\x15\xFF\xFF" + f.reply; }), own, k_turn},
    {"StartsBefore",
     at(
         3, [](F) { return std::string(41, k_ack) + "\x15\x15"; }, k_turn, reply_of),
     own, k_turn},
    // A text reply has neither address nor start nor a check that is looked at.
    // Each falls into the quiet before the next sending, and makes it longer.
    {"TextLateBeforeTheNextRequest", at(430, reply_of), nothing, 430 + 50 + 394},
    // The second sending asks for the same: the answer to the first one is as good.
    {"TextLateAfterTheSecondSending", at(460, reply_of), own, 460},
    {"TextLateAfterTheNextRequest", at(900, reply_of), nothing, k_text_both, true},
    {"TextWithoutEtx", at(k_turn, [](F f) { return f.without(2) + k_cr; }), nothing, k_text_both},
    {"TextWithoutCr", at(k_turn, [](F f) { return f.without(1); }), nothing, k_text_both},
    {"TextEchoBefore", at(k_turn, [](F f) { return f.request + f.reply; }), own, k_turn},
    {"TextEchoAlone", at(k_turn, [](F f) { return f.request; }), nothing, k_text_both},
    {"TextTornLineBefore", at(k_turn, [](F f) { return "BAND=9\r" + f.reply; }), own, k_turn},
    {"TextLongerThanItsLine", at(k_turn, [](F f) { return f.reply + " more"; }), own, k_turn},
    // Until the end of the longest quiet that is waited for after each sending.
    {"TextNoiseWithoutEnd", without_end("~~", 650), nothing, 394 + 300 + 394},
};

struct Request {
    std::int16_t address;
    std::string command;
    bool text = false;
};

// A line of amplifiers that number their answers.
struct Line : BusRig {
    explicit Line(ReplyAddress rule) : BusRig({.crc = {}, .reply_address = rule, .ports = {}}) {
        port.responder = [this](const std::string& frame) {
            return fault != nullptr ? fault->line({frame, own_reply}) : Answer{{delay, own_reply}};
        };
        exchange({1, "\x11"});  // after an answer nothing old is waited for
        port.written.clear();
    }

    // The reply, empty for none.
    std::string exchange(const Request& request) {
        const std::string value = std::to_string(++number) + "@" + std::to_string(request.address);
        own_reply = request.text
                        ? "RDBAND=" + value + "\x03\r"
                        : build_reply_frame(Crc16{}, k_ack, static_cast<std::uint8_t>(request.address),
                                            request.command + value);
        const Instant start = clock.now();
        std::string reply = "left over";
        const int result = request.text ? bus.text_command(request.address, request.command, reply)
                                        : bus.bus_command(request.address, request.command, reply);
        took = clock.now() - start;
        EXPECT_EQ(result, request.text ? reply.empty() : reply.size());
        return reply;
    }

    int number = 0;
    std::string own_reply;  // the true reply to the request under way
    const LineFault* fault = nullptr;
    milliseconds delay{0};  // before a reply that no fault hits
    Duration took{};
};

// Catches whatever a fault can do: a reply that is none, a good one that is lost, a wait that is cut,
// stretched or never ends, and a leftover that is taken for the answer to the next request.
void expect_harmless(const LineFault& fault, const Request& first, const Request& next, ReplyAddress rule,
                     milliseconds delay) {
    Line line(rule);
    line.fault = &fault;
    const std::string spoilt = line.exchange(first);
    line.fault = nullptr;
    const bool checked = rule == ReplyAddress::checked;
    const std::string late = line.own_reply;
    std::string sent;
    for (const auto& arrival : fault.line({line.port.written.front(), late})) sent += arrival.bytes;
    const std::string given[] = {late, sent, "", checked ? late : sent.substr(0, sent.size() - late.size())};
    EXPECT_EQ(to_hex(spoilt), to_hex(given[fault.result]));
    EXPECT_EQ(line.took / milliseconds(1), fault.ends);
    // A binary frame goes out once, a text once more when nobody has answered in time.
    const std::size_t sendings = first.text && fault.ends > 394 ? 2 : 1;
    EXPECT_EQ(line.port.written, std::vector(sendings, line.port.written.front()));

    // A reply tells the command that it answers and, where amplifiers send it, the address; which request
    // of the same words it answers nothing tells. A text reply tells nothing.
    const bool alike =
        next.command == first.command && (first.text || next.address == first.address || !checked);
    line.delay = delay;
    std::string reply = line.exchange(next);
    const bool confused = fault.outlives && alike && delay.count() > 0;
    if (next.text && !first.text && reply.ends_with(line.own_reply))
        reply = line.own_reply;  // it has no start, so what is left over stands in front of it
    EXPECT_EQ(to_hex(reply), to_hex(confused ? late : line.own_reply));
    EXPECT_TRUE(confused || line.took <= delay + milliseconds(fault.result == nothing ? 300 : 0));

    // After half a second, when the next visit comes, even that is over.
    line.clock.advance(milliseconds(500));
    const std::string last = line.exchange(first);
    EXPECT_EQ(to_hex(last), to_hex(line.own_reply));
    EXPECT_EQ(line.took, delay);
}

TEST(FaultCatalogue, EndsInTimeAndLeavesNothingBehind) {
    const Request binary{1, "\x11"};
    const Request text{1, "RDBAND", true};
    for (const LineFault& fault : k_faults) {
        const bool in_text = fault.name.starts_with("Text");
        const Request& first = in_text ? text : binary;
        for (const Request& next :
             {first, {2, first.command, in_text}, {1, "\xA0\x16"}, in_text ? binary : text})
            for (const ReplyAddress rule : {ReplyAddress::ignored, ReplyAddress::checked})
                for (const int delay : {0, 200}) {
                    SCOPED_TRACE(testing::Message()
                                 << fault.name << ", then " << to_hex(next.command) << " to " << next.address
                                 << (rule == ReplyAddress::checked ? " checked " : " ") << delay);
                    expect_harmless(fault, first, next, rule, milliseconds(delay));
                }
    }
}

// The same fault comes to something else when its bytes come one by one; or a failure is taken back.
TEST(ReplyParser, IsAllTheSameByteByByte) {
    const std::string request = hex_bytes("01 01 01 11 91 A0");
    const std::string reply = hex_bytes("06 01 04 11 61 62 63 AB BA");
    const Crc16 crc;
    for (const LineFault& fault : k_faults) {
        SCOPED_TRACE(fault.name);
        ReplyParser bulk(crc, request);
        ReplyParser drip(crc, request);
        for (const auto& arrival : fault.line({request, reply})) {
            bulk.feed(arrival.bytes);
            for (const char c : arrival.bytes) drip.feed(std::string(1, c));
            EXPECT_EQ(drip.state(), bulk.state());
        }
        EXPECT_EQ(to_hex(drip.reply()), to_hex(bulk.reply()));
    }
}

}  // namespace
}  // namespace ampdesk
