#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "engine/StateVariableFilter.h"
#include "tests/engine/FloatingPointMode.h"

using namespace engine;

namespace {

// One filter, written out plainly, for comparison.
struct PlainFilter {
    float low = 0, band = 0;
    float step(float x, const FilterCoefficients& k) {
        low += k.c * band;
        float high = x - low - k.d * band;
        float t = std::min(std::max((k.c * high + band) * 0.04058442f, -1.0f), 1.0f);
        band = 24.64f * t * (1.0f - 0.3506494f * (t * t));
        return low;
    }
};

std::vector<float> renderPair(const std::vector<float>& in, float f1, float f2, float damp, float* low, float* band) {
    std::vector<float> out(in.size());
    for (std::size_t i = 0; i + 16 <= in.size(); i += 16)
        renderFilterPair(low, band, filterCoefficients(f1, damp), filterCoefficients(f2, damp), &in[i], &out[i]);
    return out;
}

std::vector<float> noise(std::size_t n, float gain) {
    std::vector<float> v(n);
    uint32_t r = 1;
    for (float& x : v) {
        r = r * 1664525u + 1013904223u;
        x = (float(r >> 8) / 8388608.0f - 1.0f) * gain;
    }
    return v;
}

}  // namespace

TEST(FilterTest, CoefficientIsATunedTwoSinePiF) {
    // At low frequencies c is 2 pi f; it rises with f; d is exp of the
    // frequency-scaled log damping.
    EXPECT_NEAR(filterCoefficients(0.0001f, -6.0f).c, 6.2831853 * 0.0001, 2e-7);
    float last = 0.0f;
    for (float f : {0.001f, 0.01f, 0.05f, 0.1f, 0.2f, 0.3f}) {
        FilterCoefficients k = filterCoefficients(f, -6.0f);
        // A quick exp: within a quarter of the true one this far out.
        EXPECT_NEAR(k.d, std::exp((1 - 4 * f * f) * -6.0f), 0.25 * std::exp((1 - 4 * f * f) * -6.0f));
        EXPECT_GT(k.c, last);
        last = k.c;
    }
    // The quick exp: log damping ln 2 gives a damping of about 2.
    EXPECT_NEAR(filterCoefficients(0.0f, 0.6931472f).d, 2.0f, 0.01f);
}

TEST(FilterTest, SeparationOneGivesTwiceOneFilter) {
    std::vector<float> in = noise(1024, 0.5f);
    float low[2] = {}, band[2] = {};
    std::vector<float> out = renderPair(in, 0.02f, 0.02f, 0.0f, low, band);
    float f1, f2;
    filterFrequencies(0.02f, 1.0f, f1, f2);
    EXPECT_EQ(f1, f2);
    EXPECT_EQ(low[0], low[1]);
    EXPECT_EQ(band[0], band[1]);
    PlainFilter plain;
    FilterCoefficients k = filterCoefficients(0.02f, 0.0f);
    for (std::size_t i = 0; i < in.size(); ++i) {
        // The denormal steps make the plain form differ in the last bits.
        float one = plain.step(in[i], k);
        EXPECT_NEAR(out[i], 2.0f * one, 2e-4f) << i;
        if ((i & 3) == 1 || (i & 3) == 3) plain.band = (plain.band + 0.0001f) - 0.0001f;
        if ((i & 3) == 3) plain.low = (plain.low + 0.0001f) - 0.0001f;
    }
}

TEST(FilterTest, FrequenciesAreLimitedBelowNyquist) {
    float f1, f2;
    filterFrequencies(0.3f, 4.0f, f1, f2);
    EXPECT_EQ(f1, 0.3f);
    EXPECT_EQ(f2, 0.49f);
    filterFrequencies(0.6f, 0.5f, f1, f2);
    EXPECT_EQ(f1, 0.49f);
    EXPECT_EQ(f2, 0.3f);
}

TEST(FilterTest, DirectCurrentPassesAtUnityThroughEachFilter) {
    std::vector<float> in(4096, 0.25f);
    float low[2] = {}, band[2] = {};
    std::vector<float> out = renderPair(in, 0.01f, 0.04f, 0.0f, low, band);
    EXPECT_NEAR(out.back(), 0.5f, 1e-3);
}

TEST(FilterTest, HighFrequenciesAreCut) {
    std::vector<float> in(4096);
    for (std::size_t i = 0; i < in.size(); ++i) in[i] = (i & 1) ? 0.5f : -0.5f;  // Nyquist
    float low[2] = {}, band[2] = {};
    std::vector<float> out = renderPair(in, 0.01f, 0.01f, 0.0f, low, band);
    float peak = 0;
    for (std::size_t i = 2048; i < out.size(); ++i) peak = std::max(peak, std::fabs(out[i]));
    EXPECT_LT(peak, 0.002f);
}

TEST(FilterTest, BandStateSaturatesAtSixteen) {
    std::vector<float> in = noise(4096, 1000.0f);
    float low[2] = {}, band[2] = {};
    for (std::size_t i = 0; i < in.size(); i += 16) {
        float out[16];
        renderFilterPair(low, band, filterCoefficients(0.2f, -4.0f), filterCoefficients(0.3f, -4.0f), &in[i], out);
        // The cubic's peak lies just above 16 (16.01 at t = 0.975).
        EXPECT_LE(std::fabs(band[0]), 16.02f);
        EXPECT_LE(std::fabs(band[1]), 16.02f);
        for (float v : out) EXPECT_TRUE(std::isfinite(v));
    }
}

