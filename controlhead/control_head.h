// One amplifier's control head as the window and the station see it: keys, readings and ticks in, panel out.
// No handler of a head waits for anything, opens a box or lets window events run.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "controlhead/head.h"
#include "controlhead/head_view.h"
#include "platform/signal.h"

namespace ampdesk {

class ControlHead {
  public:
    ControlHead(HeadServices& services, HeadIdentity identity);

    // Whether there are colours of an earlier time to be restored.
    bool has_screen_settings() const;

    // Restores them when told so and shows the first screen. Damaged ones are told and set aside, and the
    // head fails. It is live once the first screen's values have come.
    void machine_init(bool restore);
    enum class Life {
        created,
        opening,  // what the first screen needs is being read
        live,
        failed,  // the window has to close again; the operator was told
        closed,
    };
    Life life() const { return life_; }

    // Operator's actions. A soft key or lamp comes with what the key did when it was pressed, a move of the
    // scroll bar with the range that the bar had: if that has changed since, it is dropped with a beep. A
    // hard key comes with the time when it was pressed, or just now. Before the head is live only the hard
    // keys act.
    void press_key(std::int16_t index, const std::optional<std::string>& did = std::nullopt);
    void press_hard_key(std::int16_t index, Instant at = {});
    void click_lamp(std::int16_t index, const std::optional<std::string>& did = std::nullopt,
                    Instant at = {});
    void move_scroll_bar(int value, const std::optional<ScrollBar>& range = std::nullopt);

    // What came of a request; what became of an order, which has left the queue.
    void take(const Reading& reading);
    void take(const Order& order, const Setting& setting);

    // To be called every half second.
    void tick();

    // The next order goes before every request.
    std::deque<Order>& orders() { return head_.orders; }
    const std::deque<Request>& requests() const { return head_.requests; }
    // Whether it is still wanted: who has left a screen has given its requests up.
    bool wants(const Request& request) const { return head_.wants(request); }
    // What the screen needs all the time, of enum Needs.
    unsigned needs() const;

    // The communication error screen is up; the amplifier is only looked for.
    bool silent() const { return head_.comm_error_shown; }
    // It will not answer, as nobody on the line does.
    void line_is_dead();

    // The window has closed; nothing runs any more.
    void close() { life_ = Life::closed; }
    bool closed() const { return life_ == Life::closed; }
    bool started() const { return life_ == Life::live; }

    // What there is to tell the operator of it, in turn and each once; called by who can wait for him.
    std::optional<Message> take_message();

    // Keeps colours and font size in the amplifier's settings file. Throws what writing throws.
    void save_screen_settings() const;
    void apply_screen_settings(const ScreenSettings& settings);

    std::string caption() const { return ampdesk::caption(head_.identity); }
    const HeadIdentity& identity() const { return head_.identity; }
    const Panel& panel() const { return head_.panel; }
    const Head& state() const { return head_; }

    // What is to be seen of it now, and every other view from now on, once a handler has returned.
    const HeadView& view() const { return view_; }
    Signal<HeadView> views;

  private:
    template <class Action>
    void act(Action action);
    bool is_what_was_seen(std::int16_t index, const std::optional<std::string>& did);
    void follow_opening(const Reading& reading);
    void fail(const std::string& text, const std::string& cause);
    void publish();
    std::string about(const std::string& detail) const;

    Head head_;
    HeadView view_;
    Life life_ = Life::created;
    std::deque<Message> to_tell_;
};

}  // namespace ampdesk
