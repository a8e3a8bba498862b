// How regularly the polling loop comes round and what it costs: a real station with 1, 4 and 16
// control heads on the simulated bus of this process, on the machine's clock. The bus answers at
// once and nothing is painted, so this measures the program's own logic, not a line or a window.
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "buslink/wire/control_characters.h"
#include "controlhead/amplifier_access.h"
#include "demo/demonstration.h"
#include "demo/faults.h"
#include "demo/sim_port.h"
#include "platform/posix/system_clock.h"
#include "shell/station.h"

using namespace ampdesk;

namespace {

using Seconds = std::chrono::duration<double>;

// Nobody sits in front of this: what would be said goes to standard error.
class Nobody : public Operator {
  public:
    Answer ask(const Message& message) override {
        std::fprintf(stderr, "box: %s %s\n", message.text.c_str(), message.detail.c_str());
        return Answer::ok;
    }
    std::optional<std::string> input_box(std::string_view) override { return {}; }
    std::optional<std::string> choose_file_to_open(std::string_view, std::string_view) override { return {}; }
    std::optional<std::string> choose_file_to_save(std::string_view, std::string_view,
                                                   std::string_view) override {
        return {};
    }
    void start_beep(std::chrono::milliseconds) override {}
    void set_busy_pointer(bool) override {}
    void let_events_run() override {}
};

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

double processor_seconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class Bench {
  public:
    Bench(const std::string& folder, int heads) {
        demo::add_demonstration(sim_, heads);
        services_.options.folder = folder;
        services_.options.negative_words_signed = true;
        station.auto_open_dat_files(demo::write_demonstration_files(folder, heads));
    }

    template <class Done>
    void poll(double seconds, Done done) {
        const Instant end = clock_.now() + std::chrono::duration_cast<Duration>(Seconds(seconds));
        while (clock_.now() < end && !done()) {
            const Duration wait = station.poll_windows();
            if (wait > Duration::zero())
                clock_.sleep_until(clock_.now() + wait);
        }
    }
    void poll(double seconds) {
        poll(seconds, [] { return false; });
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

  private:
    SystemClock clock_;
    demo::SimBus sim_{clock_};
    NotingPort port_{sim_, clock_};
    Nobody person_;
    BusLink bus_{port_, clock_, person_};
    HeadServices services_{bus_, clock_, person_, {}};

  public:
    Station station{services_};
};

void print(const char* what, const Intervals& intervals) {
    std::printf("%-42s mean %6.1f ms   least %6.1f ms   most %6.1f ms   (%zu intervals)\n", what,
                intervals.mean(), intervals.least, intervals.most, intervals.count);
}

void measure_heads(const std::string& folder, int heads, double seconds) {
    Bench bench(folder, heads);
    bench.poll(1);
    bench.forget();
    const double before = processor_seconds();
    bench.poll(seconds);
    const double used = processor_seconds() - before;
    const std::string what = "visit interval, " + std::to_string(heads) + (heads == 1 ? " head" : " heads");
    print(what.c_str(), bench.intervals_without());
    std::printf("%-42s %.2f %% of one core\n", "  processor time", 100 * used / seconds);
}

void measure_silent_one(const std::string& folder, double seconds) {
    constexpr int k_silent = 2;
    Bench bench(folder, 4);
    bench.poll(2);
    bench.forget();
    bench.make_fault("@2 silent on");
    const auto head = bench.station.open_heads().at(k_silent - 1);
    bench.poll(60, [&] { return head->silent(); });
    print("one of four falls silent, the other three", bench.intervals_without(k_silent));
    bench.forget();
    bench.poll(std::max(seconds, 11.0));  // two looks at least
    print("its error screen is up, the other three", bench.intervals_without(k_silent));
    bench.make_fault("@2 silent off");
    bench.poll(10, [&] { return !head->silent(); });
    std::printf("%-42s %s\n", "it answers again", head->silent() ? "not found" : "found");
}

}  // namespace

int main(int argc, char** argv) {
    double seconds = 10;
    if (argc == 3 && std::string(argv[1]) == "--seconds")
        seconds = std::atof(argv[2]);
    if (seconds <= 0 || (argc != 1 && argc != 3)) {
        std::fprintf(stderr, "Usage: bench_polling [--seconds N]\n");
        return 2;
    }
    std::string folder = (std::filesystem::temp_directory_path() / "bench_polling-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("bench_polling");
        return 1;
    }
    std::printf("Logic only: no windows, and a bus of this process that answers at once.\n");
    for (const int heads : {1, 4, 16}) measure_heads(folder, heads, seconds);
    measure_silent_one(folder, seconds);
    std::filesystem::remove_all(folder);
    return 0;
}
