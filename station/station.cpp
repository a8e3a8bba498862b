#include "station/station.h"

#include <algorithm>
#include <utility>

#include "controlhead/screen_settings.h"

namespace ampdesk {

namespace {

constexpr std::chrono::milliseconds k_tick{500};

}  // namespace

Station::Station(HeadServices& services)
    : services_(services),
      line_(services),
      questions_(services.person),
      opener_(*this, services.bus, services.person) {
    line_.on_taken = [this](int slot) { close_failed(slot); };
}

Station::~Station() = default;

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
        HeadIdentity{
            .id = ++last_id_, .slot = slot, .unit_address = unit_address, .number = number, .model = model});
    slot_at(slot) = {.head = head};
    line_.add({slot, head,
               std::make_shared<Amplifier>(services_.clock, unit_address, services_.options.negative_words)});
    if (on_window_created)
        on_window_created(head);
    if (!ask_before_restore || !head->has_screen_settings()) {
        start(head, true);
        return slot_at(slot).head;
    }
    Question question{
        .message = {.text = "The settings for this HPA already exist, do you want to restore ? ",
                    .icon = Icon::question,
                    .buttons = Buttons::yes_no}};
    slot_at(slot).question = questions_.ask(
        question, [this, head](const Reply& reply) { start(head, reply.answer == Answer::yes); });
    return head;
}

void Station::start(const std::shared_ptr<ControlHead>& head, bool restore) {
    head->machine_init(restore);
    close_failed(head->identity().slot);
}

void Station::add_amplifier(std::int16_t unit_address, const std::string& number, const std::string& model) {
    const std::string name = AmplifierFiles::name_of(number);
    begin_line_try();
    const auto open = [=, this] {
        if (!tell_if_address_used(unit_address))  // a file may have been opened meanwhile
            new_amplifier_window(unit_address, number, model, true);
        end_line_try();
    };
    const auto make_and_open = [=, this] {
        UnsavedFiles unsaved;
        unsaved.attempt(name, [&] { files_.make(unit_address, name); });
        unsaved.tell(services_.person);
        open();
    };
    const auto stale = files_.stale_state(name, unit_address);
    if (!stale)
        return files_.exists(name) ? open() : make_and_open();
    questions_.ask({.message = {.text = "File " + name + " " + *stale + ". Replace it?",
                                .icon = Icon::question,
                                .buttons = Buttons::yes_no}},
                   [=](const Reply& reply) { reply.answer == Answer::yes ? make_and_open() : open(); });
}

void Station::auto_open_dat_files(const std::vector<std::string>& names) {
    constexpr std::size_t k_most_names = 100;  // the number of unit addresses
    for (std::size_t i = 0; i < std::min(names.size(), k_most_names); ++i)
        opener_.open_automatically(names[i], files_.path_of(names[i]));
}

// While the first head has not shown its first screen, the try that it came of is not over.
void Station::begin_line_try() {
    const auto heads = open_heads();
    const bool proved = std::any_of(heads.begin(), heads.end(), [](const auto& h) { return h->started(); });
    if (line_tries_++ == 0 && (proved || heads.empty()))
        keep_line();
}

void Station::end_line_try() {
    --line_tries_;
    if (open_count() == 0 || !services_.bus.bus_link_on())
        give_line_back();
}

void Station::keep_line() {
    line_before_ = services_.bus.settings();
}

void Station::give_line_back() {
    BusLink& bus = services_.bus;
    if (line_tries_ > 0)
        return;
    if (const std::string lost = bus.give_back(line_before_); !lost.empty())
        services_.person.tell({.text = lost, .detail = bus.open_failure()});
}

Instant Station::step() {
    using enum Dispatcher::Did;
    Instant now = services_.clock.now();
    Dispatcher::Did did = something;
    while (did == something) {
        now = services_.clock.now();
        opener_.step();
        tick(now);
        did = line_.step(now);
    }
    for (const auto& head : open_heads()) tell_of(*head);
    return did == guests_turn ? now : due();
}

Instant Station::due() const {
    Instant due = line_.due();
    for (const Slot& slot : slots_)
        if (slot.head && slot.head->started())
            due = std::min(due, slot.next_tick);
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

// A head whose first screen did not come.
void Station::close_failed(int slot) {
    const std::shared_ptr<ControlHead> head = slot_at(slot).head;
    if (!head || head->life() != ControlHead::Life::failed)
        return;
    tell_of(*head);
    close_window(slot);
    if (open_count() == 0)
        give_line_back();
}

void Station::tell_of(ControlHead& head) {
    while (const auto message = head.take_message()) services_.person.tell(*message);
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
    questions_.withdraw(closing.question);
    const bool started = closing.head->started();
    closing.head->close();
    if (started)
        unsaved.attempt(screen_settings_name(closing.head->identity().number),
                        [&] { closing.head->save_screen_settings(); });
    line_.remove(slot);
    if (on_window_closed)
        on_window_closed(*closing.head);
}

void Station::close_all(UnsavedFiles unsaved) {
    opener_.cancel();
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

bool Station::tell_if_address_used(int unit_address) {
    const bool used = address_in_use(unit_address);
    if (used)
        services_.person.tell(
            {.text = "This Address Is Used, Please Pick Up Another One.", .icon = Icon::none});
    return used;
}

void Station::save(const ControlHead& head) {
    UnsavedFiles unsaved;
    save(head, unsaved);
    unsaved.tell(services_.person);
}

void Station::save(const ControlHead& head, UnsavedFiles& unsaved) {
    const std::string& number = head.identity().number;
    const std::string name = AmplifierFiles::name_of(number);
    unsaved.attempt(name, [&] { files_.write(head.identity().unit_address, files_.path_of(name)); });
    unsaved.attempt(screen_settings_name(number), [&] { head.save_screen_settings(); });
}

void Station::save_as(int unit_address, const std::string& path) {
    UnsavedFiles unsaved;
    unsaved.attempt(path, [&] { files_.write(unit_address, path); });
    unsaved.tell(services_.person);
}

void Station::save_all() {
    UnsavedFiles unsaved;
    for (const auto& head : open_heads()) save(*head, unsaved);
    unsaved.tell(services_.person);
}

}  // namespace ampdesk
