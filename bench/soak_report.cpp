#include "bench/soak_report.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <utility>

namespace ampdesk::bench {

namespace {

using O = const Outcome&;

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
        check(what, figure(outcomes_[1]) != 0);
    }

    template <class Figure>
    void most_row(std::string_view what, Figure figure, long most) {
        row(std::string(what) + (most == 0 ? " (must be 0)" : " (at most " + std::to_string(most) + ")"),
            figure);
        for (const Outcome& outcome : outcomes_) check(what, figure(outcome) > most);
    }

    // The longest that something took.
    template <class Figure>
    void limit_row(std::string_view what, Figure figure, Duration most) {
        row(std::string(what) + " (at most " + text(most) + ")", figure);
        for (const Outcome& outcome : outcomes_) check(what, figure(outcome) > most);
    }

    // The first check that was broken; empty when all is as it must be.
    const std::string& broken() const { return broken_; }

  private:
    void check(std::string_view what, bool is_broken) {
        if (is_broken && broken_.empty())
            broken_ = what;
    }
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
    std::string broken_;
};

void report_line(Table& table) {
    table.row("exchanges", [](O o) { return o.exchanges; });
    table.row("hours on the station's clock", [](O o) { return o.hours; });
    table.row("replies spoilt",
              [](O o) { return std::accumulate(o.faults.begin() + 1, o.faults.end(), 0L); });
    for (std::size_t i = 1; i < k_fault_names.size(); ++i)
        table.row("  " + std::string(k_fault_names[i]), [i](O o) { return o.faults[i]; });
    table.row("  garbled, and with a good CRC", [](O o) { return o.forgeries; });
    table.row("requests spoilt",
              [](O o) { return std::accumulate(o.request_faults.begin() + 1, o.request_faults.end(), 0L); });
    for (std::size_t i = 1; i < k_request_fault_names.size(); ++i)
        table.row("  " + std::string(k_request_fault_names[i]), [i](O o) { return o.request_faults[i]; });
    table.row("what nobody asked for",
              [](O o) { return std::accumulate(o.strays.begin() + 1, o.strays.end(), 0L); });
    for (std::size_t i = 1; i < k_stray_names.size(); ++i)
        table.row("  " + std::string(k_stray_names[i]), [i](O o) { return o.strays[i]; });
    table.zero_row("requests into a line that was not left quiet", [](O o) { return o.interruptions; });
    table.row("times an amplifier fell silent", [](O o) { return o.outages; });
    table.row("times all fell silent at once", [](O o) { return o.dead_lines; });
    table.row("times an amplifier was replaced", [](O o) { return o.replacements; });
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
    table.limit_row(
        "  … spoilt exchanges taken off", [](O o) { return o.display.oldest_unspoilt; }, k_stands_within);
    table.row("  … while its amplifier answered nothing", [](O o) { return o.display.unanswered; });
    table.row("  … reads that failed in a row meanwhile", [](O o) { return o.display.failed_in_a_row; });
    table.row("a live amplifier's status is asked every, on average",
              [](O o) { return o.display.status_time / std::max(o.display.status_intervals, 1L); });
    table.row("rows of the event list drawn", [](O o) { return o.display.events; });
    table.zero_row("  with another entry's text", [](O o) { return o.display.wrong_events; });
    table.row("band labels drawn", [](O o) { return o.display.labels; });
    table.zero_row("  that the amplifier had not said", [](O o) { return o.display.wrong_labels; });
    table.limit_row(
        "  longest lag behind its own BAND key", [](O o) { return o.display.own_band; }, k_own_band_limit);
    table.row("  longest lag behind a band set elsewhere", [](O o) { return o.display.wrong_band; });
}

