#include "station/dispatcher.h"

#include <algorithm>
#include <utility>

#include "controlhead/screens.h"

namespace ampdesk {

namespace {

constexpr std::chrono::seconds k_fresh{2};  // an On-key
constexpr std::chrono::milliseconds k_dropped_beep{100};

}  // namespace

void Dispatcher::remove(int slot) {
    auto closing = amplifiers_.extract(slot);
    plan_.forget(slot);
    unheard_.erase(slot);
    if (!closing)
        return;
    std::deque<Order>& orders = closing.mapped().head->orders();
    if (!orders.empty())
        leaving_.push_back({closing.mapped().head->caption(), closing.mapped().amplifier, std::move(orders)});
}

void Dispatcher::remove_guest(const BusGuest& guest) {
    std::erase(guests_, &guest);
    if (exchange_ && exchange_->guest == &guest)
        exchange_->guest = nullptr;
}

Dispatcher::Did Dispatcher::step(Instant now) {
    BusLink& bus = services_.bus;
    if (!bus.under_way()) {
        if (begin_next(now))
            return Did::something;
        bus.poll();
        return Did::nothing;
    }
    cut_for_orders(now);
    const auto reply = bus.poll();
    if (!reply)
        return Did::nothing;
    const bool guest = exchange_ && exchange_->guest != nullptr;
    end(*reply);
    return guest ? Did::guests_turn : Did::something;
}

Instant Dispatcher::due() const {
    Instant due = services_.bus.under_way() ? services_.bus.due() : next_choice_;
    const auto since = services_.bus.waiting_since();
    if (exchange_ && since && an_order_waits())
        due = std::min(due, *since + patience());
    return due;
}

// The one with the oldest order. Who has not answered his last one comes last: each of his may hold up the
// others' for as long as it is waited for.
OpenAmplifier* Dispatcher::first_order() {
    const auto turn = [this](const OpenAmplifier& open) {
        return std::pair(unheard_.contains(open.slot), open.head->orders().front().made_at);
    };
    OpenAmplifier* first = nullptr;
    for (auto& [slot, open] : amplifiers_)
        if (!open.head->orders().empty() && (first == nullptr || turn(open) < turn(*first)))
            first = &open;
    return first;
}

// One that the exchange under way is cut for: the wait for the reply to a setting, or to what somebody else
// has asked, for an Off-key only.
bool Dispatcher::an_order_waits() const {
    const bool for_off_keys_only = exchange_ && (exchange_->order || exchange_->guest != nullptr);
    const auto any_of = [&](const std::deque<Order>& orders) {
        return std::any_of(orders.begin(), orders.end(),
                           [&](const Order& order) { return order.urgent || !for_off_keys_only; });
    };
    return std::any_of(amplifiers_.begin(), amplifiers_.end(),
                       [&](const auto& open) { return any_of(open.second.head->orders()); }) ||
           std::any_of(leaving_.begin(), leaving_.end(),
                       [&](const Leaving& gone) { return any_of(gone.orders); });
}

// How long the exchange under way may hold an order up.
Duration Dispatcher::patience() const {
    constexpr std::chrono::milliseconds k_with_guests{300};
    const auto& amplifier = exchange_->with.amplifier;
    return amplifier ? amplifier->patience_before_order() : k_with_guests;
}

void Dispatcher::cut_for_orders(Instant now) {
    const auto since = services_.bus.waiting_since();
    if (exchange_ && since && now >= *since + patience() && an_order_waits())
        services_.bus.cut();
}

// Whoever pressed HV On has long gone on to something else.
bool Dispatcher::drop_stale(const std::string& caption, const Order& order, Instant now) {
    if (!order.only_fresh || now - order.made_at <= k_fresh)
        return false;
    services_.person.start_beep(k_dropped_beep);
    services_.person.show_status(caption + ": " + order.key + " not sent, it has waited too long");
    return true;
}

bool Dispatcher::orders_left() const {
    const bool waits = std::any_of(amplifiers_.begin(), amplifiers_.end(),
                                   [](const auto& open) { return !open.second.head->orders().empty(); });
    return waits || !leaving_.empty() || (exchange_ && exchange_->order);
}

bool Dispatcher::begin_leaving(Instant now) {
    while (!leaving_.empty()) {
        Leaving& first = leaving_.front();
        const std::shared_ptr<Amplifier> amplifier = first.amplifier;
        Order order = std::move(first.orders.front());
        first.orders.pop_front();
        const bool stale = drop_stale(first.caption, order, now);
        if (first.orders.empty())
            leaving_.pop_front();
        if (stale)
            continue;
        services_.bus.begin(amplifier->command_of(order.command));
        exchange_ = {{0, nullptr, amplifier}, {}, std::move(order), nullptr};
        return true;
    }
    return false;
}

bool Dispatcher::begin_order(Instant now) {
    if (begin_leaving(now))
        return true;
    while (OpenAmplifier* open = first_order()) {
        Order order = std::move(open->head->orders().front());
        open->head->orders().pop_front();
        if (drop_stale(open->head->caption(), order, now))
            continue;
        services_.bus.begin(open->amplifier->command_of(order.command));
        exchange_ = {*open, {}, std::move(order), nullptr};
        return true;
    }
    return false;
}

bool Dispatcher::begin_next(Instant now) {
    if (begin_order(now))
        return true;
    // A guest may do what he wants without an exchange, but not for ever.
    constexpr int k_most_idle_guests = 32;
    for (int idle = 0; idle < k_most_idle_guests; ++idle) {
        const Plan::Choice choice = plan_.next(heads_to_ask(), guests_due(), now);
        next_choice_ = choice.until;
        if (choice.what == Plan::Choice::What::nothing)
            return false;
        if (choice.what == Plan::Choice::What::read)
            return begin_read(choice, now);
        if (begin_guest(now))
            return true;
    }
    next_choice_ = now;
    return false;
}

bool Dispatcher::begin_read(const Plan::Choice& choice, Instant now) {
    const OpenAmplifier& open = amplifiers_.at(choice.slot);
    open.amplifier->suspect_line(silences_ > 0);
    services_.bus.begin(open.amplifier->command_of(choice.attempt.request));
    plan_.asked(choice.slot, choice.attempt, now);
    exchange_ = {open, choice.attempt, std::nullopt, nullptr};
    return true;
}

// The first one who wants the line; then it is the next one's turn.
bool Dispatcher::begin_guest(Instant now) {
    const auto wants = [&](const BusGuest* guest) {
        const auto due = guest->due();
        return due && *due <= now;
    };
    const auto first = std::find_if(guests_.begin(), guests_.end(), wants);
    if (first == guests_.end())
        return false;
    std::rotate(first, first + 1, guests_.end());
    BusGuest* guest = guests_.back();
    auto command = guest->next();
    if (!command)
        return false;
    services_.bus.begin(std::move(*command));
    plan_.guest_had_line(now);
    exchange_ = {{}, {}, std::nullopt, guest};
    return true;
}

std::optional<Instant> Dispatcher::guests_due() const {
    std::optional<Instant> first;
    for (const BusGuest* guest : guests_)
        if (const auto due = guest->due())
            first = std::min(first.value_or(*due), *due);
    return first;
}

bool Dispatcher::is_open(const OpenAmplifier& open) const {
    const auto found = amplifiers_.find(open.slot);
    return found != amplifiers_.end() && found->second.head == open.head;
}

void Dispatcher::end(const BusReply& reply) {
    if (!exchange_)
        return;
    const Exchange exchange = std::move(*exchange_);
    exchange_.reset();
    if (exchange.guest != nullptr) {
        plan_.guest_had_line(services_.clock.now());
        return exchange.guest->ended(reply);
    }
    if (!exchange.order)
        return is_open(exchange.with) ? took(exchange, reply) : void();
    const Setting setting = exchange.with.amplifier->take(exchange.order->command, Origin::key, reply);
    if (setting.outcome == Setting::Outcome::unanswered)
        unheard_.insert(exchange.with.slot);
    else
        unheard_.erase(exchange.with.slot);
    settings.publish(setting);
    if (exchange.with.head)
        exchange.with.head->take(*exchange.order, setting);  // nothing, once it has closed
}

void Dispatcher::took(const Exchange& exchange, const BusReply& reply) {
    const int slot = exchange.with.slot;
    if (reply.failure == BusFailure::cut)
        return plan_.cut(slot, exchange.attempt);
    const Reading reading = exchange.with.amplifier->take(exchange.attempt, reply);
    plan_.ended(slot, exchange.attempt, reading.outcome, reading.at);
    if (reading.good())
        unheard_.erase(slot);
    exchange.with.head->take(reading);
    follow_silence(slot, reading);
    readings.publish(reading);
    if (on_taken)
        on_taken(slot);
}

// With a dead line every head would go on showing its last values until it had waited for six replies of
// its own, one head after the other.
void Dispatcher::follow_silence(int slot, const Reading& reading) {
    constexpr int k_dead_line = 6;
    if (reading.outcome != Reading::Outcome::silence) {
        silences_ = 0;
        silent_slots_.clear();
        return;
    }
    ++silences_;
    silent_slots_.insert(slot);
    if (silences_ < k_dead_line || silent_slots_.size() < 2)
        return;
    for (const int silent : silent_slots_)
        if (const auto open = amplifiers_.find(silent); open != amplifiers_.end())
            open->second.head->line_is_dead();
}

std::vector<Plan::Head> Dispatcher::heads_to_ask() const {
    std::vector<Plan::Head> heads;
    heads.reserve(amplifiers_.size());
    for (const auto& [slot, open] : amplifiers_) {
        if (open.head->life() == ControlHead::Life::created)
            continue;
        const unsigned needs = open.head->needs();
        heads.push_back({.slot = slot,
                         .silent = open.head->silent(),
                         .failing = open.amplifier->silences() > 0,
                         .active = slot == active_ || !open.head->started(),
                         .limits = (needs & k_needs_limits) != 0,
                         .alarm = (needs & k_needs_alarm) != 0,
                         .requests = &open.head->requests()});
    }
    return heads;
}

}  // namespace ampdesk
