// ReplyParser on a stream of noise, echoes, sound and spoilt replies, cut anywhere.
//
// input: flags (1 address checked), unit address, command, then stretches: a number that chooses one
// of the kinds below, and what that kind needs.
#include <vector>

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"
#include "fuzz/input.h"

namespace {

using namespace ampdesk;
using fuzz::check;
using State = ReplyParser::State;

struct Exchange {
    bool address_checked;
    std::uint8_t address;
    std::string command;
    std::string sent;
};

const Crc16 k_crc;

std::size_t byte_at(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

// Whether these bytes begin with a whole frame of a reply, sound or not.
bool whole(std::string_view bytes) {
    return bytes.size() >= 5 && (bytes[0] == k_ack || bytes[0] == k_nak) &&
           bytes.size() >= byte_at(bytes, 2) + 5;
}

bool sound(std::string_view bytes) {
    return whole(bytes) && k_crc.c_chkCRC(bytes.substr(0, byte_at(bytes, 2) + 5)) == 0;
}

// Whether a whole frame answers the command. One without data has no echo.
bool ours(const Exchange& exchange, std::string_view frame) {
    const std::string_view echo = std::string_view(exchange.command).substr(0, 2);
    const std::size_t length = byte_at(frame, 2);
    if (exchange.address_checked && byte_at(frame, 1) != exchange.address)
        return false;
    return length == 0 || (length >= echo.size() && frame.substr(3, echo.size()) == echo);
}

// A sound reply that no echo of our own frame and no frame to somebody else overlaps: such a one
// must not be passed over.
bool holds_free_reply(const Exchange& exchange, std::string_view stream) {
    std::vector<bool> covered(stream.size(), false);
    const auto cover = [&](std::size_t at, std::size_t length) {
        for (std::size_t i = at; i < at + length; ++i) covered[i] = true;
    };
    for (std::size_t at = 0; at < stream.size(); ++at) {
        const std::string_view rest = stream.substr(at);
        if (rest.starts_with(exchange.sent))
            cover(at, exchange.sent.size());
        if (sound(rest) && !ours(exchange, rest))
            cover(at, byte_at(rest, 2) + 5);
    }
    for (std::size_t at = 0; at < stream.size(); ++at) {
        const std::string_view rest = stream.substr(at);
        bool free = sound(rest) && ours(exchange, rest);
        for (std::size_t i = 0; free && i < byte_at(rest, 2) + 5; ++i) free = !covered[at + i];
        if (free)
            return true;
    }
    return false;
}

bool holds_spoilt_reply(const Exchange& exchange, std::string_view stream) {
    for (; !stream.empty(); stream.remove_prefix(1))
        if (whole(stream) && !sound(stream) && ours(exchange, stream))
            return true;
    return false;
}

void check_outcome(const Exchange& exchange, const ReplyParser& parser, std::string_view stream) {
    const std::string& reply = parser.reply();
    check(reply.empty() == (parser.state() != State::answered), "a reply when answered, and only then");
    switch (parser.state()) {
        case State::answered:
            check(sound(reply) && reply.size() == byte_at(reply, 2) + 5, "the reply is a sound frame");
            check(ours(exchange, reply), "the reply has the command's echo and the right address");
            check(stream.find(reply) != std::string_view::npos, "the reply has come in one piece");
            break;
        case State::failed:
            check(holds_spoilt_reply(exchange, stream), "only a spoilt reply fails");
            break;
        case State::waiting:
            check(!holds_free_reply(exchange, stream), "a sound reply is not passed over");
            break;
    }
}

// The next stretch of what comes down the line.
std::string stretch(const Exchange& exchange, fuzz::Input& input) {
    enum Kind { own_echo, reply, refusal, spoilt, cut, to_other_command, kinds };
    const unsigned choice = input.number();
    if (choice % 8 >= kinds)
        return input.take(choice / 8);
    if (choice % 8 == own_echo)
        return exchange.sent;
    const std::uint8_t second = (choice & 8U) != 0 ? exchange.address : 0xA5;
    std::string data = choice % 8 == to_other_command ? "" : exchange.command;
    data = (data + input.stretch()).substr(0, 255);
    std::string frame = build_reply_frame(k_crc, choice % 8 == refusal ? k_nak : k_ack, second, data);
    if (choice % 8 == spoilt) {
        char& hit = frame[input.number() % frame.size()];
        hit = static_cast<char>(static_cast<unsigned char>(hit) ^ input.number());
    }
    if (choice % 8 == cut)
        frame.resize(input.number() % frame.size());
    return frame;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const unsigned flags = input.number();
    Exchange exchange{.address_checked = (flags & 1U) != 0,
                      .address = static_cast<std::uint8_t>(input.number()),
                      .command = input.take(input.number() % 6),
                      .sent = {}};
    exchange.sent = build_command_frame(k_crc, exchange.address, exchange.command);

    ReplyParser by_stretch(k_crc, exchange.sent, exchange.address_checked);
    ReplyParser by_byte(k_crc, exchange.sent, exchange.address_checked);
    std::string stream;
    while (!input.empty()) {
        const std::string bytes = stretch(exchange, input);
        stream += bytes;
        const auto feed = [](ReplyParser& parser, std::string_view some) {
            const State before = parser.state();
            const std::string reply = parser.reply();
            const State after = parser.feed(some);
            check(before == State::waiting || (after == before && parser.reply() == reply),
                  "an end is an end");
            check(after != State::waiting || parser.undecided() < k_longest_frame, "a bounded buffer");
        };
        feed(by_stretch, bytes);
        for (const char byte : bytes) feed(by_byte, {&byte, 1});
    }
    check_outcome(exchange, by_stretch, stream);
    check_outcome(exchange, by_byte, stream);
    return 0;
}
