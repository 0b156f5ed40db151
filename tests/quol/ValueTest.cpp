#include "quol/Value.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/support/AllocationCounter.h"

using Quol::Value;

TEST(ValueTest, HoldsAnyBytesWithTheirCount) {
    const std::string bytes("a\0b\xff", 4);
    Value v(bytes);
    EXPECT_EQ(v.size(), 4u);
    EXPECT_EQ(v.view(), bytes);
    EXPECT_EQ(v[1], 0u);
    EXPECT_EQ(v[3], 0xffu);
    EXPECT_TRUE(Value().empty());
    EXPECT_EQ(Value(""), Value());
}

TEST(ValueTest, SubstringsShareTheBufferWithoutCopying) {
    Value source("function { body of a function that is longer than one block }");
    Value body;
    {
        testsupport::AllocationCounter counter;
        body = source.substr(9, 10);
        EXPECT_EQ(counter.count(), 0u);
    }
    EXPECT_EQ(body, "{ body of ");
    EXPECT_TRUE(body.sharesBufferWith(source));
    EXPECT_FALSE(source.uniquelyOwned());
    // The substring keeps the buffer alive after the source is gone.
    source = Value();
    EXPECT_EQ(body, "{ body of ");
    EXPECT_TRUE(body.uniquelyOwned());
    EXPECT_TRUE(Value("abc").substr(3).empty());
    EXPECT_TRUE(Value("abc").substr(7, 2).empty());
    EXPECT_EQ(Value("abc").substr(1), "bc");
}

TEST(ValueTest, ShortStringsComeFromRecycledBlocks) {
    static const std::string longest(Value::kInlineBytes, 'x');
    { Value warm("warm up the free list"); }
    testsupport::AllocationCounter counter;
    for (int i = 0; i < 100; ++i) {
        Value v(longest);
        EXPECT_EQ(v.size(), Value::kInlineBytes);
    }
    // One block cycles through the free list: no allocation at all.
    EXPECT_EQ(counter.count(), 0u);
}

TEST(ValueTest, LongerStringsTakeASeparateBuffer) {
    const Quol::ValuePoolStats before = Quol::valuePoolStats();
    Value v(std::string(Value::kInlineBytes + 1, 'y'));
    EXPECT_EQ(Quol::valuePoolStats().blocksInUse, before.blocksInUse + 1);
    EXPECT_EQ(v.view(), std::string(Value::kInlineBytes + 1, 'y'));
}

TEST(ValueTest, AppendingToASoleOwnerGrowsInPlace) {
    Value v("a");
    const char* where = v.data();
    {
        testsupport::AllocationCounter counter;
        for (int i = 0; i < 40; ++i) v.append('b');
        EXPECT_EQ(counter.count(), 0u);
    }
    EXPECT_EQ(v.data(), where);
    EXPECT_EQ(v.size(), 41u);
    // Growing past the block moves to a larger buffer that doubles.
    std::string expected = v.str();
    std::size_t moves = 0;
    const char* last = v.data();
    for (int i = 0; i < 10000; ++i) {
        v.append("xyz");
        expected += "xyz";
        if (v.data() != last) {
            ++moves;
            last = v.data();
        }
    }
    EXPECT_EQ(v.view(), expected);
    EXPECT_LT(moves, 20u);
}

TEST(ValueTest, AppendingToASharedValueLeavesTheOtherAlone) {
    Value a("shared");
    Value b = a;
    b.append("!");
    EXPECT_EQ(a, "shared");
    EXPECT_EQ(b, "shared!");
    // A substring in the middle of another's buffer copies too.
    Value c("left right");
    Value left = c.substr(0, 4);
    left.append("over");
    EXPECT_EQ(left, "leftover");
    EXPECT_EQ(c, "left right");
    // Appending a value's own text to itself.
    Value d("ab");
    d.append(d.view());
    EXPECT_EQ(d, "abab");
}

TEST(ValueTest, ExternalTextIsNeitherCopiedNorCounted) {
    static const char text[] = "resource text";
    testsupport::AllocationCounter counter;
    Value v = Value::external(text, sizeof text - 1);
    Value part = v.substr(9);
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_EQ(v.data(), text);
    EXPECT_EQ(part, "text");
    Value grown = v;
    grown.append("!");
    EXPECT_EQ(grown, "resource text!");
    EXPECT_EQ(v, "resource text");
}

TEST(ValueTest, MapOrderIsByBytesThenShorterFirst) {
    std::map<Value, int, Value::Less> m;
    m[Value("b")] = 1;
    m[Value("a")] = 2;
    m[Value("ab")] = 3;
    m[Value("\xff")] = 4;
    m[Value("A")] = 5;
    std::string order;
    for (const auto& entry : m) order += std::to_string(entry.second);
    EXPECT_EQ(order, "52314");
    EXPECT_EQ(m.find(std::string_view("ab"))->second, 3);
}

TEST(ValueTest, JoinedPutsTextsInOneBuffer) {
    EXPECT_EQ(Value::joined(">", "::", "x + 1"), ">::x + 1");
    EXPECT_TRUE(Value::joined("", "").empty());
}
