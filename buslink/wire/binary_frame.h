// The binary frames of the amplifier bus as pure values: a command frame is built, a reply frame
// is found in whatever bytes have come. No port, no clock.
//
//   command  SOH, unit address, N, N bytes, CRC low, CRC high
//   reply    ACK or NAK, second header byte, L, L bytes, CRC low, CRC high
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "buslink/wire/crc16.h"

namespace ampdesk {

// 255 data bytes, three in front, two behind.
inline constexpr std::size_t k_longest_frame = 260;
inline constexpr std::size_t k_longest_command = 255;

// The command frame. The command holds at most 255 bytes; a longer one throws Overflow.
std::string build_command_frame(const Crc16& crc, std::uint8_t address, std::string_view command);

// A reply frame, for the simulator and the tests.
std::string build_reply_frame(const Crc16& crc, char first, std::uint8_t second, std::string_view data);

// Looks for the reply to one command in a stream of bytes, wherever it starts.
//
// The first stretch that is a whole frame with a good CRC and the right echo is the answer. The
// echo is the command's first two bytes, or its only one; a reply without data has none. A whole
// frame with the right echo and a bad CRC fails at once, unless a later byte could be the start of
// this reply; without the right echo it was noise, and the reply may still come. A sound frame that
// answers something else and an echo of our own frame are skipped. Holds no more than the last
// k_longest_frame undecided bytes.
class ReplyParser {
  public:
    enum class State { waiting, answered, failed };

    // `sent` is the frame as it went out. With `address_checked` the second header byte must be
    // the unit address.
    ReplyParser(const Crc16& crc, std::string_view sent, bool address_checked = false);

    // Takes the next bytes; returns the state after them. Further bytes after an answer or a
    // failure change nothing.
    State feed(std::string_view bytes);

    State state() const { return state_; }

    // A whole reply with the right echo has come whose CRC was bad.
    bool unsound() const { return unsound_; }

    // How many bytes are kept because they may still become something.
    std::size_t undecided() const { return buffer_.size(); }

    // A sound reply with the right echo has come, and would be the answer but for its second header byte.
    bool other_address() const { return other_address_; }

    // The whole reply, L + 5 bytes; empty unless answered.
    const std::string& reply() const { return reply_; }

  private:
    enum class Candidate {
        nothing,  // no reply starts here
        growing,  // may become our reply
        foreign,  // may become a reply to somebody or something else
        skipped,  // whole and sound, but not ours
        unsound,  // our reply but for its CRC
        sound,    // our reply
    };
    Candidate judge(std::string_view bytes) const;
    bool address_fits(std::string_view bytes) const;
    bool echo_fits(std::string_view bytes) const;

    const Crc16& crc_;
    std::string sent_;
    std::string echo_;
    std::optional<std::uint8_t> address_;
    std::string buffer_;
    std::string reply_;
    State state_ = State::waiting;
    bool unsound_ = false;
    bool other_address_ = false;
};

}  // namespace ampdesk
