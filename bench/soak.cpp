// A day of bad weather in minutes: four control heads of a real station, the terminal with a remote
// station, and nvRam transfers, all on simulated amplifiers whose values change all the time, over a
// line that spoils one reply in ten, on a clock that only waits move. Keys are pressed, amplifiers fall
// silent, shut down and are switched by hand. Checks that nothing was shown, told or written to a file
// that the amplifier had not said, and nothing was set that nobody had asked for.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench/soak_report.h"
#include "bench/soak_weather.h"
#include "buslink/settings_files.h"
#include "demo/demonstration.h"
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

BusOptions bus_options(ReplyAddress rule) {
    BusOptions options;
    options.reply_address = rule;
    return options;
}

// The program on the faulty line, and everybody who has to do with it.
class Soak {
  public:
    Soak(const Options& options, ReplyAddress rule)
        : options_(options),
          faults_(options.seed, 0, k_byte_time),
          bus_(line_, clock_, person_, bus_options(rule)) {
        demo::add_demonstration(line_.bus(), k_heads);
        services_.options.folder = folder_.path();
        services_.options.negative_words = NegativeWords::two_complement;
        line_.on_request = [this](const Order& order) { request(order); };
        person_.on_box = [this] { box_open(); };
        person_.on_events = [this] { events(); };
        station_.on_window_created = [this](const std::shared_ptr<ControlHead>& head) {
            watches_.push_back(std::make_unique<DisplayWatch>(*head, line_, bus_, clock_, outcome_.display));
            head->panel().on_change = [watch = watches_.back().get()] { watch->changed(); };
        };
        write_rs422(folder_ / "rs422.dat", {.port_name = "COM1:"});
        station_.auto_open_dat_files(demo::write_demonstration_files(folder_.path(), k_heads));
        outcome_.heads = station_.open_count();
    }

    Outcome run();

  private:
    void turn();
    void poll();
    void request(const Order& order);
    void box_open();
    void events();

    const Options options_;
    const ScratchFolder folder_;
    ManualClock clock_;
    FaultyLine faults_;
    FaultyLine chance_{options_.seed + 1, 0, {}};
    SoakLine line_{clock_, faults_};
    Weather weather_{line_.bus(), chance_, clock_};
    SoakOperator person_;
    BusLink bus_;
    HeadServices services_{bus_, clock_, person_, {}};
    Station station_{services_};
    Finger finger_{station_, line_, chance_};
    RemoteStation remote_{bus_, line_, chance_, clock_, folder_.path()};
    ServiceEngineer engineer_{bus_, person_, line_, chance_, clock_, folder_.path()};
    std::vector<std::unique_ptr<DisplayWatch>> watches_;
    Outcome outcome_;
    Instant next_poll_{};
    int boxes_open_ = 0;
    bool letting_events_run_ = false;  // nobody else may use the bus then
};

void Soak::request(const Order& order) {
    weather_.set_values(order.address);
    switch (order.speaker) {
        case Speaker::head:
            return finger_.watch(order);
        case Speaker::remote:
            return remote_.watch(order);
        case Speaker::nvram:
            return engineer_.watch(order);
    }
}

// While a box is open the windows behind it take no keys; all the rest goes on.
void Soak::box_open() {
    constexpr int k_most_boxes = 3;
    constexpr std::chrono::seconds k_longest{5};
    const bool letting = std::exchange(letting_events_run_, false);
    const Turn speaker(line_, Speaker::head);
    const Instant end = clock_.now() + k_longest;
    if (++boxes_open_ <= k_most_boxes)
        for (int turns = chance_.number(0, 40); turns > 0 && clock_.now() < end; --turns) turn();
    --boxes_open_;
    letting_events_run_ = letting;
}

void Soak::events() {
    const bool outer = std::exchange(letting_events_run_, true);
    if (boxes_open_ == 0 && chance_.one_in(40))
        finger_.press();
    remote_.turn(false);
    letting_events_run_ = outer;
}

void Soak::poll() {
    if (clock_.now() < next_poll_)
        return;
    const Duration wait = station_.poll_windows();
    next_poll_ = clock_.now() + wait;
    weather_.turn();
    if (boxes_open_ > 0)
        return;
    finger_.forget_permits();
    for (const auto& watch : watches_) watch->look();
    if (chance_.one_in(10)) {
        finger_.press();
        finger_.forget_permits();
    }
}

// What is due, in any order, then the wait for what comes next.
void Soak::turn() {
    const bool polled_first = chance_.one_in(2);
    if (polled_first)
        poll();
    remote_.turn(true);
    engineer_.turn();
    if (!polled_first)
        poll();
    const Instant next = std::min({next_poll_, remote_.due(), engineer_.due()});
    clock_.advance(std::max<Duration>(next - clock_.now(), std::chrono::milliseconds(1)));
}

Outcome Soak::run() {
    line_.exchanges = 0;
    faults_.counts = {};
    faults_.set_percent(options_.percent);
    const Instant start = clock_.now();
    while (line_.exchanges < options_.exchanges / 10) turn();
    engineer_.leave();
    outcome_.start = Footprint::now();
    while (line_.exchanges < options_.exchanges) turn();
    engineer_.leave();
    outcome_.end = Footprint::now();
    outcome_.exchanges = line_.exchanges;
    outcome_.hours = std::chrono::duration<double, std::ratio<3600>>(clock_.now() - start).count();
    outcome_.faults = faults_.counts;
    outcome_.settings = finger_.counts;
    outcome_.remote = remote_.counts;
    outcome_.nvram = engineer_.counts;
    outcome_.boxes = person_.boxes;
    outcome_.outages = weather_.outages;
    outcome_.shutdowns = weather_.shutdowns;
    return outcome_;
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
    const std::array<Outcome, 2> outcomes = {Soak(options, ReplyAddress::learned).run(),
                                             Soak(options, ReplyAddress::checked).run()};
    for (const Outcome& outcome : outcomes)
        if (outcome.heads != k_heads) {
            std::fprintf(stderr, "soak: %d of %d heads opened\n", outcome.heads, k_heads);
            return 1;
        }
    return report(outcomes) ? 0 : 1;
}
