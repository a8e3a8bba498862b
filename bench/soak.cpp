// A day of bad weather in seconds: four control heads of a real station, the terminal with a remote station,
// and nvRam transfers, all on simulated amplifiers whose values change all the time, over a line that spoils
// one request and one reply in ten and brings what nobody asked for, on a clock that only waits move. Keys
// are pressed in the middle of exchanges, amplifiers fall silent, shut down, are switched by hand and
// replaced. Checks that nothing is shown, told or written to a file that the amplifier has not said, that
// what it says is shown soon and asked for in time, that every key does its work once and nothing is set that
// nobody asked for.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
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
constexpr std::chrono::seconds k_opening{20};
constexpr std::chrono::microseconds k_byte_time{1042};  // 9600 baud, ten bits a byte
constexpr std::chrono::milliseconds k_alarm_beep{300};

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
          learns_(rule == ReplyAddress::learned),
          faults_(options.seed, 0, k_byte_time),
          bus_(line_, clock_, bus_options(rule)) {
        demo::add_demonstration(line_.bus(), k_heads);
        services_.options.folder = folder_.path();
        services_.options.negative_words = NegativeWords::two_complement;
        line_.on_request = [this](const LineRequest& order) { request(order); };
        line_.is_known = [this](int address) { return bus_.looks_at_reply_address(address); };
        person_.on_box = [this] { box_open(); };
        finger_.on_act = [this](int address) { watches_.at(address)->timely.touched(); };
        person_.on_status = [this](std::string_view text) { finger_.read(text); };
        person_.on_beep = [this](std::chrono::milliseconds length) {
            if (length == k_alarm_beep)
                last_beep_ = clock_.now();
        };
        station_.on_window_created = [this](const std::shared_ptr<ControlHead>& head) {
            const int address = head->identity().unit_address;
            auto& watch = watches_[address];
            watch = std::make_unique<Watch>(*this, *head);
            views_[address] = head->views.subscribe([this, address, &watch = *watch](const HeadView&) {
                watch.display.changed();
                if (running_)
                    watch.look(finger_.active() == address);
            });
        };
        write_rs422(folder_ / "rs422.dat", {.port_name = "COM1:"});
        station_.auto_open_dat_files(demo::write_demonstration_files(folder_.path(), k_heads));
        for (const Instant end = clock_.now() + k_opening; clock_.now() < end && !all_started();) turn();
        outcome_.heads = all_started() ? station_.open_count() : 0;
    }

    Outcome run();

  private:
    struct Watch {
        Watch(Soak& soak, ControlHead& head)
            : display(soak.station_, head, soak.line_, soak.bus_, soak.clock_, soak.outcome_.display,
                      soak.findings_),
              timely(head, soak.line_, soak.clock_, soak.learns_, soak.outcome_.timely, soak.findings_),
              pace(head, soak.line_, soak.clock_, soak.outcome_.pace, soak.findings_) {}
        void look(bool active) {
            timely.look();
            pace.look(active);
        }
        void watch(const LineRequest& order) {
            display.watch(order);
            timely.watch(order);
            pace.watch(order);
        }
        DisplayWatch display;
        TimelyWatch timely;
        PaceWatch pace;
    };
    bool all_started() const;
    void listen();
    void look_at_guests();
    void turn();
    void look();
    void request(const LineRequest& order);
    void box_open();

    const Options options_;
    const bool learns_;
    const ScratchFolder folder_;
    ManualClock clock_;
    FaultyLine faults_;
    FaultyLine chance_{options_.seed + 1, 0, {}};
    SoakLine line_{clock_, faults_};
    Weather weather_{line_.bus(), chance_, clock_};
    Findings findings_{clock_, line_.exchanges};
    SoakOperator person_;
    BusLink bus_;
    HeadServices services_{bus_, clock_, person_, {}};
    Station station_{services_};
    Finger finger_{station_, line_, chance_, clock_, bus_, findings_};
    RemoteStation remote_{station_, bus_, line_, chance_, clock_, folder_.path(), findings_};
    ServiceEngineer engineer_{station_, bus_, person_, line_, chance_, clock_, folder_.path(), findings_};
    std::map<int, std::unique_ptr<Watch>> watches_;  // by unit address
    std::map<int, Subscription> views_;              // the same
    Outcome outcome_;
    Instant next_look_{}, last_guest_{}, last_beep_{};
    int boxes_open_ = 0;
    bool running_ = false;  // the heads are open
};

void Soak::request(const LineRequest& order) {
    weather_.set_values(order.address);
    if (line_.is_too_soon() && !order.setting()) {  // which may have cut the wait
        ++outcome_.interruptions;
        findings_.tell("line", order.address, "a quiet line behind a read that failed", "a request at once");
    }
    switch (order.speaker) {
        case Speaker::head:
            if (const auto watch = watches_.find(order.address); watch != watches_.end())
                watch->second->watch(order);
            return finger_.watch(order);
        case Speaker::remote:
            last_guest_ = clock_.now();
            return remote_.watch(order);
        case Speaker::nvram:
            last_guest_ = clock_.now();
            return engineer_.watch(order);
    }
}

