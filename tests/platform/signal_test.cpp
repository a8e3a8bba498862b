// A signal and the life of its subscriptions.
#include "platform/signal.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace ampdesk {
namespace {

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
