// XMODEM against literal bytes, against itself over a spoilt line, and on the clock. What another
// implementation makes of it is in xmodem_peer_test.cpp.
#include <gtest/gtest.h>

#include "terminal/xmodem_receiver.h"
#include "terminal/xmodem_sender.h"
#include "tests/support/hex_bytes.h"
#include "tests/terminal/transfer_rig.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds k_block_time{139};  // 133 bytes at 9600 baud

// One step of a conversation: time passes, bytes come in, bytes go out.
struct Step {
    milliseconds later{0};
    std::string in;   // hexadecimal
    std::string out;  // hexadecimal; a block is shortened to its first four bytes and its check
};

using Steps = std::vector<Step>;

std::string shortened(const std::string& bytes) {
    if (bytes.size() < 132)
        return to_hex(bytes);
    return to_hex(bytes.substr(0, 4)) + " .. " + to_hex(bytes.substr(131));
}

void converse(Transfer& transfer, ManualClock& clock, const Steps& steps) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        SCOPED_TRACE("step " + std::to_string(i));
        clock.advance(steps[i].later);
        transfer.feed(hex_bytes(steps[i].in), clock.now());
        transfer.tick(clock.now());
        EXPECT_EQ(shortened(transfer.take_output(512)), steps[i].out);
    }
}

// The same `count` times.
Steps times(int count, const Step& step) {
    return Steps(static_cast<std::size_t>(count), step);
}

