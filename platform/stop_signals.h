// The signals that ask a program to end (terminate, interrupt, hang up) as something that it can wait for.
#pragma once

#include "platform/descriptor.h"

namespace ampdesk {

class StopSignals {
  public:
    // Blocks the signals, so that they arrive nowhere else. To be made before anything starts a thread. A
    // hang-up that whoever started the program made ignored (nohup) stays ignored.
    StopSignals();

    // False when the signals cannot be watched; they then end the program as ever.
    explicit operator bool() const { return static_cast<bool>(arrived_); }

    // Can be read once a signal has arrived; -1 when none can be watched.
    int watch_handle() const { return arrived_.get(); }

    // Forgets those that have arrived.
    void take();

  private:
    Descriptor arrived_;
};

}  // namespace ampdesk
