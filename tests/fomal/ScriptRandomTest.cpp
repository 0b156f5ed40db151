#include "fomal/ScriptRandom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>

using Fomal::ScriptRandom;

// The first steps from zero, worked by hand: a' = 0xF24783A6 with the top
// bit of 0xCA0D3029 (1) in its lowest bit, b' = 0x941A6052 with the top
// bit of a' (1); then the same from those words.
TEST(ScriptRandomTest, TheWordsFollowTheRecurrences) {
    ScriptRandom r(0, 0);
    EXPECT_EQ(r.nextWord(), 0xF24783A7u);
    EXPECT_EQ(r.b(), 0x941A6053u);
    EXPECT_EQ(r.nextWord(), 0xABAE50B1u);
    EXPECT_EQ(r.b(), 0x47EA4FCDu);
    EXPECT_EQ(r.nextWord(), 0x3BE505ADu);
    EXPECT_EQ(r.b(), 0xBB747C98u);
}

// With the top bits ORed in their own place both words would run into a
// fixed point within 32 steps; filled into the lowest bits they do not.
TEST(ScriptRandomTest, TheStateDoesNotRunIntoAShortCycle) {
    ScriptRandom r(11, 22);
    std::set<std::pair<std::uint32_t, std::uint32_t>> seen;
    for (int i = 0; i < 100000; ++i) {
        r.nextWord();
        ASSERT_TRUE(seen.insert({r.a(), r.b()}).second) << "repeated after " << i << " steps";
    }
}

TEST(ScriptRandomTest, UniformNumbersFillTheRange) {
    ScriptRandom r(1, 2);
    int buckets[10] = {};
    double sum = 0;
    const int n = 100000;
    for (int i = 0; i < n; ++i) {
        const double v = r.uniform(1.0);
        ASSERT_GE(v, 0.0);
        ASSERT_LT(v, 1.0);
        sum += v;
        ++buckets[int(v * 10)];
    }
    EXPECT_NEAR(sum / n, 0.5, 0.01);
    for (int b : buckets) EXPECT_NEAR(b, n / 10, n / 100);
}

TEST(ScriptRandomTest, GaussianDeviatesHaveTheirMeanAndDeviation) {
    ScriptRandom r(3, 4);
    const int n = 100000;
    double sum = 0, squares = 0;
    for (int i = 0; i < n; ++i) {
        const float v = r.gaussian(0.5f, 0.25f);
        sum += v;
        squares += double(v) * v;
    }
    const double mean = sum / n;
    EXPECT_NEAR(mean, 0.5, 0.005);
    EXPECT_NEAR(std::sqrt(squares / n - mean * mean), 0.25, 0.005);
}
