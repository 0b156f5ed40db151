#include "notation/Notation.h"

#include <gtest/gtest.h>

#include <string>

using notation::Array;
using notation::Object;
using notation::parseArray;
using notation::parseObject;

TEST(NotationTest, NestedObjectStaysRaw) {
    Object o = parseObject("a: 1\nb: { c: 2 }\n");
    EXPECT_EQ(o.size(), 2u);
    EXPECT_EQ(o.get("a"), "1");
    EXPECT_EQ(o.get("b"), "{ c: 2 }");
    Object inner = parseObject(o.get("b"));
    EXPECT_EQ(inner.get("c"), "2");
}

TEST(NotationTest, QuotedValuesKeepQuotesAndInnerCommas) {
    Object o = parseObject("x: \"a,b\", y: 'c'");
    EXPECT_EQ(o.get("x"), "\"a,b\"");
    EXPECT_EQ(o.get("y"), "'c'");
    Object e = parseObject("x: \"say \\\"hi\\\", then }\" y: 2");
    EXPECT_EQ(e.get("x"), "\"say \\\"hi\\\", then }\"");
    EXPECT_EQ(e.get("y"), "2");
}

TEST(NotationTest, ArraysCountTheirElements) {
    Array a = parseArray("{ 0, 20 }");
    ASSERT_EQ(a.size(), 2u);
    EXPECT_EQ(a[0], "0");
    EXPECT_EQ(a[1], "20");
    EXPECT_TRUE(parseArray("{}").empty());
    EXPECT_TRUE(parseArray("{ }").empty());
    EXPECT_TRUE(parseArray("").empty());
    Array b = parseArray("1; 'two'\n{ three }\n4,");
    ASSERT_EQ(b.size(), 4u);
    EXPECT_EQ(b[1], "'two'");
    EXPECT_EQ(b[2], "{ three }");
    EXPECT_EQ(b[3], "4");
}

TEST(NotationTest, BlockCommentsNest) {
    Object o = parseObject("/* a /* b */ c */ k: 1");
    ASSERT_EQ(o.size(), 1u);
    EXPECT_EQ(o.get("k"), "1");
}

TEST(NotationTest, LineCommentsAreSkippedBetweenEntries) {
    Object o = parseObject("// heading\na: 1 // one\n// b: 2\nc: 3");
    ASSERT_EQ(o.size(), 2u);
    EXPECT_EQ(o.get("a"), "1");
    EXPECT_EQ(o.get("c"), "3");
}

TEST(NotationTest, BareValueEndsBeforeACommentOrAfterTheComma) {
    Object o = parseObject("updateFreq: 30, // fps\nfineRatio: 10% // x\nr: 2 /* y */");
    EXPECT_EQ(o.get("updateFreq"), "30");
    EXPECT_EQ(o.get("fineRatio"), "10%");
    EXPECT_EQ(o.get("r"), "2");
}

TEST(NotationTest, TextEndsAtByte26AndAtNul) {
    Object o = parseObject(std::string("a: 1\nb: 2\x1a"));
    EXPECT_EQ(o.size(), 2u);
    EXPECT_EQ(o.get("b"), "2");
    Object cut = parseObject(std::string("a: 1\x1a\nb: 2"));
    EXPECT_EQ(cut.size(), 1u);
    Object nul = parseObject(std::string("a: 1\0b: 2", 10));
    EXPECT_EQ(nul.size(), 1u);
    EXPECT_EQ(nul.get("a"), "1");
    // A NUL or 26 inside a block comment ends it, and the text with it.
    Object inComment = parseObject(std::string("a: 1 /* open \x1a */ b: 2"));
    EXPECT_EQ(inComment.size(), 1u);
}

TEST(NotationTest, TextEndsAtTheClosingBrace) {
    Object o = parseObject("{ a: 1 } b: 2");
    EXPECT_EQ(o.size(), 1u);
    EXPECT_EQ(o.get("a"), "1");
}

