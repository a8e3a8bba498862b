// How soon an event loop answers: a second thread posts an event every 5 ms, as somebody's keys might come at
// any moment, and it is noted how long each waits for its turn.
#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "platform/clock.h"

namespace ampdesk::bench {

class EventLoopProbe : public QObject {
  public:
    static constexpr std::chrono::milliseconds k_interval{5};

    void start() {
        waits_.clear();
        posted_ = 0;
        stop_ = false;
        sender_ = std::thread([this] {
            for (Instant due = now(); !stop_; std::this_thread::sleep_until(due += k_interval)) {
                ++posted_;
                QCoreApplication::postEvent(this, new Knock(now()));
            }
        });
    }

    // What has been posted and not yet answered is waited for: the longest waits are among it.
    void stop() {
        stop_ = true;
        sender_.join();
        while (waits_.size() < posted_) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        std::sort(waits_.begin(), waits_.end());
    }

    // After stop(): the wait in milliseconds that such a part of all did not exceed, 1.0 for the longest.
    double wait_ms(double part) const {
        const auto last = static_cast<double>(waits_.size() - 1);
        return waits_.at(static_cast<std::size_t>(part * last));
    }

  protected:
    bool event(QEvent* event) override {
        if (event->type() != k_knock)
            return QObject::event(event);
        const Duration waited = now() - static_cast<Knock*>(event)->posted;
        waits_.push_back(std::chrono::duration<double, std::milli>(waited).count());
        return true;
    }

  private:
    static constexpr QEvent::Type k_knock = QEvent::User;

    struct Knock : QEvent {
        explicit Knock(Instant at) : QEvent(k_knock), posted(at) {}
        Instant posted;
    };
    static Instant now() { return std::chrono::steady_clock::now(); }

    std::vector<double> waits_;  // the event loop's thread alone
    std::atomic<std::size_t> posted_ = 0;
    std::atomic<bool> stop_ = false;
    std::thread sender_;
};

}  // namespace ampdesk::bench
