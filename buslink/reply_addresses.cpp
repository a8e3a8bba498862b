#include "buslink/reply_addresses.h"

#include <algorithm>

namespace ampdesk {

bool ReplyAddresses::looked_at(std::uint8_t address) const {
    if (rule_ != ReplyAddress::learned)
        return rule_ == ReplyAddress::checked;
    const auto found = known_.find(address);
    return found != known_.end() && found->second.replies == k_enough;
}

void ReplyAddresses::answered(std::uint8_t address, std::uint8_t second_byte) {
    Known& known = known_[address];
    known.replies = second_byte == address ? std::min(known.replies + 1, k_enough) : 0;
    known.failures = 0;
}

void ReplyAddresses::failed(std::uint8_t address, bool for_the_byte) {
    Known& known = known_[address];
    known.failures = for_the_byte ? known.failures + 1 : 0;
    if (known.failures == k_replaced)
        known = {};
}

}  // namespace ampdesk