bool Soak::all_started() const {
    const auto heads = station_.open_heads();
    return heads.size() == k_heads &&
           std::all_of(heads.begin(), heads.end(), [](const auto& head) { return head->started(); });
}

// While a box is open the windows behind it take no keys; all the rest goes on.
void Soak::box_open() {
    constexpr int k_most_boxes = 3;
    constexpr std::chrono::seconds k_longest{5};
    const Instant end = clock_.now() + chance_.number(0, 10) * k_longest / 10;
    if (++boxes_open_ <= k_most_boxes)
        while (clock_.now() < end) turn();
    --boxes_open_;
}

void Soak::look() {
    constexpr std::chrono::milliseconds k_between_looks{125};
    if (clock_.now() < next_look_)
        return;
    next_look_ = clock_.now() + k_between_looks;
    weather_.turn();
    for (const auto& [address, watch] : watches_) {
        watch->display.look();
        watch->look(finger_.active() == address);
    }
    listen();
    look_at_guests();
}

// A shutdown beeps at every tick while it is on a display, an alarm every 15 s.
void Soak::listen() {
    std::optional<Instant> since;
    std::optional<Instant> alarm;
    for (const auto& [address, watch] : watches_) {
        if (const auto shown = watch->timely.shutdown_shown())
            since = std::min(since.value_or(*shown), *shown);
        if (const auto told = watch->timely.alarm_told())
            alarm = std::min(alarm.value_or(*told), *told);
    }
    if (alarm) {
        const Instant from = std::max(*alarm, last_beep_);
        findings_.judge("alarm", 0, clock_.now() - from - line_.lost(from), limit::k_alarm_mute,
                        outcome_.timely.alarm_mute, "a beep", "none");
    }
    if (!since)
        return;
    findings_.judge("shutdown", 0, clock_.now() - std::max(*since, last_beep_), limit::k_mute,
                    outcome_.timely.mute, "a beep", "none");
}

// A remote line or a transfer that waits has its turn.
void Soak::look_at_guests() {
    const Instant now = clock_.now();
    const auto due = [&](std::optional<Instant> at) { return at && *at <= now; };
    if (!due(remote_.due()) && !due(engineer_.due()))
        last_guest_ = now;
    findings_.judge("guest", 0, now - last_guest_ - line_.lost(last_guest_), limit::k_guest,
                    outcome_.pace.guest, "his turn", "still waiting");
}

// Everybody else does what is due, at any time in an exchange; then the station takes its step, and what
// comes next is waited for. An event loop hears of input a little late.
void Soak::turn() {
    if (running_) {
        look();
        finger_.turn(boxes_open_ > 0);
        remote_.turn();
        engineer_.turn();
    }
    Instant next = station_.step();
    if (running_)
        next = std::min({next, next_look_, finger_.due(), remote_.next_turn(), engineer_.next_turn()});
    if (const auto input = line_.input_due())
        next = std::min(next, *input + chance_.number(0, 5) * std::chrono::milliseconds(1));
    clock_.sleep_until(std::max<Instant>(next, clock_.now() + std::chrono::microseconds(100)));
}

Outcome Soak::run() {
    if (outcome_.heads != k_heads)
        return outcome_;
    running_ = true;
    line_.exchanges = 0;
    faults_.counts = {};
    faults_.request_counts = {};
    faults_.stray_counts = {};
    faults_.set_percent(options_.percent);
    const Instant start = clock_.now();
    const auto run_to = [&](long exchanges) {
        while (line_.exchanges < exchanges) turn();
        engineer_.leave();
        while (engineer_.under_way()) turn();
    };
    run_to(options_.exchanges / 10);
    outcome_.start = Footprint::now();
    run_to(options_.exchanges);
    outcome_.end = Footprint::now();
    outcome_.exchanges = line_.exchanges;
    outcome_.hours = std::chrono::duration<double, std::ratio<3600>>(clock_.now() - start).count();
    outcome_.faults = faults_.counts;
    outcome_.request_faults = faults_.request_counts;
    outcome_.strays = faults_.stray_counts;
    outcome_.findings = findings_.texts();
    outcome_.forgeries = line_.forgeries;
    outcome_.dead_lines = weather_.dead_lines;
    outcome_.replacements = weather_.replacements;
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
            std::printf("first finding: seed %u, %d of %d panels opened\n", options.seed, outcome.heads,
                        k_heads);
            return 1;
        }
    return report(outcomes, options.seed) ? 0 : 1;
}
