#include "tests/support/line_faults.h"

#include <random>

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
using Bytes = std::string (*)(const Frames&);

std::string with_byte(std::string bytes, std::size_t at, int value) {
    bytes[at] = static_cast<char>(value);
    return bytes;
}

// A sound frame in place of the reply.
std::string framed(const Frames& f, const std::string& data, char first = k_ack, int address = 0) {
    return build_reply_frame(Crc16{}, first, static_cast<std::uint8_t>(f.reply[1] + address), data);
}

// The same reply but for its last data byte.
std::string other_value(const Frames& f, int address = 0) {
    std::string data = f.data();
    data.back() = static_cast<char>(data.back() ^ 0x20);
    return framed(f, data, k_ack, address);
}

// These bytes so long after the request, then more of them.
Line brings(Bytes bytes, int after, Bytes more = nullptr, int later = 0) {
    return [=](const std::string& request, const std::string& reply) {
        const Frames frames{request, reply};
        Answer answer{{milliseconds(after), bytes(frames)}};
        if (answer[0].bytes.empty())
            answer.clear();
        if (more != nullptr)
            answer.push_back({milliseconds(later), more(frames)});
        return answer;
    };
}
LineFault answered(const char* name, Bytes bytes) {
    return {name, brings(bytes, k_turn), own, k_turn};
}
LineFault odd(const char* name, Bytes bytes) {
    return {name, brings(bytes, k_turn), as_sent, k_turn};
}
LineFault failing(const char* name, int ends, Bytes bytes) {
    return {name, brings(bytes, k_turn), nothing, ends};
}

