// Frames as literal bytes: a mistake that station and simulator share cannot hide behind them.
#include <gtest/gtest.h>

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/text_frame.h"
#include "platform/run_time_error.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/line_faults.h"

namespace ampdesk {
namespace {

using State = ReplyParser::State;

// A wrong polynomial, start value, byte order or header would change these bytes.
TEST(CommandFrame, IsTheseBytes) {
    const struct {
        std::uint8_t address;
        std::string command;
        std::string frame;
        CrcParameters crc{};
    } table[] = {
        {1, hex_bytes("11"), "01 01 01 11 91 A0"},
        {63, hex_bytes("A0 15 00"), "01 3F 03 A0 15 00 1B 22"},
        {7, "", "01 07 00 53 F0"},
        {1, hex_bytes("11"), "01 01 01 11 91 84", {.initial = 0xFFFF}},
        {1, hex_bytes("11"), "01 01 01 11 B7 5E", {.polynomial = 0x8408}},
    };
    for (const auto& row : table)
        EXPECT_EQ(to_hex(build_command_frame(Crc16(row.crc), row.address, row.command)), row.frame);
    const Crc16 crc;
    EXPECT_EQ(build_command_frame(crc, 1, std::string(255, 'A')).size(), k_longest_frame);
    EXPECT_THROW(build_command_frame(crc, 1, std::string(256, 'A')), RunTimeError);
}

// A low-byte or full-sum checksum, a missing pad digit or a sum that wraps instead of failing.
TEST(TextFrame, IsTheseBytes) {
    const struct {
        int address;
        std::string command;
        std::string frame;
    } table[] = {
        {12, "RDBAND", "02 3E 31 32 20 52 44 42 41 4E 44 03 30 32 0D"},
        {0, ">", "02 3E 30 30 20 3E 03 30 30 0D"},  // sum 255
        {0, "?", "02 3E 30 30 20 3F 03 30 31 0D"},  // sum 256
        {105, ">", "02 3E 30 35 20 3E 03 30 31 0D"},
    };
    for (const auto& row : table) EXPECT_EQ(to_hex(build_text_frame(row.address, row.command)), row.frame);
    const std::string long_command(257, '~');
    EXPECT_TRUE(build_text_frame(1, long_command + '\xBF')
                    .ends_with("\x03"
                               "7F\r"));  // sum 32767
    EXPECT_THROW(build_text_frame(1, long_command + '\xC0'), RunTimeError);
}

// The faults of the line stand in the catalogue; here is what only a parser that is fed by hand shows.
const std::string k_status = "01 01 01 11 91 A0";
const std::string k_reply = "06 01 04 11 61 62 63 AB BA";  // payload abc

// A reply to another request of the same class, or one without the item, that is taken for ours.
TEST(ReplyParser, KnowsALongCommandByTwoCharacters) {
    const std::pair<std::string, State> table[] = {{"06 01 05 A0 15 00 01 02 94 FB", State::answered},
                                                   {"06 01 05 A0 16 00 01 02 94 BF", State::waiting},
                                                   {"06 01 01 A0 50 A0", State::waiting}};
    for (const auto& [bytes, state] : table)
        EXPECT_EQ(ReplyParser(Crc16(), hex_bytes("01 01 03 A0 15 00 32 E7")).feed(hex_bytes(bytes)), state)
            << bytes;
}

// The same fault comes to something else when its bytes come one by one; or a failure is taken back.
TEST(ReplyParser, IsAllTheSameByteByByte) {
    const Crc16 crc;
    for (const LineFault& fault : binary_faults()) {
        SCOPED_TRACE(fault.name);
        ReplyParser bulk(crc, hex_bytes(k_status));
        ReplyParser drip(crc, hex_bytes(k_status));
        for (const auto& arrival : fault.line(hex_bytes(k_status), hex_bytes(k_reply))) {
            bulk.feed(arrival.bytes);
            for (const char c : arrival.bytes) drip.feed(std::string(1, c));
            EXPECT_EQ(drip.state(), bulk.state());
        }
        EXPECT_EQ(to_hex(drip.reply()), to_hex(bulk.reply()));
    }
}

// Our own echo must not be taken for a damaged reply: this command holds the start of one, echo and all.
TEST(ReplyParser, SkipsAnEchoThatLooksLikeAReply) {
    const Crc16 crc;
    const std::string command = hex_bytes("06 01 02 06 01");
    const std::string sent = build_command_frame(crc, 1, command);
    const std::string reply = build_reply_frame(crc, '\x06', 1, command);
    ReplyParser parser(crc, sent);
    EXPECT_EQ(parser.feed(sent + sent.substr(0, 3)), State::waiting);
    EXPECT_EQ(parser.feed(sent.substr(3) + reply), State::answered);
    EXPECT_EQ(parser.reply(), reply);
}

// Noise that is piled up for as long as it comes, or in which the reply is lost.
TEST(ReplyParser, FindsTheReplyBehindEndlessNoise) {
    const Crc16 crc;
    ReplyParser parser(crc, hex_bytes(k_status));
    for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(parser.feed(hex_bytes("15 FF FF 06 00 FF 01 01")), State::waiting);
        ASSERT_LT(parser.undecided(), k_longest_frame);
    }
    EXPECT_EQ(parser.feed(hex_bytes(k_reply)), State::answered);
}

// "|" stands for ETX and "$" for CR.
std::string chars(std::string text) {
    for (char& c : text) c = c == '|' ? '\x03' : c == '$' ? '\r' : c;
    return text;
}

// A line that is lost or torn by how the stream is cut; noise that piles up for as long as it comes.
TEST(TextReplyParser, TakesTheFirstLineThatHoldsAnEtx) {
    const std::string sent = build_text_frame(1, "RDBAND");
    for (const LineFault& fault : text_faults()) {
        SCOPED_TRACE(fault.name);
        std::string bytes;
        for (const auto& arrival : fault.line(sent, chars("RDBAND=1|7A$"))) bytes += arrival.bytes;
        std::optional<std::string> reply;
        TextReplyParser drip(sent);
        for (std::size_t i = 0; !reply && i < bytes.size(); ++i) reply = drip.feed(bytes.substr(i, 1));
        EXPECT_EQ(reply, TextReplyParser(sent).feed(bytes));
    }
    TextReplyParser parser(sent);
    EXPECT_FALSE(parser.feed(chars("noise$~~") + sent));
    EXPECT_FALSE(parser.feed(chars("|") + std::string(TextReplyParser::k_longest_text, 'z')));
    EXPECT_FALSE(parser.feed(chars("$"))) << "the ETX is long gone";
    EXPECT_EQ(parser.feed(chars("X=1|$")), chars("X=1|$"));
}

}  // namespace
}  // namespace ampdesk
