// The text frames of the amplifier bus:
//
//   command  STX, ">", two decimal digits, blank, text, ETX, two checksum characters, CR
//   reply    any characters up to a CR, an ETX among them
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ampdesk {

// The high byte of the sum of all characters after the STX, as two upper-case hexadecimal
// characters; "00" for a sum below 256. Throws Overflow for a sum above 32767.
std::string text_checksum(std::string_view frame);

// The whole command frame. Addresses are taken modulo 100.
std::string build_text_frame(int address, std::string_view command);

// Collects a text reply. A line without an ETX is dropped up to its CR; our own frame coming back
// is dropped too. Holds at most the last k_longest_text characters of an endless line.
class TextReplyParser {
  public:
    static constexpr std::size_t k_longest_text = 4096;

    explicit TextReplyParser(std::string_view sent) : sent_(sent) {}

    // The reply up to and including its first CR, once it is there.
    std::optional<std::string> feed(std::string_view bytes);

  private:
    std::string sent_;
    std::string buffer_;
};

}  // namespace ampdesk
