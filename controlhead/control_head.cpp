#include "controlhead/control_head.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "controlhead/keypad.h"
#include "controlhead/lamps.h"
#include "controlhead/menu_engine.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"

namespace ampdesk {

namespace {

std::string settings_path(const Head& head) {
    return head.services.options.folder + "/" + screen_settings_name(head.identity.number);
}

bool wants_restore(Head& head) {
    Message question;
    question.text = "The settings for this HPA already exist, do you want to restore ? ";
    question.icon = Icon::question;
    question.buttons = Buttons::yes_no;
    return head.services.person.ask(question) == Answer::yes;
}

// Why the window has to close again; without a text when the first screen is up.
struct Failure {
    std::string text{};
    std::string cause{};
};

// Out of the way of the next opening, and kept for whoever wants to look at it. Where it cannot be moved the
// head opens without it, or it never would.
Failure set_aside(Head& head, const std::string& path, const std::string& corrupted) {
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
Failure restore_look(Head& head, bool ask_before_restore) {
    const std::string path = settings_path(head);
    if (!file_exists(path) || (ask_before_restore && !wants_restore(head)))
        return {};
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

Failure start(Head& head, bool ask_before_restore, const bool& closed) {
    try {
        Failure failure = restore_look(head, ask_before_restore);
        if (closed || !failure.text.empty())
            return failure;
        head.menu_ptr = 1;
        set_menu(head);
        return {};
    } catch (const RunTimeError& error) {
        if (error.number() == RunTimeError::k_no_answer)
            return {"Some remote commands are absent in Amplifier"};
        return {error.what(), error.detail()};
    }
}

}  // namespace

ControlHead::ControlHead(HeadServices& services, HeadIdentity identity)
    : head_(services, std::move(identity)) {
    head_.on_tell = [this](const std::string& text, const std::string& detail) {
        const Told told{text, detail};
        if (std::find(to_tell_.begin(), to_tell_.end(), told) == to_tell_.end())
            to_tell_.push_back(told);
    };
    Form_Load(head_);
}

bool ControlHead::machine_init(bool ask_before_restore) {
    const Failure failure = start(head_, ask_before_restore, closed_);
    if (!failure.text.empty() && !closed_)
        head_.services.person.notify(failure.text, about(failure.cause));
    started_ = failure.text.empty() && !closed_;
    tell_all();
    return live();
}

// Runs a handler, then tells what came up in it. A closed head does nothing any more.
template <class Action>
void ControlHead::act(Action action) {
    if (closed_)
        return;
    action();
    tell_all();
}

void ControlHead::press_key(std::int16_t index) {
    if (started_)
        act([&] { cmdKey_Click(head_, index); });
}

void ControlHead::press_hard_key(std::int16_t index) {
    act([&] { cmdHardkey_Click(head_, index); });
}

void ControlHead::click_lamp(std::int16_t index) {
    constexpr std::int16_t k_first_hard_key = 4;
    if (started_ || index >= k_first_hard_key)
        act([&] { picLight_Click(head_, index); });
}

void ControlHead::move_scroll_bar(int value) {
    act([&] { VScroll1_Change(head_, value); });
}

void ControlHead::updateLogic() {
    if (!live())
        return;
    bool go_on = false;
    act([&] { go_on = poll_status(head_); });
    // Not within a handler: what is opened here may stand for hours, and the head is visited on meanwhile.
    if (go_on && live() && shutdown_waits(head_))
        head_.services.person.let_events_run();
    if (go_on)
        act([&] { show_state(head_); });
}

void ControlHead::updateDisplay() {
    if (live())
        act([&] { ampdesk::updateDisplay(head_); });
}

// A box may stand for hours, and visits beside it bring the same fault again and again: once is enough.
void ControlHead::tell_all() {
    if (telling_)
        return;
    telling_ = true;
    while (!closed_ && !to_tell_.empty()) {
        const Told told = to_tell_.front();
        head_.services.person.notify(told.text, about(told.detail));
        to_tell_.pop_front();
    }
    telling_ = false;
}

// Which amplifier a box is about, and what else there is to say below its text.
std::string ControlHead::about(const std::string& detail) const {
    return caption() + (detail.empty() ? "" : ": " + detail);
}

std::string ControlHead::caption() const {
    return "JEX Amplifier " + head_.identity.number;
}

void ControlHead::save_screen_settings() const {
    write_screen_settings(settings_path(head_), head_.panel.look());
}

}  // namespace ampdesk
