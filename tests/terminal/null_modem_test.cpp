// What the Null Modem Test says about lines and loop-backs of every kind.
#include <gtest/gtest.h>

#include "terminal/null_modem_test.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds k_character{1};

// Fault: a finding is told that was not made; a dead line is called sound or the other way round.
TEST(NullModemTest, TellsWhatComesBack) {
    const struct {
        const char* name;
        std::vector<std::string> received;
        const char* said;
    } cases[] = {
        {"whole", {"<loop-back test 2A>"}, "the text came back in 7 ms."},
        {"in pieces, among others", {"noise<loop", "-back test 2", "A>OK"}, "the text came back in 7 ms."},
        {"nothing", {}, "nothing came back within a second."},
        {"an older one", {"<loop-back test 29>"}, "19 bytes came in, but not the text."},
        {"a flood", {std::string(9000, 'x'), "y"}, "4096 bytes came in, but not the text."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ManualClock clock;
        NullModemTest test(std::nullopt, 42, k_character, clock.now());
        EXPECT_EQ(test.take_output(512), "<loop-back test 2A>");
        clock.advance(milliseconds(7));
        for (const std::string& bytes : c.received) test.feed(bytes, clock.now());
        if (!test.finished()) {
            clock.advance(milliseconds(1000 + 2 * 19 - 7 - 1));
            test.tick(clock.now());
            EXPECT_FALSE(test.finished());
            clock.advance(milliseconds(1));
            test.tick(clock.now());
        }
        EXPECT_EQ(test.state(), TransferState::done);
        EXPECT_NE(
            test.message().find(std::string("Modem lines: this port shows none.\nLoop-back: ") + c.said),
            std::string::npos)
            << test.message();
    }
}

// Fault: lines are mixed up.
TEST(NullModemTest, TellsTheModemLines) {
    const struct {
        ModemLines lines;
        const char* said;
    } cases[] = {
        {{.cts = true, .dsr = true, .carrier = true},
         "Modem lines: CTS on, DSR on, carrier on, ring off. The other side is there and ready.\n"},
        {{.cts = true}, "Modem lines: CTS on, DSR off, carrier off, ring off. It takes data (CTS), but"},
        {{.dsr = true, .ring = true}, "CTS off, DSR on, carrier off, ring on. It is there (DSR), but"},
        {{}, "CTS off, DSR off, carrier off, ring off. Nothing is connected,"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.said);
        NullModemTest test(c.lines, 1, k_character, {});
        test.tick(Instant::max());
        EXPECT_NE(test.message().find(c.said), std::string::npos) << test.message();
    }
}

}  // namespace
}  // namespace ampdesk
