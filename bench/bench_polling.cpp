// What the polling makes of a slow line: a real station on simulated amplifiers, each byte of a command
// and of a reply paced, on a clock that only waits move. So a run is exact and the same every time. Last
// the processor time, on the machine's clock. No window is painted.
//
//   bench_polling           the tables
//   bench_polling --check   16 amplifiers at 9600 baud alone; fails when something takes longer than it may
#include <random>
#include <utility>

#include "bench/watched_station.h"
#include "platform/posix/system_clock.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/turn.h"

using namespace ampdesk;
using namespace std::chrono_literals;

namespace {

constexpr Duration k_turn_around = 5ms;
constexpr int k_bits_a_byte = 10;  // 8N1
constexpr int k_active = 1;        // the amplifier whose window the operator works in
constexpr int k_falls_silent = 2;
constexpr int k_looks = 24;  // two patient ones among them
constexpr std::string_view k_hv_off{"\x10\x13"};

// Lets something happen at an instant on the way, in the middle of an exchange, too.
class EventClock : public ManualClock {
  public:
    void sleep_until(Instant instant) override {
        if (event_ && at_ <= instant) {
            ManualClock::sleep_until(at_);
            std::exchange(event_, nullptr)();
        }
        ManualClock::sleep_until(instant);
    }
    void happen(Instant at, std::function<void()> event) {
        at_ = at;
        event_ = std::move(event);
    }
    Instant next_event() const { return event_ ? at_ : Instant::max(); }

  private:
    Instant at_{};
    std::function<void()> event_;
};

// The station as its loop drives it, a key at any time.
class Desk : public WatchedStation {
  public:
    Desk(EventClock& event_clock, const std::string& folder, int heads, Duration byte_time)
        : WatchedStation(event_clock, folder, heads, byte_time, k_turn_around), events_(event_clock) {
        station.set_active(k_active);
    }

    // Returns whether it was done before the limit.
    template <class Done>
    bool run(Duration limit, Done done) {
        const Instant end = clock.now() + limit;
        while (clock.now() < end && !done())
            turn(station, sim_, clock, [&] { return std::min(end, events_.next_event()); });
        return done();
    }
    void run(Duration length) {
        run(length, [] { return false; });
    }
    void happen(Instant at, std::function<void()> event) { events_.happen(at, std::move(event)); }
    void press_hv_off() { head(k_active).press_hard_key(1); }
    ControlHead& head(int address) { return *station.open_heads().at(static_cast<std::size_t>(address - 1)); }

  private:
    EventClock& events_;
};

// The longest that each may take, in milliseconds.
struct Limits {
    double status, active_display, other_displays, shutdown, hv_off, error_screen;
};

struct Figures {
    Intervals status, active_display, other_displays, shutdown, hv_off, error_screen;

    bool within(const Limits& limits) const {
        return status.most <= limits.status && active_display.most <= limits.active_display &&
               other_displays.most <= limits.other_displays && shutdown.most <= limits.shutdown &&
               hv_off.most <= limits.hv_off && error_screen.most <= limits.error_screen;
    }

    void print(int baud, int heads, const char* state) const {
        std::printf("| %d | %d | %s | %.2f / %.2f s |", baud, heads, state, status.mean() / 1000,
                    status.most / 1000);
        for (const Intervals* longest : {&active_display, &other_displays, &shutdown, &hv_off})
            std::printf(" %.2f s |", longest->most / 1000);
        if (error_screen.count > 0)
            std::printf(" %.2f s", error_screen.most / 1000);
        std::printf(" |\n");
        std::fflush(stdout);
    }
};

class Measurement {
  public:
    Measurement(const std::string& folder, int baud, int heads)
        : baud_(baud), heads_(heads), desk_(clock_, folder, heads, Duration(1s) * k_bits_a_byte / baud) {
        desk_.run(600s, [this] { return !desk_.station.opening_files(); });
        desk_.run(60s);
    }

