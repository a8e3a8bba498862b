#include "shell/ui/stand_still.h"

namespace ampdesk {

StandStill::StandStill(std::unique_ptr<Clock> clock) : clock_(std::move(clock)), alive_(clock_->now()) {
    connect(&timer_, &QTimer::timeout, this, &StandStill::beat);
    timer_.start(k_beat);
}

void StandStill::beat() {
    const Instant now = clock_->now();
    if (now - alive_ > k_shortest) {
        began_ = alive_;
        ended_ = now;
    }
    alive_ = now;
}

Duration StandStill::age() const {
    const Instant now = clock_->now();
    if (now - alive_ > k_shortest)
        return now - alive_;
    const bool backlog = ended_ != Instant{} && now - ended_ <= k_backlog;
    return backlog ? now - began_ : Duration{};
}

}  // namespace ampdesk
