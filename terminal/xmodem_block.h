// The blocks of XMODEM and the characters around them:
//
//   SOH, number, 255 - number, 128 bytes, check      (STX: 1024 bytes)
//
// The number counts from 1 and wraps from 255 to 0. The check is a CRC (two bytes, high byte first)
// or, with older programs, the sum of the data bytes (one byte): the receiver's first character
// decides, "C" for the CRC, NAK for the sum.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "buslink/wire/control_characters.h"

namespace ampdesk {

inline constexpr char k_eot = 4;
inline constexpr char k_can = 24;  // twice in a row: the transfer is off
inline constexpr char k_sub = 26;  // fills the last block
inline constexpr char k_want_crc = 'C';

inline constexpr std::size_t k_xmodem_data = 128;
inline constexpr std::size_t k_xmodem_long_data = 1024;
inline constexpr std::size_t k_xmodem_block = 3 + k_xmodem_data + 2;

enum class XmodemCheck { crc, sum };

// More than the two that are needed, so that one may get lost; the backspaces wipe them from the
// prompt of a program that is not in a transfer.
inline constexpr std::string_view k_xmodem_cancel =
    "\x18\x18\x18\x18\x18"
    "\b\b\b\b\b";

// Polynomial 0x1021, not reflected, initial value 0: "123456789" gives 0x31C3.
std::uint16_t xmodem_crc(std::string_view data);

// The check of the data as it goes over the wire, one or two bytes.
std::string xmodem_check(XmodemCheck check, std::string_view data);

// A block of 128 bytes; shorter data is filled up.
std::string xmodem_block(std::uint8_t number, std::string_view data, XmodemCheck check);

}  // namespace ampdesk
