// The soak's witness: compares what a control head shows with what its amplifier really said.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bench/soak_line.h"
#include "buslink/bus_link.h"
#include "controlhead/control_head.h"

namespace ampdesk::bench {

struct DisplayCounts {
    long values = 0;          // rows with a value that were drawn, gauge and lamps included
    long others = 0;          // of these: another amplifier had said it, this one had not
    long others_early = 0;    // the same, before this one was known to send its address
    long nobodys = 0;         // of these: no amplifier had said it
    long events = 0;          // rows of the event list that were drawn
    long wrong_events = 0;    // of these: the entry of that number says something else
    long labels = 0;          // band labels drawn
    long wrong_labels = 0;    // of these: the amplifier had not said that band
    Duration oldest_drawn{};  // how old a value was at most when it was drawn
    Duration oldest_shown{};  // … and how old while it stood on a status screen
    Duration wrong_band{};    // the longest time that a label differed from the amplifier's band
    std::string first_wrong;  // the first of others and nobodys, in words
};

class DisplayWatch {
  public:
    DisplayWatch(ControlHead& head, SoakLine& line, const BusLink& bus, const Clock& clock,
                 DisplayCounts& counts)
        : head_(head), line_(line), bus_(bus), clock_(clock), counts_(counts) {}

    // The panel has changed: looks at what is new on it.
    void changed();

    // Between two visits: looks how old what is shown has become.
    void look();

  private:
    // What something on the panel says about a reply's payload.
    struct Claim {
        std::string command;
        std::function<bool(const std::string& payload)> holds;
    };
    using Claims = std::vector<Claim>;  // one of them must be true; none for what says nothing
    static Claims claims_of_lamp(int lamp, LampColour colour);
    static Claims claims_of_alarm_row(const std::string& text);
    static Claims claims_of_event_row(const std::string& text);
    static Claims claims_of_shutdown_row(int row, const std::string& text);
    Claims claims_of_row(int row, const std::string& text) const;
    void judge(const Claims& claims, const std::string& what, Duration within);
    void judge_event(const Claims& claims);
    void judge_label(const std::string& label);
    const Said* found(int address, const Claims& claims, Duration within) const;
    bool dark_screen() const;

    ControlHead& head_;
    SoakLine& line_;
    const BusLink& bus_;
    const Clock& clock_;
    DisplayCounts& counts_;
    std::array<std::string, 4> rows_;
    std::array<Instant, 4> drawn_{};  // when each row changed last
    std::array<LampColour, 8> lamps_{};
    std::optional<double> gauge_;
    std::string label_;
    std::optional<Instant> wrong_band_since_;
};

}  // namespace ampdesk::bench
