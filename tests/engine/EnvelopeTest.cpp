#include <gtest/gtest.h>

#include <cmath>

#include "engine/BranchParams.h"
#include "engine/EnvelopeClock.h"
#include "engine/EnvelopeCurves.h"
#include "engine/Lfo.h"
#include "engine/Pan.h"
#include "engine/Pitch.h"
#include "engine/SmoothedValue.h"

using namespace engine;

namespace {

BranchParams loopingParams() {
    BranchParams p;
    p.atkRate = 0.25f;
    p.dcyRate = 0.5f;
    p.loopDecay = 0.5f;
    p.volAtkBias = 0.3f;
    p.volDcyBias = 0.6f;
    p.modAtkBias = 0.2f;
    p.modDcyBias = 0.7f;
    return p;
}

}  // namespace

TEST(EnvelopeTest, BiasBendsZeroToOneOntoItself) {
    for (float b : {0.01f, 0.3f, 0.5f, 0.9f}) {
        EXPECT_EQ(bias(0.0f, b), 0.0f);
        EXPECT_NEAR(bias(1.0f, b), 1.0f, 2e-6);
    }
    EXPECT_FLOAT_EQ(bias(0.3f, 0.5f), 0.3f);
    EXPECT_LT(bias(0.3f, 0.2f), 0.3f);
    EXPECT_GT(bias(0.3f, 0.8f), 0.3f);
}

TEST(EnvelopeTest, ClockAttacksDecaysAndLoopsLowerEachTime) {
    BranchParams p = loopingParams();
    uint8_t state = 1;
    float pos = 0, sus = 0, loop = 1;
    EnvelopeCurveChoice c = stepEnvelopeClock(state, pos, sus, loop, p);
    EXPECT_EQ(c.vol, p.volAtkBias);
    EXPECT_EQ(c.mod, p.modAtkBias);
    EXPECT_FLOAT_EQ(pos, 0.25f);
    EXPECT_FLOAT_EQ(sus, 0.25f);
    for (int i = 0; i < 3; ++i) stepEnvelopeClock(state, pos, sus, loop, p);
    EXPECT_EQ(state, 2);
    EXPECT_EQ(pos, 1.0f);
    EXPECT_EQ(sus, 1.0f);
    c = stepEnvelopeClock(state, pos, sus, loop, p);
    EXPECT_EQ(c.vol, p.volDcyBias);
    EXPECT_FLOAT_EQ(pos, 0.5f);
    stepEnvelopeClock(state, pos, sus, loop, p);
    stepEnvelopeClock(state, pos, sus, loop, p);  // below 0: next loop
    EXPECT_EQ(state, 1);
    EXPECT_EQ(pos, 0.0f);
    EXPECT_FLOAT_EQ(loop, 0.5f);
    EXPECT_EQ(sus, 1.0f);  // the sustain ramp stays up after the first attack
}

TEST(EnvelopeTest, LoopDecayZeroEndsTheEnvelopeAfterTheFirstDecay) {
    BranchParams p = loopingParams();
    p.loopDecay = 0.0f;
    uint8_t state = 2;
    float pos = 0.2f, sus = 1, loop = 1;
    stepEnvelopeClock(state, pos, sus, loop, p);
    EXPECT_EQ(state, 0);
    EXPECT_EQ(loop, 0.0f);
    // Done: the curves are 0.
    EnvelopeCurveChoice c = stepEnvelopeClock(state, pos, sus, loop, p);
    EXPECT_EQ(c.vol, 0.0f);
    EXPECT_EQ(c.mod, 0.0f);
}

TEST(EnvelopeTest, LoopHeightIsFlushedBelowOneTenThousandth) {
    BranchParams p = loopingParams();
    p.loopDecay = 0.5f;
    uint8_t state = 2;
    float pos = 0.0f, sus = 1, loop = 0.00019f;
    stepEnvelopeClock(state, pos, sus, loop, p);
    EXPECT_EQ(loop, 0.0f);
    EXPECT_EQ(state, 0);
}

TEST(EnvelopeTest, VolSusZeroEndsTheVoiceWhenTheClockIsDone) {
    EXPECT_TRUE(envelopeEnds(0, 0.0f));
    EXPECT_TRUE(envelopeEnds(0, 0.99e-5f));
    EXPECT_FALSE(envelopeEnds(0, 1e-5f));  // sustain holds the voice
    EXPECT_FALSE(envelopeEnds(1, 0.0f));
    EXPECT_FALSE(envelopeEnds(2, 0.0f));
}

TEST(EnvelopeTest, SustainIsAFloorAtSeventyPercentOfThePeak) {
    // Decay done (position 0), full sustain: amp = 0.7071 x gains.
    EXPECT_FLOAT_EQ(envelopeAmp(0.0f, 0.5f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f, 1.0f), 0.70710677f);
    // Before the first attack finished the ramp scales the floor.
    EXPECT_FLOAT_EQ(envelopeAmp(0.0f, 0.5f, 1.0f, 0.5f, 1.0f, 1.0f, 1.0f, 1.0f), 0.35355338f);
    // The peak is the full level; the fourth power of the curve below it.
    EXPECT_FLOAT_EQ(envelopeAmp(1.0f, 0.5f, 1.0f, 0.0f, 0.0f, 1.0f, 1.0f, 1.0f), 1.0f);
    EXPECT_FLOAT_EQ(envelopeAmp(0.5f, 0.5f, 1.0f, 0.0f, 0.0f, 0.5f, 1.0f, 1.0f), 0.03125f);
}

