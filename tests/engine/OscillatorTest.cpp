#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "engine/FrequencyModulation.h"
#include "engine/NoiseFilters.h"
#include "engine/NoiseTable.h"
#include "engine/OscillatorA.h"
#include "engine/OscillatorB.h"
#include "engine/Oversampling.h"
#include "engine/PhaseWrap.h"
#include "engine/SampleAndHold.h"
#include "engine/SubOscillator.h"
#include "engine/WaveShape.h"
#include "engine/WideOscillators.h"
#include "tests/engine/WideLoops.h"

using namespace engine;

TEST(OscillatorTest, SineFormIsACosineThroughTheCycle) {
    WaveShape w = WaveShape::make(0.0f, 0.0001f);
    EXPECT_FLOAT_EQ(w.fall, 0.5f);
    EXPECT_FLOAT_EQ(w.rise, 0.5f);
    EXPECT_FLOAT_EQ(w.top, 1.0f);
    for (int i = 0; i <= 100; ++i) {
        float p = float(i) / 100.0f;
        EXPECT_NEAR(w.shape(p), std::cos(6.2831853 * p), 0.002) << p;
    }
}

TEST(OscillatorTest, SquareFormHasItsRisingEdgeAtHalfTheCycle) {
    WaveShape w = WaveShape::make(0.66666f, 0.001f);
    EXPECT_NEAR(w.rise, 0.5f, 1e-4);
    EXPECT_GT(w.top, w.rise);
    EXPECT_LT(w.fall, 0.01f);
    // Low in the first half, high in the second, mean near zero.
    EXPECT_LT(w.shape(0.25f), -0.9f);
    EXPECT_GT(w.shape(0.75f), 0.9f);
}

TEST(OscillatorTest, PulseFormSitsHighAlmostTheWholeCycle) {
    WaveShape w = WaveShape::make(1.0f, 0.001f);
    EXPECT_FLOAT_EQ(w.rise, w.fall);
    EXPECT_FLOAT_EQ(w.top, 2.0f * w.fall);
    double mean = 0;
    for (int i = 0; i < 10000; ++i) mean += w.shape(float(i) / 10000.0f);
    EXPECT_NEAR(mean / 10000.0, 0.0, 0.02);  // the offset takes out the mean
}

TEST(OscillatorTest, EdgesSoftenAsThePitchRises) {
    WaveShape low = WaveShape::make(1.0f, 0.0001f);
    WaveShape high = WaveShape::make(1.0f, 0.2f);
    EXPECT_GT(high.fall, low.fall * 100.0f);
    EXPECT_LE(high.fall, 0.5f);
}

TEST(OscillatorTest, PhaseWrapKeepsTheFractionWith18Bits) {
    EXPECT_EQ(wrapPhase(1.25f), 0.25f);
    EXPECT_EQ(wrapPhase(-0.25f), 0.75f);
    EXPECT_EQ(wrapPhase(3.0f), 0.0f);
    // A step below 2^-18 is lost, a step of 2^-18 is kept.
    EXPECT_EQ(wrapPhase(0.5f + 1.0f / 1048576.0f), 0.5f);
    EXPECT_EQ(wrapPhase(0.5f + 1.0f / 262144.0f), 0.5f + 1.0f / 262144.0f);
}

TEST(OscillatorTest, OversamplingBoundaries) {
    EXPECT_EQ(oversamplingPoints(0.0f), 1);
    EXPECT_EQ(oversamplingPoints(0.0024999f), 1);
    EXPECT_EQ(oversamplingPoints(0.0025f), 2);
    EXPECT_EQ(oversamplingPoints(0.0099999f), 2);
    EXPECT_EQ(oversamplingPoints(0.01f), 3);
    EXPECT_EQ(oversamplingPoints(0.4f), 3);
}

