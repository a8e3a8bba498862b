// Numbers read leniently and printed the way an operator expects.
#include "platform/numbers.h"

#include <gtest/gtest.h>

#include <cmath>

#include "platform/run_time_error.h"

namespace ampdesk {
namespace {

// Fault: a line of a settings file or a typed address reads as another number.
TEST(Numbers, LenientNumberReadsTheLeadingNumber) {
    const struct {
        const char* text;
        double value;
    } cases[] = {
        {"6", 6},       {" 6", 6},      {"\t6 ", 6},       {"6\r", 6}, {"", 0},       {"COM3:", 0},
        {"3:", 3},      {"-4.5", -4.5}, {"- 4 . 5", -4.5}, {"+7", 7},  {"1 2", 12},   {".5", 0.5},
        {"5.", 5},      {"1.2.3", 1.2}, {"5-3", 5},        {"+-5", 0}, {"-", 0},      {".", 0},
        {"1e3", 1000},  {"1E-2", 0.01}, {"1d2", 100},      {"1e", 1},  {"1e+", 1},    {"e5", 0},
        {"1e2e3", 100}, {"1e2.5", 100}, {"0x10", 0},       {"007", 7}, {"12abc", 12}, {"inf", 0},
        {"nan", 0},     {"1e-999", 0},  {"\xB2", 0},       {"1,5", 1},
    };
    for (const auto& c : cases) EXPECT_DOUBLE_EQ(lenient_number(c.text), c.value) << '"' << c.text << '"';
    EXPECT_EQ(lenient_number("-" + std::string(1000, '0') + "8"), -8);
    EXPECT_THROW(round_to_int32(lenient_number("1e999")), RunTimeError)
        << "a huge number reads as a small one";
    EXPECT_THROW(round_to_int32(lenient_number(std::string(1000, '9'))), RunTimeError);
}

// Fault: a half goes the wrong way, or a value past the range wraps around.
TEST(Numbers, RoundToInt16TakesHalvesToEvenWithinItsRange) {
    const struct {
        double value;
        int rounded;
    } cases[] = {{0.5, 0},  {1.5, 2},         {2.5, 2},         {-0.5, 0},          {-1.5, -2},
                 {2.51, 3}, {32767.4, 32767}, {-32768, -32768}, {-32768.5, -32768}, {-2.49, -2}};
    for (const auto& c : cases) EXPECT_EQ(round_to_int16(c.value), c.rounded) << c.value;
    for (const double value : {32767.5, -32768.6, 1e300, HUGE_VAL, -HUGE_VAL, std::nan("")})
        EXPECT_THROW(round_to_int16(value), RunTimeError) << value;
    EXPECT_EQ(round_to_int32(2147483647.4), 2147483647);
    EXPECT_THROW(round_to_int32(2147483647.5), RunTimeError);
}

// Fault: a display shows 2.67 for 2.675 or "-0.00".
TEST(Numbers, FixedPointRoundsTheDecimalTextThatIsMeant) {
    const struct {
        double value;
        int decimals;
        const char* text;
    } cases[] = {{0, 2, "0.00"},      {0.125, 2, "0.13"},     {2.675, 2, "2.68"},
                 {1.005, 2, "1.01"},  {-2.675, 2, "-2.68"},   {0.35, 1, "0.4"},
                 {2.6749, 2, "2.67"}, {-0.004, 2, "0.00"},    {-0.005, 2, "-0.01"},
                 {9.995, 2, "10.00"}, {0.05, 1, "0.1"},       {0.0005, 2, "0.00"},
                 {12, 1, "12.0"},     {0.5, 0, "1"},          {99.5, 0, "100"},
                 {0.4, 0, "0"},       {1.1 * 1.5, 2, "1.65"}, {1e20, 1, "100000000000000000000.0"}};
    for (const auto& c : cases) EXPECT_EQ(fixed_point(c.value, c.decimals), c.text) << c.value;
    EXPECT_THROW(fixed_point(std::nan(""), 1), RunTimeError);
}

// Fault: a value on a display or in a file gains digits, zeros or an exponent.
TEST(Numbers, PlainNumberPrintsWhatIsMeant) {
    const struct {
        double value;
        const char* text;
    } cases[] = {{-0.0, "0"},        {-12, "-12"},     {0.1 + 0.2, "0.3"},
                 {100000, "100000"}, {0.001, "0.001"}, {1.0 / 3, "0.333333333333333"}};
    for (const auto& c : cases) EXPECT_EQ(plain_number(c.value), c.text);
}

// Fault: a column moves because a text was cut or padded on the wrong side.
TEST(Numbers, PatternsKeepTheirColumns) {
    EXPECT_EQ(right_aligned("1.5", 5) + right_aligned("123456", 5), "  1.5123456");
    EXPECT_EQ(left_aligned("ab", 4) + left_aligned("abcde", 4) + ".", "ab  abcde.");
    EXPECT_EQ(zero_padded(7, 2) + zero_padded(123, 2) + zero_padded(-3, 5), "07123-00003");
    EXPECT_EQ(zero_padded(-0.4, 2) + zero_padded(6.5, 2) + zero_padded(9.5, 2), "000710");
    EXPECT_EQ(hex(0) + "," + hex(660), "0,294");
    EXPECT_EQ(trimmed("  a b "), "a b");
    EXPECT_EQ(trimmed("   "), "");
    EXPECT_EQ(trimmed("\ta"), "\ta");
}

}  // namespace
}  // namespace ampdesk
