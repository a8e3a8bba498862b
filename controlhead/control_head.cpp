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

// Out of the way of the next opening, and kept for whoever wants to look at it. Tells what became of it.
std::string set_aside(const std::string& path) {
    const std::string aside = path + ".bad";
    std::error_code failure;
    std::filesystem::rename(path, aside, failure);
    if (failure)
        return "It cannot be renamed: " + failure.message();
    return "It is now " + std::filesystem::path(aside).filename().string() + "; the panel opens without it";
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
            return {corrupted, set_aside(path)};
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
        return {error.number() == RunTimeError::k_no_answer ? "Some remote commands are absent in Amplifier"
                                                            : error.what()};
    }
}

}  // namespace

ControlHead::ControlHead(HeadServices& services, HeadIdentity identity)
    : head_(services, std::move(identity)) {
    head_.show_fault = [this](const std::string& text) { fault_ = text; };
    Form_Load(head_);
}

bool ControlHead::machine_init(bool ask_before_restore) {
    bool started = false;
    run([&] {
        const Failure failure = start(head_, ask_before_restore, closed_);
        started = failure.text.empty();
        if (!started && !closed_)
            head_.services.person.notify(failure.text, failure.cause);
    });
    return started && !closed_;
}

void ControlHead::press_key(std::int16_t index) {
    act([this, index] { cmdKey_Click(head_, index); });
}

void ControlHead::press_hard_key(std::int16_t index) {
    act([this, index] { cmdHardkey_Click(head_, index); });
}

void ControlHead::click_lamp(std::int16_t index) {
    act([this, index] { picLight_Click(head_, index); });
}

void ControlHead::move_scroll_bar(int value) {
    act([this, value] { VScroll1_Change(head_, value); }, true);
}

void ControlHead::updateLogic() {
    if (!busy() && !closed_)
        run([this] { ampdesk::updateLogic(head_); });
}

void ControlHead::updateDisplay() {
    if (!busy() && !closed_)
        run([this] { ampdesk::updateDisplay(head_); });
}

void ControlHead::act(std::function<void()> action, bool scroll_move) {
    constexpr std::size_t k_most_kept = 8;
    if (closed_)
        return;
    if (!busy())
        return run(action);
    head_.key_activity = true;
    if (scroll_move && !kept_.empty() && kept_.back().scroll_move)
        kept_.pop_back();
    if (kept_.size() < k_most_kept)
        kept_.push_back({std::move(action), head_.services.clock.now(), scroll_move});
}

// Runs the action, then what was kept meanwhile.
void ControlHead::run(const std::function<void()>& action) {
    constexpr std::chrono::seconds k_longest_wait{2};
    const auto once = [this](const std::function<void()>& handler) {
        struct Depth {
            explicit Depth(int& d) : depth(d) { ++depth; }
            ~Depth() { --depth; }
            int& depth;
        } const depth(depth_);
        handler();
    };
    once(action);
    while (!busy() && !closed_ && !kept_.empty()) {
        const Kept next = std::move(kept_.front());
        kept_.erase(kept_.begin());
        if (head_.services.clock.now() - next.since <= k_longest_wait)
            once(next.action);
    }
    tell_faults();
}

// Outside every handler: the box may stand for hours, and a head that waited for its OK would miss a
// shutdown. What comes up meanwhile is the same fault again.
void ControlHead::tell_faults() {
    if (busy() || closed_ || telling_ || fault_.empty())
        return;
    telling_ = true;
    head_.services.person.notify(std::exchange(fault_, {}), caption());
    telling_ = false;
    fault_.clear();
}

std::string ControlHead::caption() const {
    return "JEX Amplifier " + head_.identity.number;
}

void ControlHead::save_screen_settings() const {
    write_screen_settings(settings_path(head_), head_.panel.look());
}

}  // namespace ampdesk
