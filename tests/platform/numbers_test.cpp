// Numbers read leniently and printed the way an operator expects.
#include "platform/numbers.h"

#include <gtest/gtest.h>

#include <cmath>

#include "platform/run_time_error.h"

namespace ampdesk {
namespace {

// Fault: a line of a settings file or a typed address reads as another number.
TEST(Numbers, LenientNumberReadsTheLeadingNumber) {
    const std::pair<const char*, double> table[] = {
        {" 6", 6},      {"\t6\r", 6},      {"", 0},     {"COM3:", 0},  {"3:", 3},     {"-4.5", -4.5},
        {"+7", 7},      {"- 4 . 5", -4.5}, {"1 2", 12}, {".5", 0.5},   {"5.", 5},     {"1.2.3", 1.2},
        {"5-3", 5},     {"+-5", 0},        {"-", 0},    {".", 0},      {"1e3", 1000}, {"1E-2", 0.01},
        {"1d2", 100},   {"1D2", 100},      {"1e", 1},   {"1e+", 1},    {"e5", 0},     {"1e2e3", 100},
        {"1e2.5", 100}, {"0x10", 0},       {"007", 7},  {"12abc", 12}, {"inf", 0},    {"1e-999", 0},
        {"\xB2", 0},    {"1,5", 1},
    };
    for (const auto& [text, value] : table)
        EXPECT_DOUBLE_EQ(lenient_number(text), value) << '"' << text << '"';
    for (const std::string& huge : {std::string("1e999"), std::string(1000, '9')})
        EXPECT_THROW(round_to_int32(lenient_number(huge)), RunTimeError) << "reads as a small one";
}

// Fault: a half goes the wrong way, or a value past the range wraps around.
TEST(Numbers, RoundingTakesHalvesToEvenWithinItsRange) {
    const std::pair<double, int> table[] = {{0.5, 0},    {1.5, 2},         {2.5, 2},
                                            {-0.5, 0},   {-1.5, -2},       {2.51, 3},
                                            {-2.49, -2}, {32767.4, 32767}, {-32768.5, -32768}};
    for (const auto& [value, rounded] : table) EXPECT_EQ(round_to_int16(value), rounded) << value;
    for (const double value : {32767.5, -32768.6, 1e300, HUGE_VAL, -HUGE_VAL, std::nan("")})
        EXPECT_THROW(round_to_int16(value), RunTimeError) << value;
    EXPECT_EQ(round_to_int32(2147483647.4), 2147483647);
    EXPECT_THROW(round_to_int32(2147483647.5), RunTimeError);
}

// Fault: a display shows 2.67 for 2.675 or "-0.00".
TEST(Numbers, FixedPointRoundsTheDecimalTextThatIsMeant) {
    const std::tuple<double, int, const char*> table[] = {
        {0, 2, "0.00"},         {0.125, 2, "0.13"},
        {2.675, 2, "2.68"},     {1.005, 2, "1.01"},
        {-2.675, 2, "-2.68"},   {2.6749, 2, "2.67"},
        {-0.004, 2, "0.00"},    {-0.005, 2, "-0.01"},
        {9.995, 2, "10.00"},    {0.05, 1, "0.1"},
        {0.0005, 2, "0.00"},    {12, 1, "12.0"},
        {0.5, 0, "1"},          {0.4, 0, "0"},
        {1.1 * 1.5, 2, "1.65"}, {1e20, 1, "100000000000000000000.0"}};
    for (const auto& [value, decimals, text] : table) EXPECT_EQ(fixed_point(value, decimals), text) << value;
    EXPECT_THROW(fixed_point(std::nan(""), 1), RunTimeError);
}

// Fault: a value on a display or in a file gains digits, zeros or an exponent; a column moves because a text
// was cut or padded on the wrong side.
TEST(Numbers, PatternsKeepTheirColumns) {
    EXPECT_EQ(plain_number(-0.0) + "," + plain_number(-12) + "," + plain_number(0.1 + 0.2), "0,-12,0.3");
    EXPECT_EQ(plain_number(100000) + "," + plain_number(0.001) + "," + plain_number(1.0 / 3),
              "100000,0.001,0.333333333333333");
    EXPECT_EQ(right_aligned("1.5", 5) + right_aligned("123456", 5), "  1.5123456");
    EXPECT_EQ(left_aligned("ab", 4) + left_aligned("abcde", 4) + ".", "ab  abcde.");
    EXPECT_EQ(zero_padded(7, 2) + zero_padded(123, 2) + zero_padded(-3, 5), "07123-00003");
    EXPECT_EQ(zero_padded(-0.4, 2) + zero_padded(6.5, 2) + zero_padded(9.5, 2), "000710");
    EXPECT_EQ(hex(0) + "," + hex(0xA94), "0,A94");
    EXPECT_EQ(trimmed("  a b "), "a b");
    EXPECT_EQ(trimmed("   "), "");
    EXPECT_EQ(trimmed("\ta"), "\ta");
}

}  // namespace
}  // namespace ampdesk
