#include "demo/sim_event_log.h"

#include "platform/numbers.h"

namespace ampdesk::demo {

namespace {

constexpr std::size_t k_stamp = 6;  // "HH:MM "

}  // namespace

void SimEventLog::add(const CivilTime& now, std::string_view text) {
    entries_.push_front(zero_padded(now.hour, 2) + ":" + zero_padded(now.minute, 2) + " " +
                        std::string(text));
    if (entries_.size() > k_most_entries)
        entries_.pop_back();
}

void SimEventLog::add_or_replace(const CivilTime& now, std::string_view stem, std::string_view text) {
    if (!entries_.empty() && entries_.front().compare(k_stamp, stem.size(), stem) == 0)
        entries_.pop_front();
    add(now, text);
}

std::string SimEventLog::entry(std::size_t n) const {
    return n < entries_.size() ? entries_[n] : std::string(16, ' ');
}

}  // namespace ampdesk::demo