TEST(OscillatorTest, OversampledShapeIsTheMeanOfItsPoints) {
    WaveShape w = WaveShape::make(0.4f, 0.01f);
    const float p = 0.3f, f = 0.02f;
    const ShapeLanes<4> lanes(w);
    using L = Lanes<4>;
    const L two = oversampledShape(lanes, L(p), L(f), 2);
    EXPECT_NEAR(two[0], (w.shape(p) + w.shape(p + f / 2)) / 2, 1e-6);
    const L three = oversampledShape(lanes, L(p), L(f), 3);
    EXPECT_NEAR(three[0], (w.shape(p) + w.shape(p + f / 3) + w.shape(p + 2 * f / 3)) / 3, 1e-6);
    // Extra points past the end of the cycle wrap to its start.
    const L wrapped = oversampledShape(lanes, L(0.99f), L(0.04f), 2);
    EXPECT_NEAR(wrapped[0], (w.shape(0.99f) + w.shape(0.01f)) / 2, 1e-3);
    EXPECT_GT(std::fabs(wrapped[0] - (w.shape(0.99f) + w.shape(1.01f)) / 2), 0.1f);
    // One value at a time and eight at once give the same bits.
    for (int points = 1; points <= 3; ++points) {
        const float one = oversampledShape(ShapeLanes<1>(w), Lanes<1>(0.7f), Lanes<1>(f), points)[0];
        EXPECT_EQ(oversampledShape(lanes, L(0.7f), L(f), points)[3], one);
        EXPECT_EQ(oversampledShape(ShapeLanes<8>(w), Lanes<8>(0.7f), Lanes<8>(f), points)[7], one);
    }
}

TEST(OscillatorTest, OscillatorBSoundsItsFrequency) {
    const float fB = 261.6256f / 44100.0f;
    WaveShape w = WaveShape::make(0.0f, fB);
    float sub = 0.0f;
    std::vector<float> out;
    for (int frame = 0; frame < 2756; ++frame) {  // one second
        float b[16];
        renderOscillatorB(bPhaseFromSubPhase(sub), fB, w, b);
        out.insert(out.end(), b, b + 16);
        sub = advanceSubPhase(sub, fB);
    }
    int upward = 0;
    for (std::size_t i = 1; i < 44100; ++i)
        if (out[i - 1] < 0.0f && out[i] >= 0.0f) ++upward;
    EXPECT_NEAR(upward, 262, 1);
}

TEST(OscillatorTest, BStaysLockedAtTwiceTheSubPhase) {
    EXPECT_EQ(bPhaseFromSubPhase(0.25f), 0.5f);
    EXPECT_EQ(bPhaseFromSubPhase(0.75f), 0.5f);
    EXPECT_EQ(bPhaseFromSubPhase(0.5f), 0.0f);
}

TEST(OscillatorTest, OscillatorAReducesItsPhaseWithFloorEveryFourSamples) {
    WaveShape w = WaveShape::make(0.0f, 0.1f);
    float step[16];
    for (float& s : step) s = 0.3f;
    float a[16];
    float phase = 0.0f;
    renderOscillatorA(phase, step, 0.3f, w, a);
    EXPECT_NEAR(phase, 16 * 0.3 - std::floor(16 * 0.3), 1e-5);
    for (float& s : step) s = -0.3f;  // backwards
    renderOscillatorA(phase, step, 0.3f, w, a);
    EXPECT_NEAR(phase, 0.0, 1e-5);
    EXPECT_GE(phase, 0.0f);
}

TEST(OscillatorTest, MeanStepAddsTheMeanMagnitudeOfTheSteps) {
    float step[16];
    for (int i = 0; i < 16; ++i) step[i] = (i & 1) ? -0.01f : 0.01f;
    EXPECT_NEAR(addMeanStep(0.5f, step, 0.2f), 0.5f + 0.2f * 0.01f, 1e-7);
}

TEST(OscillatorTest, FmDepthZeroGivesTheCarrierStep) {
    float b[16], step[16];
    for (int i = 0; i < 16; ++i) b[i] = std::sin(float(i));
    const float fA = 0.0123f;
    float depth = limitedFmDepth(0.0f, 0.0f, 0.7f, fA, 0.5f);
    EXPECT_EQ(depth, 0.0f);
    fmSteps(b, depth, fA, step);
    for (float s : step) EXPECT_EQ(s, fA);
}

TEST(OscillatorTest, OscillatorAtMaxFreqIgnoresFm) {
    const float maxFreq = 0.5f;
    EXPECT_EQ(limitedFmDepth(16.0f, -3.0f, 0.5f, maxFreq, maxFreq), 0.0f);
    // Below the limit the depth is clamped so the top of a swing stays inside.
    const float fA = 0.1f;
    const float depth = limitedFmDepth(16.0f, 0.0f, 0.0f, fA, maxFreq);
    EXPECT_FLOAT_EQ(depth, 4.0f);
    EXPECT_FLOAT_EQ(limitedFmDepth(-16.0f, 0.0f, 0.0f, fA, maxFreq), -4.0f);
    float b[16], step[16];
    for (float& x : b) x = 1.0f;
    fmSteps(b, depth, fA, step);
    EXPECT_LE(step[0], maxFreq + 1e-6f);
}

