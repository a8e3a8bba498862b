// What the Null Modem Test says about lines and loop-backs of every kind.
#include <gtest/gtest.h>

#include "terminal/null_modem_test.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

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
