// The terminal behind its text box: what is typed goes to the line, what comes in is shown and
// searched for requests of a remote station, and the port's events are reported. Nothing here waits
// longer than an exchange with an amplifier: everything timed is done by tick().
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "buslink/remote_command.h"
#include "terminal/line_buffer.h"
#include "terminal/modem.h"
#include "terminal/port_events.h"
#include "terminal/terminal_line.h"

namespace ampdesk {

class Terminal : public BusGuest {
  public:
    static constexpr std::chrono::milliseconds k_wait_before_hang_up{500};
    static constexpr std::chrono::milliseconds k_look{250};         // at modem lines and counts
    static constexpr std::chrono::milliseconds k_send_on{20};       // while output waits
    static constexpr std::chrono::seconds k_look_for_lost_line{2};  // the port's own spacing
    static constexpr std::chrono::seconds k_cts_limit{5};           // output held back by CTS
    static constexpr std::size_t k_most_requests = 32;              // that wait to be carried out
    static constexpr std::chrono::seconds k_between_wrong_answers{1};

    // Takes the line's on_received until its end. "rs422.dat" is looked for in `folder`.
    Terminal(TerminalLine& line, BusLink& bus, std::string folder = ".");
    ~Terminal() override;
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // Sends what is typed or pasted, but not while the line belongs to a transfer or is being hung up.
    void type(std::string_view text);

    // Ends the call. False when it cannot: no line, or a transfer holds it.
    bool hang_up();

    // Does what is due.
    void tick();

    // How long until tick() is wanted; nothing while only input can bring anything.
    std::optional<Duration> next_tick() const;

    // The requests of a remote station, one after another, for whoever asks the guests of the bus in turn.
    std::optional<Instant> due() const override;
    std::optional<BusCommand> next() override;
    void ended(const BusReply& reply) override;

    // To be called when the line was opened, closed, lost or found again.
    void line_changed();

    // Reports an event of the port by its code.
    void report(int code);

    Modem& modem() { return modem_; }
    const Modem& modem() const { return modem_; }
    const LineState& line_state() const { return state_; }

    // All unset ones count as not there, is_visible as yes.
    std::function<bool()> is_visible;                 // whether the text box can be seen
    std::function<void(std::string_view)> on_text;    // for ShowData
    std::function<void(std::string_view)> on_status;  // for the status label
    std::function<void(std::string_view)> on_error;   // for a box; must not open it at once

  private:
    void received(std::string_view chunk);
    void show(std::string_view text);
    void status(std::string_view text);
    void answer(std::string_view text);
    void look();
    void watch_cts(Instant now);
    void step_manual_hang_up(Instant now);
    void take_request();
    bool request_waits() const;
    bool wrong_waits() const;
    void forget_requests();

    bool visible() const { return !is_visible || is_visible(); }

    TerminalLine& line_;
    Clock& clock_;
    Modem modem_;
    RemoteCommands remote_;
    LineBuffer buffer_;
    std::deque<std::string> requests_;
    // A wrong request waits for its answer until that many of requests_ are done. There is one answer a
    // second at most, whatever a bad line brings; what comes before it is due shares it.
    std::optional<std::size_t> wrong_behind_;
    Instant next_wrong_answer_{};
    std::optional<Instant> hang_up_at_;  // text without line ends has come
    bool second_hang_up_ = false;
    bool tells_ = false;  // the device has told something when it was opened
    LineState state_;
    Instant next_look_{};
    std::optional<Instant> held_back_;  // since when CTS keeps output waiting
    bool cts_told_ = false;
};

}  // namespace ampdesk
