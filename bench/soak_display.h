// The soak's witness: compares what a control head shows with what its amplifier really said.
#pragma once

#include <array>
#include <deque>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "bench/soak_claims.h"
#include "bench/soak_findings.h"
#include "bench/soak_line.h"
#include "buslink/bus_link.h"
#include "station/station.h"

namespace ampdesk::bench {

struct DisplayCounts {
    long values = 0;             // rows with a value that were drawn, gauge and lamps included
    long others = 0;             // of these: another amplifier had said it, this one had not
    long others_early = 0;       // the same, before this one was known to send its address
    long nobodys = 0;            // of these: no amplifier had said it
    long events = 0;             // rows of the event list that were drawn
    long wrong_events = 0;       // of these: the entry of that number says something else
    long labels = 0;             // band labels drawn
    long wrong_labels = 0;       // of these: the amplifier had not said that band
    Duration oldest_drawn{};     // how old a value was at most when it was drawn
    Duration oldest_shown{};     // … and how old while it stood on a status screen
    Duration oldest_unspoilt{};  // … spoilt exchanges taken off, and while it answered nothing
    Duration unanswered{};       // the longest that values stood while the amplifier answered nothing
    long failed_in_a_row = 0;    // so many reads failed while values stood
    long status_intervals = 0;   // between two status requests to an amplifier that is not taken for silent
    Duration status_time{};      // … all of them together
    Duration wrong_band{};       // the longest time that a label differed from the amplifier's band
    Duration own_band{};         // … after a BAND key of the same panel, spoilt exchanges taken off
};

// While the others' values are asked for every 6 s at least, and those in front more often.
inline constexpr std::chrono::seconds k_stands_within{7};

// From a BAND key's setting to its label: the next tick asks for the band, which has to come twice.
inline constexpr std::chrono::milliseconds k_own_band_limit{4000};

class DisplayWatch {
  public:
    DisplayWatch(Station& station, ControlHead& head, SoakLine& line, const BusLink& bus, const Clock& clock,
                 DisplayCounts& counts, Findings& findings)
        : head_(head), line_(line), bus_(bus), clock_(clock), counts_(counts), findings_(findings) {
        readings_ = station.readings().subscribe([this](const Reading& reading) { take(reading); });
    }

    // The panel has changed: looks at what is new on it.
    void changed();

    // Now and then: looks how old what is shown has become.
    void look();

    // Called for every request of this head on the line.
    void watch(const LineRequest& request);

  private:
    std::string value_in_row(int row, const std::string& text) const;
    void look_at_row(int row);
    void take(const Reading& reading);
    void judge(const Claims& claims, const std::string& what, Duration within);
    void judge_event(const Claims& claims, const std::string& text);
    void judge_level(const Claims& claims, const std::string& text);
    void judge_label(const std::string& label);
    const Said* found(int address, const Claims& claims, Duration within) const;
    bool shows_values() const;
    void look_for_answers();
    void look_at_band();

    ControlHead& head_;
    SoakLine& line_;
    const BusLink& bus_;
    const Clock& clock_;
    DisplayCounts& counts_;
    Findings& findings_;
    std::array<std::string, 4> rows_;
    std::array<std::string, 4> values_;  // that each row had last
    std::array<Instant, 4> drawn_{};     // when each row changed last
    std::array<LampColour, 8> lamps_{};
    std::array<Instant, 8> put_out_{};  // with the whole display
    std::optional<double> gauge_;
    std::string label_;
    std::deque<char> bands_;     // that were said about when one was read, oldest first
    std::set<char> bands_said_;  // the same
    long failed_in_a_row_ = 0;
    std::optional<Instant> wrong_band_since_;
    std::optional<Instant> status_asked_;
    Instant values_since_{};  // the panel has shown values without a break
    Subscription readings_;
};

}  // namespace ampdesk::bench
