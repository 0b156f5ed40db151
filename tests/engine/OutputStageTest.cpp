#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/OutputStage.h"
#include "engine/VoiceOutputGains.h"
#include "tests/support/AllocationCounter.h"

using namespace engine;

TEST(OutputStageTest, SilentBlockOnSilentStageLeavesBusesAndDecaysTheMeter) {
    OutputStage stage;
    stage.init(44100.0f);
    // Drive the clipper to fill the meter, then go silent until the DC
    // blocker has settled.
    float l[64], r[64];
    for (int b = 0; b < 4; ++b) {
        for (int i = 0; i < 64; ++i) l[i] = r[i] = 40.0f;
        bool silent = false;
        stage.process(l, r, silent, 5.0f);
    }
    for (int b = 0; b < 2000; ++b) {
        for (int i = 0; i < 64; ++i) l[i] = r[i] = 0.0f;
        bool silent = false;
        stage.process(l, r, silent, 5.0f);
    }
    ASSERT_LT(std::fabs(stage.dcLeft()), 0.0001f);
    const float before = stage.meterState();
    for (int i = 0; i < 64; ++i) l[i] = r[i] = 123.0f;  // marker: must stay
    bool silent = true;
    stage.process(l, r, silent, 5.0f);
    EXPECT_TRUE(silent);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(l[i], 123.0f);
    EXPECT_LE(stage.meterState(), before);
}

TEST(OutputStageTest, ClipperReachesExactlyOneAndClipsHarderBeyond) {
    OutputStage stage;
    stage.init(44100.0f);
    float l[64], r[64];
    bool silent = false;
    // Steady gain: first block ramps from 0; feed big values after ramp-in.
    for (int b = 0; b < 3; ++b) {
        for (int i = 0; i < 64; ++i) l[i] = r[i] = (i & 1) ? 100.0f : -100.0f;
        stage.process(l, r, silent, 1.0f / OutputStage::preGain);
    }
    for (int i = 0; i < 64; ++i) {
        EXPECT_FLOAT_EQ(std::fabs(l[i]), OutputStage::postGain);
    }
    EXPECT_GT(stage.meter(), 0.5f);
}

TEST(OutputStageTest, SoftClipperShapesSmallSignalsCubically) {
    OutputStage stage;
    stage.init(48000.0f);
    float l[64], r[64];
    bool silent = false;
    const float g = 1.0f / OutputStage::preGain;
    for (int b = 0; b < 2; ++b) {
        for (int i = 0; i < 64; ++i) l[i] = r[i] = 0.0f;
        stage.process(l, r, silent, g);
    }
    for (int i = 0; i < 64; ++i) l[i] = r[i] = (i == 0) ? 0.5f : 0.0f;
    stage.process(l, r, silent, g);
    // x = 0.5 (DC blocker takes a tiny part): z = (1.54 - 0.54 x^2) x.
    const float c = 0.5f * (1.0f - (1.0f - std::exp(-6.2831855f * 40.0f / 48000.0f)));
    EXPECT_NEAR(l[0], (1.54f - 0.54f * c * c) * c * 0.99f, 2e-4);
}

TEST(OutputStageTest, VolumeZeroRampsToSilenceInOneBlockWithoutAClick) {
    // Two stages play the same; at volume 0 one gets loud input, the other
    // none. After the ramp block the input no longer reaches the output.
    OutputStage a, b;
    a.init(44100.0f);
    b.init(44100.0f);
    float la[64], ra[64], lb[64], rb[64];
    bool silent = false;
    for (int blk = 0; blk < 20; ++blk) {
        for (int i = 0; i < 64; ++i) la[i] = ra[i] = lb[i] = rb[i] = 0.3f * std::sin(0.05f * float(blk * 64 + i));
        a.process(la, ra, silent, 1.0f);
        b.process(lb, rb, silent, 1.0f);
    }
    float last = la[63];
    for (int i = 0; i < 64; ++i) la[i] = ra[i] = 0.3f * std::sin(0.05f * float(20 * 64 + i));
    a.process(la, ra, silent, 0.0f);
    // The level falls linearly over the block: no step between samples.
    EXPECT_LT(std::fabs(la[0] - last), 0.02f);
    for (int i = 1; i < 64; ++i) EXPECT_LT(std::fabs(la[i] - la[i - 1]), 0.02f) << i;
    EXPECT_EQ(a.lastGain(), 0.0f);
    for (int blk = 0; blk < 5; ++blk) {
        for (int i = 0; i < 64; ++i) {
            la[i] = ra[i] = 0.9f;
            lb[i] = rb[i] = 0.0f;
        }
        a.process(la, ra, silent, 0.0f);
        if (blk == 0) {
            // b: the same ramp block, then silence
            for (int i = 0; i < 64; ++i) lb[i] = rb[i] = 0.3f * std::sin(0.05f * float(20 * 64 + i));
            b.process(lb, rb, silent, 0.0f);
            for (int i = 0; i < 64; ++i) lb[i] = rb[i] = 0.0f;
        }
        b.process(lb, rb, silent, 0.0f);
        if (blk == 0) continue;
        // Only the DC blocker's own smooth decay remains.
        for (int i = 0; i < 64; ++i) EXPECT_LT(std::fabs(la[i]), 0.1f);
    }
    EXPECT_EQ(a.dcLeft(), b.dcLeft());
}