    Figures at_rest() {
        Figures figures;
        const Instant start = clock_.now();
        desk_.run(200s);
        add_intervals(figures, start, clock_.now(), false);
        round_ = std::chrono::duration_cast<Duration>(Seconds(figures.status.mean() / 1000));
        for (int i = 0; i < 60; ++i) {
            shut_down_within(figures, round_);
            press_within(figures, round_);
        }
        figures.print(baud_, heads_, "at rest");
        return figures;
    }

    Figures one_falls_silent() {
        Figures figures;
        Duration length{};
        for (int i = 0; i < 10; ++i) {
            const Instant start = fall_silent();
            length = clock_.now() - start;
            figures.error_screen.add(length);
            answer_again();
            add_intervals(figures, start, start + length, true);
        }
        for (int i = 0; i < 40; ++i) {
            fall_silent([&] { shut_down_within(figures, length); });
            answer_again();
            fall_silent([&] { press_within(figures, length); });
            answer_again();
        }
        figures.print(baud_, heads_, "one falls silent");
        return figures;
    }

    Figures one_is_silent() {
        fall_silent();
        desk_.run(round_);  // what was held up has come round
        Figures figures;
        const Instant start = clock_.now();
        desk_.forget();
        desk_.run(3600s, [&] {
            const auto& looks = desk_.asked(k_status_request);
            return looks.contains(k_falls_silent) && looks.at(k_falls_silent).size() >= k_looks;
        });
        add_intervals(figures, start, clock_.now(), false);
        const Duration to_patient_look = (clock_.now() - start) / 2;
        for (int i = 0; i < 60; ++i) shut_down_within(figures, to_patient_look);
        for (int i = 0; i < k_looks; ++i) press_during_look(figures);
        figures.print(baud_, heads_, "its error screen is up");
        return figures;
    }

  private:
    bool silent() { return desk_.head(k_falls_silent).silent(); }

    // Some time within a round; returns when, as soon as the error screen is up.
    Instant fall_silent(const std::function<void()>& meanwhile = {}) {
        desk_.forget();
        desk_.run(2 * round_);
        std::optional<Instant> fallen;
        desk_.happen(moment_within(round_), [&] {
            desk_.make_fault("@2 silent on");
            fallen = clock_.now();
        });
        desk_.run(60s, [&] { return fallen.has_value(); });
        if (meanwhile)
            meanwhile();
        if (!desk_.run(300s, [&] { return silent(); }))
            std::printf("no error screen\n");
        return *fallen;
    }

    void answer_again() {
        desk_.make_fault("@2 silent off");
        if (!desk_.run(300s, [&] { return !silent(); }))
            std::printf("not found again\n");
    }

    // All that lie within the time, or with `touching` all that a part of does.
    void add_intervals(Figures& figures, Instant from, Instant to, bool touching) {
        const auto add = [&](const std::vector<Instant>& at, Intervals& intervals) {
            for (std::size_t i = 1; i < at.size(); ++i)
                if (touching ? at[i] > from && at[i - 1] < to : at[i - 1] >= from && at[i] <= to)
                    intervals.add(at[i] - at[i - 1]);
        };
        for (const auto& [address, at] : desk_.asked(k_status_request))
            if (address != k_falls_silent)
                add(at, figures.status);
        for (const auto& [address, at] : desk_.asked(k_analog_request))
            if (address != k_falls_silent)
                add(at, address == k_active ? figures.active_display : figures.other_displays);
    }

    // How long after that moment the amplifier is asked so.
    void add_delay(Intervals& intervals, Instant moment, int address, std::string_view command) {
        const auto asked = [&] {
            const auto& at = desk_.asked(command);
            return at.contains(address) && at.at(address).back() >= moment;
        };
        const bool came = desk_.run(300s, asked);
        intervals.add((came ? desk_.asked(command).at(address).back() : clock_.now()) - moment);
        if (!came)
            std::printf("an order was lost\n");
    }