void report_timely(Table& table) {
    table.limit_row(
        "a display behind a reply", [](O o) { return o.timely.behind; }, limit::k_behind);
    table.limit_row(
        "status asked every", [](O o) { return o.pace.status; }, limit::k_status);
    table.limit_row(
        "what the window in front shows", [](O o) { return o.pace.front; }, limit::k_front);
    table.limit_row(
        "what the others show", [](O o) { return o.pace.behind_it; }, limit::k_behind_it);
    table.limit_row(
        "a silent amplifier", [](O o) { return o.pace.look; }, limit::k_look);
    table.limit_row(
        "a guest waits", [](O o) { return o.pace.guest; }, limit::k_guest);
    table.limit_row(
        "shutdown to its display", [](O o) { return o.timely.shutdown_due; }, limit::k_shutdown_due);
    table.limit_row(
        "  its display after its end", [](O o) { return o.timely.shutdown_stays; }, limit::k_behind);
    table.limit_row(
        "  its display without a beep", [](O o) { return o.timely.mute; }, limit::k_mute);
    table.limit_row(
        "an alarm without a beep", [](O o) { return o.timely.alarm_mute; }, limit::k_alarm_mute);
    table.limit_row(
        "a band is asked for after its key", [](O o) { return o.pace.band; }, limit::k_band);
    table.zero_row("values that went for nothing", [](O o) { return o.timely.blanked; });
    table.zero_row("shutdown displays without a shutdown, or another",
                   [](O o) { return o.timely.unfounded; });
    table.limit_row(
        "silence to the error screen", [](O o) { return o.timely.error_due; }, limit::k_error_due);
    table.most_row(
        "  reads without an answer before it", [](O o) { return o.timely.unanswered; }, limit::k_unanswered);
    table.limit_row(
        "  the error screen after an answer", [](O o) { return o.timely.error_stays; }, limit::k_behind);
    table.zero_row("  a dead line without all of them", [](O o) { return o.timely.dead_lines; });
    table.zero_row("  the error screen too early, or with lamps", [](O o) { return o.timely.early_errors; });
    table.zero_row("  looks at a silent amplifier too soon", [](O o) { return o.pace.hasty_looks; });
    table.zero_row("replies passed over for their address", [](O o) { return o.timely.passed_over; });
}

void report_settings(Table& table) {
    table.row("keys pressed and bars moved", [](O o) { return o.settings.presses; });
    table.row("settings sent for them", [](O o) { return o.settings.sent; });
    table.zero_row("  that nobody had asked for", [](O o) { return o.settings.unasked; });
    table.zero_row("  sent twice", [](O o) { return o.settings.twice; });
    table.zero_row("  of an On-key, long after it was pressed", [](O o) { return o.settings.stale; });
    table.zero_row("  refused, but taken for carried out", [](O o) { return o.settings.misread; });
    table.zero_when_checked_row("  … before its address was learned",
                                [](O o) { return o.settings.misread_early; });
    table.zero_row("  answered soundly, but taken for unanswered", [](O o) { return o.settings.deaf; });
    table.zero_row("  before a key that was pressed earlier", [](O o) { return o.settings.overtaken; });
    table.limit_row(
        "  from an Off-key to the line", [](O o) { return o.settings.off_key; }, k_off_key_limit);
    table.row("  lost: carried out, but the reply did not arrive", [](O o) { return o.settings.lost; });
    table.zero_row("keys of which nothing came", [](O o) { return o.settings.unsent; });
    table.row("  On-keys that waited too long, and said so", [](O o) { return o.settings.dropped; });
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

bool report(const std::array<Outcome, 2>& outcomes, unsigned seed) {
    Table table(outcomes);
    std::printf("%-54s %14s %14s\n", "reply_address", "learned", "checked");
    report_line(table);
    report_display(table);
    report_timely(table);
    report_settings(table);
    report_remote(table);
    report_nvram(table);
    report_footprint(table);
    constexpr const char* k_columns[] = {"learned", "checked"};
    bool found = false;
    for (std::size_t i = 0; i < outcomes.size(); ++i)
        for (const std::string& finding : outcomes[i].findings)
            std::printf("%s finding: seed %u, %s, %s\n", std::exchange(found, true) ? "another" : "first",
                        seed, k_columns[i], finding.c_str());
    if (!found && !table.broken().empty())
        std::printf("first broken row: seed %u, %s\n", seed, table.broken().c_str());
    return !found && table.broken().empty();
}

}  // namespace ampdesk::bench
