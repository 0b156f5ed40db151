#include "notation/NotationReaders.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "platform/Exceptions.h"

using namespace notation;

namespace {

std::string numberFailure(const std::string& text, std::vector<NumberSymbol> symbols = {}) {
    try {
        readNumber(text, 0.0f, symbols);
    } catch (const Exception& e) {
        return e.what();
    }
    return "no failure";
}

}  // namespace

TEST(NotationReadersTest, NumbersWithUnitWordsReadTheirNumber) {
    EXPECT_EQ(readNumber("11 pixels", 0), 11.0f);
    EXPECT_EQ(readNumber("15 fps", 0), 15.0f);
    EXPECT_EQ(readNumber("15.0 secs", 0), 15.0f);
    EXPECT_EQ(readNumber("92.0 px", 0), 92.0f);
    EXPECT_EQ(readNumber("10%", 0), 10.0f);
    EXPECT_EQ(readNumber("1.5e2", 0), 150.0f);
    EXPECT_EQ(readNumber(".25", 0), 0.25f);
    EXPECT_EQ(readNumber("2e", 0), 2.0f);  // an exponent needs a digit
    EXPECT_EQ(readNumber("1e300", 0), INFINITY);
    EXPECT_EQ(readNumber("1e-300", 0), 0.0f);
}

TEST(NotationReadersTest, EmptyTextLeavesTheDefault) {
    EXPECT_EQ(readNumber("", 7.5f), 7.5f);
    EXPECT_EQ(readNumber("  \t", 7.5f), 7.5f);
    EXPECT_EQ(readInt("", 42), 42);
}

TEST(NotationReadersTest, ArithmeticPrecedenceAndAssociativity) {
    EXPECT_EQ(readNumber("1 + 2 * 3", 0), 7.0f);
    EXPECT_EQ(readNumber("(1 + 2) * 3", 0), 9.0f);
    EXPECT_EQ(readNumber("10 - 4 - 3", 0), 3.0f);
    EXPECT_EQ(readNumber("100 / 10 / 5", 0), 2.0f);
    EXPECT_EQ(readNumber("-2 * 3", 0), -6.0f);
    EXPECT_EQ(readNumber("2 * -3", 0), -6.0f);
    EXPECT_EQ(readNumber("- - 4", 0), 4.0f);
    EXPECT_EQ(readNumber("-(1 + 2)", 0), -3.0f);
    EXPECT_EQ(readNumber("1 - -1", 0), 2.0f);
}

TEST(NotationReadersTest, DollarIsTheDefault) {
    EXPECT_EQ(readNumber("$", 12), 12.0f);
    EXPECT_EQ(readNumber("-$*3", 4), -12.0f);
    EXPECT_EQ(readNumber("$*1.5", 4), 6.0f);
    EXPECT_EQ(readNumber("$/2+30", 420), 240.0f);
}

TEST(NotationReadersTest, SymbolsComeFromTheContext) {
    std::vector<NumberSymbol> s = {{"w", 384}, {"h", 512}, {"r", 400}};
    EXPECT_EQ(readNumber("r - 20", 0, s), 380.0f);
    EXPECT_EQ(readNumber("w/2 + h/4", 0, s), 320.0f);
}

TEST(NotationReadersTest, RemainingTextIsIgnored) {
    EXPECT_EQ(readNumber("3 4", 0), 3.0f);
    EXPECT_EQ(readNumber("2 ) x", 0), 2.0f);
    EXPECT_EQ(readNumber("0x10", 0), 0.0f);  // no hexadecimal here
}

TEST(NotationReadersTest, FailureMessages) {
    EXPECT_EQ(numberFailure("1 +"), "Unexpected end of string");
    EXPECT_EQ(numberFailure("-"), "Unexpected end of string");
    EXPECT_EQ(numberFailure("2 * "), "Unexpected end of string");
    EXPECT_EQ(numberFailure("(1 + 2"), "Expected ')'");
    EXPECT_EQ(numberFailure("("), "Expected ')'");
    EXPECT_EQ(numberFailure("."), "Invalid number: '.'");
    EXPECT_EQ(numberFailure(".e3 px"), "Invalid number: '.e3 px'");
    EXPECT_EQ(numberFailure("width"), "Undefined symbol: 'width'");
    EXPECT_EQ(numberFailure("+5"), "Undefined symbol: ''");  // no unary plus
    EXPECT_EQ(numberFailure("l + 2"), "Undefined symbol: 'l'");
}

