// Which amplifiers put their unit address into the second header byte of their replies: a reply with
// another byte there is none of theirs, but a late one of some other amplifier.
#pragma once

#include <cstdint>
#include <map>

namespace ampdesk {

enum class ReplyAddress {
    learned,  // looked at for amplifiers that have been seen to send it
    checked,  // looked at from the first reply on
    ignored,  // never looked at
};

class ReplyAddresses {
  public:
    explicit ReplyAddresses(ReplyAddress rule) : rule_(rule) {}

    // Whether a sound reply with another byte there is not this amplifier's.
    bool looked_at(std::uint8_t address) const;

    // A sound reply, ACK or NAK, was taken for its.
    void answered(std::uint8_t address, std::uint8_t second_byte);

    // An exchange failed; `for_the_byte`: its reply came but for that byte.
    void failed(std::uint8_t address, bool for_the_byte);

    // To be called when another line opens: others are on it.
    void forget() { known_.clear(); }

  private:
    struct Known {
        int replies = 0;   // in a row that carried the address, k_enough at most
        int failures = 0;  // in a row for that byte alone
    };
    static constexpr int k_enough = 8;
    // Another amplifier stands there, and does not send its address. Fewer are seen beside a silent one: the
    // late replies of those that were asked right before it.
    static constexpr int k_replaced = 5;

    ReplyAddress rule_;
    std::map<std::uint8_t, Known> known_;
};

}  // namespace ampdesk
