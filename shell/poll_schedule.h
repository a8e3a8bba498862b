// Which control head is visited when. Every live head comes round every half second, the heads
// spread evenly over it. A silent one is looked for every five seconds at most, and only after
// every live head has just been visited, so that the wait for it holds nobody up.
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
        bool busy = false;  // a handler of it is running: it is passed over
    };

    // Either a slot to visit now or how long there is nothing to do (at most k_cycle).
    struct Next {
        std::optional<int> slot;
        Duration wait{};
    };
    Next next(const std::vector<Head>& heads, Instant now);

    // The slot's visit has begun.
    void visited(int slot, Instant now);

  private:
    struct Entry {
        bool silent = false;
        Instant due;
        std::optional<Instant> last;
    };
    void follow(const std::vector<Head>& heads, Instant now);

    std::map<int, Entry> entries_;
};

}  // namespace ampdesk
