#include "core/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace ardel {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(NumberTextVal, TakesTheLongestNumericPrefix) {
    const struct {
        const char* text;
        double expected;
    } cases[] = {
        {" 12abc", 12},
        {"\t-1.5e3x", -1500},
        {".5", 0.5},
        {"+3", 3},
        {"1e", 1},
        {"1e+", 1},
        {"1.2.3", 1.2},
        {"abc", 0},
        {"", 0},
        {"  7 ", 7},
        {"1D2", 100},
        {"2.5d-1", 0.25},
        {"1 2 3", 123},
        {" - 5", -5},
        {"1,000", 1},
        {"--5", 0},
        {".", 0},
        {"-", 0},
        {"5.e2", 500},
        {"1E 2", 100},
        {"&H1F", 31},
        {"&hff", 255},
        {"&O 10", 8},
        {"&17", 15},
        {"&HFFFF", -1},
        {"&H80F0", -32528},
        {"&H80F0&", 33008},
        {"&HFFFFFFFF", -1},
        {"&H7FFFFFFF", 2147483647},
    };
    for (const auto& c : cases) EXPECT_EQ(Val(c.text), c.expected) << '"' << c.text << '"';
}

TEST(NumberTextVal, OutOfRangeExponentsNeitherCrashNorWrap) {
    EXPECT_EQ(Val("1e400"), kInf);
    EXPECT_EQ(Val("-1e400"), -kInf);
    EXPECT_EQ(Val("1e99999999999999999999"), kInf);
    EXPECT_EQ(Val("1e-400"), 0.0);
    EXPECT_EQ(Val("0.0001e-99999999999"), 0.0);
    EXPECT_FALSE(std::signbit(Val("-0")));
}

TEST(NumberTextStr, SinglesPrintWithSevenDigitsAndTheRuntimeLayout) {
    const struct {
        float value;
        const char* str;
        const char* cstr;
    } cases[] = {
        {0.5f, " .5", "0.5"},
        {-0.5f, "-.5", "-0.5"},
        {0.32f, " .32", "0.32"},
        {5.0f, " 5", "5"},
        {1.83f, " 1.83", "1.83"},
        {-1.83f, "-1.83", "-1.83"},
        {1234567.0f, " 1234567", "1234567"},
        {12345678.0f, " 1.234568E+07", "1.234568E+07"},
        {9999999.5f, " 1E+07", "1E+07"},  // rounds up into E notation
        {0.0001f, " .0001", "0.0001"},
        {0.00001f, " 1E-05", "1E-05"},
        {-2.5e-7f, "-2.5E-07", "-2.5E-07"},
        {0.0f, " 0", "0"},
        {-0.0f, " 0", "0"},
        {3.0e38f, " 3E+38", "3E+38"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Str(c.value), c.str) << c.value;
        EXPECT_EQ(CStr(c.value), c.cstr) << c.value;
    }
}

TEST(NumberTextStr, DoublesPrintWithFifteenDigits) {
    const struct {
        double value;
        const char* str;
        const char* cstr;
    } cases[] = {
        {1.83, " 1.83", "1.83"},
        {0.1 + 0.2, " .3", "0.3"},
        {1.0 / 3.0, " .333333333333333", "0.333333333333333"},
        {123456789012345.0, " 123456789012345", "123456789012345"},
        {1e15, " 1E+15", "1E+15"},
        {-1.5e-5, "-1.5E-05", "-1.5E-05"},
        {1e300, " 1E+300", "1E+300"},
        {12345678.0, " 12345678", "12345678"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Str(c.value), c.str) << c.value;
        EXPECT_EQ(CStr(c.value), c.cstr) << c.value;
    }
}

TEST(NumberTextStr, IntegersAndNonFiniteValues) {
    EXPECT_EQ(Str(std::int64_t{42}), " 42");
    EXPECT_EQ(Str(std::int64_t{-3}), "-3");
    EXPECT_EQ(Str(0), " 0");
    EXPECT_EQ(Str(short{-32768}), "-32768");
    EXPECT_EQ(CStr(std::int64_t{7}), "7");
    EXPECT_EQ(CStr(-7), "-7");
    EXPECT_EQ(CStr(kInf), "1.#INF");
    EXPECT_EQ(Str(-kInf), "-1.#INF");
    EXPECT_EQ(CStr(kNaN), "-1.#IND");
}

