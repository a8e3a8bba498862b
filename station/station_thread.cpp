#include "station/station_thread.h"

namespace ampdesk {

StationThread::StationThread(Talk& talk, StationHost& host, LineWait& wait)
    : talk_(talk), host_(host), wait_(wait) {
    talk_.acts.on_first = [this] { wait_.wake(); };
    thread_ = std::thread([this] { run(); });
}

StationThread::~StationThread() {
    end();
}

void StationThread::end() {
    if (!thread_.joinable())
        return;
    talk_.acts.put(act::Finish{});
    thread_.join();
}

void StationThread::run() {
    while (!host_.finished()) {
        const Instant next = host_.step();
        if (!host_.finished())
            wait_.wait(host_.ports(), next);
    }
}

}  // namespace ampdesk
