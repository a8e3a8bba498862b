// The soak's operator: presses keys at random and holds the station to what was asked for.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "bench/line_faults.h"
#include "bench/nobody.h"
#include "bench/soak_line.h"
#include "station/station.h"

namespace ampdesk::bench {

// Closes every box and counts them.
class SoakOperator : public Nobody {
  public:
    void tell(const Message&) override {
        ++boxes;
        if (on_box)
            on_box();
    }

    std::function<void()> on_box;  // while a box is open
    long boxes = 0;
};

struct SettingCounts {
    long presses = 0;
    long sent = 0;
    long unasked = 0;  // sent without a key whose legend offered it when the operator looked
    long twice = 0;
    long stale = 0;    // On-keys sent long after the press
    long lost = 0;     // carried out, but the station saw no reply
    long misread = 0;  // refused or never heard, but the station took it for carried out
    std::string first_unasked;
};

class Finger {
  public:
    Finger(Station& station, SoakLine& line, FaultyLine& chance, const Clock& clock)
        : station_(station), line_(line), chance_(chance), clock_(clock) {
        settings_ = station.settings().subscribe([this](const Setting& setting) { account(setting); });
    }

    // Looks at a panel, and a little later does one thing to it: a soft key, a hard key, a lamp or the scroll
    // bar. Nothing while a box locks the windows.
    void turn(bool locked);

    // When there is something to do again.
    Instant due() const { return next_; }

    // Called for every request of a head on the line.
    void watch(const LineRequest& order);

    SettingCounts counts;

  private:
    // A press may lead to one setting, which begins like this.
    struct Permit {
        int address = 0;
        std::string begins;
        bool on_key = false;
        Instant pressed{};
        std::optional<Instant> left{};  // the head's orders
        bool used = false;
    };
    // What the operator has made up his mind to do by what he saw.
    struct Intent {
        std::shared_ptr<ControlHead> head;
        std::optional<Permit> permit;
        std::function<void()> act;
    };
    static std::optional<std::string> asked_by_soft_key(const Panel& panel, int key);
    Intent look();
    Intent soft_key(const std::shared_ptr<ControlHead>& head, int key, bool by_lamp);
    void act(const Intent& intent);
    void account(const Setting& setting);
    void forget_dropped();
    void forget_replaced(int address, const std::vector<std::string>& before,
                         const std::vector<std::string>& after);

    Station& station_;
    SoakLine& line_;
    FaultyLine& chance_;
    const Clock& clock_;
    Subscription settings_;
    std::optional<Intent> intent_;
    Instant next_{};
    std::deque<Permit> permits_;  // in the order of the presses
    std::string seen_;            // on the panel of the last intent
};

}  // namespace ampdesk::bench
