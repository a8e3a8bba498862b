#include "station/plan.h"

#include <algorithm>

namespace ampdesk {

namespace {

using std::chrono::milliseconds;
using Kind = Request::Kind;

using Seconds = std::chrono::duration<double>;

// The longest that a kind is to be left alone, less what an exchange under way takes; with somebody else on
// the line, too.
constexpr Seconds k_status{0.86};
constexpr Seconds k_status_beside_guests{1.0};
constexpr Seconds k_active{0.86};
constexpr Seconds k_others{2.85};
constexpr Seconds k_others_beside_guests{5.2};
constexpr Seconds k_guest{0.4};       // from one exchange of theirs to the next: two a second …
constexpr Seconds k_guest_waits{2};   // … and this is the longest that the rounds below keep them waiting
constexpr double k_learning = 64;     // statuses
constexpr double k_most_stretch = 2;  // of the others, beyond what the statuses are stretched

// On a line that has no time left the period of what is due first is a little shorter, so that it stays
// within its half second behind whatever exchange is just under way.
constexpr milliseconds k_busy_period{450};

// What goes before everything that has its period, in this order; of equals the one that waits longest.
constexpr double k_reason_of_shutdown = 3e9;
constexpr double k_asked_by_operator = 2e9;
constexpr double k_round = 1e9;

constexpr milliseconds k_line_gone{250};  // between tries on a line that takes nothing
// Between requests that an amplifier has no answer to. Two replies in a row may get lost, four hardly do.
constexpr milliseconds k_unanswerable{5000};
constexpr int k_hopeless = 2;

// How much of its period has passed since then.
double share(Instant since, Seconds period, Instant now) {
    return (now - since) / period;
}

// What is due but not late yet waits only for what is nearly late.
double urgency_of(Instant last, Seconds longest, bool first, Instant now) {
    constexpr double k_nearly_late = 0.9;
    const double used = share(last, longest, now);
    return first && used < 1 ? k_nearly_late + used / 100 : used;
}

double seconds_since(Instant instant, Instant now) {
    return Seconds(now - instant).count();
}

}  // namespace

Plan::Choice Plan::next(const std::vector<Head>& heads, std::optional<Instant> guest, Instant now) {
    follow(heads, now);
    guests_ = guest && *guest <= now + k_period;
    round_.reset();
    for (const Head& head : heads) {
        Known& known = known_.at(head.slot);
        want(head, known, now);
        if (const auto since = awaited_round(head, known, now))
            round_ = std::max(round_.value_or(*since), *since);
    }
    Best best{.choice = {.until = now + k_period}};
    for (const Head& head : heads) {
        Known& known = known_.at(head.slot);
        if (head.silent) {
            look_at(heads, head, known, now, best);
        } else {
            second_tries(heads, head, known, now, best);
            ask(head, known, now, best);
        }
    }
    if (guest && *guest > now)
        best.choice.until = std::min(best.choice.until, *guest);
    if (guest && *guest <= now && guest_urgency(now) > best.urgency)
        best.choice = {.what = Choice::What::guest};
    if (best.choice.what == Choice::What::nothing)
        last_idle_ = now;
    return best.choice;
}

// On a bad line there is always somebody who waits for a round.
double Plan::guest_urgency(Instant now) const {
    const bool waits_long = now - last_guest_ > k_guest_waits;
    return waits_long ? k_round + seconds_since(last_guest_, now) : share(last_guest_, k_guest, now);
}

// Takes over who is open. A head that is new has everything to ask.
void Plan::follow(const std::vector<Head>& heads, Instant now) {
    std::erase_if(known_, [&](const auto& known) {
        return std::none_of(heads.begin(), heads.end(),
                            [&](const Head& head) { return head.slot == known.first; });
    });
    for (const Head& head : heads) {
        const auto [known, is_new] = known_.try_emplace(head.slot);
        if (is_new)
            for (Entry& entry : known->second) entry.due = entry.last = now;
    }
}

void Plan::want(const Head& head, Known& known, Instant now) {
    for (std::size_t kind = 0; kind < k_kinds; ++kind) {
        Entry& entry = known[kind];
        const auto wanted = std::find_if(head.requests->begin(), head.requests->end(), [&](const Request& r) {
            return static_cast<std::size_t>(r.kind) == kind;
        });
        if (wanted == head.requests->end())
            entry.wanted.reset();
        else if (!entry.wanted)
            entry.wanted = now;
        const bool is_event = entry.second && entry.second->request.kind == Kind::event;
        if (is_event && (wanted == head.requests->end() || entry.second->request != *wanted))
            entry.second.reset();  // given up
    }
}

// Since when the others have to be asked before that head is; nothing when it waits for nobody.
std::optional<Instant> Plan::awaited_round(const Head& head, Known& known, Instant now) {
    if (head.silent) {
        const Instant from = entry_of(known, Kind::status).last + k_look_period;
        return from <= now ? std::optional(std::max(from, last_look_)) : std::nullopt;
    }
    std::optional<Instant> since;
    for (const Entry& entry : known)
        if (entry.second && entry.after_round)
            since = std::max(since.value_or(*entry.after_round), *entry.after_round);
    return since;
}

bool Plan::round_is_complete(const std::vector<Head>& heads, int but_slot, Instant since) {
    return std::all_of(heads.begin(), heads.end(), [&](const Head& head) {
        return head.slot == but_slot || head.silent || head.failing ||
               entry_of(known_.at(head.slot), Kind::status).last >= since;
    });
}

void Plan::propose(int slot, const Try& attempt, Instant from, double urgency, Instant now, Best& best) {
    if (from > now) {
        best.choice.until = std::min(best.choice.until, from);
    } else if (urgency > best.urgency) {
        best.urgency = urgency;
        best.choice = {.what = Choice::What::read, .slot = slot, .attempt = attempt, .until = now};
    }
}

// A look may hold everybody up for as long as it waits, so all others are asked right before it.
void Plan::look_at(const std::vector<Head>& heads, const Head& head, Known& known, Instant now, Best& best) {
    const Entry& entry = entry_of(known, Kind::status);
    const Instant from = entry.second ? entry.last : entry.last + k_look_period;  // one that was cut
    if (from > now || round_is_complete(heads, head.slot, std::max(from, last_look_)))
        propose(head.slot, {.request = {Kind::status}, .asked_at = now, .last = true}, from,
                k_round + seconds_since(from, now), now, best);
}

void Plan::second_tries(const std::vector<Head>& heads, const Head& head, Known& known, Instant now,
                        Best& best) {
    for (const Entry& entry : known)
        if (entry.second && (!entry.after_round || round_is_complete(heads, head.slot, *entry.after_round)))
            propose(head.slot, *entry.second, entry.not_before,
                    k_round + seconds_since(entry.after_round.value_or(entry.last), now), now, best);
}

void Plan::ask(const Head& head, Known& known, Instant now, Best& best) {
    const bool tried_once =
        std::any_of(known.begin(), known.end(), [](const Entry& entry) { return entry.second.has_value(); });
    if (head.failing && tried_once)
        return;  // the others come first
    const bool busy = now - last_idle_ > k_period;
    const auto periodic = [&](Kind kind, Seconds longest, bool first) {
        const Entry& entry = entry_of(known, kind);
        if (entry.second)
            return;
        Instant from = busy && first ? entry.last + k_busy_period : entry.due;
        double urgency = urgency_of(entry.last, longest, first, now);
        if (entry.wanted) {
            from = std::min(from, *entry.wanted);
            urgency = k_asked_by_operator + seconds_since(*entry.wanted, now);
        } else if ((kind == Kind::status && head.failing) || (first && round_ && entry.last < *round_)) {
            from = now;
            urgency = k_round + seconds_since(entry.last, now);
        }
        propose(head.slot, {.request = {kind}, .asked_at = now}, std::max(from, entry.not_before), urgency,
                now, best);
    };
    periodic(Kind::status, guests_ ? k_status_beside_guests : k_status, true);
    if (head.failing)
        return;  // the rest is worth nothing before it answers this
    const Seconds others = (guests_ ? k_others_beside_guests : k_others) * stretch_;
    periodic(Kind::analog, head.active ? k_active : others, head.active);
    periodic(Kind::alarm_state, head.active && head.alarm ? k_active : others, head.active && head.alarm);
    if (head.limits)
        periodic(Kind::limits, head.active ? k_active : others, head.active);
    for (const Request& request : *head.requests) {
        const Entry& entry = entry_of(known, request.kind);
        const bool has_period = request.kind == Kind::status || request.kind == Kind::analog ||
                                request.kind == Kind::alarm_state || request.kind == Kind::limits;
        if (has_period || entry.second)
            continue;
        const double urgency = request.kind == Kind::shutdown ? k_reason_of_shutdown : k_asked_by_operator;
        propose(head.slot, {.request = request, .asked_at = now, .last = request.guess},
                std::max(*entry.wanted, entry.not_before), urgency + seconds_since(*entry.wanted, now), now,
                best);
    }
}

// What was late keeps its phase: what it missed is skipped.
void Plan::asked(int slot, const Try& attempt, Instant now) {
    const auto known = known_.find(slot);
    if (known == known_.end())
        return;
    Entry& entry = entry_of(known->second, attempt.request.kind);
    if (attempt.request.kind == Kind::status && !attempt.last)
        stretch_ +=
            (std::clamp(share(entry.last, k_status, now), 1.0, k_most_stretch) - stretch_) / k_learning;
    entry.last = now;
    entry.wanted.reset();
    entry.second.reset();
    entry.after_round.reset();
    if (entry.due <= now)
        entry.due += ((now - entry.due) / k_period + 1) * k_period;
}

void Plan::ended(int slot, const Try& attempt, Reading::Outcome outcome, Instant now) {
    const auto known = known_.find(slot);
    if (known == known_.end())
        return;
    Entry& entry = entry_of(known->second, attempt.request.kind);
    const bool silence = outcome == Reading::Outcome::silence;
    if (silence && attempt.last && attempt.request.kind == Kind::status)
        last_look_ = now;
    if (!silence)
        entry.unanswered = 0;
    if (outcome == Reading::Outcome::good)
        return;
    if (outcome == Reading::Outcome::not_sent)
        entry.not_before = now + k_line_gone;
    if (!attempt.last) {
        entry.second = {.request = attempt.request, .asked_at = attempt.asked_at, .last = true};
        if (silence)
            entry.after_round = now;
    } else if (silence && attempt.request.kind != Kind::status && !attempt.request.guess &&
               ++entry.unanswered >= k_hopeless) {
        entry.not_before = now + k_unanswerable;
    }
}

void Plan::cut(int slot, const Try& attempt) {
    const auto known = known_.find(slot);
    if (known == known_.end())
        return;
    Entry& entry = entry_of(known->second, attempt.request.kind);
    if (attempt.last && !attempt.request.guess)
        entry.second = attempt;
    else
        entry.due = entry.last;
}

}  // namespace ampdesk
