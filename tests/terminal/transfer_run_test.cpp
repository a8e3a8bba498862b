// A transfer on the terminal line: who holds it when, what is swallowed, what ends it.
#include <gtest/gtest.h>

#include "terminal/text_transfer.h"
#include "terminal/transfer_run.h"
#include "terminal/xmodem_receiver.h"
#include "terminal/xmodem_sender.h"
#include "tests/support/modem_port.h"

namespace ampdesk {
namespace {

using std::chrono::milliseconds;

struct TransferRunTest : testing::Test {
    TransferRunTest() {
        line.on_received = [this](std::string_view bytes) { terminal += bytes; };
        line.open({.device = "line", .baud = 1200, .parity = 'e'});
    }
    void pass(milliseconds time) {
        for (milliseconds gone{0}; gone < time; gone += TransferRun::k_tick) {
            clock.advance(TransferRun::k_tick);
            run->tick();
        }
    }
    bool start(Transfer& transfer) {
        run.emplace(line, transfer);
        return run->start();
    }

    ManualClock clock;
    ModemPort port{clock};
    TerminalLine line{&port, clock};
    std::string terminal;
    std::optional<TransferRun> run;
};

// Fault: the rest of a block runs over the terminal, which takes it for a broken call; a line that never
// falls quiet is never given back.
TEST_F(TransferRunTest, SwallowsTheRestOfACancelledTransfer) {
    XmodemReceiver receiver(clock.now());
    ASSERT_TRUE(start(receiver));
    EXPECT_EQ(port.sent, "C");
    port.drained = false;  // also with a line that does not take anything
    receiver.cancel();
    for (int i = 0; i < 4; ++i) port.arrive(std::string(40, 'x'), milliseconds(240 * i));
    pass(milliseconds(3 * 240 + 250));
    EXPECT_FALSE(run->over());
    pass(milliseconds(100));
    EXPECT_TRUE(run->over());
    EXPECT_EQ(terminal, "");
    EXPECT_EQ(port.sent, "C\x18\x18\x18\x18\x18\b\b\b\b\b");
    TextReceiver babbled_at;
    ASSERT_TRUE(start(babbled_at));
    babbled_at.cancel();
    for (int i = 0; i < 100; ++i) port.arrive("x", milliseconds(50 * i));
    pass(milliseconds(3100));
    EXPECT_TRUE(run->over());
}

// Fault: a whole text is thrown at the driver, so that a cancelled one goes on for minutes; or a
// block of a protocol is torn.
TEST_F(TransferRunTest, SendsATextAsTheLineTakesIt) {
    TextSender text(std::string(100, 'x'));
    ASSERT_TRUE(start(text));
    EXPECT_EQ(port.sent.size(), 54U);  // 500 ms at 1200 baud with parity
    port.drained = false;
    pass(milliseconds(5000));
    EXPECT_EQ(port.sent.size(), 54U);
    port.drained = true;
    pass(milliseconds(50));
    EXPECT_EQ(std::exchange(port.sent, {}), std::string(100, 'x'));
    EXPECT_TRUE(run->over());
    XmodemSender blocks("abc", milliseconds(1), clock.now());
    ASSERT_TRUE(start(blocks));
    port.arrive("C");
    pass(milliseconds(50));
    EXPECT_EQ(port.sent.size(), 133U);
}

// Fault: silence is counted while the program was busy, although the answer had come in; a closed or
// unplugged port leaves the transfer waiting, or is called a time-out.
TEST_F(TransferRunTest, EndsWithThePort) {
    TextReceiver closed;
    ASSERT_TRUE(start(closed));
    port.arrive("first");
    pass(milliseconds(50));
    port.arrive("second", milliseconds(100));
    clock.advance(TextReceiver::k_silence);
    run->tick();
    EXPECT_EQ(closed.state(), TransferState::running);
    line.close();
    EXPECT_TRUE(run->over());
    EXPECT_EQ(closed.message(), "The terminal port was closed.");
    TextReceiver unplugged;
    EXPECT_FALSE(start(unplugged));
    line.open({.device = "line"});
    ASSERT_TRUE(start(unplugged));
    port.unplugged = true;
    pass(milliseconds(500));
    EXPECT_TRUE(run->over());
    EXPECT_EQ(unplugged.message(), "The connection of the terminal port was lost.");
}

}  // namespace
}  // namespace ampdesk