TEST(OscillatorTest, SubAmountBelowLimitLeavesBAloneButThePhaseAdvances) {
    float b[16], copy[16];
    for (int i = 0; i < 16; ++i) b[i] = copy[i] = float(i) * 0.1f - 0.7f;
    applySubOscillator(b, 0.3f, 0.01f, 0.99e-5f);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(b[i], copy[i]);
    EXPECT_NEAR(advanceSubPhase(0.3f, 0.01f), 0.38f, 1e-6);
    EXPECT_NEAR(advanceSubPhase(0.95f, 0.01f), 0.03f, 1e-6);
}

TEST(OscillatorTest, SubOscillatorSwingsTheAmplitudeByItsAmount) {
    float b[16];
    for (float& x : b) x = 1.0f;
    // u = -0.5 at phase 0: s = 1, the top of the swing.
    applySubOscillator(b, 0.0f, 0.0f, 0.5f);
    EXPECT_FLOAT_EQ(b[0], 1.5f);
    for (float& x : b) x = 1.0f;
    applySubOscillator(b, 0.5f, 0.0f, 0.5f);  // u = 0: s = -1
    EXPECT_FLOAT_EQ(b[0], 0.5f);
}

TEST(OscillatorTest, HoldRateOfExactlyOneSkipsTheHold) {
    float b[16], copy[16];
    for (int i = 0; i < 16; ++i) b[i] = copy[i] = float(i);
    float hold = -5.0f, acc = 0.3f;
    sampleAndHold(b, hold, acc, 1.0f);
    for (int i = 0; i < 16; ++i) EXPECT_EQ(b[i], copy[i]);
    EXPECT_EQ(acc, 0.3f);
    EXPECT_EQ(hold, -5.0f);
}

TEST(OscillatorTest, HoldAtHalfRateRepeatsEverySecondSample) {
    float b[16];
    for (int i = 0; i < 16; ++i) b[i] = float(i);
    float hold = 0.0f, acc = 1.0f;  // as at a note start: the first sample is taken
    sampleAndHold(b, hold, acc, 0.5f);
    EXPECT_EQ(b[0], 0.0f);
    EXPECT_EQ(b[1], 1.0f);  // the accumulator reaches 1 again
    EXPECT_EQ(b[2], 1.0f);
    EXPECT_EQ(b[3], 3.0f);
    EXPECT_EQ(b[4], 3.0f);
    EXPECT_EQ(b[15], 15.0f);
    EXPECT_EQ(hold, 15.0f);
}

TEST(OscillatorTest, NoiseTableIsCentredAndBounded) {
    const NoiseTable& t = NoiseTable::instance();
    double sum = 0;
    int zeros = 0;
    for (int i = 0; i < NoiseTable::SIZE; ++i) {
        float v = t.values()[i];
        EXPECT_LE(std::fabs(v), 1.0f);
        sum += v;
        if (v == 0.0f) ++zeros;
    }
    EXPECT_NEAR(sum / NoiseTable::SIZE, 0.0, 1e-4);
    EXPECT_NE(t.values()[0], 0.0f);
    EXPECT_LT(zeros, 3);
    // The same table every time.
    EXPECT_EQ(&NoiseTable::instance(), &t);
}

TEST(OscillatorTest, NoiseReadsFourRunsAtScaledPositions) {
    const NoiseTable& t = NoiseTable::instance();
    uint32_t random = 12345;
    const uint32_t x = 12345u * 0x569CF9F3u - 0x06DC3E2Fu;
    const uint32_t z = (x << 1) | (x >> 31);
    float out[16];
    t.read(random, out);
    EXPECT_EQ(random, z);
    for (uint32_t j = 1; j <= 4; ++j)
        for (uint32_t k = 0; k < 4; ++k) EXPECT_EQ(out[(j - 1) * 4 + k], t.values()[((j * z) >> 22) + k]);
}

