// Which control head is visited when. Every live head comes round every half second, the heads
// spread evenly over it. A silent one is looked for every five seconds at most, and only after
// every live head has just been visited, so that the wait for it holds nobody up. Instants in,
// decisions out: no clock of its own.
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "platform/clock.h"

namespace ampdesk {

class PollSchedule {
  public:
    static constexpr std::chrono::milliseconds k_cycle{500};
    static constexpr std::chrono::milliseconds k_silent_cycle{5000};

    // One open head as it stands now.
    struct Head {
        int slot = 0;
        bool silent = false;
        bool opening = false;  // it has no screen yet and is not visited
    };

    // Either a slot to visit now or how long there is nothing to do (at most k_cycle).
    struct Next {
        std::optional<int> slot;
        Duration wait{};
    };
    Next next(const std::vector<Head>& heads, Instant now);

    // The slot's visit has begun. A head that was late keeps its phase: what it missed is skipped.
    void visited(int slot, Instant now);

  private:
    struct Entry {
        int slot = 0;
        bool silent = false;
        Instant due;
        std::optional<Instant> last;
        long long visit = 0;  // number of the last visit
    };
    void follow(const std::vector<Head>& heads, Instant now);
    void spread(Instant now);
    const Entry* before_look(const std::vector<Head>& heads, const Entry& look) const;
    static void pass(Entry& entry, Instant now);

    std::map<int, Entry> entries_;
    long long visits_ = 0;
    long long last_look_ = 0;  // number of the visit that was the last look
};

}  // namespace ampdesk
