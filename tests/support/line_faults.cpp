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

// In one piece, that long after the request.
Line brings(const std::function<std::string(const std::string&, const std::string&)>& bytes,
            int after = k_turn) {
    return [=](const std::string& request, const std::string& reply) {
        return Answer{{milliseconds(after), bytes(request, reply)}};
    };
}

// The reply itself, that late.
Line after(int time) {
    return brings([](const auto&, const auto& reply) { return reply; }, time);
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

// One byte of it, then forty, then the reply or silence.
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

std::string with_byte(std::string bytes, std::size_t at, int value) {
    bytes[at] = static_cast<char>(value);
    return bytes;
}

// The reply with other data, or from another address, in a frame that is sound again.
std::string framed(const std::string& reply, const std::string& data, char first = k_ack, int address = 0) {
    return build_reply_frame(Crc16{}, first, static_cast<std::uint8_t>(reply[1] + address), data);
}

std::string data_of(const std::string& reply) {
    return reply.substr(3, reply.size() - 5);
}

// The same reply but for its last data byte.
std::string other_value(const std::string& reply, int address = 0) {
    std::string data = data_of(reply);
    data.back() = static_cast<char>(data.back() ^ 0x20);
    return framed(reply, data, k_ack, address);
}

std::string echo_of(const std::string& request) {
    return request.substr(3, request.size() - 5);
}

std::vector<LineFault> all_binary() {
    std::vector<LineFault> faults = {
        {"Silence", [](const auto&, const auto&) { return Answer{}; }},
        {"AtTheLastInstant", after(1000), own, 1000},
        {"AMillisecondLate", after(1001)},
        {"LateBeforeTheNextRequest", after(1030)},
        {"LateAfterTheNextRequest", after(1080), nothing, 1000, true},
        {"AnotherAddressFirst",
         brings([](const auto&, const auto& reply) { return other_value(reply, 1) + reply; }), anothers,
         k_turn},
        {"DuplicateAtOnce", brings([](const auto&, const auto& reply) { return reply + reply; }), own,
         k_turn},
        {"DuplicateAfterTheNextRequest",
         [](const auto&, const auto& reply) {
             return Answer{{milliseconds(k_turn), reply}, {milliseconds(k_turn + 40), reply}};
         },
         own, k_turn, true},
        {"TwoRepliesInOneRead",
         brings([](const auto&, const auto& reply) { return reply + other_value(reply); }), own, k_turn},
        {"EchoBefore",
         [](const auto& request, const auto& reply) {
             return Answer{{milliseconds(2), request}, {milliseconds(k_turn), reply}};
         },
         own, k_turn},
        {"EchoInOneRead", brings([](const auto& request, const auto& reply) { return request + reply; }), own,
         k_turn},
        {"EchoAlone", brings([](const auto& request, const auto&) { return request; })},
        {"EchoPartialBefore",
         brings([](const auto& request, const auto& reply) { return request.substr(0, 3) + reply; }), own,
         k_turn},
        {"EchoPartialAlone", brings([](const auto& request, const auto&) { return request.substr(0, 3); })},
        {"EchoAlteredBefore",
         brings([](const auto& request, const auto& reply) { return with_byte(request, 2, 0x41) + reply; }),
         own, k_turn},
        {"EchoAlteredAlone",
         brings([](const auto& request, const auto&) { return with_byte(request, 2, 0x41); })},
        // It begins as a refusal does then, and has the echo of one.
        {"EchoAlteredToANak",
         [](const auto& request, const auto& reply) {
             return Answer{{milliseconds(2), with_byte(request, 0, k_nak)}, {milliseconds(k_turn), reply}};
         },
         nothing, 2},
        {"NoiseWithoutEnd", without_end("\x06\x15~", 1700)},
        {"BadCrc", brings([](const auto&, const auto& reply) {
             return with_byte(reply, reply.size() - 1, reply.back() ^ 1);
         }),
         nothing, k_turn},
        {"BadData",
         brings([](const auto&, const auto& reply) { return with_byte(reply, 5, reply[5] ^ 0x10); }), nothing,
         k_turn},
        {"CrcSwapped", brings([](const auto&, const auto& reply) {
             return reply.substr(0, reply.size() - 2) + reply.back() + reply[reply.size() - 2];
         }),
         nothing, k_turn},
        {"Length255", brings([](const auto&, const auto& reply) {
             std::string data = data_of(reply);
             data.resize(255);
             return framed(reply, data);
         }),
         as_sent, k_turn},
        {"Length255ButShort",
         brings([](const auto&, const auto& reply) { return with_byte(reply, 2, 255); })},
        {"Length0", brings([](const auto&, const auto& reply) { return framed(reply, ""); }), as_sent,
         k_turn},
        {"Length0ButLonger", brings([](const auto&, const auto& reply) { return with_byte(reply, 2, 0); })},
        {"LongerThanDeclared", brings([](const auto&, const auto& reply) { return reply + "ABC"; }), own,
         k_turn},
        {"DeclaredTooShort",
         brings([](const auto&, const auto& reply) { return with_byte(reply, 2, reply[2] - 1); }), nothing,
         k_turn},
        {"Truncated",
         brings([](const auto&, const auto& reply) { return reply.substr(0, reply.size() - 1); })},
        {"TruncatedThenWhole",
         brings([](const auto&, const auto& reply) { return reply.substr(0, 5) + reply; }), own, k_turn},
        {"DripInsideTheDeadline", drips(990), own, 990},
        {"DripPastTheDeadline", drips(1200)},
        {"NakOfAnUnknownCode", brings([](const auto& request, const auto& reply) {
             return framed(reply, echo_of(request) + '\x77', k_nak);
         }),
         as_sent, k_turn},
        {"NakWithBadCrc", brings([](const auto& request, const auto& reply) {
             return framed(reply, echo_of(request) + '\x04', k_nak).substr(0, 4 + request[2]) + "??";
         }),
         nothing, k_turn},
        {"WrongCommand", brings([](const auto&, const auto& reply) {
             return framed(reply, with_byte(data_of(reply), 0, reply[3] + 1));
         })},
        {"XonXoffAndFFInTheData", brings([](const auto&, const auto& reply) {
             return framed(reply, data_of(reply) + "\x11\x13\xFF");
         }),
         as_sent, k_turn},
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
    constexpr int k_both = 394 + 50 + 394;  // two sendings, and the quiet between them
    return {
        {"TextSilence", [](const auto&, const auto&) { return Answer{}; }, nothing, k_both},
        // Each falls into the quiet before the next sending, and makes it longer.
        {"TextLateBeforeTheNextRequest", after(430), nothing, 430 + 50 + 394},
        // The second sending asks for the same: the answer to the first one is as good.
        {"TextLateAfterTheSecondSending", after(460), own, 460},
        {"TextLateAfterTheNextRequest", after(900), nothing, k_both, true},
        {"TextWithoutEtx",
         brings([](const auto&, const auto& reply) { return reply.substr(0, reply.size() - 2) + k_cr; }),
         nothing, k_both},
        {"TextWithoutCr",
         brings([](const auto&, const auto& reply) { return reply.substr(0, reply.size() - 1); }), nothing,
         k_both},
        {"TextWithNul",
         brings([](const auto&, const auto& reply) { return std::string("\0=\0", 3) + reply; }), as_sent,
         k_turn},
        {"TextWithNonAscii",
         brings([](const auto&, const auto& reply) { return "\xB0=\xFF\x80\x11\x13" + reply; }), as_sent,
         k_turn},
        {"TextEchoBefore", brings([](const auto& request, const auto& reply) { return request + reply; }),
         own, k_turn},
        {"TextEchoAlone", brings([](const auto& request, const auto&) { return request; }), nothing, k_both},
        {"TextTwoRepliesInOneRead",
         brings([](const auto&, const auto& reply) { return reply + "RDBAND=9\x03\r"; }), own, k_turn},
        {"TextTornLineBefore", brings([](const auto&, const auto& reply) { return "BAND=9\r" + reply; }), own,
         k_turn},
        {"TextLongerThanItsLine", brings([](const auto&, const auto& reply) { return reply + " more"; }), own,
         k_turn},
        // Until the end of the longest quiet that is waited for after each sending.
        {"TextNoiseWithoutEnd", without_end("~~", 650), nothing, 394 + 300 + 394},
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