TEST(NotationReadersTest, IntegersComputeInIntegers) {
    EXPECT_EQ(readInt("7 / 2", 0), 3);
    EXPECT_EQ(readInt("2.9", 0), 2);
    EXPECT_EQ(readInt("-7 / 2", 0), -3);
    EXPECT_EQ(readInt("1 / 0", 5), 0);
    EXPECT_EQ(readInt("30 fps", 0), 30);
    EXPECT_EQ(readInt("$ * 2", 21), 42);
    EXPECT_EQ(readInt("1e20", 0), 2147483647);
}

TEST(NotationReadersTest, Booleans) {
    EXPECT_TRUE(readBool("true"));
    EXPECT_FALSE(readBool("false"));
    EXPECT_TRUE(readBool("'true'"));
    EXPECT_FALSE(readBool("\"false\""));
    try {
        readBool("yes");
        FAIL() << "no failure";
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Invalid boolean: 'yes'");
    }
    EXPECT_THROW(readBool(""), Exception);
    EXPECT_THROW(readBool("True"), Exception);
}

TEST(NotationReadersTest, StringsUnescapeOnlyWhenQuoted) {
    EXPECT_EQ(readString("\"a\\nb\""), "a\nb");
    EXPECT_EQ(readString("'c:\\x'"), "c:\\x");
    EXPECT_EQ(readString("plain \\n text"), "plain \\n text");
    EXPECT_EQ(readString(""), "");
    EXPECT_THROW(readString("\"open"), Exception);
}

TEST(NotationReadersTest, ColoursAreHexadecimalWords) {
    EXPECT_EQ(readColor("0xC0404040"), 0xC0404040u);
    EXPECT_EQ(readColor("0xFFFFFF"), 0x00FFFFFFu);
    EXPECT_EQ(readColor("0x000000"), 0u);
    EXPECT_EQ(readColor("0xff000000"), 0xFF000000u);
    EXPECT_EQ(readColor("255"), 255u);
    EXPECT_THROW(readColor("red"), Exception);
    EXPECT_THROW(readColor("0x"), Exception);
}

TEST(NotationReadersTest, RectUsesParentSymbolsAndDollar) {
    RectF parent{5, 20, 300, 420};
    RectF r = readRect("{ $, h - 10, $, 10 }", parent);
    EXPECT_EQ(r.left, 5.0f);
    EXPECT_EQ(r.top, 410.0f);
    EXPECT_EQ(r.width, 300.0f);
    EXPECT_EQ(r.height, 10.0f);

    RectF corner = readRect("{ r - 20, t + 4, 16, 16 }", parent);
    EXPECT_EQ(corner.left, 285.0f);
    EXPECT_EQ(corner.top, 24.0f);

    RectF inset = readRect("{ l + 2, t + 2, w - 4, h - 4 }", parent);
    EXPECT_EQ(inset.left, 7.0f);
    EXPECT_EQ(inset.top, 22.0f);
    EXPECT_EQ(inset.width, 296.0f);
    EXPECT_EQ(inset.height, 416.0f);
    EXPECT_EQ(inset.bottom(), 438.0f);

    RectF half = readRect("{ 0, 0, $, $/2+30 }", RectF{0, 0, 384, 512});
    EXPECT_EQ(half.width, 384.0f);
    EXPECT_EQ(half.height, 286.0f);
}

TEST(NotationReadersTest, RectWithMissingPartsKeepsTheParents) {
    RectF parent{1, 2, 3, 4};
    RectF r = readRect("{ 10 }", parent);
    EXPECT_EQ(r.left, 10.0f);
    EXPECT_EQ(r.top, 2.0f);
    EXPECT_EQ(r.width, 3.0f);
    EXPECT_EQ(r.height, 4.0f);
    RectF same = readRect("", parent);
    EXPECT_EQ(same.width, 3.0f);
}

TEST(NotationReadersTest, Points) {
    PointF p = readPoint("{ 3, $ * 2 }", PointF{1, 4});
    EXPECT_EQ(p.x, 3.0f);
    EXPECT_EQ(p.y, 8.0f);
    RectF parent{0, 0, 100, 50};
    PointF c = readPoint("{ w / 2, h / 2 }", {}, &parent);
    EXPECT_EQ(c.x, 50.0f);
    EXPECT_EQ(c.y, 25.0f);
    EXPECT_THROW(readPoint("{ w, 0 }"), Exception);
}
