// A signal and the life of its subscriptions.
#include "platform/signal.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace ampdesk {
namespace {

// Fault: a subscriber is told twice, after its end, or not at all because another one ended first; one that
// outlives its signal ends in freed memory.
TEST(Signal, TellsEverySubscriberUntilItEnds) {
    std::optional<Signal<int>> signal(std::in_place);
    std::string told;
    Subscription late;
    Subscription second;
    Subscription first = signal->subscribe([&](int value) {
        told += "a" + std::to_string(value);
        if (value == 2)
            second = {};
        if (value == 3)
            late = signal->subscribe([&](int v) { told += "d" + std::to_string(v); });
        if (value == 4)
            first = {};
    });
    second = signal->subscribe([&](int value) { told += "b" + std::to_string(value); });
    const Subscription third = signal->subscribe([&](int value) { told += "c" + std::to_string(value); });
    for (int value = 1; value <= 5; ++value) signal->publish(value);
    EXPECT_EQ(told,
              "a1b1c1"
              "a2c2"
              "a3c3"
              "a4c4d4"
              "c5d5");
    signal.reset();
    late = {};
}

// Fault: a subscription that is replaced by another one goes on until that one ends.
TEST(Signal, AReplacedSubscriptionEndsAtOnce) {
    Signal<int> signal;
    std::string told;
    Subscription kept = signal.subscribe([&](int) { told += "a"; });
    Subscription next = signal.subscribe([&](int) { told += "b"; });
    kept = std::move(next);
    signal.publish(1);
    EXPECT_EQ(told, "b");
}

}  // namespace
}  // namespace ampdesk
