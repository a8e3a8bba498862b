// The one class of queue that threads share: values for one reader, from any number of senders. Nothing in
// it waits; a mutex is held for as long as one value is put in its place.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ampdesk {

// T holds values only, no reference or pointer to what a sender goes on using.
//
// A reader may be held up for long: by a dialog, a remote desktop that stands still, a disk. So that the
// box does not grow for as long as that lasts, whatever a program sends by itself goes by put_newest or
// put_joined: there is then at most one value a key. put is for what a person does, one thing after the
// other, and what becomes of it.
template <class T, class Key = std::string>
class Mailbox {
  public:
    Mailbox() = default;
    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;

    // Behind all that waits.
    void put(T value) {
        bool first = false;
        {
            const std::lock_guard lock(mutex_);
            first = append(std::move(value));
        }
        tell(first);
    }

    // Replaces the value of the same key that waits, in its place; else as put. A newer value may thus come
    // before others that are older: give a key to a state ("the panel of head 3"), not to an event, and never
    // give it on to another thing, or what is said of the new one comes before the end of the old one.
    void put_newest(const Key& key, T value) {
        put_joined(key, std::move(value), [](T& waiting, T&& newer) { std::swap(waiting, newer); });
    }

    // Joins the value to the one of the same key that waits, in its place; else as put. For what comes in
    // pieces, as received text: `join` adds the second to the first, bounds the whole, and is called with the
    // lock held.
    template <class Join>
    void put_joined(const Key& key, T value, Join join) {
        bool first = false;
        {
            const std::lock_guard lock(mutex_);
            if (const auto waiting = places_.find(key); waiting != places_.end())
                join(values_[waiting->second], std::move(value));
            else
                first = append_as(key, std::move(value));
        }
        tell(first);
    }

    // All that waits, in its order; the box is empty then.
    std::vector<T> take_all() {
        const std::lock_guard lock(mutex_);
        places_.clear();
        return std::exchange(values_, {});
    }

    // Wakes the reader. Called in the sender's thread, with the lock free, after a value has come into an
    // empty box: once at least for each time that there is something to take, and sometimes after it has been
    // taken already. Set before a second thread knows of the box. The box, and what is called, outlive all
    // senders.
    std::function<void()> on_first;

  private:
    bool append(T&& value) {
        values_.push_back(std::move(value));
        return values_.size() == 1;
    }
    bool append_as(const Key& key, T&& value) {
        places_.emplace(key, values_.size());
        return append(std::move(value));
    }
    void tell(bool first) const {
        if (first && on_first)
            on_first();
    }

    std::mutex mutex_;
    std::vector<T> values_;
    std::map<Key, std::size_t> places_;  // in values_
};

}  // namespace ampdesk
