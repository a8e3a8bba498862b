// The order in which a mailbox gives its values out, and when it calls its reader. Under threads it is tested
// in tests/threads.
#include "platform/mailbox.h"

#include <gtest/gtest.h>

namespace ampdesk {
namespace {

using Texts = std::vector<std::string>;

// Fault: a newer value goes behind what was put after the one it replaces, replaces another key's or one that
// has been taken, or a value without a key is replaced.
TEST(Mailbox, NewestTakesThePlaceOfTheOneThatWaits) {
    Mailbox<std::string> box;
    box.put_newest("panel 1", "panel 1 old");
    box.put("message");
    box.put_newest("panel 2", "panel 2");
    box.put("message");
    box.put_newest("panel 1", "panel 1 new");
    EXPECT_EQ(box.take_all(), (Texts{"panel 1 new", "message", "panel 2", "message"}));
    EXPECT_EQ(box.take_all(), Texts{});
    box.put("message");
    box.put_newest("panel 1", "panel 1 newest");
    EXPECT_EQ(box.take_all(), (Texts{"message", "panel 1 newest"}));
}

// Fault: a piece is joined to one that has been taken, or goes behind what came after the first.
TEST(Mailbox, JoinsPiecesWhileTheyWait) {
    Mailbox<std::string> box;
    const auto join = [](std::string& waiting, std::string&& more) { waiting += more; };
    box.put_joined("text", "a", join);
    box.put("message");
    box.put_joined("text", "b", join);
    EXPECT_EQ(box.take_all(), (Texts{"ab", "message"}));
    box.put_joined("text", "c", join);
    EXPECT_EQ(box.take_all(), Texts{"c"});
}

// Fault: the reader is not woken for what comes first, is woken for each value, or is called with the lock
// held, so that it cannot take or answer from there.
TEST(Mailbox, CallsItsReaderForTheFirstValueOnly) {
    Mailbox<std::string, int> box;
    int calls = 0;
    box.on_first = [&] { ++calls; };
    const auto fill = [&] {
        box.put_newest(1, "a");
        box.put_newest(1, "b");
        box.put("c");
    };
    fill();
    EXPECT_EQ(calls, 1);
    box.take_all();
    fill();
    EXPECT_EQ(calls, 2);
    box.take_all();
    Texts taken;
    box.on_first = [&] { taken = box.take_all(); };
    box.put("d");
    EXPECT_EQ(taken, Texts{"d"});
}

}  // namespace
}  // namespace ampdesk
