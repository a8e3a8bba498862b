#include "bench/soak_findings.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace ampdesk::bench {

void Findings::tell(const std::string& kind, int address, const std::string& expected,
                    const std::string& seen) {
    constexpr int k_kept = 2;
    if (++told_[kind] > k_kept)
        return;
    const std::string where = address > 0 ? ", amplifier " + std::to_string(address) : "";
    texts_.push_back("exchange " + std::to_string(exchanges_) + ", " +
                     in_seconds(clock_.now().time_since_epoch() - std::chrono::hours(1)) + where + ", " +
                     kind + ": expected " + expected + "; seen " + seen);
}

void Findings::judge(const std::string& kind, int address, Duration value, Duration limit, Duration& longest,
                     const std::string& expected, const std::string& seen) {
    longest = std::max(longest, value);
    if (value > limit)
        tell(kind, address, expected + " within " + in_seconds(limit), seen + " after " + in_seconds(value));
}

std::string in_seconds(Duration duration) {
    std::array<char, 32> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.2f s", std::chrono::duration<double>(duration).count());
    return buffer.data();
}

}  // namespace ampdesk::bench
