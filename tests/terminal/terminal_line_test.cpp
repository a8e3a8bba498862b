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

// A slow driver loses, doubles or reorders bytes, or holds up the caller.
TEST_F(TerminalLineTest, OutputWaitsForASlowDriver) {
    port.room = 2;
    EXPECT_TRUE(line.send("abc"));
    EXPECT_TRUE(line.send("de"));
    EXPECT_EQ(port.sent, "ab");
    EXPECT_EQ(line.waiting(), 3U);
    EXPECT_FALSE(line.output_left());
    line.pump();
    port.room = 100;
    line.pump();
    EXPECT_EQ(port.sent, "abcde");
    EXPECT_EQ(watched, (Texts{">ab", ">cde"}));
    EXPECT_TRUE(line.output_left());
    port.drained = false;  // the driver has taken it all and not sent it yet
    EXPECT_FALSE(line.output_left());
}

// The queue grows without end, or a part of what is refused is sent.
TEST_F(TerminalLineTest, WhatIsTooMuchIsRefusedWhole) {
    port.room = 0;
    const std::size_t limit = line.room();
    EXPECT_FALSE(line.send(std::string(limit + 1, 'x')));
    EXPECT_TRUE(line.send(std::string(limit, 'y')));
    EXPECT_FALSE(line.send("z"));
    EXPECT_EQ(line.waiting(), limit);
    line.drop_output();
    EXPECT_EQ(line.room(), limit);
}

// A chunk so large that the text box holds more than its limit, or a rest that is lost.
TEST_F(TerminalLineTest, HandsOnWhatCameInBoundedChunks) {
    port.arrive(std::string(4096, 'a') + std::string(4096, 'b') + "c");
    line.pump();
    EXPECT_EQ(received, (Texts{std::string(4096, 'a'), std::string(4096, 'b'), "c"}));
}

// What stands behind a discard in the same read is handed on after all.
TEST_F(TerminalLineTest, DiscardsWhatIsReadButNotHandedOn) {
    line.on_received = [this](std::string_view chunk) {
        received.emplace_back(chunk);
        line.discard_input();
    };
    port.arrive(std::string(5000, 'a'));
    port.arrive("later", std::chrono::milliseconds(1));
    line.pump();
    EXPECT_EQ(received.size(), 1U);
    EXPECT_EQ(port.discards, 1);
    clock.advance(std::chrono::milliseconds(1));
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
    EXPECT_EQ(ended, 0);
    ASSERT_TRUE(line.take(holder));
    line.close();
    line.close();
    EXPECT_EQ(ended, 1);
    EXPECT_FALSE(line.taken());
    EXPECT_FALSE(line.take(holder));
}

// What was typed before an unplugging goes to whoever is there after it.
TEST_F(TerminalLineTest, AnUnpluggedLineTakesNothingAndForgetsItsOutput) {
    port.room = 0;
    line.send("old");
    port.plug(false);
    EXPECT_FALSE(line.send("lost"));
    EXPECT_TRUE(line.is_open());
    EXPECT_TRUE(line.output_left());
    port.plug(true);
    port.room = 100;
    EXPECT_TRUE(line.send("new"));
    line.pump();
    EXPECT_EQ(port.sent, "new");
    EXPECT_EQ(changes, (std::vector{true, false, true}));
}

// The demonstration's line opens, or takes bytes.
TEST(TerminalLineWithoutPort, StaysClosed) {
    ManualClock clock;
    TerminalLine line(nullptr, clock);
    EXPECT_EQ(line.open({}).error, PortError::not_found);
    EXPECT_FALSE(line.send("x") || line.take({}) || line.is_open());
}

}  // namespace
}  // namespace ampdesk
