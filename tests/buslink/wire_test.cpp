// Frames as literal bytes: a mistake that station and simulator share cannot hide behind them.
#include <gtest/gtest.h>

#include "buslink/wire/binary_frame.h"
#include "buslink/wire/text_frame.h"
#include "platform/run_time_error.h"
#include "tests/support/hex_bytes.h"

namespace ampdesk {
namespace {

using State = ReplyParser::State;

// A wrong polynomial, start value, byte order or header would change these bytes.
TEST(CommandFrame, IsTheseBytes) {
    const std::tuple<std::uint8_t, const char*, CrcParameters, const char*> table[] = {
        {1, "11", {}, "01 01 01 11 91 A0"},
        {63, "A0 15 00", {}, "01 3F 03 A0 15 00 1B 22"},
        {7, "", {}, "01 07 00 53 F0"},
        {1, "11", {.initial = 0xFFFF}, "01 01 01 11 91 84"},
        {1, "11", {.polynomial = 0x8408}, "01 01 01 11 B7 5E"},
    };
    for (const auto& [address, command, crc, frame] : table)
        EXPECT_EQ(to_hex(build_command_frame(Crc16(crc), address, hex_bytes(command))), frame);
    EXPECT_EQ(build_command_frame(Crc16(), 1, std::string(255, 'A')).size(), 260U);
    EXPECT_THROW(build_command_frame(Crc16(), 1, std::string(256, 'A')), RunTimeError);
}

// A low-byte or full-sum checksum, a missing pad digit or a sum that wraps instead of failing.
TEST(TextFrame, IsTheseBytes) {
    const std::tuple<int, const char*, const char*> table[] = {
        {12, "RDBAND", "02 3E 31 32 20 52 44 42 41 4E 44 03 30 32 0D"},
        {0, ">", "02 3E 30 30 20 3E 03 30 30 0D"},  // sum 255
        {0, "?", "02 3E 30 30 20 3F 03 30 31 0D"},  // sum 256
        {105, ">", "02 3E 30 35 20 3E 03 30 31 0D"},
    };
    for (const auto& [address, command, frame] : table)
        EXPECT_EQ(to_hex(build_text_frame(address, command)), frame);
    const std::string long_command(257, '~');
    EXPECT_TRUE(build_text_frame(1, long_command + '\xBF').ends_with("7F\r"));  // sum 32767
    EXPECT_THROW(build_text_frame(1, long_command + '\xC0'), RunTimeError);
}

// The faults of the line stand in the catalogue; here is what only a parser that is fed by hand shows.
const std::string k_status = hex_bytes("01 01 01 11 91 A0");

// A reply to another request of the same class, or one without the item, that is taken for ours; a sound
// frame of somebody else's in which our reply is looked for; our own echo taken for a damaged reply, where
// the command holds the start of one, echo and all; noise that is piled up for as long as it comes, or in
// which the reply is lost.
TEST(ReplyParser, SkipsWhatIsNotOurs) {
    const std::string limits = hex_bytes("01 01 03 A0 15 00 32 E7");
    const std::tuple<std::string, const char*, State> table[] = {
        {limits, "06 01 05 A0 15 00 01 02 94 FB", State::answered},
        {limits, "06 01 05 A0 16 00 01 02 94 BF", State::waiting},
        {hex_bytes("01 01 02 A0 50 E5 C0"), "06 01 01 A0 50 A0", State::waiting},  // the CRC is no echo
        {k_status, "06 01 0C A0 17 00 06 01 04 11 61 62 63 AB BA 5A 7A", State::waiting},
        {k_status, "06 02 0A 11 06 01 04 11 61 62 63 AB BA 81 89", State::waiting},  // amplifier 2
    };
    const Crc16 crc;
    for (const auto& [sent, bytes, state] : table)
        EXPECT_EQ(ReplyParser(crc, sent, true).feed(hex_bytes(bytes)), state) << bytes;
    const std::string sent = hex_bytes("01 01 05 06 01 02 06 01 3B 05");
    ReplyParser echoed(crc, sent);
    EXPECT_EQ(echoed.feed(sent + sent.substr(0, 3)), State::waiting);
    EXPECT_EQ(echoed.feed(sent.substr(3) + hex_bytes("06 01 05 06 01 02 06 01 7A E3")), State::answered);
    EXPECT_EQ(to_hex(echoed.reply()), "06 01 05 06 01 02 06 01 7A E3");
    ReplyParser parser(crc, k_status);
    for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(parser.feed(hex_bytes("15 FF FF 06 00 FF 01 01")), State::waiting);
        ASSERT_LT(parser.undecided(), 260U);
    }
    EXPECT_EQ(parser.feed(hex_bytes("06 01 04 11 61 62 63 AB BA")), State::answered);
}

// A line that is torn by how the stream is cut; noise that piles up for as long as it comes.
TEST(TextReplyParser, TakesTheFirstLineThatHoldsAnEtx) {
    const std::string sent = hex_bytes("02 3E 30 31 20 52 44 42 41 4E 44 03 30 32 0D");
    TextReplyParser parser(sent);
    EXPECT_FALSE(parser.feed("noise\r~~" + sent.substr(0, 9)));
    EXPECT_FALSE(parser.feed(sent.substr(9)));
    EXPECT_FALSE(parser.feed('\x03' + std::string(4096, 'z')));
    EXPECT_FALSE(parser.feed("\r")) << "the ETX is long gone";
    EXPECT_EQ(parser.feed("X=1\x03\r"), "X=1\x03\r");
}

}  // namespace
}  // namespace ampdesk
