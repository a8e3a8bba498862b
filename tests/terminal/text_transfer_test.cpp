// Plain text over the line: line ends, silence, limits, and what the operator ends or cancels.
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace ampdesk