TEST(NotationTest, OpeningBraceIsOptionalAndSeparatorsAreOptional) {
    Object o = parseObject("type: \"button\"\nbounds: { 0, 0, 10, 10 }\nlabel = ok; hint: 'h'");
    EXPECT_EQ(o.get("type"), "\"button\"");
    EXPECT_EQ(o.get("bounds"), "{ 0, 0, 10, 10 }");
    EXPECT_EQ(o.get("label"), "ok");
    EXPECT_EQ(o.get("hint"), "'h'");
}

TEST(NotationTest, BareValuesKeepBlanksAndOperators) {
    Object o = parseObject("a: r - 20 \t\nb: 11 pixels\nc: down+windows+control\nd: -\ne: 0xFF000000\nf: <programList>");
    EXPECT_EQ(o.get("a"), "r - 20");
    EXPECT_EQ(o.get("b"), "11 pixels");
    EXPECT_EQ(o.get("c"), "down+windows+control");
    EXPECT_EQ(o.get("d"), "-");
    EXPECT_EQ(o.get("e"), "0xFF000000");
    EXPECT_EQ(o.get("f"), "<programList>");
}

TEST(NotationTest, KeysStopAtTheirTerminatorsAndLoseTrailingBlanks) {
    Object o = parseObject("my key  : 1\n\"quoted \\\"key\\\"\": 2\n'x y': 3");
    EXPECT_EQ(o.get("my key"), "1");
    EXPECT_EQ(o.get("quoted \"key\""), "2");
    EXPECT_EQ(o.get("x y"), "3");
}

TEST(NotationTest, KeyWithoutValueGetsAnEmptyValue) {
    Object o = parseObject("alone\nnext: 2");
    ASSERT_TRUE(o.has("alone"));
    EXPECT_EQ(o.get("alone", "?"), "");
    EXPECT_EQ(o.get("next"), "2");
}

TEST(NotationTest, LaterDuplicateKeyWins) {
    Object o = parseObject("a: 1, a: 2");
    EXPECT_EQ(o.size(), 1u);
    EXPECT_EQ(o.get("a"), "2");
}

TEST(NotationTest, BracesInStringsAndCommentsDoNotCountInNestedValues) {
    Object o = parseObject("v: { s: \"}\", t: '}' /* } */ // }\n }, w: 1");
    EXPECT_EQ(o.get("v"), "{ s: \"}\", t: '}' /* } */ // }\n }");
    EXPECT_EQ(o.get("w"), "1");
}

TEST(NotationTest, UnterminatedQuoteRunsToTheEnd) {
    Object o = parseObject("a: \"open, b: 2");
    EXPECT_EQ(o.size(), 1u);
    EXPECT_EQ(o.get("a"), "\"open, b: 2");
    Object k = parseObject("\"key");
    EXPECT_TRUE(k.has("key"));
    Object n = parseObject("a: { b: { c");
    EXPECT_EQ(n.get("a"), "{ b: { c");
}

TEST(NotationTest, StraySeparatorsMakeNoEntries) {
    Object o = parseObject(",; a: 1,, ;b: 2");
    EXPECT_EQ(o.size(), 2u);
    EXPECT_EQ(o.get("a"), "1");
    EXPECT_EQ(o.get("b"), "2");
}

TEST(NotationTest, EmptyValueBeforeSeparator) {
    Object o = parseObject("a: , b: 2, c:");
    EXPECT_EQ(o.get("a", "?"), "");
    EXPECT_EQ(o.get("b"), "2");
    EXPECT_TRUE(o.has("c"));
    EXPECT_EQ(o.get("c", "?"), "");
}

TEST(NotationTest, CarriageReturnsSeparateLikeLineFeeds) {
    Object a = parseObject("a: 1\r\nb: { c: 2 }\r\n");
    Object b = parseObject("a: 1\nb: { c: 2 }\n");
    EXPECT_EQ(a.entries(), b.entries());
}
