#include "demo/sim_shutdowns.h"

#include <algorithm>

namespace ampdesk::demo {

void SimShutdowns::add(const Entry& entry) {
    end(entry.cause);
    entries_.push_back(entry);
}

void SimShutdowns::hold(ShutdownCause cause, bool held) {
    for (Entry& entry : entries_) {
        if (entry.cause == cause)
            entry.held = held;
    }
}

void SimShutdowns::end(ShutdownCause cause) {
    std::erase_if(entries_, [&](const Entry& entry) { return entry.cause == cause; });
}

bool SimShutdowns::acknowledge() {
    if (std::any_of(entries_.begin(), entries_.end(), [](const Entry& entry) { return entry.held; }))
        return false;
    entries_.clear();
    return true;
}

const SimShutdowns::Entry* SimShutdowns::find(ShutdownCause cause) const {
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Entry& entry) { return entry.cause == cause; });
    return found == entries_.end() ? nullptr : &*found;
}

}  // namespace ampdesk::demo
