#include "controlhead/control_head.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "controlhead/comm_faults.h"
#include "controlhead/keypad.h"
#include "controlhead/menu_engine.h"
#include "controlhead/readings_in.h"
#include "controlhead/screens.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

constexpr std::chrono::milliseconds k_dropped_beep{100};

std::string settings_path(const Head& head) {
    return head.services.options.folder + "/" + screen_settings_name(head.identity.number);
}

// Why the window has to close again; without a text when it has not.
struct Failure {
    std::string text{};
    std::string cause{};
};

// Out of the way of the next opening, and kept for whoever wants to look at it. Where it cannot be moved the
// head opens without it, or it never would.
Failure set_aside(const Head& head, const std::string& path, const std::string& corrupted) {
    const std::string aside = path + ".bad";
    std::error_code failure;
    std::filesystem::rename(path, aside, failure);
    if (!failure)
        return {corrupted, "It is now " + std::filesystem::path(aside).filename().string() +
                               "; open the amplifier again"};
    head.tell(corrupted, "it cannot be renamed (" + failure.message() + ") and is not used");
    return {};
}

// A file that holds no settings or cannot be read is a failure.
Failure restore_look(Head& head) {
    const std::string path = settings_path(head);
    const std::string corrupted = "File set" + head.identity.number + ".dat or band_set.dat corrupted.";
    try {
        const auto settings = read_screen_settings(path);
        if (!settings)
            return set_aside(head, path, corrupted);
        head.panel.set_look(*settings);
        return {};
    } catch (const RunTimeError& error) {
        return {corrupted, error.what()};
    }
}

}  // namespace

ControlHead::ControlHead(HeadServices& services, HeadIdentity identity)
    : head_(services, std::move(identity)) {
    head_.on_tell = [this](const std::string& text, const std::string& detail) {
        const Message message{.text = text, .detail = about(detail)};
        const auto same = [&](const Message& m) {
            return m.text == message.text && m.detail == message.detail;
        };
        if (std::none_of(to_tell_.begin(), to_tell_.end(), same))
            to_tell_.push_back(message);
    };
    Form_Load(head_);
    publish();
}

bool ControlHead::has_screen_settings() const {
    return file_exists(settings_path(head_));
}

void ControlHead::machine_init(bool restore) {
    if (life_ != Life::created)
        return;
    const Failure failure = restore && has_screen_settings() ? restore_look(head_) : Failure{};
    if (!failure.text.empty())
        return fail(failure.text, failure.cause);
    life_ = Life::opening;
    head_.menu_ptr = 1;
    act([&] { set_menu(head_); });
}

void ControlHead::fail(const std::string& text, const std::string& cause) {
    head_.tell(text, cause);
    life_ = Life::failed;
}

// The first screen has to be there as a whole; then it is a head like any other.
void ControlHead::follow_opening(const Reading& reading) {
    if (!reading.good() && reading.last_try)
        return fail("Some remote commands are absent in Amplifier", {});
    if (!head_.analog || !head_.alarm || head_.band.reads_left > 0)
        return;
    life_ = Life::live;
    if (in_shutdown(head_))
        return;
    try {
        update_menu(head_);
    } catch (const RunTimeError& error) {
        fail(error.what(), error.detail());
    }
}

// Runs a handler. A head that closes does nothing any more.
template <class Action>
void ControlHead::act(Action action) {
    if (life_ == Life::failed || life_ == Life::closed)
        return;
    action();
    for (int key = 0; key < 4; ++key) head_.panel.set_key_name(key, key_name(head_, key));
    publish();
}

void ControlHead::publish() {
    HeadView now{.panel = head_.panel,
                 .silent = silent(),
                 .in_shutdown = in_shutdown(head_),
                 .shutdown_shown = head_.shutdown_shown};
    if (now == view_)
        return;
    view_ = std::move(now);
    views.publish(view_);
}

// What was on the panel when the operator acted may have gone before his act arrived: MORE must not become
// OK.
bool ControlHead::is_what_was_seen(std::int16_t index, const std::optional<std::string>& did) {
    if (!did || index > 3 || *did == key_name(head_, index))
        return true;
    head_.services.person.start_beep(k_dropped_beep);
    return false;
}

void ControlHead::press_key(std::int16_t index, const std::optional<std::string>& did) {
    if (started())
        act([&] {
            if (is_what_was_seen(index, did))
                cmdKey_Click(head_, index);
        });
}

void ControlHead::press_hard_key(std::int16_t index, Instant at) {
    act([&] { cmdHardkey_Click(head_, index, at); });
}

void ControlHead::click_lamp(std::int16_t index, const std::optional<std::string>& did, Instant at) {
    constexpr std::int16_t k_first_hard_key = 4;
    if (index >= k_first_hard_key)
        act([&] { picLight_Click(head_, index, at); });
    else
        press_key(index, did);
}

void ControlHead::move_scroll_bar(int value, const std::optional<ScrollBar>& range) {
    const ScrollBar& bar = head_.panel.scroll();
    const bool same = !range || (range->visible == bar.visible && range->minimum == bar.minimum &&
                                 range->maximum == bar.maximum);
    act([&] {
        if (same)
            VScroll1_Change(head_, value);
        else
            head_.services.person.start_beep(k_dropped_beep);
    });
}

void ControlHead::take(const Reading& reading) {
    act([&] {
        take_reading(head_, reading);
        if (life_ == Life::opening)
            follow_opening(reading);
    });
}

void ControlHead::take(const Order& order, const Setting& setting) {
    act([&] { take_setting(head_, order, setting); });
}

void ControlHead::tick() {
    if (started())
        act([&] { updateDisplay(head_); });
}

unsigned ControlHead::needs() const {
    return screen_of(head_).needs;
}

void ControlHead::line_is_dead() {
    if (started())
        act([&] {
            while (!head_.comm_error_shown) Error_handler_local(head_, RunTimeError::no_answer());
        });
}

std::optional<Message> ControlHead::take_message() {
    if (to_tell_.empty())
        return std::nullopt;
    Message message = std::move(to_tell_.front());
    to_tell_.pop_front();
    return message;
}

// Which amplifier a box is about, and what else there is to say below its text.
std::string ControlHead::about(const std::string& detail) const {
    return caption() + (detail.empty() ? "" : ": " + detail);
}

void ControlHead::apply_screen_settings(const ScreenSettings& settings) {
    act([&] { head_.panel.set_look(settings); });
}

void ControlHead::save_screen_settings() const {
    write_screen_settings(settings_path(head_), head_.panel.look());
}

}  // namespace ampdesk