TEST(EnvelopeTest, FadeAboveReleaseGainEndsTheVoiceInThatFrame) {
    float g = 0.5f;
    EXPECT_FALSE(stepReleaseGain(g, 1.0f, 0.6f));
    EXPECT_EQ(g, 0.0f);
    g = 0.5f;
    EXPECT_TRUE(stepReleaseGain(g, 0.9f, 0.1f));
    EXPECT_FLOAT_EQ(g, 0.35f);
    g = 2e-5f;  // below 1e-5 after the exponential fall
    EXPECT_FALSE(stepReleaseGain(g, 0.4f, 0.0f));
    EXPECT_EQ(g, 0.0f);
}

TEST(EnvelopeTest, EnvTiltZeroReachesThePeakInOneFrame) {
    // atkRate = 1 / (max(loop * 0, 1 / r) * r / 16) = 16.
    BranchParams p = loopingParams();
    p.atkRate = 1.0f / ((1.0f / 44100.0f) * 44100.0f / 16.0f);
    EXPECT_FLOAT_EQ(p.atkRate, 16.0f);
    uint8_t state = 1;
    float pos = 0, sus = 0, loop = 1;
    stepEnvelopeClock(state, pos, sus, loop, p);
    EXPECT_EQ(state, 2);
    EXPECT_EQ(pos, 1.0f);
    EXPECT_EQ(sus, 1.0f);
}

TEST(EnvelopeTest, ModulationHoldSamplesAtItsRate) {
    float hold = 0, acc = 0;
    stepModHold(hold, acc, 0.5f, 1.0f, 0.5f, 0.5f, 1.0f);
    EXPECT_EQ(hold, 0.0f);  // not yet
    stepModHold(hold, acc, 0.5f, 1.0f, 0.5f, 0.5f, 1.0f);
    EXPECT_FLOAT_EQ(hold, 0.5f);
    EXPECT_EQ(acc, 0.0f);
    stepModHold(hold, acc, 1.0f, 0.5f, 1.0f, 0.5f, 4.0f);  // clamped to 1
    EXPECT_EQ(hold, 1.0f);
}

TEST(EnvelopeTest, SmoothedValuesFollowTheirTargets) {
    float copy = 0.0f;
    followValue(copy, 1.0f, 0.25f);
    EXPECT_FLOAT_EQ(copy, 0.25f);
    for (int i = 0; i < 200; ++i) followValue(copy, 1.0f, 0.25f);
    EXPECT_FLOAT_EQ(copy, 1.0f);
}

TEST(EnvelopeTest, LfoIsATriangleAndTremoloZeroIsUnity) {
    EXPECT_EQ(lfoValue(0.0f), 1.0f);
    EXPECT_EQ(lfoValue(0.5f), -1.0f);
    EXPECT_EQ(lfoValue(0.25f), 0.0f);
    EXPECT_EQ(advanceLfo(0.75f, 0.5f), 0.25f);
    EXPECT_EQ(tremoloGain(0.3f, 0.0f), 1.0f);
    EXPECT_FLOAT_EQ(tremoloGain(1.0f, 1.0f), 1.4142135f);
    EXPECT_FLOAT_EQ(tremoloGain(-1.0f, 1.0f), 0.0f);
}

TEST(EnvelopeTest, PitchCombinesWheelVibratoAndKey) {
    EXPECT_EQ(voicePitch(0.0f, 0.0f, 2.0f, 0, 0.0f, 1.0f, 1.0f), 1.0f);
    EXPECT_FLOAT_EQ(voicePitch(1.0f, 0.0f, 2.0f, 0, 0.0f, 1.0f, 1.5f), 3.0f);
    // Full wheel up: two semitones (8191 / 8192 of them).
    EXPECT_NEAR(voicePitch(0.0f, 0.0f, 2.0f, 8191, 0.0f, 0.0f, 1.0f), std::pow(2.0, 2.0 / 12.0 * 8191 / 8192), 1e-5);
    EXPECT_NEAR(voicePitch(0.0f, -1.0f, 2.0f, -8192, 0.0f, 0.0f, 1.0f), 0.5 * std::pow(2.0, -2.0 / 12.0), 1e-5);
    EXPECT_FLOAT_EQ(voicePitch(0.0f, 0.0f, 0.0f, 0, 1.0f / 12.0f, -1.0f, 1.0f), std::pow(2.0f, -1.0f / 12.0f));
    EXPECT_EQ(keyFollowFactor(4.0f, 0.0f), 1.0f);
    EXPECT_FLOAT_EQ(keyFollowFactor(4.0f, 0.5f), 2.0f);
}

TEST(EnvelopeTest, PanPlacesBranchesAroundACircleAndFadesInWithEffect) {
    // Full length, full effect.
    EXPECT_FLOAT_EQ(panTarget(0, 0.0f, 1.0f, 1.0f), 0.0f);   // R = 1: centre
    EXPECT_FLOAT_EQ(panTarget(3, 0.0f, 1.0f, 1.0f), -1.0f);  // R = 2: one side
    EXPECT_FLOAT_EQ(panTarget(9, 0.0f, 1.0f, 1.0f), 1.0f);   // R = 4 mod 4 = 0: the other
    // Rotation by a quarter turns three branches on.
    EXPECT_FLOAT_EQ(panTarget(0, 0.25f, 1.0f, 1.0f), panTarget(3, 0.0f, 1.0f, 1.0f));
    // Effect below a quarter of its travel: no spread; at half: full.
    EXPECT_EQ(panTarget(3, 0.0f, -0.5f, 1.0f), 0.0f);
    EXPECT_FLOAT_EQ(panTarget(3, 0.0f, 0.0f, 1.0f), -1.0f);
    // Length 0: centre; half length: three quarters of the width.
    EXPECT_EQ(panTarget(3, 0.0f, 1.0f, 0.0f), 0.0f);
    EXPECT_FLOAT_EQ(panTarget(3, 0.0f, 1.0f, 0.5f), -0.75f);
}
