#include "controlhead/fault_log.h"

#include <algorithm>

#include "platform/numbers.h"

namespace ampdesk {

void FaultLog::log_fault(const CivilTime& now, std::string_view text) {
    constexpr std::size_t k_display_width = 20;
    constexpr std::size_t k_log_width = 17;
    constexpr std::int16_t k_most = 98;
    const std::string stamp = plain_number(now.hour) + ":" + plain_number(now.minute) + " ";
    const std::string field = left_aligned(stamp + std::string(text), k_display_width);
    const auto last = entries_.begin() + count_ + 1;
    std::move_backward(entries_.begin(), last, last + 1);
    entries_[0] = field.substr(0, k_log_width);
    if (count_ < k_most)
        ++count_;
}

}  // namespace ampdesk