TEST(FilterTest, SameOutputWithAndWithoutFlushToZeroAndNoDenormalsAfterSilence) {
    std::vector<float> in = noise(2048, 0.8f);
    in.resize(2048 + 44100 * 4, 0.0f);  // then a long silence
    float lowA[2] = {}, bandA[2] = {}, lowB[2] = {}, bandB[2] = {};
    std::vector<float> a, b;
    {
        testsupport::FlushToZero ftz(false);
        a = renderPair(in, 0.001f, 0.0021f, -1.0f, lowA, bandA);
    }
    {
        testsupport::FlushToZero ftz(true);
        b = renderPair(in, 0.001f, 0.0021f, -1.0f, lowB, bandB);
    }
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) ASSERT_EQ(a[i], b[i]) << i;
    for (float s : {lowA[0], lowA[1], bandA[0], bandA[1]}) EXPECT_NE(std::fpclassify(s), FP_SUBNORMAL);
    // The states settle on a multiple of the offset's last bit, never lower.
    EXPECT_LT(std::fabs(lowA[0]), 1e-6f);
    EXPECT_LT(std::fabs(bandA[0]), 1e-6f);
}

TEST(FilterTest, TwoVoicesSideBySideGetWhatEachGetsAlone) {
    std::vector<float> a = noise(512, 0.7f), b = noise(1024, 3.0f);
    b.erase(b.begin(), b.begin() + 512);
    float lowA[2] = {0.1f, -0.2f}, bandA[2] = {0.3f, 0.0f}, lowB[2] = {}, bandB[2] = {5.0f, -5.0f};
    float lowA2[2] = {0.1f, -0.2f}, bandA2[2] = {0.3f, 0.0f}, lowB2[2] = {}, bandB2[2] = {5.0f, -5.0f};
    for (std::size_t i = 0; i < 512; i += 16) {
        const FilterCoefficients a1 = filterCoefficients(0.01f, -2.0f), a2 = filterCoefficients(0.03f, -2.0f);
        const FilterCoefficients b1 = filterCoefficients(0.2f, 0.5f), b2 = filterCoefficients(0.45f, 0.5f);
        float outA[16], outB[16], aloneA[16], aloneB[16];
        renderFilterPairs(lowA, bandA, a1, a2, &a[i], outA, lowB, bandB, b1, b2, &b[i], outB);
        renderFilterPair(lowA2, bandA2, a1, a2, &a[i], aloneA);
        renderFilterPair(lowB2, bandB2, b1, b2, &b[i], aloneB);
        for (int k = 0; k < 16; ++k) {
            ASSERT_EQ(outA[k], aloneA[k]);
            ASSERT_EQ(outB[k], aloneB[k]);
        }
    }
    EXPECT_EQ(lowA[1], lowA2[1]);
    EXPECT_EQ(bandB[0], bandB2[0]);
}

TEST(FilterTest, FourVoicesInTwoRegistersGetWhatEachGetsAlone) {
    std::vector<float> in = noise(4 * 512, 2.0f);
    float low[4][2] = {{0.1f, -0.2f}, {}, {3.0f, 1.0f}, {-0.5f, 0.25f}};
    float band[4][2] = {{0.3f, 0.0f}, {5.0f, -5.0f}, {}, {16.0f, -16.0f}};
    float lowAlone[4][2], bandAlone[4][2];
    std::memcpy(lowAlone, low, sizeof low);
    std::memcpy(bandAlone, band, sizeof band);
    const float f1[4] = {0.01f, 0.2f, 0.49f, 0.0005f}, f2[4] = {0.03f, 0.45f, 0.1f, 0.49f};
    const float damp[4] = {-2.0f, 0.5f, -6.0f, 0.0f};
    for (std::size_t i = 0; i < 512; i += 16) {
        FilterPairJob jobs[4];
        float out[4][16], alone[4][16];
        for (int v = 0; v < 4; ++v) {
            jobs[v].low = low[v];
            jobs[v].band = band[v];
            jobs[v].first = filterCoefficients(f1[v], damp[v]);
            jobs[v].second = filterCoefficients(f2[v], damp[v]);
            jobs[v].in = &in[std::size_t(v) * 512 + i];
            jobs[v].out = out[v];
        }
        renderFilterPairs(jobs[0], jobs[1], jobs[2], jobs[3]);
        for (int v = 0; v < 4; ++v) {
            renderFilterPair(lowAlone[v], bandAlone[v], jobs[v].first, jobs[v].second, jobs[v].in, alone[v]);
            for (int k = 0; k < 16; ++k) ASSERT_EQ(out[v][k], alone[v][k]) << v << " " << i + std::size_t(k);
        }
    }
    for (int v = 0; v < 4; ++v)
        for (int k = 0; k < 2; ++k) {
            EXPECT_EQ(low[v][k], lowAlone[v][k]);
            EXPECT_EQ(band[v][k], bandAlone[v][k]);
        }
}
