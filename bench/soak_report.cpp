#include "bench/soak_report.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>

namespace ampdesk::bench {

namespace {

using O = const Outcome&;

// The third read that fails after its second try puts up the error screen; first tries of other kinds may
// have failed between them.
constexpr long k_most_failed = 9;

// One line of the table, a column an outcome.
class Table {
  public:
    explicit Table(const std::array<Outcome, 2>& outcomes) : outcomes_(outcomes) {}

    template <class Figure>
    void row(std::string_view what, Figure figure) {
        std::printf("%-54.*s", static_cast<int>(what.size()), what.data());
        for (const Outcome& outcome : outcomes_) std::printf(" %14s", text(figure(outcome)).c_str());
        std::printf("\n");
    }

    template <class Figure>
    void zero_row(std::string_view what, Figure figure) {
        most_row(what, figure, 0L);
    }

    // What another amplifier's late reply can do when replies do not tell whose they are.
    template <class Figure>
    void zero_when_checked_row(std::string_view what, Figure figure) {
        row(std::string(what) + " (0 when checked)", figure);
        broken_ = broken_ || figure(outcomes_[1]) != 0;
    }

    template <class Figure>
    void most_row(std::string_view what, Figure figure, long most) {
        row(std::string(what) + (most == 0 ? " (must be 0)" : " (at most " + std::to_string(most) + ")"),
            figure);
        for (const Outcome& outcome : outcomes_) broken_ = broken_ || figure(outcome) > most;
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

void report_line(Table& table) {
    table.row("exchanges", [](O o) { return o.exchanges; });
    table.row("hours on the station's clock", [](O o) { return o.hours; });
    table.row("replies spoilt",
              [](O o) { return std::accumulate(o.faults.begin() + 1, o.faults.end(), 0L); });
    for (std::size_t i = 1; i < k_fault_names.size(); ++i)
        table.row("  " + std::string(k_fault_names[i]), [i](O o) { return o.faults[i]; });
    table.row("times an amplifier fell silent", [](O o) { return o.outages; });
    table.row("shutdowns", [](O o) { return o.shutdowns; });
    table.row("message boxes", [](O o) { return o.boxes; });
}

void report_display(Table& table) {
    table.row("values drawn", [](O o) { return o.display.values; });
    table.zero_row("  that nobody had said", [](O o) { return o.display.nobodys; });
    table.zero_row("  that another amplifier had said", [](O o) { return o.display.others; });
    table.zero_when_checked_row("  … before this one's address was learned",
                                [](O o) { return o.display.others_early; });
    table.row("age of a value at most, when drawn", [](O o) { return o.display.oldest_drawn; });
    table.row("  … while it stood on a status screen", [](O o) { return o.display.oldest_shown; });
    table.row("  … while its amplifier answered nothing", [](O o) { return o.display.unanswered; });
    table.most_row(
        "  … reads that failed in a row meanwhile", [](O o) { return o.display.failed_in_a_row; },
        k_most_failed);
    table.row("a live amplifier's status is asked every, on average",
              [](O o) { return o.display.status_time / std::max(o.display.status_intervals, 1L); });
    table.row("rows of the event list drawn", [](O o) { return o.display.events; });
    table.zero_when_checked_row("  with another entry's text", [](O o) { return o.display.wrong_events; });
    table.row("band labels drawn", [](O o) { return o.display.labels; });
    table.zero_when_checked_row("  that the amplifier had not said",
                                [](O o) { return o.display.wrong_labels; });
    table.row("  longest lag behind a band set elsewhere", [](O o) { return o.display.wrong_band; });
}

void report_settings(Table& table) {
    table.row("keys pressed and bars moved", [](O o) { return o.settings.presses; });
    table.row("settings sent for them", [](O o) { return o.settings.sent; });
    table.zero_row("  that nobody had asked for", [](O o) { return o.settings.unasked; });
    table.zero_row("  sent twice", [](O o) { return o.settings.twice; });
    table.zero_row("  of an On-key, long after it was pressed", [](O o) { return o.settings.stale; });
    table.zero_row("  refused, but taken for carried out", [](O o) { return o.settings.misread; });
    table.row("  lost: carried out, but the reply did not arrive", [](O o) { return o.settings.lost; });
}

void report_remote(Table& table) {
    table.row("remote command lines", [](O o) { return o.remote.lines; });
    table.row("  noise, half lines, lines without the marker", [](O o) { return o.remote.others; });
    table.row("  calls ended by the terminal for noise", [](O o) { return o.remote.hang_ups; });
    table.row("remote lines answered", [](O o) { return o.remote.answers; });
    table.zero_row("  answered wrongly", [](O o) { return o.remote.wrong; });
    table.zero_when_checked_row("  by another amplifier's reply", [](O o) { return o.remote.of_another; });
    table.zero_row("  not answered", [](O o) { return o.remote.unanswered; });
    table.zero_row("commands sent that no line asked for", [](O o) { return o.remote.unasked; });
    table.row("settings sent for remote lines", [](O o) { return o.remote.settings; });
    table.zero_row("  sent twice", [](O o) { return o.remote.settings_twice; });
    table.row("  lost: carried out, but told as unanswered", [](O o) { return o.remote.settings_lost; });
}

void report_nvram(Table& table) {
    table.row("nvRam reads done", [](O o) { return o.nvram.reads_done; });
    table.row("  failed or given up", [](O o) { return o.nvram.reads_ended; });
    table.row("nvRam writes done", [](O o) { return o.nvram.writes_done; });
    table.row("  refused, failed or given up", [](O o) { return o.nvram.writes_ended; });
    table.row("nvRam blocks read", [](O o) { return o.nvram.blocks_read; });
    table.row("nvRam blocks written", [](O o) { return o.nvram.blocks_written; });
    table.zero_row("nvRam transfers wrong", [](O o) { return o.nvram.wrong; });
    table.zero_row("nvRam commands that no transfer wanted", [](O o) { return o.nvram.unasked; });
}

void report_footprint(Table& table) {
    table.row("memory after a tenth, kB", [](O o) { return o.start.memory; });
    table.row("memory at the end, kB", [](O o) { return o.end.memory; });
    table.most_row(
        "  grown by, kB", [](O o) { return o.end.memory - o.start.memory; }, k_memory_allowance);
    table.row("open descriptors after a tenth", [](O o) { return o.start.descriptors; });
    table.row("open descriptors at the end", [](O o) { return o.end.descriptors; });
    table.zero_row("  grown by", [](O o) { return o.end.descriptors - o.start.descriptors; });
}

}  // namespace

Footprint Footprint::now() {
    Footprint print;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:"))
            print.memory = std::atol(line.c_str() + 6);
    status.close();
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++print.descriptors;
    return print;
}

bool report(const std::array<Outcome, 2>& outcomes) {
    Table table(outcomes);
    std::printf("%-54s %14s %14s\n", "reply_address", "learned", "checked");
    report_line(table);
    report_display(table);
    report_settings(table);
    report_remote(table);
    report_nvram(table);
    report_footprint(table);
    for (O o : outcomes)
        for (const auto& [what, first] : {std::pair{"wrong value", &o.display.first_wrong},
                                          {"unasked setting", &o.settings.first_unasked},
                                          {"wrong answer", &o.remote.first_wrong},
                                          {"unasked command", &o.remote.first_unasked},
                                          {"wrong transfer", &o.nvram.first_wrong}})
            if (!first->empty())
                std::printf("first %s: %s\n", what, first->c_str());
    return !table.broken();
}

}  // namespace ampdesk::bench
