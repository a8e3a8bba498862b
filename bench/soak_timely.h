// The soak's witness of what stands: what an amplifier has said is on the display soon, and the screens of a
// silent or shut down amplifier come and go with it.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "bench/soak_claims.h"
#include "bench/soak_findings.h"
#include "bench/soak_line.h"

namespace ampdesk::bench {

// The longest that each was seen to take, from the reply on that brings it about; the last two in time in
// which the line carried exchanges that came to something.
struct TimelyCounts {
    Duration behind{};          // a row, lamp or gauge after a reply that says otherwise
    Duration error_stays{};     // the error screen, after an answer
    Duration shutdown_stays{};  // the shutdown display, after a status without one
    Duration mute{};            // a shutdown display without a beep
    Duration alarm_mute{};      // an alarm without a beep
    Duration shutdown_due{};    // from the status that tells of a shutdown to its display
    Duration error_due{};       // from the first read without an answer to the error screen
    long unanswered = 0;        // … and how many reads that were
    long dead_lines = 0;        // that did not bring all error screens up
    long early_errors = 0;      // error screens after too few failures, or with something lit
    long blanked = 0;           // values that went from the display for nothing
    long unfounded = 0;         // shutdown displays with another reason, or gone before the shutdown was
    long passed_over = 0;       // an amplifier's replies were not taken for its, for their address
};

// What must not be exceeded.
namespace limit {
inline constexpr std::chrono::milliseconds k_behind{600};  // a tick, and what this witness's looks are apart
inline constexpr std::chrono::milliseconds k_mute{1200};
inline constexpr std::chrono::milliseconds k_alarm_mute{
    20000};  // 15 s between them, while the head knows of it
inline constexpr std::chrono::milliseconds k_shutdown_due{2000};
inline constexpr std::chrono::milliseconds k_error_due{2500};
// Three reads twice; between them first tries of other kinds, and tries that were cut.
inline constexpr long k_unanswered = 16;
}  // namespace limit

class TimelyWatch {
  public:
    // `learns`: amplifiers may be replaced by such as do not send their address.
    TimelyWatch(const ControlHead& head, SoakLine& line, const Clock& clock, bool learns,
                TimelyCounts& counts, Findings& findings)
        : head_(head), line_(line), clock_(clock), learns_(learns), counts_(counts), findings_(findings) {}

    // The panel has changed, or some time has gone by.
    void look();

    // Called for every request of this head on the line.
    void watch(const LineRequest& order);

    // The operator has done something to the panel.
    void touched() { touched_ = clock_.now(); }

    // Since when the shutdown display is up, and since when the amplifier has told of an alarm.
    std::optional<Instant> shutdown_shown() const { return shutdown_since_; }
    std::optional<Instant> alarm_told() const { return alarm_told_; }

  private:
    // Something on the panel with a value.
    struct Spot {
        std::string text;
        Instant since{};  // it has that text
    };
    // What owns the display.
    struct Screen {
        int menu_ptr = 0;
        int sub_menu = 0;
        bool gain_mode = false;
        bool operator==(const Screen&) const = default;
    };
    void look_at_screens();
    void look_at_values();
    void look_at(Spot& spot, const std::string& what, const std::string& text, const Claims& claims,
                 std::string_view source, Instant from);
    void look_at_shutdown();
    void look_at_reason();
    void look_at_blank(const std::string& what);
    bool heard_of_its_end();
    void look_for_silence();
    void look_for_dead_line();
    const Said* newest_sound(std::string_view command);
    int failed_reads() const;
    int unanswered_in_a_row() const;
    int own() const { return head_.identity().unit_address; }

    const ControlHead& head_;
    SoakLine& line_;
    const Clock& clock_;
    const bool learns_;
    TimelyCounts& counts_;
    Findings& findings_;
    Screen screen_{};
    Instant screen_since_{};
    std::array<Spot, 4> rows_;
    std::array<Spot, 8> lamps_;
    Spot gauge_;
    std::optional<Instant> error_since_, shutdown_since_;
    std::optional<Instant> alarm_told_;
    Instant touched_{}, set_{};             // the panel by the operator, the amplifier by its head
    std::optional<Instant> shutdown_told_;  // by a status, and not yet on the display
    Instant known_since_{};                 // its replies are known by their address
    Instant free_since_{};                  // neither of the two is on the display
    Instant lit_since_{};                   // the lamps have not been put out
    Instant heard_since_{};                 // the error screen is not up
    bool error_before_ = false, dark_before_ = false, unknown_before_ = false;  // at the last look
};

}  // namespace ampdesk::bench