TEST(OscillatorTest, BNoiseFollowsBsPitchAndIsSilentWithoutNoise) {
    float noise[16], out[16];
    for (int i = 0; i < 16; ++i) noise[i] = (i & 1) ? 1.0f : -1.0f;
    float s1 = 0, s2 = 0;
    filterBNoise(s1, s2, noise, 0.01f, 0.0f, out);
    for (float v : out) EXPECT_EQ(v, 0.0f);
    // A brighter (higher) B passes more of the fast noise.
    float lo1 = 0, lo2 = 0, hi1 = 0, hi2 = 0, lo[16], hi[16];
    double eLo = 0, eHi = 0;
    for (int f = 0; f < 50; ++f) {
        filterBNoise(lo1, lo2, noise, 0.001f, 1.0f, lo);
        filterBNoise(hi1, hi2, noise, 0.1f, 1.0f, hi);
    }
    for (int i = 0; i < 16; ++i) {
        eLo += lo[i] * lo[i];
        eHi += hi[i] * hi[i];
    }
    EXPECT_GT(eHi, eLo);
}

TEST(OscillatorTest, ANoiseIsAOnePoleLowPass) {
    float noise[16], out[16];
    for (float& n : noise) n = 1.0f;
    float s = 0;
    filterANoise(s, noise, 2.0f, 0.5f, out);
    EXPECT_FLOAT_EQ(out[0], 1.0f);
    EXPECT_FLOAT_EQ(out[1], 1.5f);
    EXPECT_NEAR(s, 2.0f, 1e-3);
}

TEST(OscillatorTest, BothNoiseFiltersAtOnceMatchEachAlone) {
    float rawB[16], rawA[16];
    for (int i = 0; i < 16; ++i) {
        rawB[i] = std::sin(float(i) * 1.3f);
        rawA[i] = std::cos(float(i) * 0.7f);
    }
    float b1 = 0.1f, b2 = -0.2f, a = 0.3f, outB[16], outA[16];
    float c1 = b1, c2 = b2, ca = a, bothB[16], bothA[16];
    for (int frame = 0; frame < 5; ++frame) {
        filterBNoise(b1, b2, rawB, 0.02f, 0.6f, outB);
        filterANoise(a, rawA, 0.8f, 0.3f, outA);
        filterNoises(c1, c2, rawB, 0.02f, 0.6f, ca, rawA, 0.8f, 0.3f, bothB, bothA);
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(bothB[i], outB[i]);
            EXPECT_EQ(bothA[i], outA[i]);
        }
    }
    EXPECT_EQ(c1, b1);
    EXPECT_EQ(c2, b2);
    EXPECT_EQ(ca, a);
}

TEST(OscillatorTest, FourVoicesNoiseFiltersInLanesGetWhatEachGetsAlone) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        const engine::NoiseTable& table = engine::NoiseTable::instance();
        uint32_t random[4] = {1, 99, 12345, 4000000000u};
        const float fB[4] = {0.001f, 0.05f, 0.2f, 0.4999f};
        const float bNoise[4] = {0.5f, 1.0f, 0.01f, 2.0f};
        const float aGain[4] = {0.3f, 0.0f, 1.5f, 0.7f};
        const float aCoef[4] = {0.9f, 0.5f, 0.01f, 1.0f};
        float b1[4] = {0.2f, 0.0f, -1.0f, 0.5f}, b2[4] = {0.0f, 0.3f, 0.0f, -0.25f}, a[4] = {0.1f, 0.0f, 0.0f, 2.0f};
        float b1Alone[4], b2Alone[4], aAlone[4];
        std::copy(b1, b1 + 4, b1Alone);
        std::copy(b2, b2 + 4, b2Alone);
        std::copy(a, a + 4, aAlone);
        for (int frame = 0; frame < 200; ++frame) {
            alignas(16) float rawB[4][16], rawA[4][16], bOut[4][16], aOut[4][16];
            alignas(16) float bAlone[16], aAloneOut[16];
            engine::NoiseJob jobs[4];
            for (int v = 0; v < 4; ++v) {
                table.read(random[v], rawB[v]);
                table.read(random[v], rawA[v]);
                jobs[v].bState1 = &b1[v];
                jobs[v].bState2 = &b2[v];
                jobs[v].bRaw = rawB[v];
                jobs[v].fB = fB[v];
                jobs[v].bCoef = engine::noiseCoefficient(fB[v]);
                jobs[v].bNoise = bNoise[v];
                jobs[v].aState = &a[v];
                jobs[v].aRaw = rawA[v];
                jobs[v].aGain = aGain[v];
                jobs[v].aCoef = aCoef[v];
                jobs[v].bOut = bOut[v];
                jobs[v].aOut = aOut[v];
            }
            engine::filterNoisesTogether(jobs, 4);
            for (int v = 0; v < 4; ++v) {
                engine::filterNoises(b1Alone[v], b2Alone[v], rawB[v], fB[v], bNoise[v], aAlone[v], rawA[v], aGain[v],
                                     aCoef[v], bAlone, aAloneOut);
                for (int i = 0; i < 16; ++i) {
                    ASSERT_EQ(bOut[v][i], bAlone[i]) << frame << " " << v << " " << i;
                    ASSERT_EQ(aOut[v][i], aAloneOut[i]) << frame << " " << v << " " << i;
                }
                ASSERT_EQ(b1[v], b1Alone[v]);
                ASSERT_EQ(b2[v], b2Alone[v]);
                ASSERT_EQ(a[v], aAlone[v]);
            }
        }
        EXPECT_NE(b2[1], 0.0f);
    }
}

