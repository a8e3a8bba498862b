#include "shell/station.h"

#include <exception>
#include <utility>

#include "controlhead/screen_settings.h"

namespace ampdesk {

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
    slot_at(slot).head = head;
    if (on_window_created)
        on_window_created(head);
    bool started = false;
    const std::string failure = failure_of([&] { started = head->machine_init(ask_before_restore); });
    if (!failure.empty())
        services_.person.notify(failure);
    if (slot_at(slot).head != head)
        return nullptr;  // closed while one of its boxes was open
    if (!started) {
        close_window(slot);
        return nullptr;
    }
    return head;
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

std::vector<PollSchedule::Head> Station::heads_to_visit() const {
    std::vector<PollSchedule::Head> heads;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const Slot& slot = slots_[i];
        if (slot.head)
            heads.push_back({.slot = static_cast<int>(i + 1),
                             .silent = slot.head->silent(),
                             .opening = !slot.head->started()});
    }
    return heads;
}

Duration Station::poll_windows() {
    const PollSchedule::Next next = schedule_.next(heads_to_visit(), services_.clock.now());
    if (!next.slot)
        return next.wait;
    visit(*next.slot);
    return schedule_.next(heads_to_visit(), services_.clock.now()).wait;
}

// Any window may close, open or be visited again in here wherever a box is shown or events run.
void Station::visit(int slot) {
    schedule_.visited(slot, services_.clock.now());
    const std::shared_ptr<ControlHead> polled = slot_at(slot).head;
    const std::string logic_failure = failure_of([&] { polled->updateLogic(); });
    services_.person.let_events_run();
    const std::shared_ptr<ControlHead> shown = open_from(slot);
    const std::string display_failure = failure_of([&] {
        if (shown)
            shown->updateDisplay();
    });
    const std::string& failure = logic_failure.empty() ? display_failure : logic_failure;
    if (failure.empty() || failure == told_failure_)
        return;
    told_failure_ = failure;  // the next visit may well fail alike
    services_.person.notify(failure);
}

// The head in that slot or in the next open one behind it, wrapping past the last.
std::shared_ptr<ControlHead> Station::open_from(int slot) const {
    for (std::size_t i = 0; i < slots_.size(); ++i) {
        const Slot& candidate = slots_[(static_cast<std::size_t>(slot - 1) + i) % slots_.size()];
        if (candidate.head)
            return candidate.head;
    }
    return nullptr;
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
    closing.head->close();
    if (closing.head->started())
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
