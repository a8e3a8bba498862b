// A day of bad weather in minutes: four control heads of a real station on simulated amplifiers whose
// values change all the time, over a line that spoils one reply in ten, on a clock that only waits
// move. Keys are pressed, amplifiers fall silent, shut down and are switched by hand. Checks that
// nothing was shown that the amplifier had not said and nothing was set that nobody had asked for.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/soak_display.h"
#include "bench/soak_line.h"
#include "bench/soak_operator.h"
#include "bench/soak_weather.h"
#include "demo/demonstration.h"
#include "shell/station.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scratch_folder.h"

using namespace ampdesk;
using namespace ampdesk::bench;

namespace {

constexpr int k_heads = 4;
constexpr std::chrono::microseconds k_byte_time{1042};  // 9600 baud, ten bits a byte

struct Options {
    long exchanges = 100'000;
    int percent = 10;
    unsigned seed = 1;
};

// Kilobytes in memory and open descriptors of this process.
struct Footprint {
    long memory = 0;
    long descriptors = 0;
    static Footprint now() {
        Footprint print;
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);)
            if (line.starts_with("VmRSS:"))
                print.memory = std::atol(line.c_str() + 6);
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
            ++print.descriptors;
        return print;
    }
};

struct Outcome {
    long exchanges = 0;
    double hours = 0;
    std::array<long, k_fault_names.size()> faults{};
    DisplayCounts display;
    SettingCounts settings;
    long boxes = 0, outages = 0, shutdowns = 0;
    int heads = 0;
    Footprint start, end;
};

Outcome soak(const Options& options, bool address_checked) {
    const ScratchFolder folder;
    ManualClock clock;
    FaultyLine faults(options.seed, 0, k_byte_time);
    FaultyLine chance(options.seed + 1, 0, {});
    SoakLine line(clock, faults);
    demo::add_demonstration(line.bus(), k_heads);
    Weather weather(line.bus(), chance, clock);
    SoakOperator person;
    BusOptions bus_options;
    bus_options.reply_address_checked = address_checked;
    BusLink bus(line, clock, person, bus_options);
    HeadServices services{bus, clock, person, {}};
    services.options.folder = folder.path();
    services.options.negative_words_signed = true;
    Station station(services);
    Finger finger(station, line, chance);
    line.on_request = [&](const Order& order) {
        weather.set_values(order.address);
        finger.watch(order);
    };

    Outcome outcome;
    std::vector<std::unique_ptr<DisplayWatch>> watches;
    station.on_window_created = [&](const std::shared_ptr<ControlHead>& head) {
        watches.push_back(std::make_unique<DisplayWatch>(*head, line, clock, outcome.display));
        head->panel().on_change = [watch = watches.back().get()] { watch->changed(); };
    };
    station.auto_open_dat_files(demo::write_demonstration_files(folder.path(), k_heads));
    outcome.heads = station.open_count();
    line.exchanges = 0;
    faults.counts = {};
    faults.set_percent(options.percent);
    person.on_events = [&] {
        if (chance.one_in(40))
            finger.press();
    };

    const Instant start = clock.now();
    bool settled = false;
    while (line.exchanges < options.exchanges) {
        const Duration wait = station.poll_windows();
        finger.forget_permits();
        for (const auto& watch : watches) watch->look();
        weather.turn();
        if (chance.one_in(10)) {
            finger.press();
            finger.forget_permits();
        }
        clock.advance(std::max<Duration>(wait, std::chrono::milliseconds(1)));
        if (!settled && line.exchanges > options.exchanges / 10) {
            settled = true;
            outcome.start = Footprint::now();
        }
    }
    outcome.end = Footprint::now();
    outcome.exchanges = line.exchanges;
    outcome.hours = std::chrono::duration<double, std::ratio<3600>>(clock.now() - start).count();
    outcome.faults = faults.counts;
    outcome.settings = finger.counts;
    outcome.boxes = person.boxes;
    outcome.outages = weather.outages;
    outcome.shutdowns = weather.shutdowns;
    return outcome;
}

// One line of the table, a column an outcome. `forbidden` says in which columns it must be 0.
class Table {
  public:
    explicit Table(const std::array<Outcome, 2>& outcomes) : outcomes_(outcomes) {}

    template <class Figure>
    void row(std::string_view what, Figure figure) {
        std::printf("%-52.*s", static_cast<int>(what.size()), what.data());
        for (const Outcome& outcome : outcomes_) std::printf(" %14s", text(figure(outcome)).c_str());
        std::printf("\n");
    }