TEST(OscillatorTest, QuietNoiseFiltersAmongFourGiveZerosAndKeepTheirStates) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        const engine::NoiseTable& table = engine::NoiseTable::instance();
        uint32_t random = 77;
        float b1[4] = {0.2f, 0.0f, 0.0f, 0.0f}, b2[4] = {0.1f, 0.0f, 0.0f, 0.0f}, a[4] = {0.0f, 0.5f, 0.0f, 0.0f};
        float b1Alone = b1[0], b2Alone = b2[0], aAlone = a[1];
        for (int frame = 0; frame < 50; ++frame) {
            alignas(16) float raw[8][16], bOut[4][16], aOut[4][16], alone[16];
            engine::NoiseJob jobs[4];
            for (int v = 0; v < 4; ++v) {
                table.read(random, raw[2 * v]);
                table.read(random, raw[2 * v + 1]);
                jobs[v].bState1 = &b1[v];
                jobs[v].bState2 = &b2[v];
                jobs[v].bRaw = raw[2 * v];
                jobs[v].fB = 0.0f;  // would be NaN if it were used
                jobs[v].bNoise = 0.0f;
                jobs[v].aState = &a[v];
                jobs[v].aRaw = raw[2 * v + 1];
                jobs[v].aGain = 0.0f;
                jobs[v].aCoef = 0.5f;
                jobs[v].bOut = bOut[v];
                jobs[v].aOut = aOut[v];
                jobs[v].bQuiet = v != 0;
                jobs[v].aQuiet = v != 1;
            }
            jobs[0].fB = 0.01f;
            jobs[0].bCoef = engine::noiseCoefficient(0.01f);
            jobs[0].bNoise = 0.3f;
            jobs[1].aGain = 0.8f;
            engine::filterNoisesTogether(jobs, 4);
            engine::filterBNoise(b1Alone, b2Alone, raw[0], 0.01f, 0.3f, alone);
            for (int i = 0; i < 16; ++i) ASSERT_EQ(bOut[0][i], alone[i]);
            engine::filterANoise(aAlone, raw[3], 0.8f, 0.5f, alone);
            for (int i = 0; i < 16; ++i) ASSERT_EQ(aOut[1][i], alone[i]);
            for (int v = 0; v < 4; ++v)
                for (int i = 0; i < 16; ++i) {
                    // Exactly +0, as the fill of a quiet filter.
                    if (v != 0) {
                        ASSERT_EQ(std::signbit(bOut[v][i]) ? 1.0f : bOut[v][i], 0.0f) << v << " " << i;
                    }
                    if (v != 1) {
                        ASSERT_EQ(std::signbit(aOut[v][i]) ? 1.0f : aOut[v][i], 0.0f) << v << " " << i;
                    }
                }
            for (int v = 1; v < 4; ++v) {
                ASSERT_EQ(b1[v], 0.0f);
                ASSERT_FALSE(std::signbit(b1[v]));
                ASSERT_EQ(b2[v], 0.0f);
            }
            ASSERT_EQ(b1[0], b1Alone);
            ASSERT_EQ(a[1], aAlone);
        }
    }
}

