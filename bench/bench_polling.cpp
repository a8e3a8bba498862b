// How regularly the polling loop comes round and what it costs: a real station with 1, 4 and 16
// control heads on the simulated bus of this process, on the machine's clock. The bus answers at
// once and nothing is painted, so this measures the program's own logic, not a line or a window.
#include <cstdlib>
#include <filesystem>

#include "bench/watched_station.h"

using namespace ampdesk;

namespace {

class Bench : public WatchedStation {
  public:
    using WatchedStation::WatchedStation;

    template <class Done>
    void poll(double seconds, Done done) {
        const Instant end = clock.now() + std::chrono::duration_cast<Duration>(Seconds(seconds));
        while (clock.now() < end && !done()) {
            const Duration wait = station.poll_windows();
            if (wait > Duration::zero())
                clock.sleep_until(clock.now() + wait);
        }
    }
    void poll(double seconds) {
        poll(seconds, [] { return false; });
    }
};

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
