// Who has the line: carries one exchange at a time over it and waits for none. Orders go first, then what the
// plan says; what comes back goes to whom it belongs.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "buslink/bus_guest.h"
#include "controlhead/control_head.h"
#include "station/plan.h"

namespace ampdesk {

// An open amplifier: its number in the table, from 1, is what the plan calls it.
struct OpenAmplifier {
    int slot = 0;
    std::shared_ptr<ControlHead> head{};
    std::shared_ptr<Amplifier> amplifier{};
};

class Dispatcher {
  public:
    explicit Dispatcher(HeadServices& services) : services_(services) {}

    // From now on it is asked, and its orders are sent, until it is taken out again. What was ordered before
    // that is sent all the same; what comes of an exchange that is under way then is nobody's.
    void add(const OpenAmplifier& open) { amplifiers_[open.slot] = open; }
    void remove(int slot);

    void add_guest(BusGuest& guest) { guests_.push_back(&guest); }
    void remove_guest(const BusGuest& guest);

    // Its displays are asked for first; 0 for none.
    void set_active(int slot) { active_ = slot; }

    // Does the next thing. Whether something has come of it, and there may be more to do at once.
    enum class Did {
        nothing,
        something,
        guests_turn,  // a guest's exchange has ended: what he has to show is to be seen before he goes on
    };
    Did step(Instant now);

    // When step() is wanted though nothing comes in.
    Instant due() const;

    bool orders_left() const;

    Signal<Reading> readings;
    Signal<Setting> settings;

    // A reading has been taken by that head.
    std::function<void(int slot)> on_taken;

  private:
    // Of an amplifier that has been taken out.
    struct Leaving {
        std::string caption;
        std::shared_ptr<Amplifier> amplifier;
        std::deque<Order> orders;
    };
    // What is on the line.
    struct Exchange {
        OpenAmplifier with;  // its head is null for one that has been taken out
        Try attempt;
        std::optional<Order> order;
        BusGuest* guest = nullptr;
    };

    bool begin_next(Instant now);
    bool begin_order(Instant now);
    bool begin_leaving(Instant now);
    bool begin_read(const Plan::Choice& choice, Instant now);
    bool begin_guest(Instant now);
    void end(const BusReply& reply);
    void took(const Exchange& exchange, const BusReply& reply);
    void follow_silence(int slot, const Reading& reading);
    OpenAmplifier* first_order();
    bool drop_stale(const std::string& caption, const Order& order, Instant now);
    void cut_for_orders(Instant now);
    bool an_order_waits() const;
    Duration patience() const;
    bool is_open(const OpenAmplifier& open) const;
    std::vector<Plan::Head> heads_to_ask() const;
    std::optional<Instant> guests_due() const;

    HeadServices& services_;
    std::map<int, OpenAmplifier> amplifiers_;  // by slot
    std::deque<Leaving> leaving_;
    std::vector<BusGuest*> guests_;  // the one whose turn it is comes first
    Plan plan_;
    std::optional<Exchange> exchange_;
    Instant next_choice_{};  // nothing is due before
    int active_ = 0;
    int silences_ = 0;            // exchanges in a row that nobody has answered
    std::set<int> silent_slots_;  // whose they were
    std::set<int> unheard_;       // who have not answered their last order
};

}  // namespace ampdesk
