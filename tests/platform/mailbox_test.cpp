// The order in which a mailbox gives its values out, and when it calls its reader (under threads it is tested
// in tests/threads); a signal and the life of its subscriptions.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/mailbox.h"
#include "platform/signal.h"

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

// Fault: a newer value or piece goes behind what was put after the one it replaces or joins, takes another
// key's place or that of one that has been taken; a value without a key is replaced.
TEST(Mailbox, NewestAndPiecesTakeThePlaceOfWhatWaits) {
    Mailbox<std::string> box;
    const auto join = [](std::string& waiting, std::string&& more) { waiting += more; };
    box.put_newest("panel 1", "old");
    box.put("message");
    box.put_joined("text", "a", join);
    box.put_newest("panel 2", "other");
    box.put("message");
    box.put_joined("text", "b", join);
    box.put_newest("panel 1", "new");
    EXPECT_EQ(box.take_all(), (Texts{"new", "message", "ab", "other", "message"}));
    EXPECT_EQ(box.take_all(), Texts{});
    box.put("message");
    box.put_newest("panel 1", "newest");
    box.put_joined("text", "c", join);
    EXPECT_EQ(box.take_all(), (Texts{"message", "newest", "c"}));
}

// Fault: the reader is not woken for what comes first, is woken for each value, or is called with the lock
// held, so that it cannot take or answer from there.
TEST(Mailbox, CallsItsReaderForTheFirstValueOnly) {
    Mailbox<std::string, int> box;
    std::string calls;
    box.on_first = [&] { calls += "first "; };
    box.put_newest(1, "a");
    box.put_newest(1, "b");
    box.put("c");
    EXPECT_EQ(calls, "first ");
    Texts taken = box.take_all();
    box.on_first = [&] { taken = box.take_all(); };
    box.put("d");
    EXPECT_EQ(taken, Texts{"d"});
    box.put_newest(1, "e");
    EXPECT_EQ(taken, Texts{"e"});
}

// Fault: a subscriber is told twice, after its end, or not at all because another one ended first; one that
// outlives its signal ends in freed memory, or goes on when another takes its place.
TEST(Signal, TellsEverySubscriberUntilItEnds) {
    std::optional<Signal<int>> signal(std::in_place);
    std::string told;
    const auto note = [&](const std::string& name) {
        return [&told, name](int value) { told += name + std::to_string(value); };
    };
    Subscription late;
    Subscription second;
    Subscription first = signal->subscribe([&](int value) {
        note("a")(value);
        if (value == 2)
            second = {};
        if (value == 3)
            late = signal->subscribe(note("d"));
        if (value == 4)
            first = {};
    });
    second = signal->subscribe(note("b"));
    Subscription third = signal->subscribe(note("c"));
    for (int value = 1; value <= 6; ++value) {
        told += ' ';
        signal->publish(value);
        if (value == 5)
            third = std::move(late);
    }
    EXPECT_EQ(told, " a1b1c1 a2c2 a3c3 a4c4d4 c5d5 d6");
    signal.reset();
    third = {};
}

}  // namespace
}  // namespace ampdesk
