// A real station on the simulated bus of this process that notes when which amplifier was visited, on
// the machine's clock. For the benchmarks that watch the polling loop.
#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench/nobody.h"
#include "buslink/wire/control_characters.h"
#include "controlhead/amplifier_access.h"
#include "demo/demonstration.h"
#include "demo/faults.h"
#include "demo/sim_port.h"
#include "platform/posix/system_clock.h"
#include "shell/station.h"

namespace ampdesk {

using Seconds = std::chrono::duration<double>;

// Notes when which amplifier is asked for its status, with which every visit begins.
class NotingPort : public demo::SimPort {
  public:
    NotingPort(demo::SimBus& bus, Clock& clock) : SimPort(bus, clock), clock_(clock) {}
    PortError write(std::string_view bytes, Instant deadline) override {
        if (bytes[0] == k_soh && bytes.substr(3, 1) == k_status_request)
            visits[bytes[1]].push_back(clock_.now());
        return SimPort::write(bytes, deadline);
    }
    std::map<int, std::vector<Instant>> visits;

  private:
    Clock& clock_;
};

struct Intervals {
    std::size_t count = 0;
    double least = 1e9, most = 0, sum = 0;  // milliseconds

    void add(const std::vector<Instant>& visits) {
        for (std::size_t i = 1; i < visits.size(); ++i) {
            const double length = Seconds(visits[i] - visits[i - 1]).count() * 1000;
            least = std::min(least, length);
            most = std::max(most, length);
            sum += length;
            ++count;
        }
    }
    double mean() const { return count > 0 ? sum / static_cast<double>(count) : 0; }
};

inline double processor_seconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class WatchedStation {
  public:
    WatchedStation(const std::string& folder, int heads) {
        demo::add_demonstration(sim_, heads);
        services_.options.folder = folder;
        services_.options.negative_words_signed = true;
        station.auto_open_dat_files(demo::write_demonstration_files(folder, heads));
    }

    // Of all amplifiers but that one, since the last call of forget().
    Intervals intervals_without(int address = 0) const {
        Intervals all;
        for (const auto& [visited, visits] : port_.visits)
            if (visited != address)
                all.add(visits);
        return all;
    }
    void forget() { port_.visits.clear(); }
    void make_fault(const std::string& line) { demo::make_fault(sim_, line); }

    SystemClock clock;

  private:
    demo::SimBus sim_{clock};
    NotingPort port_{sim_, clock};
    Nobody person_;

  public:
    BusLink bus{port_, clock, person_};

  private:
    HeadServices services_{bus, clock, person_, {}};

  public:
    Station station{services_};
};

inline void print(const char* what, const Intervals& intervals) {
    std::printf("%-42s mean %6.1f ms   least %6.1f ms   most %6.1f ms   (%zu intervals)\n", what,
                intervals.mean(), intervals.least, intervals.most, intervals.count);
}

}  // namespace ampdesk
