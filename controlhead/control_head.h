// One amplifier's control head as the window and the polling loop see it: keys in, visits in, panel
// out. No handler of a head opens a box or lets window events run, so none is ever entered while another
// one is still running.
#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "controlhead/head.h"

namespace ampdesk {

class ControlHead {
  public:
    ControlHead(HeadServices& services, HeadIdentity identity);

    // Restores colours, resets the state and shows the first screen. With `ask_before_restore` the
    // operator is asked first. False when the window has to close again; the operator was told.
    bool machine_init(bool ask_before_restore);

    // Operator's actions. What they bring to be told is told after them, one box at a time; the head is
    // visited on beside it. Before machine_init has shown a screen only the hard keys act.
    void press_key(std::int16_t index);
    void press_hard_key(std::int16_t index);
    void click_lamp(std::int16_t index);
    void move_scroll_bar(int value);

    // The two halves of a visit by the polling loop; nothing before machine_init has shown a screen. The
    // first lets window events run before it shows a shutdown.
    void updateLogic();
    void updateDisplay();

    // machine_init has shown the first screen.
    bool started() const { return started_; }

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
    struct Told {
        std::string text;
        std::string detail;
        bool operator==(const Told&) const = default;
    };
    bool live() const { return started_ && !closed_; }
    template <class Action>
    void act(Action action);
    void tell_all();
    std::string about(const std::string& detail) const;

    Head head_;
    bool started_ = false;
    bool closed_ = false;
    std::deque<Told> to_tell_;  // the first one is on the screen while telling_
    bool telling_ = false;
};

}  // namespace ampdesk