    template <class Figure>
    void zero_row(std::string_view what, Figure figure, bool in_first_column = true) {
        row(std::string(what) + (in_first_column ? " (must be 0)" : " (0 when checked)"), figure);
        for (std::size_t i = in_first_column ? 0 : 1; i < outcomes_.size(); ++i)
            broken_ = broken_ || figure(outcomes_[i]) != 0;
    }
    bool broken() const { return broken_; }

  private:
    static std::string text(long value) { return std::to_string(value); }
    static std::string text(double value) {
        std::array<char, 32> buffer{};
        std::snprintf(buffer.data(), buffer.size(), "%.1f", value);
        return buffer.data();
    }
    static std::string text(Duration value) {
        return text(std::chrono::duration<double>(value).count()) + " s";
    }

    const std::array<Outcome, 2>& outcomes_;
    bool broken_ = false;
};

bool report(const std::array<Outcome, 2>& outcomes) {
    using O = const Outcome&;
    Table table(outcomes);
    std::printf("%-52s %14s %14s\n", "reply_address", "ignored", "checked");
    table.row("exchanges", [](O o) { return o.exchanges; });
    table.row("hours on the station's clock", [](O o) { return o.hours; });
    for (std::size_t i = 1; i < k_fault_names.size(); ++i)
        table.row("  replies: " + std::string(k_fault_names[i]), [i](O o) { return o.faults[i]; });
    table.row("times an amplifier fell silent", [](O o) { return o.outages; });
    table.row("shutdowns", [](O o) { return o.shutdowns; });
    table.row("values drawn", [](O o) { return o.display.values; });
    table.zero_row("  that nobody had said", [](O o) { return o.display.nobodys; });
    table.zero_row(
        "  that another amplifier had said", [](O o) { return o.display.others; }, false);
    table.row("age of a value at most, when drawn", [](O o) { return o.display.oldest_drawn; });
    table.row("  … while it stood on a status screen", [](O o) { return o.display.oldest_shown; });
    table.row("rows of the event list drawn", [](O o) { return o.display.events; });
    table.row("  with another entry's text", [](O o) { return o.display.wrong_events; });
    table.row("band labels drawn", [](O o) { return o.display.labels; });
    table.row("  that the amplifier had not said", [](O o) { return o.display.wrong_labels; });
    table.row("  longest time a label was wrong", [](O o) { return o.display.wrong_band; });
    table.row("keys pressed and bars moved", [](O o) { return o.settings.presses; });
    table.row("settings sent", [](O o) { return o.settings.sent; });
    table.zero_row("  that nobody had asked for", [](O o) { return o.settings.unasked; });
    table.zero_row("  sent twice", [](O o) { return o.settings.twice; });
    table.zero_row("  refused, but taken for carried out", [](O o) { return o.settings.misread; });
    table.row("  carried out, but the reply was lost", [](O o) { return o.settings.lost; });
    table.row("message boxes", [](O o) { return o.boxes; });
    table.row("memory after a tenth, kB", [](O o) { return o.start.memory; });
    table.row("memory at the end, kB", [](O o) { return o.end.memory; });
    table.row("open descriptors after a tenth", [](O o) { return o.start.descriptors; });
    table.row("open descriptors at the end", [](O o) { return o.end.descriptors; });
    for (O o : outcomes)
        if (!o.display.first_wrong.empty())
            std::printf("first wrong value: %s\n", o.display.first_wrong.c_str());
    for (O o : outcomes)
        if (!o.settings.first_unasked.empty())
            std::printf("first unasked setting: %s\n", o.settings.first_unasked.c_str());
    return !table.broken();
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; i += 2) {
        const std::string name = argv[i];
        const long value = i + 1 < argc ? std::atol(argv[i + 1]) : 0;
        if (name == "--exchanges" && value > 0)
            options.exchanges = value;
        else if (name == "--percent" && value > 0 && value <= 100)
            options.percent = static_cast<int>(value);
        else if (name == "--seed" && value > 0)
            options.seed = static_cast<unsigned>(value);
        else {
            std::fprintf(stderr, "Usage: soak [--exchanges N] [--percent N] [--seed N]\n");
            return 2;
        }
    }
    const std::array<Outcome, 2> outcomes = {soak(options, false), soak(options, true)};
    for (const Outcome& outcome : outcomes)
        if (outcome.heads != k_heads) {
            std::fprintf(stderr, "soak: %d of %d heads opened\n", outcome.heads, k_heads);
            return 1;
        }
    return report(outcomes) ? 0 : 1;
}
