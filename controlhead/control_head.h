// One amplifier's control head as the window and the polling loop see it: keys in, visits in, panel
// out. No handler of a head is ever entered while another of its handlers is still running.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "controlhead/head.h"

namespace ampdesk {

class ControlHead {
  public:
    ControlHead(HeadServices& services, HeadIdentity identity);

    // Restores colours, resets the state and shows the first screen. With `ask_before_restore` the
    // operator is asked first. False when the window has to close again; the operator was told.
    bool machine_init(bool ask_before_restore);

    // Operator's actions. One that comes while a handler of this head is running is kept and done
    // right after it, unless it has waited longer than two seconds; at most eight are kept, and of
    // scroll bar moves in a row only the last.
    void press_key(std::int16_t index);
    void press_hard_key(std::int16_t index);
    void click_lamp(std::int16_t index);
    void move_scroll_bar(int value);

    // The two halves of a visit by the polling loop. Do nothing while the head is busy or closed. A
    // fault that is to be told is told after the handler, one box at a time, and the head may be
    // visited on beside it.
    void updateLogic();
    void updateDisplay();

    // A handler of this head is on the stack.
    bool busy() const { return depth_ > 0; }

    // The communication error screen is up; the loop then only looks for the amplifier.
    bool silent() const { return head_.comm_error_shown; }

    // The window has closed; nothing runs any more.
    void close() {
        closed_ = true;
        head_.panel.on_change = nullptr;
    }
    bool closed() const { return closed_; }

    // Keeps colours and font size in the amplifier's settings file. Throws what writing throws.
    void save_screen_settings() const;
    void apply_screen_settings(const ScreenSettings& settings) { head_.panel.set_look(settings); }

    // "JEX Amplifier " + number
    std::string caption() const;
    const HeadIdentity& identity() const { return head_.identity; }
    Panel& panel() { return head_.panel; }
    const Head& state() const { return head_; }

  private:
    struct Kept {
        std::function<void()> action;
        Instant since;
        bool scroll_move;
    };
    void run(const std::function<void()>& action);
    void tell_faults();
    void act(std::function<void()> action, bool scroll_move = false);

    Head head_;
    int depth_ = 0;
    bool closed_ = false;
    std::vector<Kept> kept_;
    std::string fault_;  // met by a handler and not told yet
    bool telling_ = false;
};

}  // namespace ampdesk
