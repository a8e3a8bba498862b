// XMODEM against literal bytes, against itself over a spoilt line, and on the clock. What another
// implementation makes of it is in xmodem_peer_test.cpp.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "terminal/xmodem_receiver.h"
#include "terminal/xmodem_sender.h"
#include "tests/support/hex_bytes.h"
#include "tests/terminal/transfer_rig.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds k_block_time{139};  // 133 bytes at 9600 baud

// A word of a conversation: a character by its name, a block "B7" with the CRC or "S7" with the sum
// ("B7~" with a byte changed, "B7-" with one lost), "OFF" for what cancels, else a byte in hexadecimal.
std::string bytes_of(const std::string& word) {
    static const std::map<std::string, std::string> names = {
        {"C", "C"},      {"ACK", "\x06"}, {"NAK", "\x15"},
        {"EOT", "\x04"}, {"CAN", "\x18"}, {"OFF", "\x18\x18\x18\x18\x18\b\b\b\b\b"}};
    if (const auto name = names.find(word); name != names.end())
        return name->second;
    if ((word[0] != 'B' && word[0] != 'S') || !std::isdigit(word[1]))
        return hex_bytes(word);
    const int number = std::stoi(word.substr(1));
    std::string block = "\x01" + std::string{static_cast<char>(number), static_cast<char>(255 - number)} +
                        "ABC" + std::string(125, '\x1A') + (word[0] == 'B' ? "AK" : "x");
    if (word.back() == '~')
        block[60] = '!';
    return word.back() == '-' ? block.erase(60, 1) : block;
}

// Steps "+time in = out", separated by ";": that many milliseconds pass, those words come in, those
// go out. "5x" in front: five times. "STOP": the operator cancels. The message comes at the end.
void converse(Transfer& transfer, const std::string& script, const std::string& message) {
    SCOPED_TRACE(script);
    ManualClock clock;
    std::istringstream steps(script);
    for (std::string step; std::getline(steps, step, ';');) {
        int times = 1;
        std::string in;
        std::string out;
        std::string* side = &in;
        milliseconds later{0};
        std::istringstream words(step);
        for (std::string word; words >> word;) {
            if (word[0] == '+')
                later = milliseconds(std::stoi(word));
            else if (word == "STOP")
                transfer.cancel();
            else if (word.back() == 'x')
                times = std::stoi(word);
            else if (word == "=")
                side = &out;
            else
                *side += bytes_of(word);
        }
        while (times-- > 0) {
            clock.advance(later);
            transfer.feed(in, clock.now());
            transfer.tick(clock.now());
            EXPECT_EQ(to_hex(transfer.take_output(512)), to_hex(out)) << step;
        }
    }
    EXPECT_EQ(transfer.message(), message);
}

// Fault: a receiver of another maker is misunderstood, waited for too short or too long, or believed
// to have what it has not.
TEST(XmodemSender, Conversations) {
    const std::pair<const char*, const char*> cases[] = {
        {"=; C = B1; ACK = EOT; NAK = EOT; ACK =", "3 bytes sent."},
        {"NAK = S1; ACK = EOT; ACK =", "3 bytes sent."},
        // Noise before and between; a late wish for the CRC.
        {"24 0D ACK =; NAK = S1; 7F EOT =; C C = B1", ""},
        // The second answer to a block that was sent twice is not the next one's.
        {"C = B1; NAK = B1; ACK =; +100 ACK =; +238 =; +1 = EOT", ""},
        {"+59999 =; +1 = OFF", "The other side did not begin to receive within 60 s."},
        {"C = B1; 10x NAK = B1; NAK = OFF", "Block 1 was not taken after 10 repeats."},
        {"C = B1; +15138 =; +1 = B1; NAK = B1; 2x ACK =; +339 = EOT; 10x +15139 = EOT; +15139 = OFF",
         "Everything was sent, but the other side did not confirm the end."},
        // One CAN is noise, two are the end, also before the block has left.
        {"C = B1; CAN ACK = EOT; CAN =; CAN =", "The other side has cancelled."},
        {"C CAN CAN =", "The other side has cancelled."},
        {"C = B1; STOP = OFF; ACK =", "Cancelled."},
    };
    for (const auto& [script, message] : cases) {
        XmodemSender sender("ABC", k_block_time, ManualClock().now());
        converse(sender, script, message);
    }
}

