// The order in which a mailbox gives its values out, and when it calls its reader. Under threads it is tested
// in tests/threads.
#include "platform/mailbox.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace ampdesk
