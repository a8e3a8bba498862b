// The shared line: output that waits, input in bounded chunks, and who gets it.
#include "terminal/terminal_line.h"

#include <gtest/gtest.h>

#include "tests/support/modem_port.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

struct TerminalLineTest : testing::Test {
    TerminalLineTest() {
        line.on_received = [this](std::string_view chunk) { received.emplace_back(chunk); };
        line.on_change = [this] { changes.push_back(line.is_connected()); };
        line.add_watcher([this](const TerminalTraffic& traffic) {
            watched.push_back((traffic.sent ? ">" : "<") + std::string(traffic.bytes));
        });
        line.open({});
    }
    ManualClock clock;
    ModemPort port{clock};
    TerminalLine line{&port, clock};
    Texts received, watched;
    std::vector<bool> changes;
};

// A slow driver loses, doubles or reorders bytes, or holds up the caller; the queue grows without end, a
// part of what is refused is sent, or what was typed before an unplugging or a closing goes to whoever is
// there after it.
TEST_F(TerminalLineTest, OutputWaitsForASlowDriver) {
    port.room = 2;
    EXPECT_TRUE(line.send("abc"));
    EXPECT_TRUE(line.send("de"));
    EXPECT_EQ(port.sent, "ab");
    EXPECT_FALSE(line.output_left());
    line.pump();
    port.room = 3;
    line.pump();
    EXPECT_EQ(port.sent, "abcde");
    EXPECT_EQ(watched, (Texts{">ab", ">cde"}));
    EXPECT_TRUE(line.output_left());
    port.drained = false;  // the driver has taken it all and not sent it yet
    EXPECT_FALSE(line.output_left());

    EXPECT_FALSE(line.send(std::string(65537, 'x')));
    EXPECT_TRUE(line.send(std::string(65536, 'y')));
    EXPECT_FALSE(line.send("z"));
    EXPECT_EQ(line.waiting(), 65536U);
    port.plug(false);
    EXPECT_FALSE(line.send("lost"));
    EXPECT_TRUE(line.output_left());
    port.plug(true);
    EXPECT_EQ(line.waiting(), 0U);
    EXPECT_EQ(changes, (std::vector{true, false, true}));
    line.send("old");
    line.open({});
    EXPECT_EQ(line.waiting(), 0U);
}

// A chunk so large that the text box holds more than its limit, a rest that is lost, or one that stands
// behind a discard in the same read and is handed on after all.
TEST_F(TerminalLineTest, HandsOnWhatCameInBoundedChunks) {
    const std::string chunk(4096, 'a');
    port.arrive(chunk + chunk + "c");
    line.pump();
    EXPECT_EQ(received, (Texts{chunk, chunk, "c"}));
    line.on_received = [this](std::string_view bytes) {
        received.emplace_back(bytes);
        line.discard_input();
    };
    port.arrive(chunk + "d");
    line.pump();
    EXPECT_EQ(received.size(), 4U);
    EXPECT_EQ(port.discards, 1);
    port.arrive("later");
    line.pump();
    EXPECT_EQ(received.back(), "later");
}

// The terminal and a transfer eat each other's bytes; a watcher is blind during a transfer.
TEST_F(TerminalLineTest, AHolderGetsTheBytesInsteadOfTheTerminal) {
    Texts held;
    int ended = 0;
    const LineHolder holder{.received =
                                [&](std::string_view chunk) {
                                    held.emplace_back(chunk);
                                    if (chunk == "end")
                                        line.release();
                                },
                            .ended = [&] { ++ended; }};
    ASSERT_TRUE(line.take(holder));
    EXPECT_FALSE(line.take(holder));
    for (const char* text : {"one", "end", "two"}) {
        port.arrive(text);
        line.pump();
    }
    EXPECT_EQ(held, (Texts{"one", "end"}));
    EXPECT_EQ(received, Texts{"two"});
    EXPECT_EQ(watched, (Texts{"<one", "<end", "<two"}));
    ASSERT_TRUE(line.take(holder));
    EXPECT_EQ(ended, 0);
    line.close();
    EXPECT_EQ(ended, 1);
    EXPECT_FALSE(line.taken() || line.take(holder));
    TerminalLine demonstration(nullptr, clock);
    EXPECT_EQ(demonstration.open({}).error, PortError::not_found);
    EXPECT_FALSE(demonstration.send("x") || demonstration.take({}) || demonstration.is_open());
}

}  // namespace
}  // namespace ampdesk