    void shut_down_within(Figures& figures, Duration length) {
        const int number = 1 + static_cast<int>(random_() % static_cast<unsigned>(heads_ - 1));
        const int address = number < k_falls_silent ? number : number + 1;
        const std::string amplifier = "@" + std::to_string(address);
        const Instant moment = moment_within(length);
        desk_.happen(moment, [&] { desk_.make_fault(amplifier + " helix"); });
        add_delay(figures.shutdown, moment, address, k_shutdown_request);
        desk_.make_fault(amplifier + " clear");
        desk_.run(round_ + 1s);
    }

    void press_within(Figures& figures, Duration length) {
        const Instant moment = moment_within(length);
        desk_.happen(moment, [&] { desk_.press_hv_off(); });
        add_delay(figures.hv_off, moment, k_active, k_hv_off);
        desk_.run(1s);
    }

    // When a look has just begun, an order waits longest.
    void press_during_look(Figures& figures) {
        std::optional<Instant> moment;
        desk_.bus.on_traffic = [&](const BusTraffic& traffic) {
            if (moment || !traffic.sent || traffic.address != k_falls_silent)
                return;
            moment = moment_within(100ms);
            desk_.happen(*moment, [&] { desk_.press_hv_off(); });
        };
        desk_.run(300s, [&] { return moment.has_value(); });
        desk_.bus.on_traffic = nullptr;
        add_delay(figures.hv_off, *moment, k_active, k_hv_off);
    }

    Instant moment_within(Duration length) {
        return clock_.now() + std::chrono::duration_cast<Duration>(
                                  length * (static_cast<double>(random_()) / std::minstd_rand::max()));
    }

    int baud_;
    int heads_;
    EventClock clock_;
    Desk desk_;
    Duration round_ = 500ms;
    std::minstd_rand random_;
};

// On the machine's clock, so that falling asleep and waking up are in it.
void measure_processor_time(const std::string& folder, int heads) {
    SystemClock clock;
    WatchedStation idle(clock, folder, heads);
    const auto run = [&](Duration length) {
        for (const Instant end = clock.now() + length; clock.now() < end;)
            clock.sleep_until(idle.station.step());
    };
    run(1s);
    const double before = processor_seconds();
    constexpr std::chrono::seconds k_length = 10s;
    run(k_length);
    std::printf("| %2d | %.1f %% of one core |\n", heads,
                100 * (processor_seconds() - before) / Seconds(k_length).count());
}

// What the plan has for such a line, and a little for the exchange under way. One that falls silent is found
// out by waits of a second, and until then holds the others up.
bool keeps_its_times(const std::string& folder) {
    Measurement measurement(folder, 9600, 16);
    const bool at_rest = measurement.at_rest().within({1000, 1000, 3000, 1000, 200, 0});
    const bool falling = measurement.one_falls_silent().within({2000, 2000, 7000, 1600, 300, 5500});
    const bool silent = measurement.one_is_silent().within({1600, 1600, 5000, 1600, 300, 0});
    return at_rest && falling && silent;
}

void measure_everything(const std::string& folder) {
    for (const int baud : {9600, 19200})
        for (const int heads : {4, 16, 99}) {
            Measurement measurement(folder, baud, heads);
            measurement.at_rest();
            measurement.one_falls_silent();
            measurement.one_is_silent();
        }
    std::printf("\n| amplifiers | processor time on a bus that answers at once |\n|---|---|\n");
    for (const int heads : {4, 16}) measure_processor_time(folder, heads);
}

}  // namespace

int main(int argc, char** argv) {
    const bool check = argc == 2 && std::string_view(argv[1]) == "--check";
    if (argc > 1 && !check) {
        std::fprintf(stderr, "Usage: bench_polling [--check]\n");
        return 2;
    }
    const ScratchFolder folder;
    std::printf(
        "| baud | amplifiers | | status | active display | other displays | shutdown | HV Off | "
        "error screen |\n|---|---|---|---|---|---|---|---|---|\n");
    bool good = true;
    if (check)
        good = keeps_its_times(folder.path());
    else
        measure_everything(folder.path());
    if (!good)
        std::fprintf(stderr, "bench_polling: something takes longer than it may\n");
    return good ? 0 : 1;
}
