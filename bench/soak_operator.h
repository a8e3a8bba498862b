// The soak's operator: presses keys at random and holds the station to what was asked for.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bench/line_faults.h"
#include "bench/nobody.h"
#include "bench/soak_line.h"
#include "shell/station.h"

namespace ampdesk::bench {

// Closes every box and counts them.
class SoakOperator : public Nobody {
  public:
    Answer ask(const Message& message) override {
        ++boxes;
        if (on_box)
            on_box();
        return message.buttons == Buttons::ok || message.buttons == Buttons::ok_cancel ? Answer::ok
                                                                                       : Answer::yes;
    }
    void let_events_run() override {
        if (on_events)
            on_events();
    }

    std::function<void()> on_box;  // while a box is open
    std::function<void()> on_events;
    long boxes = 0;
};

struct SettingCounts {
    long presses = 0;
    long sent = 0;
    long unasked = 0;  // sent without a key whose legend offers it
    long twice = 0;
    long lost = 0;     // carried out, but the station saw no reply
    long misread = 0;  // refused or never heard, but the station took it for carried out
    std::string first_unasked;
};

class Finger {
  public:
    Finger(Station& station, SoakLine& line, FaultyLine& chance)
        : station_(station), line_(line), chance_(chance) {}

    // Does one thing to one panel: a soft key, a hard key, a lamp or the scroll bar.
    void press();

    // Called for every request on the line.
    void watch(const Order& order);

    // What was asked for has been sent by now, or never will be.
    void forget_permits() { permits_.clear(); }

    SettingCounts counts;

  private:
    // A press may lead to one setting, which begins like this.
    struct Permit {
        int address = 0;
        std::string begins;
        bool used = false;
    };
    static std::optional<std::string> asked_by_soft_key(const Panel& panel, int key);
    void act(ControlHead& head);
    void account(const ControlHead& head, const Permit& permit);

    Station& station_;
    SoakLine& line_;
    FaultyLine& chance_;
    std::vector<Permit> permits_;
    std::string pressed_;  // what the panel showed at the last press
};

}  // namespace ampdesk::bench
