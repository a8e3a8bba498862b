// The soak's witness of the plan: whatever a panel lives on is asked for again in its time, and a silent
// amplifier is looked for no more often than that.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "bench/soak_findings.h"
#include "bench/soak_line.h"
#include "controlhead/control_head.h"

namespace ampdesk::bench {

// The longest that each was seen to take, in time in which the line carried exchanges that came to something,
// and for all but a status also in its amplifier's time, in which that answered: what spoilt exchanges cost,
// up to all of a run, says nothing of the plan.
struct PaceCounts {
    Duration status{};     // between two status requests to an amplifier that is not taken for silent
    Duration front{};      // … two requests for what the window in front shows
    Duration behind_it{};  // … for what the others show
    Duration look{};       // … two looks for a silent amplifier
    Duration guest{};      // a remote line or a transfer waits for its turn
    Duration band{};       // from a BAND key's setting to the question for the band
    long hasty_looks = 0;  // at a silent amplifier, before their time
};

// What must not be exceeded. The plan's own limits (docs/reliability.md, "How often an amplifier is asked")
// are 1.0 s for a status and for what the window in front shows, 3.0 s for the others and, with guests on the
// line, 6.0 s, 5 s for a look. What cannot be taken off comes to them: the rounds of the others before a
// second try, and keys in haste, each of which goes first.
namespace limit {
inline constexpr std::chrono::milliseconds k_status{2000};
inline constexpr std::chrono::milliseconds k_front{1500};
inline constexpr std::chrono::milliseconds k_behind_it{6000};
inline constexpr std::chrono::milliseconds k_look{6000};
inline constexpr std::chrono::milliseconds k_guest{1500};
inline constexpr std::chrono::milliseconds k_band{2000};
}  // namespace limit

class PaceWatch {
  public:
    PaceWatch(const ControlHead& head, const SoakLine& line, const Clock& clock, PaceCounts& counts,
              Findings& findings)
        : head_(head), line_(line), clock_(clock), counts_(counts), findings_(findings) {}

    // The panel has changed, or some time has gone by. `active`: its window is in front.
    void look(bool active);

    // Called for every request of this head on the line.
    void watch(const LineRequest& order);

  private:
    void look_at_band();
    void asked_within(std::string_view command, Instant from, Duration limit, Duration& longest,
                      const std::string& what);
    Duration left_alone(std::string_view command) const;
    int own() const { return head_.identity().unit_address; }

    const ControlHead& head_;
    const SoakLine& line_;
    const Clock& clock_;
    PaceCounts& counts_;
    Findings& findings_;
    std::map<std::string, Instant, std::less<>> asked_;        // by command
    std::optional<Instant> band_set_;                          // by its key; nobody has asked since
    std::optional<Instant> error_since_;                       // the error screen is up
    Instant heard_since_{};                                    // … is not
    Instant label_since_{};                                    // the first screen is to be seen
    Instant active_since_{}, alarm_since_{}, limits_since_{};  // the plan asks for more than else
};

}  // namespace ampdesk::bench