TEST(OscillatorTest, AnyNumberOfVoicesNoiseFiltersTogetherGetWhatEachGetsAlone) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        const engine::NoiseTable& table = engine::NoiseTable::instance();
        // Counts that leave lanes spare, and more than one loop's worth.
        for (int count : {2, 3, 5, 9, 12, 13, 20}) {
            const std::size_t n = std::size_t(count);
            std::vector<uint32_t> random(n);
            std::vector<float> b1(n), b2(n), a(n), fB(n), bNoise(n), aGain(n), aCoef(n);
            for (std::size_t v = 0; v < n; ++v) {
                random[v] = uint32_t(1000 * v + 7);
                fB[v] = 0.001f + 0.024f * float(v);
                bNoise[v] = 0.1f + 0.1f * float(v % 7);
                aGain[v] = 0.2f * float(v % 4);
                aCoef[v] = 0.05f + 0.045f * float(v);
                b1[v] = 0.01f * float(v);
                a[v] = -0.02f * float(v);
            }
            auto b1Alone = b1, b2Alone = b2, aAlone = a;
            for (int frame = 0; frame < 40; ++frame) {
                struct alignas(16) Frame {
                    float rawB[16], rawA[16], bOut[16], aOut[16];
                };
                std::vector<Frame> f(n);
                std::vector<engine::NoiseJob> jobs(n);
                for (std::size_t v = 0; v < n; ++v) {
                    table.read(random[v], f[v].rawB);
                    table.read(random[v], f[v].rawA);
                    jobs[v].bState1 = &b1[v];
                    jobs[v].bState2 = &b2[v];
                    jobs[v].bRaw = f[v].rawB;
                    jobs[v].fB = fB[v];
                    jobs[v].bCoef = engine::noiseCoefficient(fB[v]);
                    jobs[v].bNoise = bNoise[v];
                    jobs[v].aState = &a[v];
                    jobs[v].aRaw = f[v].rawA;
                    jobs[v].aGain = aGain[v];
                    jobs[v].aCoef = aCoef[v];
                    jobs[v].bOut = f[v].bOut;
                    jobs[v].aOut = f[v].aOut;
                }
                engine::filterNoisesTogether(jobs.data(), count);
                for (std::size_t v = 0; v < n; ++v) {
                    alignas(16) float bAlone[16], aAloneOut[16];
                    engine::filterNoises(b1Alone[v], b2Alone[v], f[v].rawB, fB[v], bNoise[v], aAlone[v], f[v].rawA,
                                         aGain[v], aCoef[v], bAlone, aAloneOut);
                    for (int i = 0; i < 16; ++i) {
                        ASSERT_EQ(f[v].bOut[i], bAlone[i]) << count << " " << v << " " << i;
                        ASSERT_EQ(f[v].aOut[i], aAloneOut[i]) << count << " " << v << " " << i;
                    }
                }
            }
            EXPECT_EQ(b1, b1Alone);
            EXPECT_EQ(b2, b2Alone);
            EXPECT_EQ(a, aAlone);
            EXPECT_NE(b2[n - 1], 0.0f);
        }
    }
}

TEST(OscillatorTest, FourShapesAtOnceAreTheShapesOfEach) {
    // Forms across all three ways, right at and next to their borders, and
    // frequencies from the bottom to where the edge minimum takes over.
    std::vector<float> forms = {0.0f, 1e-7f, 0.1f, 0.33333f, 0.5f, 0.66666f, 0.9f, 1.0f};
    for (float border : {0.33333f, 0.66666f}) {
        forms.push_back(std::nextafter(border, 0.0f));
        forms.push_back(std::nextafter(border, 1.0f));
    }
    for (int i = 0; i <= 200; ++i) forms.push_back(float(i) / 200.0f);
    const float freqs[] = {0.0f, 1e-6f, 0.001f, 0.0025f, 0.01f, 0.05f, 0.2f, 0.35f, 0.5f};
    int compared = 0;
    for (std::size_t i = 0; i + 3 < forms.size() * 9; i += 3) {
        float form[4], freq[4];
        for (std::size_t q = 0; q < 4; ++q) {
            const std::size_t k = (i + q * 7) % (forms.size() * 9);
            form[q] = forms[k / 9];
            freq[q] = freqs[k % 9];
        }
        engine::WaveShape four[4];
        engine::WaveShape* const out[4] = {&four[0], &four[1], &four[2], &four[3]};
        engine::WaveShape::makeFour(form, freq, out);
        for (int q = 0; q < 4; ++q) {
            const engine::WaveShape one = engine::WaveShape::make(form[q], freq[q]);
            ASSERT_EQ(four[q].fall, one.fall) << form[q] << " " << freq[q];
            ASSERT_EQ(four[q].rise, one.rise) << form[q] << " " << freq[q];
            ASSERT_EQ(four[q].top, one.top) << form[q] << " " << freq[q];
            ASSERT_EQ(four[q].fallGain, one.fallGain) << form[q] << " " << freq[q];
            ASSERT_EQ(four[q].riseGain, one.riseGain) << form[q] << " " << freq[q];
            ASSERT_EQ(four[q].offset, one.offset) << form[q] << " " << freq[q];
            ++compared;
        }
    }
    EXPECT_GT(compared, 2500);
    // Lanes that all take one way, and a lane with no form at all, which
    // make takes the last way.
    for (float f : {0.1f, 0.5f, 0.9f, std::nanf("")}) {
        const float form[4] = {f, f, f, 0.2f}, freq[4] = {0.001f, 0.01f, 0.1f, 0.001f};
        engine::WaveShape four[4];
        engine::WaveShape* const out[4] = {&four[0], &four[1], &four[2], &four[3]};
        engine::WaveShape::makeFour(form, freq, out);
        // Equal, or both not a number.
        auto same = [](float x, float y) { return x == y || (std::isnan(x) && std::isnan(y)); };
        for (int q = 0; q < 4; ++q) {
            const engine::WaveShape one = engine::WaveShape::make(form[q], freq[q]);
            EXPECT_TRUE(same(four[q].fall, one.fall)) << f << " " << q;
            EXPECT_TRUE(same(four[q].rise, one.rise)) << f << " " << q;
            EXPECT_TRUE(same(four[q].top, one.top)) << f << " " << q;
            EXPECT_TRUE(same(four[q].riseGain, one.riseGain)) << f << " " << q;
            EXPECT_TRUE(same(four[q].offset, one.offset)) << f << " " << q;
        }
    }
}

