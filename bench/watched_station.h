// A real station on the simulated bus of this process that notes when which amplifier was asked for
// what. For the benchmarks that watch the polling loop.
#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "amplifier/commands.h"
#include "bench/nobody.h"
#include "buslink/wire/control_characters.h"
#include "demo/demonstration.h"
#include "demo/faults.h"
#include "demo/sim_port.h"
#include "station/station.h"

namespace ampdesk {

using Seconds = std::chrono::duration<double>;

// By unit address.
using Instants = std::map<int, std::vector<Instant>>;

class NotingPort : public demo::SimPort {
  public:
    NotingPort(demo::SimBus& bus, Clock& clock) : SimPort(bus, clock), clock_(clock) {}
    PortError write(std::string_view bytes, Instant deadline) override {
        if (bytes[0] == k_soh)
            asked[std::string(bytes.substr(3, static_cast<unsigned char>(bytes[2])))][bytes[1]].push_back(
                clock_.now());
        return SimPort::write(bytes, deadline);
    }
    std::map<std::string, Instants, std::less<>> asked;  // by command

  private:
    Clock& clock_;
};

struct Intervals {
    std::size_t count = 0;
    double least = 1e9, most = 0, sum = 0;  // milliseconds

    void add(Duration interval) {
        const double length = Seconds(interval).count() * 1000;
        least = std::min(least, length);
        most = std::max(most, length);
        sum += length;
        ++count;
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
    // With a byte time of 0 the bus answers at once; else the line carries one byte at a time, either way,
    // and an amplifier takes that turn-around to begin its answer.
    WatchedStation(Clock& station_clock, const std::string& folder, int heads, Duration byte_time = {},
                   Duration turn_around = {})
        : clock(station_clock), sim_(clock, byte_time) {
        if (byte_time > Duration::zero())
            sim_.pace_commands(turn_around);
        demo::add_demonstration(sim_, heads);
        services_.options.folder = folder;
        services_.options.negative_words = NegativeWords::two_complement;
        station.auto_open_dat_files(demo::write_demonstration_files(folder, heads));
    }

    // When each amplifier was asked so, since the last call of forget().
    const Instants& asked(std::string_view command) {
        return port_.asked.try_emplace(std::string(command)).first->second;
    }
    void forget() { port_.asked.clear(); }
    void make_fault(const std::string& line) { demo::make_fault(sim_, line); }

    Clock& clock;

  protected:
    demo::SimBus sim_;

  private:
    NotingPort port_{sim_, clock};

    Nobody person_;

  public:
    BusLink bus{port_, clock};

  private:
    HeadServices services_{bus, clock, person_, {}};

  public:
    Station station{services_};
};

}  // namespace ampdesk
