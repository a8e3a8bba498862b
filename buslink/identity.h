// Who is at the other end: the serial number and the model that an amplifier reports of itself.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ampdesk {

class BusLink;

// The number in a reply to "RDS/N": cut before ETX; after the first "=" when there is one; without
// the leading STX; trimmed. "RDS/N=1234" and "1234" both give "1234". Empty when nothing is left.
std::string serial_number_of(std::string_view reply);

// The amplifier number of a serial number: its numeric value, rounded, in decimal without blanks.
// Throws Overflow when 32 bits do not hold it.
std::string amplifier_number(std::string_view serial_number);

// The model in a reply to "*IDN?": what follows the first "*" (all of it when there is none),
// trimmed, up to its first blank. A text without a blank there has no model and gives an empty one.
std::string model_of(std::string_view reply);

// Asks for the serial number at that address. Empty when the amplifier does not say.
std::string read_serial_number(BusLink& bus, int address);

// Asks for the identity. Nothing when there is no reply; a reply may still hold an empty model.
std::optional<std::string> read_model(BusLink& bus, int address);

}  // namespace ampdesk