std::string reply_of(const Frames& f) {
    return f.reply;
}
std::string echo_of(const Frames& f) {
    return f.request;
}
std::string silence(const Frames&) {
    return {};
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

// One byte of it, then all, then the reply or silence.
Line noisy(const std::string& noise, bool reply_follows) {
    return [=](const std::string&, const std::string& reply) {
        Answer answer{{milliseconds(3), noise.substr(0, 1)}, {milliseconds(6), noise}};
        if (reply_follows)
            answer.push_back({milliseconds(k_turn), reply});
        return answer;
    };
}

std::string random_bytes() {
    std::mt19937 random(1);
    std::string bytes;
    while (bytes.size() < 40) bytes += static_cast<char>(random());
    return bytes;
}

std::vector<LineFault> all_binary() {
    constexpr int k_limit = 1000;
    using F = const Frames&;
    std::vector<LineFault> faults = {
        failing("Silence", k_limit, silence),
        {"AtTheLastInstant", brings(reply_of, k_limit), own, k_limit},
        {"AMillisecondLate", brings(reply_of, k_limit + 1)},
        {"LateBeforeTheNextRequest", brings(reply_of, k_limit + 30)},
        {"LateAfterTheNextRequest", brings(reply_of, k_limit + 80), nothing, k_limit, true},
        {"AnotherAddressFirst", brings([](F f) { return other_value(f, 1) + f.reply; }, k_turn), anothers,
         k_turn},
        answered("DuplicateAtOnce", [](F f) { return f.reply + f.reply; }),
        {"DuplicateAfterTheNextRequest", brings(reply_of, k_turn, reply_of, k_turn + 40), own, k_turn, true},
        answered("TwoRepliesInOneRead", [](F f) { return f.reply + other_value(f); }),
        {"EchoBefore", brings(echo_of, 2, reply_of, k_turn), own, k_turn},
        answered("EchoInOneRead", [](F f) { return f.request + f.reply; }),
        failing("EchoAlone", k_limit, echo_of),
        answered("EchoPartialBefore", [](F f) { return f.request.substr(0, 3) + f.reply; }),
        answered("EchoTwiceBefore", [](F f) { return f.request + f.request + f.reply; }),
        failing("EchoPartialAlone", k_limit, [](F f) { return f.request.substr(0, 3); }),
        answered("EchoAlteredBefore", [](F f) { return with_byte(f.request, 2, 0x41) + f.reply; }),
        failing("EchoAlteredAlone", k_limit, [](F f) { return with_byte(f.request, 2, 0x41); }),
        // It begins as a refusal does then, and has the echo of one.
        {"EchoAlteredToANak", brings([](F f) { return with_byte(f.request, 0, k_nak); }, 2, reply_of, k_turn),
         nothing, 2},
        {"NoiseWithoutEnd", without_end("\x06\x15~", 1700)},
        failing("BadCrc", k_turn,
                [](F f) { return with_byte(f.reply, f.reply.size() - 1, f.reply.back() ^ 1); }),
        failing("BadData", k_turn, [](F f) { return with_byte(f.reply, 5, f.reply[5] ^ 0x10); }),
        failing("CrcSwapped", k_turn,
                [](F f) {
                    const std::size_t low = f.reply.size() - 2;
                    return f.reply.substr(0, low) + f.reply[low + 1] + f.reply[low];
                }),
        odd("Length255", [](F f) { return framed(f, f.data() + std::string(255 - f.data().size(), '\0')); }),
        failing("Length255ButShort", k_limit, [](F f) { return with_byte(f.reply, 2, 255); }),
        odd("Length0", [](F f) { return framed(f, ""); }),
        failing("Length0ButLonger", k_limit, [](F f) { return with_byte(f.reply, 2, 0); }),
        answered("LongerThanDeclared", [](F f) { return f.reply + "ABC"; }),
        failing("DeclaredTooShort", k_turn, [](F f) { return with_byte(f.reply, 2, f.reply[2] - 1); }),
        failing("Truncated", k_limit, [](F f) { return f.reply.substr(0, f.reply.size() - 1); }),
        answered("BadCrcThenWhole", [](F f) { return f.reply.substr(0, f.reply.size() - 2) + f.reply; }),
        failing("BadCrcThenAStart", k_limit,
                [](F f) { return f.reply.substr(0, f.reply.size() - 2) + f.reply.substr(0, 2); }),
        answered("TruncatedThenWhole", [](F f) { return f.reply.substr(0, 5) + f.reply; }),
        {"DripInsideTheDeadline", drips(k_limit - 10), own, k_limit - 10},
        {"DripPastTheDeadline", drips(k_limit + 200)},
        odd("NakOfAnUnknownCode", [](F f) { return framed(f, f.echo() + '\x77', k_nak); }),
        failing("NakWithBadCrc", k_turn,
                [](F f) {
                    const std::string nak = framed(f, f.echo() + '\x04', k_nak);
                    return with_byte(nak, nak.size() - 1, nak.back() ^ 1);
                }),
        failing("WrongCommand", k_limit,
                [](F f) { return framed(f, with_byte(f.data(), 0, f.reply[3] + 1)); }),
        answered("AnotherCommandBefore",
                 [](F f) { return framed(f, with_byte(f.data(), 0, f.reply[3] + 1)) + f.reply; }),
        answered("BadEmptyReplyBefore",
                 [](F f) { return with_byte(framed(f, ""), 4, framed(f, "")[4] ^ 3) + f.reply; }),
        answered("NoiseLikeABadReplyBefore", [](F f) { return "\x06\x41\x01\x42\x43\x44" + f.reply; }),
        answered("NoiseLikeALongNakBefore", [](F f) { return "\x15\xFF\xFF" + f.reply; }),
        answered("NoiseLikeALongReplyBefore",
                 [](F f) { return with_byte(f.reply.substr(0, 5), 2, 0xFF) + "AAA" + f.reply; }),
        odd("XonXoffAndFFInTheData", [](F f) { return framed(f, f.data() + "\x11\x13\xFF"); }),
    };
    const std::pair<const char*, std::string> noises[] = {
        {"00", std::string(40, '\0')},   {"FF", std::string(40, '\xFF')}, {"Ack", std::string(40, k_ack)},
        {"Nak", std::string(40, k_nak)}, {"Soh", std::string(40, k_soh)}, {"Random", random_bytes()}};
    for (const auto& [name, noise] : noises) {
        faults.push_back({std::string("Noise") + name + "Before", noisy(noise, true), own, k_turn});
        faults.push_back({std::string("Noise") + name + "Alone", noisy(noise, false)});
    }
    return faults;
}

// A text reply has neither address nor start nor a check that is looked at.
std::vector<LineFault> all_text() {
    constexpr int k_limit = 394;
    constexpr int k_both = k_limit + 50 + k_limit;  // two sendings, and the quiet between them
    using F = const Frames&;
    return {
        failing("TextSilence", k_both, silence),
        // Each falls into the quiet before the next sending, and makes it longer.
        {"TextLateBeforeTheNextRequest", brings(reply_of, 430), nothing, 430 + 50 + k_limit},
        // The second sending asks for the same: the answer to the first one is as good.
        {"TextLateAfterTheSecondSending", brings(reply_of, 460), own, 460},
        {"TextLateAfterTheNextRequest", brings(reply_of, 900), nothing, k_both, true},
        failing("TextWithoutEtx", k_both, [](F f) { return f.reply.substr(0, f.reply.size() - 2) + k_cr; }),
        failing("TextWithoutCr", k_both, [](F f) { return f.reply.substr(0, f.reply.size() - 1); }),
        odd("TextWithNul", [](F f) { return std::string("\0=\0", 3) + f.reply; }),
        odd("TextWithNonAscii", [](F f) { return "\xB0=\xFF\x80\x11\x13" + f.reply; }),
        answered("TextEchoBefore", [](F f) { return f.request + f.reply; }),
        failing("TextEchoAlone", k_both, echo_of),
        answered("TextTwoRepliesInOneRead", [](F f) { return f.reply + "RDBAND=9\x03\r"; }),
        answered("TextTornLineBefore", [](F f) { return "BAND=9\r" + f.reply; }),
        answered("TextLongerThanItsLine", [](F f) { return f.reply + " more"; }),
        // Until the end of the longest quiet that is waited for after each sending.
        {"TextNoiseWithoutEnd", without_end("~~", 650), nothing, k_limit + 300 + k_limit},
    };
}

}  // namespace

const std::vector<LineFault>& binary_faults() {
    static const std::vector<LineFault> faults = all_binary();
    return faults;
}

const std::vector<LineFault>& text_faults() {
    static const std::vector<LineFault> faults = all_text();
    return faults;
}

}  // namespace ampdesk
