// Plain text over the line: line ends, silence, limits, and what the operator ends or cancels; and what the
// Null Modem Test says about lines and loop-backs of every kind.
#include <gtest/gtest.h>

#include "terminal/null_modem_test.h"
#include "terminal/text_transfer.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

// Fault: lines run together or are doubled at the other end, bytes get lost between two pieces, or a
// cancelled text goes on.
TEST(TextSender, SendsLinesWithTheLinesEnd) {
    const std::pair<const char*, const char*> cases[] = {
        {"a\nb\n", "a\r\nb\r\n"},       {"a\r\nb", "a\r\nb"}, {"a\r\r\n\nb", "a\r\n\r\n\r\nb"}, {"", ""},
        {"5 \xB0 C\r", "5 \xB0 C\r\n"},
    };
    for (const auto& [file, wanted] : cases) {
        for (const std::size_t piece : {1, 100}) {
            SCOPED_TRACE(testing::Message() << testing::PrintToString(file) << " by " << piece);
            TextSender sender(file);
            std::string sent;
            for (int i = 0; i < 20 && !sender.finished(); ++i) {
                const std::string next = sender.take_output(piece);
                EXPECT_LE(next.size(), piece);
                sent += next;
            }
            EXPECT_EQ(sent, wanted);
            EXPECT_EQ(sender.message(), std::to_string(sent.size()) + " bytes sent.");
        }
    }
    TextSender cancelled("one\ntwo\n");
    EXPECT_EQ(cancelled.take_output(4), "one\r");
    cancelled.cancel();
    EXPECT_EQ(cancelled.take_output(4), "");
    EXPECT_EQ(cancelled.state(), TransferState::cancelled);
    EXPECT_EQ(cancelled.progress().bytes, 4U);
}

// Fault: the text ends before it has begun, in a pause, or never; what the operator wants kept is thrown
// away, or the other way round; a text without end fills the memory.
TEST(TextReceiver, EndsAfterTenSecondsOfSilence) {
    ManualClock clock;
    TextReceiver receiver;
    clock.advance(std::chrono::hours(1));
    receiver.tick(clock.now());
    for (int i = 0; i < 2; ++i) {
        receiver.feed("line\r\n\x1A", clock.now());
        clock.advance(milliseconds(9999));
        receiver.tick(clock.now());
        EXPECT_EQ(receiver.state(), TransferState::running);
    }
    clock.advance(milliseconds(1));
    receiver.tick(clock.now());
    receiver.feed("late", clock.now());
    receiver.cancel();
    EXPECT_EQ(receiver.state(), TransferState::done);
    EXPECT_EQ(receiver.file(), "line\r\n\x1Aline\r\n\x1A");
    TextReceiver cancelled;
    cancelled.cancel();
    cancelled.end();
    EXPECT_EQ(cancelled.state(), TransferState::cancelled);
    TextReceiver flooded;
    const std::string chunk(1U << 20U, 'x');
    for (int i = 0; i < 17; ++i) flooded.feed(chunk, {});
    EXPECT_EQ(flooded.message(), "The text is longer than 16 MB.");
}

// Fault: a finding is told that was not made, a dead line is called sound or the other way round, or
// modem lines are mixed up.
TEST(NullModemTest, TellsWhatComesBack) {
    const std::string none = "Modem lines: this port shows none.\nLoop-back: ";
    const std::tuple<std::optional<ModemLines>, std::vector<std::string>, std::string> cases[] = {
        {{}, {"<loop-back test 2A>"}, none + "the text came back in 7 ms."},
        {{}, {"noise<loop", "-back test 2", "A>OK"}, none + "the text came back in 7 ms."},
        {{}, {}, none + "nothing came back within a second."},
        {{}, {"<loop-back test 29>"}, none + "19 bytes came in, but not the text."},
        {{}, {std::string(9000, 'x'), "y"}, none + "4096 bytes came in, but not the text."},
        {ModemLines{.cts = true, .dsr = true, .carrier = true},
         {},
         "Modem lines: CTS on, DSR on, carrier on, ring off. The other side is there and ready.\n"},
        {ModemLines{.cts = true},
         {},
         "Modem lines: CTS on, DSR off, carrier off, ring off. It takes data (CTS), but"},
        {ModemLines{.dsr = true, .ring = true},
         {},
         "Modem lines: CTS off, DSR on, carrier off, ring on. It is there (DSR), but"},
        {ModemLines{}, {}, "Modem lines: CTS off, DSR off, carrier off, ring off. Nothing is connected,"},
    };
    for (const auto& [lines, received, said] : cases) {
        SCOPED_TRACE(said);
        ManualClock clock;
        NullModemTest test(lines, 42, milliseconds(1), clock.now());
        EXPECT_EQ(test.take_output(512), "<loop-back test 2A>");
        clock.advance(milliseconds(7));
        for (const std::string& bytes : received) test.feed(bytes, clock.now());
        if (!test.finished()) {
            clock.advance(milliseconds(1000 + 2 * 19 - 7 - 1));
            test.tick(clock.now());
            EXPECT_FALSE(test.finished());
            clock.advance(milliseconds(1));
            test.tick(clock.now());
        }
        EXPECT_EQ(test.state(), TransferState::done);
        EXPECT_EQ(NullModemTest({}, 43, milliseconds(1), {}).take_output(512), "<loop-back test 2B>");
        EXPECT_TRUE(test.message().starts_with(said)) << test.message();
    }
}

}  // namespace
}  // namespace ampdesk
