#include "station/station.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "controlhead/screen_settings.h"
#include "controlhead/screens.h"

namespace ampdesk {

namespace {

constexpr std::chrono::milliseconds k_tick{500};
constexpr std::chrono::seconds k_fresh{2};
constexpr std::chrono::milliseconds k_dropped_beep{100};

}  // namespace

Station::Station(HeadServices& services) : services_(services) {}

int Station::find_free_slot() {
    for (std::size_t i = 0; i < slots_.size(); ++i)
        if (slots_[i].free) {
            slots_[i].free = false;
            return static_cast<int>(i + 1);
        }
    slots_.emplace_back();
    return static_cast<int>(slots_.size());
}

std::shared_ptr<ControlHead> Station::new_amplifier_window(std::int16_t unit_address,
                                                           const std::string& number,
                                                           const std::string& model,
                                                           bool ask_before_restore) {
    const int slot = find_free_slot();
    auto head = std::make_shared<ControlHead>(
        services_,
        HeadIdentity{.slot = slot, .unit_address = unit_address, .number = number, .model = model});
    auto amplifier =
        std::make_unique<Amplifier>(services_.clock, unit_address, services_.options.negative_words);
    slot_at(slot) = {.head = head, .amplifier = std::move(amplifier)};
    if (on_window_created)
        on_window_created(head);
    const bool restore = !head->has_screen_settings() || !ask_before_restore || wants_restore();
    if (slot_at(slot).head != head)
        return nullptr;  // closed while the question stood
    head->machine_init(restore);
    close_failed(slot);
    tell_waiting();
    return slot_at(slot).head;
}

bool Station::wants_restore() {
    return services_.person.ask({.text = "The settings for this HPA already exist, do you want to restore ? ",
                                 .detail = {},
                                 .icon = Icon::question,
                                 .buttons = Buttons::yes_no}) == Answer::yes;
}

// Empty when the action came to its end.
std::string Station::failure_of(const std::function<void()>& action) {
    try {
        action();
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

Instant Station::step() {
    BusLink& bus = services_.bus;
    for (;;) {
        const Instant now = services_.clock.now();
        tick(now);
        if (bus.under_way()) {
            cut_for_orders(now);
            const auto reply = bus.poll();
            if (!reply)
                break;
            const bool guest = exchange_ && exchange_->guest != nullptr;
            end(*reply);
            if (guest) {  // what he has to show is to be seen before he goes on
                tell_waiting();
                return now;
            }
        } else if (!begin_next(now)) {
            break;
        }
    }
    tell_waiting();
    return due();
}

Instant Station::due() const {
    Instant due = services_.bus.under_way() ? services_.bus.due() : next_choice_;
    for (const Slot& slot : slots_)
        if (slot.head && slot.head->started())
            due = std::min(due, slot.next_tick);
    const auto since = services_.bus.waiting_since();
    if (exchange_ && since && an_order_waits())
        due = std::min(due, *since + patience());
    return due;
}

// All panels blink together, which costs one waking instead of one a head.
void Station::tick(Instant now) {
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const std::shared_ptr<ControlHead> head = slots_[i].head;
        if (!head || now < slots_[i].next_tick)
            continue;
        slots_[i].next_tick = Instant((now.time_since_epoch() / k_tick + 1) * k_tick);
        head->tick();
    }
}

// The head with the oldest order.
Station::Slot* Station::first_order() {
    Slot* first = nullptr;
    for (Slot& slot : slots_)
        if (slot.head && !slot.head->orders().empty() &&
            (first == nullptr || slot.head->orders().front().made_at < first->head->orders().front().made_at))
            first = &slot;
    return first;
}

// One that the exchange under way is cut for: the wait for the reply to a setting, or to what somebody else
// has asked, for an Off-key only.
bool Station::an_order_waits() const {
    const bool setting_under_way = exchange_ && (exchange_->order || exchange_->guest != nullptr);
    return std::any_of(slots_.begin(), slots_.end(), [&](const Slot& slot) {
        if (!slot.head)
            return false;
        const auto& orders = slot.head->orders();
        return std::any_of(orders.begin(), orders.end(),
                           [&](const Order& order) { return order.urgent || !setting_under_way; });
    });
}

// How long the exchange under way may hold an order up.
Duration Station::patience() const {
    constexpr std::chrono::milliseconds k_with_guests{300};
    if (exchange_->slot == 0)
        return k_with_guests;
    const auto& slot = slots_[static_cast<std::size_t>(exchange_->slot - 1)];
    return slot.amplifier ? slot.amplifier->patience_before_order() : Duration::zero();
}

void Station::cut_for_orders(Instant now) {
    const auto since = services_.bus.waiting_since();
    if (exchange_ && since && now >= *since + patience() && an_order_waits())
        services_.bus.cut();
}

// Whoever pressed HV On has long gone on to something else.
bool Station::drop_stale(const Slot& slot, const Order& order, Instant now) {
    if (!order.only_fresh || now - order.made_at <= k_fresh)
        return false;
    services_.person.start_beep(k_dropped_beep);
    services_.person.show_status(slot.head->caption() + ": " + order.key +
                                 " not sent, it has waited too long");
    return true;
}

bool Station::begin_order(Instant now) {
    while (Slot* slot = first_order()) {
        Order order = std::move(slot->head->orders().front());
        slot->head->orders().pop_front();
        if (drop_stale(*slot, order, now))
            continue;
        services_.bus.begin(slot->amplifier->command_of(order.command));
        exchange_ = {slot_number(*slot), slot->head, {}, std::move(order), nullptr};
        return true;
    }
    return false;
}

bool Station::begin_next(Instant now) {
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
        // While he told the operator something another step may have begun an exchange.
        if (begin_guest(now) || services_.bus.under_way())
            return true;
    }
    next_choice_ = now;
    return false;
}

bool Station::begin_read(const Plan::Choice& choice, Instant now) {
    Slot& slot = slot_at(choice.slot);
    slot.amplifier->suspect_line(silences_ > 0);
    services_.bus.begin(slot.amplifier->command_of(choice.attempt.request));
    plan_.asked(choice.slot, choice.attempt, now);
    exchange_ = {choice.slot, slot.head, choice.attempt, std::nullopt, nullptr};
    return true;
}

// The first one who wants the line; then it is the next one's turn.
bool Station::begin_guest(Instant now) {
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
    exchange_ = {0, {}, {}, std::nullopt, guest};
    return true;
}

std::optional<Instant> Station::guests_due() const {
    std::optional<Instant> first;
    for (const BusGuest* guest : guests_)
        if (const auto due = guest->due())
            first = std::min(first.value_or(*due), *due);
    return first;
}

void Station::remove_guest(const BusGuest& guest) {
    std::erase(guests_, &guest);
    if (exchange_ && exchange_->guest == &guest)
        exchange_.reset();
}

void Station::end(const BusReply& reply) {
    if (!exchange_)
        return;
    const Exchange exchange = std::move(*exchange_);
    exchange_.reset();
    if (exchange.guest != nullptr) {
        plan_.guest_had_line(services_.clock.now());
        return exchange.guest->ended(reply);
    }
    Slot& slot = slot_at(exchange.slot);
    if (!slot.head || slot.head != exchange.head.lock())
        return;
    if (!exchange.order)
        return took(slot, exchange.attempt, reply);
    const Setting setting = slot.amplifier->take(exchange.order->command, Origin::key, reply);
    settings.publish(setting);
    slot.head->take(*exchange.order, setting);
}

void Station::took(Slot& slot, const Try& attempt, const BusReply& reply) {
    const int number = slot_number(slot);
    if (reply.failure == BusFailure::cut)
        return plan_.cut(number, attempt);
    const Reading reading = slot.amplifier->take(attempt, reply);
    plan_.ended(number, attempt, reading.outcome, reading.at);
    const std::shared_ptr<ControlHead> head = slot.head;
    head->take(reading);
    follow_silence(slot, reading);
    readings.publish(reading);
    if (slot.head == head)
        close_failed(number);
}

// A head whose first screen did not come.
void Station::close_failed(int slot) {
    const std::shared_ptr<ControlHead> head = slot_at(slot).head;
    if (head->life() != ControlHead::Life::failed)
        return;
    while (auto message = head->take_message()) to_tell_.push_back(std::move(*message));
    close_window(slot);
    give_line_back();
}

// With a dead line every head would go on showing its last values until it had waited for six replies of
// its own, one head after the other.
void Station::follow_silence(Slot& slot, const Reading& reading) {
    constexpr int k_dead_line = 6;
    if (reading.outcome != Reading::Outcome::silence) {
        silences_ = 0;
        silent_ones_.clear();
        return;
    }
    ++silences_;
    silent_ones_.insert(slot_number(slot));
    if (silences_ < k_dead_line || silent_ones_.size() < 2)
        return;
    for (const int number : silent_ones_)
        if (const auto& head = slot_at(number).head)
            head->line_is_dead();
}

std::vector<Plan::Head> Station::heads_to_ask() const {
    std::vector<Plan::Head> heads;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const Slot& slot = slots_[i];
        if (!slot.head || slot.head->life() == ControlHead::Life::created)
            continue;
        const int number = static_cast<int>(i + 1);
        const unsigned needs = slot.head->needs();
        heads.push_back({.slot = number,
                         .silent = slot.head->silent(),
                         .failing = slot.amplifier->silences() > 0,
                         .active = number == active_ || !slot.head->started(),
                         .limits = (needs & k_needs_limits) != 0,
                         .alarm = (needs & k_needs_alarm) != 0,
                         .requests = &slot.head->requests()});
    }
    return heads;
}

