#include "tests/support/line_faults.h"

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/control_characters.h"

namespace ampdesk {

namespace {

using std::chrono::milliseconds;
using Answer = ScriptedPort::Answer;
using Line = decltype(LineFault::line);
using enum LineFault::Result;

constexpr int k_turn = 20;  // milliseconds between a request and what answers it

// What there is to make a fault of.
struct Frames {
    const std::string& request;
    const std::string& reply;
    std::string echo() const { return request.substr(3, request.size() - 5); }
    std::string data() const { return reply.substr(3, reply.size() - 5); }
};
using F = const Frames&;
using Bytes = std::function<std::string(F)>;

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

std::string starts(F) {
    return std::string(41, k_ack) + std::string(41, k_nak);
}

// These bytes so long after the request, then more of them.
Line brings(const Bytes& bytes, int after, const Bytes& more = nullptr, int later = 0) {
    return [=](const std::string& request, const std::string& reply) {
        Answer answer{{milliseconds(after), bytes({request, reply})}};
        if (more)
            answer.push_back({milliseconds(later), more({request, reply})});
        return answer;
    };
}
LineFault answered(const char* name, const Bytes& bytes) {
    return {name, brings(bytes, k_turn), own, k_turn};
}
LineFault odd(const char* name, const Bytes& bytes) {
    return {name, brings(bytes, k_turn), as_sent, k_turn};
}
LineFault failing(const char* name, int ends, const Bytes& bytes) {
    return {name, brings(bytes, k_turn), nothing, ends};
}

// The reply byte by byte, the last one at that time.
Line drips(int end) {
    return [end](const std::string&, const std::string& reply) {
        const int steps = static_cast<int>(reply.size()) - 1;
        Answer answer;
        for (int i = 0; i <= steps; ++i)
            answer.push_back({milliseconds(end - (steps - i) * ((end - k_turn) / steps)),
                              std::string(1, reply[static_cast<std::size_t>(i)])});
        return answer;
    };
}

// These bytes every 2 ms until that time, and no reply.
Line without_end(const std::string& bytes, int end) {
    return [=](const auto&, const auto&) {
        Answer answer;
        for (int time = 1; time < end; time += 2) answer.push_back({milliseconds(time), bytes});
        return answer;
    };
}

}  // namespace

const std::vector<LineFault>& binary_faults() {
    constexpr int k_limit = 1000;
    static const std::vector<LineFault> faults = {
        {"Silence", without_end("", 0)},
        {"AtTheLastInstant", brings(reply_of, k_limit), own, k_limit},
        {"AMillisecondLate", brings(reply_of, k_limit + 1)},
        {"LateBeforeTheNextRequest", brings(reply_of, k_limit + 30)},
        {"LateAfterTheNextRequest", brings(reply_of, k_limit + 80), nothing, k_limit, true},
        {"AnotherAddressFirst", brings([](F f) { return other_value(f, 1) + f.reply; }, k_turn), anothers,
         k_turn},
        {"DuplicateAfterTheNextRequest", brings(reply_of, k_turn, reply_of, k_turn + 40), own, k_turn, true},
        answered("TwoRepliesInOneRead", [](F f) { return f.reply + other_value(f); }),
        answered("EchoBefore", [](F f) { return f.request + f.reply; }),
        failing("EchoAlone", k_limit, [](F f) { return f.request; }),
        failing("EchoAlteredAlone", k_limit, [](F f) { return with_byte(f.request, 2, 0x41); }),
        // It begins as a refusal does then, and has the echo of one.
        {"EchoAlteredToANak", brings([](F f) { return with_byte(f.request, 0, k_nak); }, 2, reply_of, k_turn),
         nothing, 2},
        {"NoiseWithoutEnd", without_end("\x06\x15~", 1700)},
        failing("BadData", k_turn, [](F f) { return with_byte(f.reply, 5, f.reply[5] ^ 0x10); }),
        odd("Length255", [](F f) { return framed(f, f.data() + std::string(255 - f.data().size(), '\0')); }),
        odd("Length0", [](F f) { return framed(f, ""); }),
        failing("Length0ButLonger", k_limit, [](F f) { return with_byte(f.reply, 2, 0); }),
        failing("DeclaredTooShort", k_turn, [](F f) { return with_byte(f.reply, 2, f.reply[2] - 1); }),
        failing("Truncated", k_limit, [](F f) { return f.reply.substr(0, f.reply.size() - 1); }),
        answered("BadCrcThenWhole", [](F f) { return f.reply.substr(0, f.reply.size() - 2) + f.reply; }),
        failing("BadCrcThenAStart", k_limit,
                [](F f) { return f.reply.substr(0, f.reply.size() - 2) + f.reply.substr(0, 2); }),
        answered("TruncatedThenWhole", [](F f) { return f.reply.substr(0, 5) + f.reply; }),
        {"DripInsideTheDeadline", drips(k_limit - 10), own, k_limit - 10},
        {"DripPastTheDeadline", drips(k_limit + 200)},
        odd("NakOfAnUnknownCode", [](F f) { return framed(f, f.echo() + '\x77', k_nak); }),
        answered("AnotherCommandBefore",
                 [](F f) { return framed(f, with_byte(f.data(), 0, f.reply[3] + 1)) + f.reply; }),
        answered("NoiseLikeALongNakBefore", [](F f) { return "\x15\xFF\xFF" + f.reply; }),
        odd("XonXoffAndFFInTheData", [](F f) { return framed(f, f.data() + "\x11\x13\xFF"); }),
        {"StartsBefore", brings(starts, 3, reply_of, k_turn), own, k_turn},
        {"StartsAlone", brings(starts, 3)},
    };
    return faults;
}

// A text reply has neither address nor start nor a check that is looked at.
const std::vector<LineFault>& text_faults() {
    constexpr int k_limit = 394;
    constexpr int k_both = k_limit + 50 + k_limit;  // two sendings, and the quiet between them
    static const std::vector<LineFault> faults = {
        {"TextSilence", without_end("", 0), nothing, k_both},
        // Each falls into the quiet before the next sending, and makes it longer.
        {"TextLateBeforeTheNextRequest", brings(reply_of, 430), nothing, 430 + 50 + k_limit},
        // The second sending asks for the same: the answer to the first one is as good.
        {"TextLateAfterTheSecondSending", brings(reply_of, 460), own, 460},
        {"TextLateAfterTheNextRequest", brings(reply_of, 900), nothing, k_both, true},
        failing("TextWithoutEtx", k_both, [](F f) { return f.reply.substr(0, f.reply.size() - 2) + k_cr; }),
        failing("TextWithoutCr", k_both, [](F f) { return f.reply.substr(0, f.reply.size() - 1); }),
        odd("TextWithOddBytes", [](F f) { return std::string("\0=\xB0\xFF\x80\x11\x13", 7) + f.reply; }),
        answered("TextEchoBefore", [](F f) { return f.request + f.reply; }),
        failing("TextEchoAlone", k_both, [](F f) { return f.request; }),
        answered("TextTornLineBefore", [](F f) { return "BAND=9\r" + f.reply; }),
        answered("TextLongerThanItsLine", [](F f) { return f.reply + " more"; }),
        // Until the end of the longest quiet that is waited for after each sending.
        {"TextNoiseWithoutEnd", without_end("~~", 650), nothing, k_limit + 300 + k_limit},
    };
    return faults;
}

}  // namespace ampdesk