TEST(OscillatorTest, VoiceBInOnePassIsBSwungToneAndNoise) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        const engine::NoiseTable& table = engine::NoiseTable::instance();
        uint32_t random = 5;
        int compared = 0;
        // Sub amounts on both sides of the limit, frequencies for 1, 2 and 3 points.
        for (float amount : {0.0f, 0.99999e-5f, 1e-5f, 0.4f, 1.0f}) {
            for (float fB : {0.0004f, 0.003f, 0.02f, 0.3f}) {
                for (float subPhase : {0.0f, 0.3f, 0.75f}) {
                    alignas(16) float noise[16], oneGo[16], steps[16];
                    table.read(random, noise);
                    const float bPhase = engine::bPhaseFromSubPhase(subPhase);
                    const engine::WaveShape shape = engine::WaveShape::make(0.45f, fB);
                    engine::renderVoiceB(bPhase, subPhase, fB, shape, amount, 0.7f, noise, oneGo);
                    engine::renderOscillatorB(bPhase, fB, shape, steps);
                    engine::applySubOscillator(steps, subPhase, fB, amount);
                    for (int i = 0; i < 16; ++i) {
                        ASSERT_EQ(oneGo[i], steps[i] * 0.7f + noise[i]) << amount << " " << fB << " " << i;
                        ++compared;
                    }
                }
            }
        }
        EXPECT_EQ(compared, 5 * 4 * 3 * 16);
    }
}

TEST(OscillatorTest, VoiceAInOnePassIsTheMixOfAWithBAndNoise) {
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        const engine::NoiseTable& table = engine::NoiseTable::instance();
        uint32_t random = 9;
        float phase = 0.3f, phaseAlone = 0.3f;
        int compared = 0;
        // Mean steps for 1, 2 and 3 points, steps that run backwards too.
        for (float meanStep : {0.001f, 0.005f, 0.05f}) {
            for (int frame = 0; frame < 20; ++frame) {
                alignas(16) float b[16], noise[16], step[16], mix[16], a[16];
                table.read(random, b);
                table.read(random, noise);
                for (int i = 0; i < 16; ++i) step[i] = meanStep * (1.0f + 1.5f * b[i]);
                const engine::WaveShape shape = engine::WaveShape::make(0.8f, meanStep);
                engine::renderVoiceA(phase, step, meanStep, shape, 0.6f, b, 0.35f, noise, mix);
                engine::renderOscillatorA(phaseAlone, step, meanStep, shape, a);
                for (int i = 0; i < 16; ++i) {
                    ASSERT_EQ(mix[i], (a[i] * 0.6f + b[i] * 0.35f) + noise[i]) << meanStep << " " << i;
                    ++compared;
                }
                ASSERT_EQ(phase, phaseAlone);
            }
        }
        EXPECT_EQ(compared, 3 * 20 * 16);
    }
}

