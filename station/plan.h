// What is asked of which amplifier next. Each kind of request has a period that it should have and a longest
// one; who has used up the most of the longest goes first, so that a line with too little time for all leaves
// each as late as the others. What an operator or a shutdown waits for goes before. Instants in, decisions
// out: no clock of its own and no line.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <vector>

#include "amplifier/amplifier.h"
#include "platform/clock.h"

namespace ampdesk {

class Plan {
  public:
    static constexpr std::chrono::milliseconds k_period{500};        // of everything that is shown
    static constexpr std::chrono::milliseconds k_look_period{5000};  // at a silent amplifier

    // One open head as it stands now.
    struct Head {
        int slot = 0;
        bool silent = false;                            // its error screen is up: it is only looked for
        bool failing = false;                           // it has left the last read unanswered
        bool active = false;                            // its window is the one in front
        bool limits = false;                            // its screen shows the warning levels
        bool alarm = false;                             // … and its alarm state
        const std::deque<Request>* requests = nullptr;  // what it wants once, now
    };

    struct Choice {
        enum class What : std::uint8_t { nothing, read, guest };
        What what = What::nothing;
        int slot = 0;
        Try attempt{};
        Instant until{};  // of nothing: when there will be something
    };

    // `guest` is when somebody else wants the line, if anybody does.
    Choice next(const std::vector<Head>& heads, std::optional<Instant> guest, Instant now);

    // The head has closed; who comes into its slot is another one.
    void forget(int slot) { known_.erase(slot); }

    // The exchange has begun.
    void asked(int slot, const Try& attempt, Instant now);

    // To be called when an exchange of somebody else begins, and when it ends: however long it took, the
    // others come before the next one.
    void guest_had_line(Instant now) { last_guest_ = now; }

    // It has ended. One that was cut is asked again.
    void ended(int slot, const Try& attempt, Reading::Outcome outcome, Instant now);
    void cut(int slot, const Try& attempt);

  private:
    static constexpr std::size_t k_kinds = 8;

    struct Entry {
        Instant due{};                       // in the phase of its period
        Instant last{};                      // when it was asked last
        Instant not_before{};                // nobody answers it
        int unanswered = 0;                  // so many times in a row after both tries
        std::optional<Instant> wanted;       // once more than its period says, since then
        std::optional<Try> second;           // the first try has failed
        std::optional<Instant> after_round;  // … and the second waits until the others were asked since
    };
    using Known = std::array<Entry, k_kinds>;  // of one head, by the kind of request
    // What may be asked, the best so far.
    struct Best {
        Choice choice;
        double urgency = -1;
    };

    static Entry& entry_of(Known& known, Request::Kind kind) { return known[static_cast<std::size_t>(kind)]; }
    void follow(const std::vector<Head>& heads, Instant now);
    void want(const Head& head, Known& known, Instant now);
    double guest_urgency(Instant now) const;
    std::optional<Instant> awaited_round(const Head& head, Known& known, Instant now);
    bool round_is_complete(const std::vector<Head>& heads, int but_slot, Instant since);
    void look_at(const std::vector<Head>& heads, const Head& head, Known& known, Instant now, Best& best);
    void ask(const Head& head, Known& known, Instant now, Best& best);
    void second_tries(const std::vector<Head>& heads, const Head& head, Known& known, Instant now,
                      Best& best);
    static void propose(int slot, const Try& attempt, Instant from, double urgency, Instant now, Best& best);

    std::map<int, Known> known_;
    std::optional<Instant> round_;  // somebody waits until all others were asked for their status since
    bool guests_ = false;           // somebody else takes his share of the line
    Instant last_guest_{};
    Instant last_look_{};  // its end
    Instant last_idle_{};  // the line had time left
    double stretch_ = 1;   // how much longer than their longest period the statuses are left alone
};

}  // namespace ampdesk