// Fault: a sender of another maker is not understood, is asked too soon or too late, or can make a
// file of the wrong bytes.
TEST(XmodemReceiver, Conversations) {
    const std::pair<const char*, const char*> cases[] = {
        {"= C; B1 = ACK; EOT = NAK; EOT = ACK", "128 bytes received."},
        // An end that was noise.
        {"= C; B1 = ACK; EOT = NAK; B2 = ACK; EOT = NAK", ""},
        // The sum after four calls; a CRC block that was under way then.
        {"= C; 3x +3000 = C; +2999 =; +1 = NAK; S1 = ACK; S2 = ACK", ""},
        {"= C; 3x +3000 = C; +3000 = NAK; B1 = ACK; B2 = ACK", ""},
        // A block that comes twice is acknowledged and not kept.
        {"= C; B1 = ACK; B1 = ACK; B2 = ACK; EOT = NAK; EOT = ACK", "256 bytes received."},
        // A block cut short, and bad ones, which are refused when the line is quiet.
        {"= C; B1 = ACK; B2- =; +999 =; +1 = NAK; B2 = ACK", ""},
        {"= C; B1 = ACK; B2 00 00 = ACK; B3~ =; +249 01 =; +249 =; +1 = NAK", ""},
        {"= C; B1~ =; +250 = C; 01 01 FD B1 =; +250 = C; B1 = ACK", ""},
        {"= C; B1 = ACK; 9x +10000 = NAK; B2 = ACK; 10x +10000 = NAK; +10000 = OFF",
         "Block 3 did not come after 10 repeats."},
        {"= C; 3x +3000 = C; +3000 = NAK; 6x +10000 = NAK; +10000 = OFF",
         "The other side did not begin to send."},
        {"= C; B1 = ACK; B3 = OFF", "Block 3 came instead of block 2."},
        // The first block of another protocol.
        {"= C; B0 = OFF", "Block 0 came instead of block 1."},
        {"= C; B1 = ACK; CAN =; B2 = ACK; CAN CAN =", "The other side has cancelled."},
        {"= C; 01 01 FE 41 CAN CAN CAN 08 08 =; +1000 =", "The other side has cancelled."},
        {"= C; B1 = ACK; STOP = OFF; B2 =", "Cancelled."},
    };
    for (const auto& [script, message] : cases) {
        XmodemReceiver receiver{ManualClock().now()};
        converse(receiver, script, message);
    }
}

// Fault: a line that never falls quiet holds the transfer for ever.
TEST(XmodemReceiver, GivesUpOnALineThatNeverFallsQuiet) {
    ManualClock clock;
    XmodemReceiver receiver(clock.now());
    for (int i = 0; i < 3000 && !receiver.finished(); ++i) {
        clock.advance(milliseconds(50));
        receiver.feed("\x01 babble", clock.now());
        receiver.tick(clock.now());
    }
    EXPECT_EQ(receiver.message(), "The other side did not begin to send.");
}

// Fault: some single error on the line, wherever it strikes and however the line cuts the stream, spoils
// the file unnoticed, doubles or drops a block, or ends the transfer.
TEST(Xmodem, OneErrorAnywhereCostsNothingButTime) {
    using Change = void (*)(std::string&, std::size_t);
    const std::pair<const char*, Change> kinds[] = {
        {"dropped", [](std::string& bytes, std::size_t at) { bytes.erase(at, 1); }},
        {"doubled", [](std::string& bytes, std::size_t at) { bytes.insert(at, 1, bytes[at]); }},
        {"garbled",
         [](std::string& bytes, std::size_t at) { bytes[at] = static_cast<char>(bytes[at] ^ 0x51); }},
        {"a NAK before it", [](std::string& bytes, std::size_t at) { bytes.insert(at, 1, k_nak); }},
        {"an end before it", [](std::string& bytes, std::size_t at) { bytes.insert(at, 1, k_eot); }},
        {"all lost", [](std::string& bytes, std::size_t) { bytes.clear(); }},
    };
    const std::string file = sample_file(300);
    int errors = 0;  // that the sender knows of
    const auto run = [&](bool forth, std::size_t position, Change change) {
        TransferRig rig;
        rig.piece = position % 2 == 0 ? 1 : std::string::npos;
        (forth ? rig.forth : rig.back).spoil = [&](std::string& bytes, std::size_t offset) {
            if (position >= offset && position < offset + bytes.size())
                change(bytes, position - offset);
        };
        XmodemSender sender(file, k_block_time, rig.clock.now());
        XmodemReceiver receiver(rig.clock.now());
        rig.run(sender, receiver);
        EXPECT_EQ(receiver.state(), TransferState::done) << receiver.message();
        EXPECT_EQ(receiver.file(), filled_up(file));
        errors += sender.progress().errors;
        // The very last ACK is beyond help: the receiver is gone by then.
        EXPECT_TRUE(sender.progress().bytes == 300U &&
                    (sender.state() == TransferState::done || (!forth && position == 5)));
    };
    for (const auto& [name, change] : kinds) {
        for (std::size_t i = 0; i < 3 * 133 + 2 + 6 && !HasFailure(); ++i) {
            const bool forth = i < 3 * 133 + 2;
            SCOPED_TRACE(testing::Message() << name << (forth ? " forth " : " back ") << i);
            run(forth, forth ? i : i - (3 * 133 + 2), change);
        }
    }
    EXPECT_GE(errors, 6 * 3 * 133);
}

// Fault: a sender without end fills the memory.
TEST(XmodemReceiver, RefusesAFileWithoutEnd) {
    ManualClock clock;
    XmodemReceiver receiver(clock.now());
    for (int call = 0; call < 4; ++call) {  // to the sum, which is quicker to work out
        clock.advance(XmodemReceiver::k_crc_wait);
        receiver.tick(clock.now());
    }
    std::string block = bytes_of("S0");
    for (std::size_t number = 1; !receiver.finished() && number < 140'000; ++number) {
        block[1] = static_cast<char>(number);
        block[2] = static_cast<char>(255 - number);
        receiver.feed(block, clock.now());
    }
    EXPECT_EQ(receiver.message(), "The file is longer than 16 MB.");
    EXPECT_TRUE(receiver.take_output(0).ends_with(k_xmodem_cancel));
}

}  // namespace
}  // namespace ampdesk
