#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "engine/StateVariableFilter.h"
#include "tests/engine/FloatingPointMode.h"
#include "tests/engine/WideLoops.h"

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

TEST(FilterTest, CoefficientsForFourAtOnceAreTheCoefficientsOfEach) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        // Through the voices' filters: a voice alone in its register and the
        // same voice among others must hear the same, over cut-offs from the
        // bottom to the top of the range and damping of every sign.
        for (float f : {0.0f, 1e-6f, 0.0005f, 0.01f, 0.123f, 0.3f, 0.49f}) {
            for (float damp : {-6.0f, -1.0f, 0.0f, 0.5f}) {
                const FilterCoefficients k = filterCoefficients(f, damp);
                float low[2] = {0.25f, -0.5f}, band[2] = {1.0f, 2.0f};
                float lowAlone[2] = {0.25f, -0.5f}, bandAlone[2] = {1.0f, 2.0f};
                alignas(16) float in[16], out[16], alone[16];
                for (int i = 0; i < 16; ++i) in[i] = std::sin(0.7f * float(i));
                FilterVoice v;
                v.low = low;
                v.band = band;
                v.f1 = v.f2 = f;
                v.logDamp = damp;
                v.in = in;
                v.out = out;
                renderFilterVoices(&v, 1);
                renderFilterPair(lowAlone, bandAlone, k, k, in, alone);
                for (int i = 0; i < 16; ++i) ASSERT_EQ(out[i], alone[i]) << f << " " << damp << " " << i;
            }
        }
    }
}

TEST(FilterTest, AnyNumberOfVoicesTogetherGetWhatEachGetsAlone) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        // Odd counts leave a lane pair spare; 13 and 20 take more than one loop.
        for (int count : {1, 2, 3, 4, 5, 7, 12, 13, 20}) {
            const std::size_t n = static_cast<std::size_t>(count);
            std::vector<float> in = noise(n * 256, 3.0f + float(count));
            std::vector<std::array<float, 2>> low(n), band(n);
            for (std::size_t v = 0; v < n; ++v) {
                low[v] = {0.05f * float(v), -0.1f};
                band[v] = {float(v % 5) * 8.0f - 16.0f, 0.3f};  // the saturation's edges too
            }
            auto lowAlone = low, bandAlone = band;
            struct alignas(16) Frame {
                float in[16], out[16], alone[16];
            };
            std::vector<Frame> frames(n);
            for (std::size_t i = 0; i < 256; i += 16) {
                std::vector<FilterVoice> voices(n);
                for (std::size_t v = 0; v < n; ++v) {
                    std::copy(&in[v * 256 + i], &in[v * 256 + i] + 16, frames[v].in);
                    voices[v].low = low[v].data();
                    voices[v].band = band[v].data();
                    voices[v].f1 = 0.0005f + 0.02f * float(v);
                    voices[v].f2 = 0.49f - 0.02f * float(v);
                    voices[v].logDamp = -1.5f + 0.1f * float(v);
                    voices[v].in = frames[v].in;
                    voices[v].out = frames[v].out;
                }
                renderFilterVoices(voices.data(), count);
                for (std::size_t v = 0; v < n; ++v) {
                    renderFilterPair(lowAlone[v].data(), bandAlone[v].data(),
                                     filterCoefficients(voices[v].f1, voices[v].logDamp),
                                     filterCoefficients(voices[v].f2, voices[v].logDamp), frames[v].in,
                                     frames[v].alone);
                    for (int k = 0; k < 16; ++k)
                        ASSERT_EQ(frames[v].out[k], frames[v].alone[k]) << count << " " << v << " " << k;
                }
            }
            for (std::size_t v = 0; v < n; ++v) {
                EXPECT_EQ(low[v], lowAlone[v]) << count << " " << v;
                EXPECT_EQ(band[v], bandAlone[v]) << count << " " << v;
                EXPECT_NE(low[v][0], 0.0f);
            }
        }
    }
}