TEST(OscillatorTest, WideLoopsSoundAsTheFourSampleLoops) {
    if (!engine::wide::available()) GTEST_SKIP() << "this processor has no 256-bit registers";
    const engine::NoiseTable& table = engine::NoiseTable::instance();
    uint32_t random = 2024;
    float phaseA = 0.0f, phaseRef = 0.0f;
    int compared = 0;
    for (int frame = 0; frame < 3000; ++frame) {
        alignas(16) float b[16], noise[16], step[16], wide[16], narrow[16], a[16];
        table.read(random, b);
        table.read(random, noise);
        // Frequencies for one, two and three points; deep modulation that
        // runs the phase backwards; forms of every way.
        const float f = 0.0005f * float(1 + frame % 97);
        const float form = float(frame % 101) / 100.0f;
        const float depth = float(frame % 7) * 0.5f;
        for (int i = 0; i < 16; ++i) step[i] = f * (1.0f + depth * b[i]);
        const engine::WaveShape shapeA = engine::WaveShape::make(form, f);
        engine::wide::renderVoiceA(phaseA, step, f, shapeA, 0.6f, b, -0.3f, noise, wide);
        engine::renderOscillatorA(phaseRef, step, f, shapeA, a);
        for (int i = 0; i < 16; ++i) narrow[i] = (a[i] * 0.6f + b[i] * -0.3f) + noise[i];
        for (int i = 0; i < 16; ++i) ASSERT_EQ(wide[i], narrow[i]) << frame << " " << i;
        ASSERT_EQ(phaseA, phaseRef) << frame;

        const float subPhase = float(frame % 13) / 13.0f;
        const float amount = float(frame % 5) * 0.25f;
        const engine::WaveShape shapeB = engine::WaveShape::make(1.0f - form, f);
        const float bPhase = engine::bPhaseFromSubPhase(subPhase);
        engine::wide::renderVoiceB(bPhase, subPhase, f, shapeB, amount, 0.8f, noise, wide);
        engine::renderOscillatorB(bPhase, f, shapeB, a);
        engine::applySubOscillator(a, subPhase, f, amount);
        for (int i = 0; i < 16; ++i) ASSERT_EQ(wide[i], a[i] * 0.8f + noise[i]) << frame << " " << i;
        compared += 32;
    }
    EXPECT_EQ(compared, 3000 * 32);
}

TEST(OscillatorTest, SeveralVoicesOscillatorsATogetherGetWhatEachGetsAlone) {
    const engine::NoiseTable& table = engine::NoiseTable::instance();
    // The four-lane loops, and the eight-lane ones where they run.
    for (int width : testsupport::WideLoops::ways()) {
        testsupport::WideLoops loops(width);
        SCOPED_TRACE(std::to_string(width) + " lanes");
        for (int count = 1; count <= 7; ++count) {
            struct alignas(16) Voice {
                float b[16], noise[16], step[16], out[16], alone[16];
                float phase = 0.0f, phaseAlone = 0.0f;
                engine::WaveShape shape;
            };
            std::vector<Voice> voices(static_cast<std::size_t>(count));
            uint32_t random = 100u + uint32_t(count);
            for (int frame = 0; frame < 30; ++frame) {
                std::vector<engine::VoiceAJob> jobs(voices.size());
                for (std::size_t k = 0; k < voices.size(); ++k) {
                    Voice& v = voices[k];
                    table.read(random, v.b);
                    table.read(random, v.noise);
                    // Mean steps for one, two and three points.
                    const float f = 0.0015f * float(1 + (k * 7 + std::size_t(frame)) % 11);
                    for (int i = 0; i < 16; ++i) v.step[i] = f * (1.0f + 1.2f * v.b[i]);
                    v.shape = engine::WaveShape::make(0.1f * float(k), f);
                    jobs[k] = {&v.phase, v.step, f, &v.shape, 0.7f, v.b, 0.2f, v.noise, v.out};
                }
                engine::renderVoicesA(jobs.data(), count);
                for (std::size_t k = 0; k < voices.size(); ++k) {
                    Voice& v = voices[k];
                    engine::renderVoiceA(v.phaseAlone, v.step, jobs[k].meanStep, v.shape, 0.7f, v.b, 0.2f, v.noise,
                                         v.alone);
                    for (int i = 0; i < 16; ++i) ASSERT_EQ(v.out[i], v.alone[i]) << count << " " << k << " " << i;
                    ASSERT_EQ(v.phase, v.phaseAlone);
                }
            }
            EXPECT_NE(voices.back().phase, 0.0f);
        }
    }
}
