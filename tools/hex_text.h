// Bytes as hexadecimal text, the way the service tools show and read them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ampdesk {

// The value of one hexadecimal digit of either case; nothing for any other character.
std::optional<unsigned> hex_digit(char c);

// The value of the text up to its first character that is no hexadecimal digit; 0 when there is none.
unsigned leading_hex(std::string_view text);

// Upper-case and without padding, each byte followed by one blank: "1 A0 F ".
std::string hex_listing(std::string_view bytes);

// Two upper-case digits a byte, nothing between them: "01A00F".
std::string hex_pairs(std::string_view bytes);

// The bytes of an unbroken run of digit pairs; an odd last digit is a byte of its own. Nothing when
// a character is no hexadecimal digit.
std::optional<std::string> bytes_of_hex(std::string_view text);

}  // namespace ampdesk
