// One lenient number reader, one rounding to 16 bits, one formatter for the display's patterns.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ampdesk {

// The leading number of a text: blanks and tabs are skipped wherever they stand before its end,
// sign, digits, one point and an exponent are read; anything else ends it. No number gives 0, one
// too large for a double gives infinity, which the rounding below refuses.
double lenient_number(std::string_view text);

// Rounds to the nearest integer, halves to even. Throws Overflow outside -32768..32767 and for
// a value that is not a number.
std::int16_t round_to_int16(double value);

// As round_to_int16, for 32 bits.
std::int32_t round_to_int32(double value);

// Blanks in front up to the width; a longer text is returned whole.
std::string right_aligned(std::string_view text, std::size_t width);

// Blanks behind up to the width; a longer text is returned whole.
std::string left_aligned(std::string_view text, std::size_t width);

// Fixed-point with that many decimals and at least one digit before the point. What is rounded is
// the decimal number that the value stands for to 15 places, so that 2.675 gives "2.68"; halves go
// away from zero, and a value that rounds to zero has no sign. Always a point, never a comma. Throws
// Overflow for a value that is infinite or no number.
std::string fixed_point(double value, int decimals);

// The number as it prints in plain form: up to 15 digits, no trailing zeros, no exponent for the
// magnitudes met here, no leading blank.
std::string plain_number(double value);

// Whole number with leading zeros to that many digits ("00", "00000"); a sign stands in front.
std::string zero_padded(double value, int digits);

// Upper-case hexadecimal without padding (0 gives "0").
std::string hex(unsigned value);

// The text without blanks at both ends (blanks only, as the field's settings files have them).
std::string_view trimmed(std::string_view text);

}  // namespace ampdesk
