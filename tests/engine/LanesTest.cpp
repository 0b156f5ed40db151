// The lane type: each operation acts on every lane alone, as the same float
// operation would, at every width; min and max keep the second value where
// either is not a number, as the loops always had it.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "engine/Lanes.h"

using engine::Lanes;

namespace {

template <int W>
void checkWidth() {
    using L = Lanes<W>;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float as[8] = {1.5f, -2.25f, 0.1f, 3e-39f, nan, -0.0f, 7.0f, 1e30f};
    const float bs[8] = {0.3f, -2.25f, nan, 1e-3f, 2.0f, 0.0f, -7.5f, 1e30f};
    const L a = L::load(as), b = L::load(bs);
    float out[8];
    (a * b).store(out);
    for (int k = 0; k < W; ++k) {
        const float prod = as[k] * bs[k];
        EXPECT_EQ(std::memcmp(&out[k], &prod, 4), 0) << k;
    }
    for (int k = 0; k < W; ++k) {
        const float x = as[k], y = bs[k];
        const float sum = x + y, diff = x - y, prod = x * y, quot = x / y;
        const float lo = x < y ? x : y, hi = x > y ? x : y;
        auto same = [](float u, float v) { return std::memcmp(&u, &v, 4) == 0; };
        EXPECT_TRUE(same((a + b)[k], sum)) << k;
        EXPECT_TRUE(same((a - b)[k], diff)) << k;
        EXPECT_TRUE(same((a * b)[k], prod)) << k;
        EXPECT_TRUE(same((a / b)[k], quot)) << k;
        EXPECT_TRUE(same(min(a, b)[k], lo)) << k;
        EXPECT_TRUE(same(max(a, b)[k], hi)) << k;
        uint32_t bits;
        std::memcpy(&bits, &x, 4);
        bits &= 0x7FFFFFFFu;
        float absolute;
        std::memcpy(&absolute, &bits, 4);
        EXPECT_TRUE(same(andBits(a, 0x7FFFFFFFu)[k], absolute)) << k;
        EXPECT_EQ(L::ramp()[k], float(k));
        EXPECT_EQ(L(2.5f)[k], 2.5f);
    }
    // Where either is not a number, the second value comes out.
    EXPECT_TRUE(std::isnan(min(L(1.0f), L(nan))[0]));
    EXPECT_EQ(min(L(nan), L(1.0f))[0], 1.0f);
    EXPECT_EQ(max(L(nan), L(1.0f))[0], 1.0f);
    // Values put together lane by lane, and one value for every lane, keep
    // their bits: the sign of a zero, a denormal, a not-a-number.
    float each[W];
    for (int k = 0; k < W; ++k) each[k] = as[k];
    const L parts = L::of(each);
    for (int k = 0; k < W; ++k) {
        EXPECT_EQ(std::memcmp(&each[k], &reinterpret_cast<const float*>(&parts.v)[k], 4), 0) << k;
        for (const float x : {-0.0f, 3e-39f, nan}) {
            const float lane = L(x)[k];
            EXPECT_EQ(std::memcmp(&lane, &x, 4), 0) << k;
        }
    }
    L c(0.0f);
    c.set(W - 1, 9.0f);
    EXPECT_EQ(c[W - 1], 9.0f);
    EXPECT_EQ(c[0], W == 1 ? 9.0f : 0.0f);
}

}  // namespace

TEST(Lanes, OneLane) { checkWidth<1>(); }
TEST(Lanes, FourLanes) { checkWidth<4>(); }
TEST(Lanes, EightLanes) { checkWidth<8>(); }

// Four registers turned over within each group of four lanes, and back; runs
// of four loaded from and stored to places of their own.
template <int W>
void checkFours() {
    using L = Lanes<W>;
    float rows[4][W];
    for (int n = 0; n < 4; ++n)
        for (int k = 0; k < W; ++k) rows[n][k] = float(100 * n + k);
    L r[4];
    for (int n = 0; n < 4; ++n) {
        const float* parts[W / 4];
        for (int h = 0; h < W / 4; ++h) parts[h] = rows[n] + 4 * h;
        r[n] = L::loadFours(parts);
        for (int k = 0; k < W; ++k) ASSERT_EQ(r[n][k], rows[n][k]);
    }
    transposeFours(r[0], r[1], r[2], r[3]);
    for (int n = 0; n < 4; ++n)
        for (int k = 0; k < W; ++k) EXPECT_EQ(r[n][k], rows[k % 4][4 * (k / 4) + n]) << n << " " << k;
    transposeFours(r[0], r[1], r[2], r[3]);
    for (int n = 0; n < 4; ++n) {
        float back[W];
        float* parts[W / 4];
        for (int h = 0; h < W / 4; ++h) parts[h] = back + 4 * h;
        r[n].storeFours(parts);
        for (int k = 0; k < W; ++k) EXPECT_EQ(back[k], rows[n][k]);
    }
}

TEST(Lanes, FoursTurnOverAndBack) {
    checkFours<4>();
    checkFours<8>();
}