// A box may stand for hours, and steps go on beside it.
void Station::tell_waiting() {
    if (telling_)
        return;
    telling_ = true;
    const auto next = [this]() -> std::optional<Message> {
        if (!to_tell_.empty()) {
            Message first = to_tell_.front();
            to_tell_.erase(to_tell_.begin());
            return first;
        }
        for (const Slot& slot : slots_)
            if (slot.head)
                if (auto message = slot.head->take_message())
                    return message;
        return std::nullopt;
    };
    while (const auto message = next()) services_.person.ask(*message);
    telling_ = false;
}

void Station::close_window(int slot) {
    UnsavedFiles unsaved;
    release(slot, unsaved);
    unsaved.tell(services_.person);
}

void Station::release(int slot, UnsavedFiles& unsaved) {
    if (slot < 1 || slot > static_cast<int>(slots_.size()) || !slot_at(slot).head)
        return;
    const Slot closing = std::exchange(slot_at(slot), Slot{.free = true});
    const bool started = closing.head->started();
    closing.head->close();
    if (started)
        unsaved.attempt(screen_settings_name(closing.head->identity().number),
                        [&] { closing.head->save_screen_settings(); });
    if (on_window_closed)
        on_window_closed(*closing.head);
}

void Station::close_all(UnsavedFiles unsaved) {
    ++closings_;
    for (const auto& head : open_heads())
        if (!head->closed())
            release(head->identity().slot, unsaved);
    unsaved.tell(services_.person);
}

int Station::open_count() const {
    return static_cast<int>(open_heads().size());
}

std::vector<std::shared_ptr<ControlHead>> Station::open_heads() const {
    std::vector<std::shared_ptr<ControlHead>> heads;
    for (const Slot& slot : slots_)
        if (slot.head)
            heads.push_back(slot.head);
    return heads;
}

bool Station::address_in_use(int unit_address) const {
    for (const Slot& slot : slots_)
        if (slot.head && slot.head->identity().unit_address == unit_address)
            return true;
    return false;
}

}  // namespace ampdesk