TEST(NumberTextFormat, PatternsRoundHalfAwayFromZeroOnTheDecimalValue) {
    const struct {
        double value;
        const char* pattern;
        const char* expected;
    } cases[] = {
        {2.5, "0", "3"},
        {-2.5, "0", "-3"},
        {1.005, "0.00", "1.01"},
        {0.125, "0.00", "0.13"},
        {1234.5, "#,##0", "1,235"},
        {1234.0, "#,##0", "1,234"},
        {123.0, "#,##0", "123"},
        {-1234567.0, "#,##0", "-1,234,567"},
        {-123456.0, "#,##0", "-123,456"},
        {1234567.891, "#,##0.00", "1,234,567.89"},
        {999.999, "#,##0.00", "1,000.00"},
        {0.5, "#,###.00", ".50"},
        {1234.5, "#,###.00", "1,234.50"},
        {0.0, "###", ""},
        {12.6, "###", "13"},
        {5.0, "00", "05"},
        {123.0, "00", "123"},
        {0.0004, "0.000", "0.000"},
        {-0.001, "0.00", "-0.00"},
        {3.14159, "##0.000", "3.142"},
        {0.1, "#0.00", "0.10"},
        {1e-7, "0.00000000", "0.00000010"},
        {1.23456789, "0.00000", "1.23457"},
        {12.34, "#,##0.000", "12.340"},
        {5.0, "#.##", "5."},  // the point stays when no decimals are left
        {1.5, "0.0#", "1.5"},
        {1.256, "0.0#", "1.26"},
        {1234567.0, "0,", "1235"},
        {0.256, "0.0%", "25.6%"},
        {25.0, "\"x=\"0", "x=25"},
        {-1234.567, "Standard", "-1,234.57"},
        {0.0, "Standard", "0.00"},
        {1234.5, "Fixed", "1234.50"},
        {0.5, "General Number", "0.5"},
        {0.5, "NoSuchFormat", "0.5"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Format(c.value, c.pattern), c.expected) << c.value << " \"" << c.pattern << '"';
    }
}

TEST(NumberTextFormat, SinglesUseTheirSevenDigitValue) {
    // The float of 2.675 is 2.67499995..., but its 7-digit value is 2.675.
    EXPECT_EQ(Format(2.675f, "0.00"), "2.68");
    EXPECT_EQ(Format(1.83f, "0.0000000000"), "1.8300000000");
    EXPECT_EQ(Format(2.675, "0.00"), "2.68");
    EXPECT_EQ(Format(std::int64_t{1234567}, "#,##0"), "1,234,567");
    EXPECT_EQ(Format(-5, "00"), "-05");
}

TEST(NumberTextFormat, ExtremeValuesTerminate) {
    const std::string huge = Format(1e300, "#,##0");
    EXPECT_EQ(huge.size(), 301u + 100u);
    EXPECT_EQ(huge.substr(0, 6), "1,000,");
    EXPECT_EQ(Format(1e-300, "0.00"), "0.00");
    EXPECT_EQ(Format(kInf, "0.00"), "1.#INF");
    EXPECT_EQ(Format(kNaN, "Standard"), "-1.#IND");
}

TEST(NumberTextConvert, RoundsHalfToEvenAndReportsOverflow) {
    EXPECT_EQ(RoundHalfEven(2.5), 2.0);
    EXPECT_EQ(RoundHalfEven(3.5), 4.0);
    EXPECT_EQ(RoundHalfEven(-2.5), -2.0);
    EXPECT_EQ(RoundHalfEven(-3.5), -4.0);
    EXPECT_EQ(RoundHalfEven(2.4999999999999996), 2.0);
    EXPECT_EQ(RoundHalfEven(-0.7), -1.0);
    EXPECT_EQ(RoundHalfEven(4503599627370497.0), 4503599627370497.0);

    EXPECT_EQ(ToInt16(32767.4), 32767);
    EXPECT_EQ(ToInt16(32767.5), std::nullopt);
    EXPECT_EQ(ToInt16(-32768.5), -32768);
    EXPECT_EQ(ToInt16(-32769.0), std::nullopt);
    EXPECT_EQ(ToInt16(0.5), 0);
    EXPECT_EQ(ToInt16(1.5), 2);
    EXPECT_EQ(ToInt16(kNaN), std::nullopt);
    EXPECT_EQ(ToInt16(kInf), std::nullopt);

    EXPECT_EQ(ToInt32(2147483647.4), 2147483647);
    EXPECT_EQ(ToInt32(2147483647.5), std::nullopt);
    EXPECT_EQ(ToInt32(-2147483648.5), -2147483647 - 1);
    EXPECT_EQ(ToInt32(-kInf), std::nullopt);

    EXPECT_EQ(ToUInt8(255.4), 255);
    EXPECT_EQ(ToUInt8(255.5), std::nullopt);
    EXPECT_EQ(ToUInt8(-0.5), 0);
    EXPECT_EQ(ToUInt8(-0.6), std::nullopt);

    EXPECT_EQ(ToInt32Clamped(kNaN), 0);
    EXPECT_EQ(ToInt32Clamped(1e12), 2147483647);
    EXPECT_EQ(ToInt32Clamped(-kInf), -2147483647 - 1);
    EXPECT_EQ(ToInt32Clamped(-2.5), -2);
}

TEST(NumberTextConvert, IntFloorsAndFixTruncates) {
    EXPECT_EQ(Int(-1.5), -2.0);
    EXPECT_EQ(Fix(-1.5), -1.0);
    EXPECT_EQ(Int(1.9), 1.0);
    EXPECT_EQ(Fix(1.9), 1.0);
}

TEST(NumberTextText, TrimsOnlyBlanksAndCutsAtNul) {
    EXPECT_EQ(Trim("  a b  "), "a b");
    EXPECT_EQ(Trim("\ta\t"), "\ta\t");
    EXPECT_EQ(Trim("   "), "");
    EXPECT_EQ(RTrim("  a  "), "  a");
    EXPECT_EQ(TrimNul(std::string_view("abc\0def", 7)), "abc");
    EXPECT_EQ(TrimNul("abc"), "abc");
    EXPECT_TRUE(Contains("Superimpose", "imp"));
    EXPECT_FALSE(Contains("Superimpose", "Imp"));
}

}  // namespace
}  // namespace ardel
