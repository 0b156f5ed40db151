#include "notation/LeadingNumbers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

TEST(LeadingNumbersTest, TheCLibrarysRules) {
    EXPECT_EQ(leadingDouble("  +35.5e1x").value, 355.0);
    EXPECT_EQ(leadingDouble("  +35.5e1x").length, 9u);
    EXPECT_EQ(leadingDouble("0x1.8p1").value, 3.0);
    EXPECT_EQ(leadingDouble("-inf").value, -INFINITY);
    EXPECT_TRUE(std::isnan(leadingDouble("nan(12)").value));
    EXPECT_EQ(leadingDouble("abc").length, 0u);
    EXPECT_EQ(leadingDouble(".5").value, 0.5);
    EXPECT_EQ(leadingDouble("5.").length, 2u);
    EXPECT_EQ(leadingDouble("1e999").value, INFINITY);
    EXPECT_EQ(leadingLong("0x7fffffff").value(), 0x7FFFFFFF);
    EXPECT_EQ(leadingLong("4294967296").value(), 0x7FFFFFFF);
    EXPECT_EQ(leadingLong("-4294967296").value(), INT32_MIN);
    EXPECT_EQ(leadingLong("0x").value(), 0);
    EXPECT_EQ(leadingLong("08").value(), 0);
    EXPECT_FALSE(leadingLong("x1").has_value());
    EXPECT_FALSE(leadingLong("").has_value());
}

// A host may have set a locale that writes a decimal comma, in which the C
// library reads "1.5" as 1; the texts are read the same in any locale. The
// locale is made for the test from the system's sources (package locales).
TEST(LeadingNumbersTest, TheLocaleDoesNotMatter) {
    const std::filesystem::path dir = std::filesystem::temp_directory_path() / "tendrane-locale";
    std::filesystem::create_directories(dir);
    const std::string make = "localedef -i de_DE -f UTF-8 " + (dir / "de_DE.UTF-8").string() + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(make.c_str()) & 0xFF00, 0) << make;
    setenv("LOCPATH", dir.c_str(), 1);
    ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
    const double byTheLibrary = std::strtod("1.5", nullptr);
    const LeadingNumber ours = leadingDouble("1.5");
    const LeadingNumber comma = leadingDouble("1,5");
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    EXPECT_EQ(byTheLibrary, 1.0);  // the locale is in force
    EXPECT_EQ(ours.value, 1.5);
    EXPECT_EQ(ours.length, 3u);
    EXPECT_EQ(comma.length, 1u);
}

TEST(LeadingNumbersTest, UnsignedLongsWrapNegativesAndSaturate) {
    EXPECT_EQ(leadingUnsignedLong("0xFF8CE02C").value(), 0xFF8CE02Cu);
    EXPECT_EQ(leadingUnsignedLong("-1").value(), 0xFFFFFFFFu);
    EXPECT_EQ(leadingUnsignedLong("99999999999").value(), 0xFFFFFFFFu);
    EXPECT_EQ(leadingUnsignedLong("017").value(), 15u);
    EXPECT_FALSE(leadingUnsignedLong("red").has_value());
}