Steps operator+(Steps a, const Steps& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

struct Conversation {
    const char* name;
    Steps steps;
    TransferState state;
    const char* message;
};

const char* const k_cancel = "18 18 18 18 18 08 08 08 08 08";
const char* const k_a_crc = "01 01 FE 41 .. 41 4B";  // "ABC" and 125 times 1A
const char* const k_a_sum = "01 01 FE 41 .. 78";

// Fault: a receiver of another maker does not understand the blocks, or the sender misunderstands it.
TEST(XmodemSender, Conversations) {
    const milliseconds answer_limit = k_block_time + XmodemSender::k_answer_limit;
    const Conversation cases[] = {
        {"CRC, the end refused once",
         {{{}, "", ""}, {{}, "43", k_a_crc}, {{}, "06", "04"}, {{}, "15", "04"}, {{}, "06", ""}},
         TransferState::done,
         "3 bytes sent."},
        {"sum",
         {{{}, "15", k_a_sum}, {{}, "06", "04"}, {{}, "06", ""}},
         TransferState::done,
         "3 bytes sent."},
        {"noise before the start and between; a late wish for the CRC",
         {{{}, "24 0D 06", ""}, {{}, "15", k_a_sum}, {{}, "7F 04", ""}, {{}, "43", k_a_crc}},
         TransferState::running,
         ""},
        {"two calls at once are one; the second answer to a block sent twice is not the next one's",
         {{{}, "43 43", k_a_crc},
          {{}, "15", k_a_crc},
          {{}, "06", ""},
          {milliseconds(100), "06", ""},
          {milliseconds(238), "", ""},
          {milliseconds(1), "", "04"}},
         TransferState::running,
         ""},
        {"silence after a block",
         {{{}, "43", k_a_crc}, {answer_limit - milliseconds(1), "", ""}, {milliseconds(1), "", k_a_crc}},
         TransferState::running,
         ""},
        {"nobody begins",
         {{seconds(60) - milliseconds(1), "", ""}, {milliseconds(1), "", k_cancel}},
         TransferState::failed,
         "The other side did not begin to receive within 60 s."},
        {"a block refused for ever",
         times(1, {{}, "43", k_a_crc}) + times(10, {{}, "15", k_a_crc}) + times(1, {{}, "15", k_cancel}),
         TransferState::failed, "Block 1 was not taken after 10 repeats."},
        {"the end never confirmed",
         Steps{{{}, "43", k_a_crc}, {{}, "06", "04"}} + times(10, {answer_limit, "", "04"}) +
             times(1, {answer_limit, "", k_cancel}),
         TransferState::failed, "Everything was sent, but the other side did not confirm the end."},
        {"one CAN is noise, two are the end",
         {{{}, "43", k_a_crc}, {{}, "18 06", "04"}, {{}, "18", ""}, {{}, "18", ""}},
         TransferState::failed,
         "The other side has cancelled."},
        {"two CAN before the block has left",
         {{{}, "43 18 18", ""}},
         TransferState::failed,
         "The other side has cancelled."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ManualClock clock;
        XmodemSender sender("ABC", k_block_time, clock.now());
        converse(sender, clock, c.steps);
        EXPECT_EQ(sender.state(), c.state);
        EXPECT_EQ(sender.message(), c.message);
    }
}

std::string block(int number, XmodemCheck check = XmodemCheck::crc) {
    return to_hex(xmodem_block(static_cast<std::uint8_t>(number), "ABC", check));
}

std::string without(std::string hex, std::size_t first_byte, std::size_t count) {
    return hex.erase(3 * first_byte, 3 * count);
}

// Fault: a sender of another maker is not understood, is asked too soon or too late, or can make a
// file of the wrong bytes.
TEST(XmodemReceiver, Conversations) {
    const Steps calls_for_crc = times(1, {{}, "", "43"}) + times(3, {seconds(3), "", "43"});
    const Step begin{{}, "", "43"};
    const Step first{{}, block(1), "06"};
    const Conversation cases[] = {
        {"one block; the end is believed when it comes twice",
         {begin, first, {{}, "04", "15"}, {{}, "04", "06"}},
         TransferState::done,
         "128 bytes received."},
        {"an end that was noise",
         {begin, first, {{}, "04", "15"}, {{}, block(2), "06"}, {{}, "04", "15"}},
         TransferState::running,
         ""},
        {"an empty file",
         {begin, {{}, "04", "15"}, {{}, "04", "06"}},
         TransferState::done,
         "0 bytes received."},
        {"falls back to the sum after four calls",
         calls_for_crc + Steps{{seconds(3) - milliseconds(1), "", ""},
                               {milliseconds(1), "", "15"},
                               {{}, block(1, XmodemCheck::sum), "06"}},
         TransferState::running, ""},
        {"a CRC block that was under way at the fall-back",
         calls_for_crc + Steps{{seconds(3), "", "15"}, {{}, block(1), "06"}, {{}, block(2), "06"}},
         TransferState::running, ""},
        {"a first block with a bad CRC is asked for by the same letter",
         {begin, {{}, without(block(1), 5, 1) + " 00", ""}, {milliseconds(250), "", "43"}, first},
         TransferState::running,
         ""},
        {"a repeated block is acknowledged and not kept twice; number 0 follows 255",
         times(1, begin) + times(1, first) + times(1, first) + times(1, {{}, block(2), "06"}),
         TransferState::running, ""},
        {"a block cut short, then silence",
         {begin,
          first,
          {{}, without(block(2), 50, 1), ""},
          {milliseconds(999), "", ""},
          {milliseconds(1), "", "15"},
          {{}, block(2), "06"}},
         TransferState::running,
         ""},
        {"a bad block is refused when the line has fallen quiet",
         {begin,
          first,
          {{}, block(2) + " 00 00", "06"},
          {{}, without(block(3), 9, 1) + " 00", ""},
          {milliseconds(249), "01", ""},
          {milliseconds(249), "", ""},
          {milliseconds(1), "", "15"}},
         TransferState::running,
         ""},
        {"a number that does not fit its complement",
         {begin, {{}, "01 01 FD" + block(1).substr(8), ""}, {milliseconds(250), "", "43"}},
         TransferState::running,
         ""},
        {"silence between blocks",
         times(1, begin) + times(1, first) + times(10, {seconds(10), "", "15"}) +
             times(1, {seconds(10), "", k_cancel}),
         TransferState::failed, "Block 2 did not come after 10 repeats."},
        {"nobody sends",
         calls_for_crc + times(1, {seconds(3), "", "15"}) + times(6, {seconds(10), "", "15"}) +
             times(1, {seconds(10), "", k_cancel}),
         TransferState::failed, "The other side did not begin to send."},
        {"a block left out",
         {begin, first, {{}, block(3), k_cancel}},
         TransferState::failed,
         "Block 3 came instead of block 2."},
        {"block 0 of another protocol",
         {begin, {{}, block(0), k_cancel}},
         TransferState::failed,
         "Block 0 came instead of block 1."},
        {"one CAN is noise, two are the end",
         {begin, first, {{}, "18", ""}, {{}, block(2), "06"}, {{}, "18 18", ""}},
         TransferState::failed,
         "The other side has cancelled."},
        {"cancelled in the middle of a block",
         {begin, {{}, "01 01 FE 41 41 18 18 18 08 08", ""}, {seconds(1), "", ""}},
         TransferState::failed,
         "The other side has cancelled."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ManualClock clock;
        XmodemReceiver receiver(clock.now());
        converse(receiver, clock, c.steps);
        EXPECT_EQ(receiver.state(), c.state);
        EXPECT_EQ(receiver.message(), c.message);
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

// Fault: the numbers do not wrap, the last block is cut or filled wrongly, bytes are changed, or it
// matters how the line cuts the stream.
TEST(Xmodem, EverySizeArrivesWholeHoweverTheStreamIsCut) {
    for (const std::size_t size : {0, 1, 127, 128, 129, 33'000}) {
        SCOPED_TRACE(size);
        std::string streams;
        for (const std::size_t piece : {std::size_t{1}, std::size_t{7}, std::string::npos}) {
            TransferRig rig;
            rig.piece = piece;
            const std::string file = sample_file(size);
            XmodemSender sender(file, k_block_time, rig.clock.now());
            XmodemReceiver receiver(rig.clock.now());
            rig.run(sender, receiver);
            EXPECT_EQ(sender.state(), TransferState::done);
            EXPECT_EQ(receiver.state(), TransferState::done);
            EXPECT_EQ(receiver.file(), filled_up(file));
            EXPECT_EQ(sender.progress().bytes, size);
            if (streams.empty())
                streams = rig.forth.stream + rig.back.stream;
            EXPECT_EQ(rig.forth.stream + rig.back.stream, streams);
        }
    }
}

// Fault: some single error on the line, wherever it strikes, spoils the file unnoticed, doubles or
// drops a block, or ends the transfer.
TEST(Xmodem, OneErrorAnywhereCostsNothingButTime) {
    using Change = void (*)(std::string&, std::size_t);
    const struct {
        const char* name;
        Change change;
    } kinds[] = {
        {"dropped", [](std::string& bytes, std::size_t at) { bytes.erase(at, 1); }},
        {"doubled", [](std::string& bytes, std::size_t at) { bytes.insert(at, 1, bytes[at]); }},
        {"garbled",
         [](std::string& bytes, std::size_t at) { bytes[at] = static_cast<char>(bytes[at] ^ 0x51); }},
        {"a NAK before it", [](std::string& bytes, std::size_t at) { bytes.insert(at, 1, k_nak); }},
        {"an end before it", [](std::string& bytes, std::size_t at) { bytes.insert(at, 1, k_eot); }},
        {"all lost", [](std::string& bytes, std::size_t) { bytes.clear(); }},
    };
    const std::string file = sample_file(300);
    TransferRig smooth;
    XmodemSender smooth_sender(file, k_block_time, smooth.clock.now());
    XmodemReceiver smooth_receiver(smooth.clock.now());
    smooth.run(smooth_sender, smooth_receiver);
    ASSERT_EQ(smooth.forth.stream.size(), 3 * 133 + 2U);
    ASSERT_EQ(smooth.back.stream, "C\x06\x06\x06\x15\x06");

    const auto run = [&](bool forth, std::size_t position, Change change) {
        TransferRig rig;
        (forth ? rig.forth : rig.back).spoil = [&](std::string& bytes, std::size_t offset) {
            if (position >= offset && position < offset + bytes.size())
                change(bytes, position - offset);
        };
        XmodemSender sender(file, k_block_time, rig.clock.now());
        XmodemReceiver receiver(rig.clock.now());
        rig.run(sender, receiver);
        EXPECT_EQ(receiver.state(), TransferState::done) << receiver.message();
        EXPECT_EQ(receiver.file(), filled_up(file));
        // The very last ACK is beyond help: the receiver is gone by then.
        EXPECT_TRUE(sender.state() == TransferState::done || (!forth && position == 5)) << sender.message();
    };
    for (const auto& kind : kinds) {
        for (std::size_t i = 0; i < smooth.forth.stream.size() && !HasFailure(); ++i) {
            SCOPED_TRACE(std::string(kind.name) + " forth " + std::to_string(i));
            run(true, i, kind.change);
        }
        for (std::size_t i = 0; i < smooth.back.stream.size(); ++i) {
            SCOPED_TRACE(std::string(kind.name) + " back " + std::to_string(i));
            run(false, i, kind.change);
        }
    }
}

// Fault: the other side is left waiting, or goes on, when the operator cancels.
TEST(Xmodem, CancellingEndsBothSides) {
    for (const bool by_sender : {true, false}) {
        TransferRig rig;
        XmodemSender sender(sample_file(1000), k_block_time, rig.clock.now());
        XmodemReceiver receiver(rig.clock.now());
        Transfer& hurried = by_sender ? static_cast<Transfer&>(sender) : receiver;
        Transfer& other = by_sender ? static_cast<Transfer&>(receiver) : sender;
        rig.back.spoil = [&](std::string&, std::size_t offset) {
            if (offset == 3)
                hurried.cancel();
        };
        rig.run(sender, receiver);
        EXPECT_EQ(hurried.state(), TransferState::cancelled);
        EXPECT_EQ(other.message(), "The other side has cancelled.");
        EXPECT_LT(rig.clock.now() - ManualClock().now(), seconds(5));
    }
}

// Fault: a sender without end fills the memory.
TEST(XmodemReceiver, RefusesAFileWithoutEnd) {
    ManualClock clock;
    XmodemReceiver receiver(clock.now());
    for (int call = 0; call < 4; ++call) {  // to the sum, which is quicker to work out
        clock.advance(XmodemReceiver::k_crc_wait);
        receiver.tick(clock.now());
    }
    std::string block = xmodem_block(0, "x", XmodemCheck::sum);
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
