// Notices when the event loop stands still: the system's dialog, a remote desktop that hangs, a machine that
// is overloaded. What a person does meanwhile is kept by the window system, and the loop comes to it as if it
// were done only now.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>

#include "platform/clock.h"

namespace ampdesk {

class StandStill : public QObject {
    Q_OBJECT

  public:
    static constexpr std::chrono::milliseconds k_beat{500};
    static constexpr std::chrono::milliseconds k_shortest{1000};  // that counts
    static constexpr std::chrono::milliseconds k_backlog{300};    // after it, to come to what was kept

    explicit StandStill(std::unique_ptr<Clock> clock = make_system_clock());

    // How old what the loop comes to now may be at most; 0 while it turns.
    Duration age() const;

    // Of the timer: the loop turns.
    void beat();

  private:
    const std::unique_ptr<Clock> clock_;
    QTimer timer_;
    Instant alive_;
    Instant began_{};  // the last time that it stood still
    Instant ended_{};
};

}  // namespace ampdesk
