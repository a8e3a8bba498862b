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
#include "bench/soak_findings.h"
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

    void start_beep(std::chrono::milliseconds length) override {
        if (on_beep)
            on_beep(length);
    }
    void show_status(std::string_view text) override {
        if (on_status)
            on_status(text);
    }

    std::function<void()> on_box;  // while a box is open
    std::function<void(std::chrono::milliseconds length)> on_beep;
    std::function<void(std::string_view text)> on_status;
    long boxes = 0;
};

struct SettingCounts {
    long presses = 0;
    long sent = 0;
    long unasked = 0;  // sent without a key whose legend offered it when the operator looked
    long twice = 0;
    long stale = 0;          // On-keys sent long after the press
    long lost = 0;           // carried out, but the station saw no reply
    long misread = 0;        // refused or never heard, but the station took it for carried out
    long misread_early = 0;  // … when the amplifier was not known by its address
    long deaf = 0;           // the amplifier's sound reply did not count
    long unsent = 0;         // keys of which nothing came, and nobody was told why
    long dropped = 0;        // On-keys that were told to have waited too long
    long overtaken = 0;      // sent before a key that had been pressed earlier
    Duration off_key{};      // the longest from an Off-key to its setting, what other settings took taken off
};

// An Off-key's longest way to the line: the reply to a setting is waited for 300 ms, the line's rest for 300
// more.
inline constexpr std::chrono::milliseconds k_off_key_limit{1000};

class Finger {
  public:
    Finger(Station& station, SoakLine& line, FaultyLine& chance, const Clock& clock, const BusLink& bus,
           Findings& findings)
        : station_(station), line_(line), chance_(chance), clock_(clock), bus_(bus), findings_(findings) {
        settings_ = station.settings().subscribe([this](const Setting& setting) { account(setting); });
    }

    // Looks at a panel, and a little later does one thing to it: a soft key, a hard key, a lamp or the scroll
    // bar. Nothing while a box locks the windows.
    void turn(bool locked);

    // When there is something to do again.
    Instant due() const { return next_; }

    // What the status label says.
    void read(std::string_view status);

    // The amplifier whose window is in front.
    int active() const { return active_; }

    // Called for every request of a head on the line.
    void watch(const LineRequest& order);

    std::function<void(int address)> on_act;  // something is done to that panel
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
        bool must = false;       // nothing allows the panel to leave it at that
        const char* key = "";    // in words
        long settings_before{};  // that had gone out when it was pressed
    };
    // What the operator has made up his mind to do by what he saw.
    struct Intent {
        std::shared_ptr<ControlHead> head;
        std::optional<Permit> permit;
        std::function<void()> act;
        int soft_key = -1;                    // that one, 0..3 …
        std::optional<std::string> did = {};  // … and what it did
    };
    void lose(const Permit& permit, const std::string& what);
    bool must_come_of(const Intent& intent) const;
    static std::optional<std::string> asked_by_soft_key(const Panel& panel, int key);
    std::shared_ptr<ControlHead> somebody();
    Intent look();
    static Intent hard_key(const std::shared_ptr<ControlHead>& head, int key);
    Intent soft_key(const std::shared_ptr<ControlHead>& head, int key, bool by_lamp);
    void act(const Intent& intent);
    void account(const Setting& setting);
    bool has_answered(int address) const;
    void off_key_went(const Permit& permit, Duration waited);
    void forget_dropped();
    void forget_replaced(int address, const std::vector<std::string>& before,
                         const std::vector<std::string>& after);

    Station& station_;
    SoakLine& line_;
    FaultyLine& chance_;
    const Clock& clock_;
    const BusLink& bus_;
    Findings& findings_;
    Subscription settings_;
    std::optional<Intent> intent_;
    Instant next_{};
    std::deque<Permit> permits_;  // in the order of the presses
    std::string seen_;            // on the panel of the last intent
    std::size_t front_ = 0;       // the window in front, in the order of the slots
    int active_ = 0;
    int burst_ = 0;  // so many more in haste
    long settings_out_ = 0;
};

}  // namespace ampdesk::bench
