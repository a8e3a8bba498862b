// Waits for lines on the manual clock: moves it to what comes first and never blocks.
#pragma once

#include <algorithm>
#include <utility>

#include "platform/line_wait.h"
#include "tests/support/manual_clock.h"

namespace ampdesk {

class ManualLineWait : public LineWait {
  public:
    explicit ManualLineWait(ManualClock& clock) : clock_(clock) {}

    void wait(std::span<SerialPort* const> ports, Instant deadline) override {
        if (std::exchange(woken_, false))
            return;
        for (const SerialPort* port : ports)
            if (const auto due = port->input_due())
                deadline = std::min(deadline, *due);
        clock_.sleep_until(deadline);
    }
    void wake() override { woken_ = true; }

  private:
    ManualClock& clock_;
    bool woken_ = false;
};

}  // namespace ampdesk
