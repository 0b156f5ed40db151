#include "notation/Escape.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/Exceptions.h"

using notation::escape;
using notation::unescape;

namespace {

std::string failureOf(const std::string& text) {
    try {
        unescape(text);
    } catch (const Exception& e) {
        return e.what();
    }
    return "no failure";
}

}  // namespace

TEST(EscapeTest, PlainTextGoesBetweenSingleQuotesAsItStands) {
    EXPECT_EQ(escape("Init"), "'Init'");
    EXPECT_EQ(escape(""), "''");
    EXPECT_EQ(escape("C:\\Patches\\a \"b\".tdrn"), "'C:\\Patches\\a \"b\".tdrn'");
}

TEST(EscapeTest, SpecialBytesSwitchToDoubleQuotesWithBackslashForms) {
    EXPECT_EQ(escape("it's"), "\"it's\"");  // a single quote passes inside double quotes
    EXPECT_EQ(escape("a\nb"), "\"a\\nb\"");
    EXPECT_EQ(escape(std::string("\\\"\a\b\f\n\r\t\v", 9) + "'"), "\"\\\\\\\"\\a\\b\\f\\n\\r\\t\\v'\"");
    EXPECT_EQ(escape(std::string("\x01\x7f\xff", 3)), "\"\\x01\\x7f\\xff\"");
    EXPECT_EQ(escape(std::string("\0", 1)), "\"\\x00\"");
}

TEST(EscapeTest, UnescapeReadsBothQuoteForms) {
    EXPECT_EQ(unescape("'a\\b\"c'"), "a\\b\"c");
    EXPECT_EQ(unescape("\"a\\tb\\\\c\\\"d\\'e\""), "a\tb\\c\"d'e");
    EXPECT_EQ(unescape("\"\\a\\b\\f\\n\\r\\t\\v\""), "\a\b\f\n\r\t\v");
}

TEST(EscapeTest, NumericEscapesKeepTheLowByte) {
    EXPECT_EQ(unescape("\"\\x41\\x4a2\""), "AJ2");        // at most two hex digits
    EXPECT_EQ(unescape("\"\\x\""), std::string("\0", 1));  // no digit at all is a NUL
    EXPECT_EQ(unescape("\"\\u0141\""), "A");              // low byte of up to four digits
    EXPECT_EQ(unescape("\"\\u12345\""), "45");            // 0x1234 -> 0x34 '4', then '5'
    EXPECT_EQ(unescape("\"\\10x\""), "\nx");              // decimal, as many as stand there
    EXPECT_EQ(unescape("\"\\321\""), "A");                // 321 & 0xFF == 65
}

TEST(EscapeTest, BackslashBeforeAnyOtherByteGivesNulThenTheByte) {
    EXPECT_EQ(unescape("\"\\q\""), std::string("\0q", 2));
}

TEST(EscapeTest, TextAfterTheLiteralIsIgnored) {
    EXPECT_EQ(unescape("'ab' tail"), "ab");
    EXPECT_EQ(unescape("\"ab\"cd\""), "ab");
}

TEST(EscapeTest, FailuresCarryTheirMessages) {
    EXPECT_EQ(failureOf("abc"), "Invalid string literal: 'abc'");
    EXPECT_EQ(failureOf(""), "Invalid string literal: ''");
    EXPECT_EQ(failureOf("'abc"), "Unterminated string");
    EXPECT_EQ(failureOf("\"abc"), "Unterminated string");
    EXPECT_EQ(failureOf("\"abc\\\""), "Unterminated string");
    EXPECT_EQ(failureOf("\"abc\\"), "Unterminated string");
}

TEST(EscapeTest, EveryByteStringSurvivesEscapeAndUnescape) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    EXPECT_EQ(unescape(escape(all)), all);
    for (int i = 0; i < 256; ++i) {
        std::string one(1, static_cast<char>(i));
        EXPECT_EQ(unescape(escape(one)), one) << i;
    }
}

TEST(EscapeTest, ReadStringLiteralLeavesTheCursorBehindTheClosingQuote) {
    std::string text = "x = \"a\\\"b\" + 'c'";
    std::size_t pos = 4;
    EXPECT_EQ(notation::readStringLiteral(text, pos), "a\"b");
    EXPECT_EQ(pos, 10u);
    pos = 13;
    EXPECT_EQ(notation::readStringLiteral(text, pos), "c");
    EXPECT_EQ(pos, text.size());
}