TEST(OutputStageTest, DcBlockerRemovesAConstant) {
    OutputStage stage;
    stage.init(44100.0f);
    float l[64], r[64];
    bool silent = false;
    for (int b = 0; b < 400; ++b) {
        for (int i = 0; i < 64; ++i) l[i] = r[i] = 0.5f;
        stage.process(l, r, silent, 1.0f);
    }
    EXPECT_LT(std::fabs(l[63]), 1e-3f);
}

TEST(OutputStageTest, ProcessAllocatesNothing) {
    OutputStage stage;
    stage.init(44100.0f);
    float l[64] = {}, r[64] = {};
    testsupport::AllocationCounter counter;
    for (int b = 0; b < 10; ++b) {
        bool silent = false;
        stage.process(l, r, silent, 1.0f);
    }
    EXPECT_EQ(counter.count(), 0u);
}

TEST(OutputStageTest, VoiceGainsHaveConstantPowerAcrossThePan) {
    VoiceOutputGains centre = voiceOutputGains(0.0f, 1.0f, 0.5f);
    EXPECT_NEAR(centre.left, centre.right, 1e-6);
    EXPECT_EQ(centre.send, 0.5f);
    VoiceOutputGains hardLeft = voiceOutputGains(-1.0f, 1.0f, 0.0f);
    EXPECT_NEAR(hardLeft.left, 1.0f, 1e-6);
    EXPECT_EQ(hardLeft.right, 0.0f);
    VoiceOutputGains hardRight = voiceOutputGains(1.0f, 1.0f, 0.0f);
    EXPECT_NEAR(hardRight.right, 1.0f, 1e-6);
    EXPECT_EQ(hardRight.left, 0.0f);  // flushed below 1e-8
    for (float p = -1.0f; p <= 1.0f; p += 0.125f) {
        VoiceOutputGains g = voiceOutputGains(p, 1.0f, 0.0f);
        // A parabola in place of the sine: up to 1.125 at the half-way points.
        EXPECT_NEAR(g.left * g.left + g.right * g.right, 1.0f, 0.126f) << p;
        VoiceOutputGains mirror = voiceOutputGains(-p, 1.0f, 0.0f);
        EXPECT_NEAR(mirror.left, g.right, 1e-6) << p;
    }
}

TEST(OutputStageTest, FrameRampsTheGainTowardsItsTarget) {
    float x[16], left[16] = {}, right[16] = {}, send[16] = {};
    for (float& v : x) v = 1.0f;
    VoiceOutputGains g{1.0f, 0.5f, 0.25f};
    float gl = 0, gr = 0, gs = 0;
    const float gainStep = 4.0f * 0.0625f;
    addFrameToBuses(x, g, 1.0f, gainStep, gl, gr, gs, left, right, send);
    // s = (1 - 0) * 0.25: sample i gets i * s / 4; the gain ends 4 s further.
    EXPECT_EQ(left[0], 0.0f);
    EXPECT_FLOAT_EQ(left[1], 0.0625f);
    EXPECT_FLOAT_EQ(left[15], 15 * 0.0625f);
    EXPECT_FLOAT_EQ(gl, 1.0f);
    EXPECT_FLOAT_EQ(gr, 0.5f);
    EXPECT_FLOAT_EQ(gs, 0.25f);
    EXPECT_FLOAT_EQ(send[4], 4 * 0.015625f);
}
