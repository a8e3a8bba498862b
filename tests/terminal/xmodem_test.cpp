// XMODEM against literal bytes, on the clock, against itself over a spoilt line, and with an independent
// implementation at the other end.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "platform/posix/posix_serial_port.h"
#include "platform/posix/system_clock.h"
#include "terminal/transfer_run.h"
#include "terminal/xmodem_receiver.h"
#include "terminal/xmodem_sender.h"
#include "tests/platform/far_end.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds k_block_time{139};  // 133 bytes at 9600 baud

// `size` bytes that repeat nowhere near, with every control character of the protocol among them.
std::string sample_file(std::size_t size) {
    std::string bytes;
    unsigned value = 1;
    for (std::size_t i = 0; i < size; ++i) {
        value = value * 1103515245U + 12345U;
        bytes += static_cast<char>(value >> 16U);
    }
    return bytes;
}

// As a receiver keeps it.
std::string filled_up(std::string bytes, std::size_t block = 128) {
    bytes.resize((bytes.size() + block - 1) / block * block, '\x1A');
    return bytes;
}

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
        std::string in_and_out[2];
        std::size_t side = 0;
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
                side = 1;
            else
                in_and_out[side] += bytes_of(word);
        }
        while (times-- > 0) {
            clock.advance(later);
            transfer.feed(in_and_out[0], clock.now());
            transfer.tick(clock.now());
            EXPECT_EQ(to_hex(transfer.take_output(512)), to_hex(in_and_out[1])) << step;
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

// Fault: a line that never falls quiet holds the transfer for ever, or a sender without end fills the memory.
TEST(XmodemReceiver, GivesUpOnWhatNeverEnds) {
    ManualClock clock;
    XmodemReceiver receiver(clock.now());
    for (int i = 0; i < 3000 && !receiver.finished(); ++i) {
        clock.advance(milliseconds(50));
        receiver.feed("\x01 babble", clock.now());
        receiver.tick(clock.now());
    }
    EXPECT_EQ(receiver.message(), "The other side did not begin to send.");
    XmodemReceiver flooded(clock.now());
    for (int call = 0; call < 4; ++call) {  // to the sum, which is quicker to work out
        clock.advance(XmodemReceiver::k_crc_wait);
        flooded.tick(clock.now());
    }
    std::string block = bytes_of("S0");
    for (std::size_t number = 1; !flooded.finished() && number < 140'000; ++number) {
        block[1] = static_cast<char>(number);
        block[2] = static_cast<char>(255 - number);
        flooded.feed(block, clock.now());
    }
    EXPECT_EQ(flooded.message(), "The file is longer than 16 MB.");
    EXPECT_TRUE(flooded.take_output(0).ends_with(k_xmodem_cancel));
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
    constexpr std::size_t k_sent = 3 * 133 + 2;
    constexpr std::size_t k_answered = 6;
    int errors = 0;  // that the sender knows of
    const auto run = [&](bool forth, std::size_t position, Change change) {
        ManualClock clock;
        XmodemSender sender(file, k_block_time, clock.now());
        XmodemReceiver receiver(clock.now());
        std::size_t before = 0;  // bytes in the direction that is spoilt
        const auto carry = [&](Transfer& from, Transfer& to, bool spoilt) {
            std::string bytes = from.take_output(512);
            const bool moved = !bytes.empty();
            if (spoilt) {
                const std::size_t at = position - std::exchange(before, before + bytes.size());
                if (at < bytes.size())
                    change(bytes, at);
            }
            const std::size_t piece = position % 2 == 0 ? 1 : 512;
            for (std::size_t at = 0; at < bytes.size(); at += piece)
                to.feed(std::string_view(bytes).substr(at, piece), clock.now());
            return moved;
        };
        for (int still = 0; still < 20'000 && !(sender.finished() && receiver.finished()); ++still) {
            bool moved = true;
            while (moved) {
                moved = carry(sender, receiver, forth);
                moved = carry(receiver, sender, !forth) || moved;
            }
            clock.advance(milliseconds(50));
            sender.tick(clock.now());
            receiver.tick(clock.now());
        }
        EXPECT_EQ(receiver.state(), TransferState::done) << receiver.message();
        EXPECT_EQ(receiver.file(), filled_up(file));
        errors += sender.progress().errors;
        // The very last ACK is beyond help: the receiver is gone by then.
        EXPECT_TRUE(sender.progress().bytes == 300U &&
                    (sender.state() == TransferState::done || (!forth && position + 1 == k_answered)));
    };
    for (const auto& [name, change] : kinds) {
        for (std::size_t i = 0; i < k_sent + k_answered && !HasFailure(); ++i) {
            const bool forth = i < k_sent;
            SCOPED_TRACE(testing::Message() << name << (forth ? " forth " : " back ") << i);
            run(forth, forth ? i : i - k_sent, change);
        }
    }
    EXPECT_GE(errors, 6 * 3 * 133);
}

// The programs sx and rx over the real serial line. Fault: files do not reach other programs or come from
// them, or are changed on the way.
TEST(XmodemPeer, FilesArriveWhole) {
    const std::tuple<std::vector<std::string>, std::size_t, std::size_t> cases[] = {
        {{"rx", "-q", "file"}, 0, 128},
        {{"rx", "-q", "file"}, 1024, 128},          // by the sum, blocks without filling
        {{"rx", "-q", "-c", "file"}, 34'000, 128},  // by the CRC, more blocks than numbers
        {{"sx", "-q", "-k", "file"}, 4096, 1024},   // in long blocks
        {{"sx", "-q", "file"}, 34'000, 128},
    };
    SystemClock clock;
    FarEnd far;
    PosixSerialPort port(clock);
    TerminalLine line(&port, clock);
    ASSERT_TRUE(line.open({.device = far.device()}).ok());
    const ScratchFolder folder;
    for (const auto& [command, size, block] : cases) {
        SCOPED_TRACE(command[0] + " " + std::to_string(size));
        const std::string file = sample_file(size);
        const bool sends = command[0] == "rx";
        if (!sends)
            folder.put("file", file);
        ChildProgram program(command, folder.path());
        XmodemSender sender(file, std::chrono::milliseconds(20), clock.now());
        XmodemReceiver receiver(clock.now());
        Transfer& transfer = sends ? static_cast<Transfer&>(sender) : receiver;
        TransferRun run(line, transfer);
        ASSERT_TRUE(run.start());
        const Instant limit = clock.now() + std::chrono::seconds(60);
        for (Instant next_tick = clock.now(); !run.over() && clock.now() < limit;) {
            far.send(program.receive(4096, 0));
            line.pump();
            program.send(far.receive(4096, 1));
            if (clock.now() < next_tick)
                continue;
            next_tick = clock.now() + TransferRun::k_tick;
            run.tick();
        }
        program.send(far.receive(4096, 1));
        EXPECT_EQ(transfer.state(), TransferState::done) << transfer.message();
        EXPECT_EQ(program.end(), 0);
        EXPECT_EQ(sends ? file_bytes(folder / "file") : receiver.file(), filled_up(file, block));
    }
}

}  // namespace
}  // namespace ampdesk
