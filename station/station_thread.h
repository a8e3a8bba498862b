// The station's own thread: a loop around step(). Here, and nowhere else, two threads meet: they share the
// two queues of the talk, and the waking of the wait.
#pragma once

#include <thread>

#include "platform/line_wait.h"
#include "station/station_host.h"

namespace ampdesk {

class StationThread {
  public:
    // From now on host, ports and whatever they use belong to the thread, until it has ended. Takes the
    // acts' on_first. The references outlive this.
    StationThread(Talk& talk, StationHost& host, LineWait& wait);

    // As end().
    ~StationThread();
    StationThread(const StationThread&) = delete;
    StationThread& operator=(const StationThread&) = delete;

    // Tells the station to finish, when nobody has, and waits until it has: what was pressed before is
    // carried out, 4 s later at most. A second call does nothing.
    void end();

  private:
    void run();

    Talk& talk_;
    StationHost& host_;
    LineWait& wait_;
    std::thread thread_;
};

}  // namespace ampdesk
