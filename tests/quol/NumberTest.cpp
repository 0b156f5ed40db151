#include "quol/Number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using Quol::numberToString;
using Quol::strictNumber;

namespace {

std::string text(double v, int precision = 14, bool trim = true) { return numberToString(v, precision, trim).str(); }

}  // namespace

TEST(NumberTest, WholeNumbersInIntegerRangeAreWrittenAsIntegers) {
    EXPECT_EQ(text(0.0), "0");
    EXPECT_EQ(text(-0.0), "0");
    EXPECT_EQ(text(42), "42");
    EXPECT_EQ(text(-2147483648.0), "-2147483648");
    EXPECT_EQ(text(2147483647.0), "2147483647");
    EXPECT_EQ(text(2147483648.0), "2147483648");
    EXPECT_EQ(Quol::integerToString(-5).str(), "-5");
}

TEST(NumberTest, FourteenDigitExamples) {
    EXPECT_EQ(text(0.000000000000000000000001), "1e-24");
    EXPECT_EQ(text(999999999999999.0), "1e+15");
    EXPECT_EQ(text(0.09999999999999995), "0.1");
    EXPECT_EQ(text(1.23456789012346e10), "12345678901.235");
    EXPECT_EQ(text(1.234567890123444e100), "1.234567890123e+100");
    EXPECT_EQ(text(1.234567890123464e-10), "1.2345678901235e-10");
    EXPECT_EQ(text(1.0e-301), "0");
    EXPECT_EQ(text(-1.0e-301), "0");
    EXPECT_EQ(text(1.0e-250), "1e-250");
    EXPECT_EQ(text(9.99999999999995), "10");
    EXPECT_EQ(text(std::sqrt(2.0)), "1.4142135623731");
    EXPECT_EQ(text(1.00000000000006), "1.0000000000001");
}

TEST(NumberTest, OtherPrecisionsWithoutTrimming) {
    EXPECT_EQ(text(1, 5, false), "1.0000");
    EXPECT_EQ(text(0.009, 1, false), "0.009");
    EXPECT_EQ(text(0.0099, 1, false), "0.01");
    EXPECT_EQ(text(1.1, 1, false), "1");
    EXPECT_EQ(text(10.1, 1, false), "1e+1");
    EXPECT_EQ(text(12345, 5, false), "12345");
    EXPECT_EQ(text(123456, 5, false), "1.2346e+5");
    EXPECT_EQ(text(0.00123456, 5, false), "0.0012346");
    EXPECT_EQ(text(0.000000123456, 5, false), "1.2346e-7");
    EXPECT_EQ(text(99999.6, 5, false), "100000");
}

TEST(NumberTest, InfinitiesAndNotANumberHaveAText) {
    EXPECT_EQ(text(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(text(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(text(std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_FALSE(strictNumber("inf"));
}

TEST(NumberTest, StrictNumbers) {
    for (const char* bad : {".", "-", "0.", ".0", "00", "01", "1.", ".1", "e0", "1.1e", "1.1e+", "1.1e-", "1.1eX",
                            "", " 1", "+1", "0x10", "1 ", "--1", "1e5x"})
        EXPECT_FALSE(strictNumber(bad)) << bad;
    double v;
    ASSERT_TRUE(strictNumber("0e0", v));
    EXPECT_EQ(v, 0.0);
    ASSERT_TRUE(strictNumber("0.0e0", v));
    EXPECT_EQ(v, 0.0);
    ASSERT_TRUE(strictNumber("1.1e+1", v));
    EXPECT_DOUBLE_EQ(v, 11.0);
    ASSERT_TRUE(strictNumber("-1.1e-1", v));
    EXPECT_DOUBLE_EQ(v, -0.11);
    ASSERT_TRUE(strictNumber("-0", v));
    EXPECT_TRUE(std::signbit(v));
}

TEST(NumberTest, ParseNumberStopsWhereTheNumberEnds) {
    std::size_t pos = 0;
    EXPECT_EQ(Quol::parseNumber("12ab", pos), 12.0);
    EXPECT_EQ(pos, 2u);
    pos = 0;
    EXPECT_EQ(Quol::parseNumber("abc", pos), 0.0);
    EXPECT_EQ(pos, 0u);
    // A sign moves the position even when no digit follows.
    pos = 0;
    EXPECT_EQ(Quol::parseNumber("-x", pos), 0.0);
    EXPECT_EQ(pos, 1u);
    // An exponent without digits leaves the position behind the 'e' or sign.
    pos = 0;
    EXPECT_EQ(Quol::parseNumber("2e+x", pos), 2.0);
    EXPECT_EQ(pos, 3u);
    pos = 0;
    EXPECT_EQ(Quol::parseNumber("2e", pos), 2.0);
    EXPECT_EQ(pos, 1u);
    pos = 0;
    EXPECT_EQ(Quol::parseNumber("007", pos), 0.0);
    EXPECT_EQ(pos, 1u);
}
