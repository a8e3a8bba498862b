// One value, any number of subscribers who know nothing of one another.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <utility>

namespace ampdesk {

// Ends what it stands for with its owner; an empty one stands for nothing. May outlive its signal.
class Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
    Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        Subscription(std::move(other)).end_.swap(end_);  // what this one stood for ends now
        return *this;
    }
    ~Subscription() {
        if (end_)
            end_();
    }

  private:
    std::function<void()> end_;
};

template <class T>
class Signal {
  public:
    Signal() = default;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    // Called with every value from now on, in the order of subscribing, until the subscription ends.
    [[nodiscard]] Subscription subscribe(std::function<void(const T&)> take) {
        const auto place = takers_->insert(takers_->end(), std::make_shared<Taker>(std::move(take)));
        return Subscription([takers = std::weak_ptr(takers_), place, taker = std::weak_ptr(*place)] {
            if (const auto alive = taker.lock())
                alive->take = nullptr;  // also when its turn in a publishing under way is still to come
            if (const auto alive = takers.lock())
                alive->erase(place);
        });
    }

    // A subscriber may subscribe and unsubscribe, itself too, while it is told; who comes is told from the
    // next value on.
    void publish(const T& value) const {
        const std::list<std::shared_ptr<Taker>> told = *takers_;
        for (const auto& taker : told)
            if (const auto take = taker->take)
                take(value);
    }

  private:
    struct Taker {
        explicit Taker(std::function<void(const T&)> taking) : take(std::move(taking)) {}
        std::function<void(const T&)> take;
    };
    std::shared_ptr<std::list<std::shared_ptr<Taker>>> takers_ =
        std::make_shared<std::list<std::shared_ptr<Taker>>>();
};

}  // namespace ampdesk
