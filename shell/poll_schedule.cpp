#include "shell/poll_schedule.h"

#include <algorithm>

namespace ampdesk {

namespace {

// The visit that comes first: the earlier one, an absent one before all.
bool earlier(const std::optional<Instant>& a, const std::optional<Instant>& b) {
    return a && b ? *a < *b : !a && b;
}

}  // namespace

PollSchedule::Next PollSchedule::next(const std::vector<Head>& heads, Instant now) {
    follow(heads, now);
    Next next{.slot = std::nullopt, .wait = k_cycle};
    const Entry* chosen = nullptr;
    const Entry* look = nullptr;
    for (const Head& head : heads) {
        const Entry& entry = entries_.at(head.slot);
        if (head.opening)
            continue;
        if (entry.due > now) {
            next.wait = std::min<Duration>(next.wait, entry.due - now);
        } else {
            const Entry*& first = entry.silent ? look : chosen;
            if (first == nullptr || earlier(entry.last, first->last))
                first = &entry;  // on a line too slow for all, who has waited longest comes first
        }
    }
    if (look != nullptr)
        chosen = before_look(heads, *look);
    if (chosen != nullptr)
        next = {.slot = chosen->slot, .wait = Duration::zero()};
    return next;
}

// A look may hold everybody up for as long as it waits. So each live head is visited once between
// the instant the look became due (or the look before it) and the look; then it can do without a
// visit for that long.
const PollSchedule::Entry* PollSchedule::before_look(const std::vector<Head>& heads,
                                                     const Entry& look) const {
    const Entry* stalest = &look;
    for (const Head& head : heads) {
        const Entry& entry = entries_.at(head.slot);
        const bool seen = entry.last && *entry.last >= look.due && entry.visit > last_look_;
        if (!head.opening && !entry.silent && !seen &&
            (stalest == &look || earlier(entry.last, stalest->last)))
            stalest = &entry;
    }
    return stalest;
}

void PollSchedule::visited(int slot, Instant now) {
    const auto found = entries_.find(slot);
    if (found == entries_.end())
        return;
    Entry& entry = found->second;
    entry.last = now;
    entry.visit = ++visits_;
    if (entry.silent) {
        entry.due = now + k_silent_cycle;
        last_look_ = entry.visit;
    } else {
        pass(entry, now);
    }
}

// The next due instant after now, in the phase that the entry has. An early visit changes nothing.
void PollSchedule::pass(Entry& entry, Instant now) {
    if (entry.due > now)
        return;
    const Duration cycle = entry.silent ? Duration(k_silent_cycle) : Duration(k_cycle);
    entry.due += ((now - entry.due) / cycle + 1) * cycle;
}

// Takes over who is open and who is silent; a change among the live ones spreads them anew.
void PollSchedule::follow(const std::vector<Head>& heads, Instant now) {
    bool changed = false;
    for (auto entry = entries_.begin(); entry != entries_.end();) {
        const bool open = std::any_of(heads.begin(), heads.end(),
                                      [&](const Head& head) { return head.slot == entry->first; });
        changed = changed || (!open && !entry->second.silent);
        entry = open ? std::next(entry) : entries_.erase(entry);
    }
    for (const Head& head : heads) {
        const auto [found, is_new] = entries_.try_emplace(head.slot);
        Entry& entry = found->second;
        entry.slot = head.slot;
        if (is_new)
            entry.due = now;
        changed = changed || (is_new && !head.silent) || entry.silent != head.silent;
        if (head.silent && !entry.silent)
            entry.due = entry.last ? *entry.last + k_silent_cycle : now;
        entry.silent = head.silent;
    }
    if (changed)
        spread(now);
}

// The k-th of n live heads gets the phase k · cycle / n, in the order of their last visits. The
// spread starts as late as it can without anybody waiting longer than a cycle.
void PollSchedule::spread(Instant now) {
    std::vector<Entry*> live;
    for (auto& [slot, entry] : entries_)
        if (!entry.silent)
            live.push_back(&entry);
    std::stable_sort(live.begin(), live.end(),
                     [](const Entry* a, const Entry* b) { return earlier(a->last, b->last); });
    const auto count = static_cast<Duration::rep>(live.size());
    Instant start = now + k_cycle;
    for (Duration::rep k = 0; k < count; ++k) {
        const auto& last = live[static_cast<std::size_t>(k)]->last;
        start = std::min(start, last ? *last + k_cycle - Duration(k_cycle) * k / count : now);
    }
    for (Duration::rep k = 0; k < count; ++k)
        live[static_cast<std::size_t>(k)]->due = start + Duration(k_cycle) * k / count;
}

}  // namespace ampdesk
