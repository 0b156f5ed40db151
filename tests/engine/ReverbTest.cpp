#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "engine/ChorusReverb.h"
#include "tests/engine/FloatingPointMode.h"
#include "tests/support/AllocationCounter.h"

using namespace engine;

namespace {

struct WetRun {
    std::vector<float> left, right;
};

// Noise into the send for `loud` blocks, then silence for `quiet` blocks.
WetRun play(ChorusReverb& rv, int loud, int quiet, float T, float D, float C) {
    WetRun run;
    uint32_t r = 7;
    float in[64], l[64], rr[64];
    for (int b = 0; b < loud + quiet; ++b) {
        for (float& v : in) {
            r = r * 1664525u + 1013904223u;
            v = b < loud ? (float(r >> 8) / 8388608.0f - 1.0f) * 0.5f : 0.0f;
        }
        rv.process(in, l, rr, b < loud ? 1.0f : 0.0f, T, D, C);
        run.left.insert(run.left.end(), l, l + 64);
        run.right.insert(run.right.end(), rr, rr + 64);
    }
    return run;
}

// FNV-1a over the bits of both outputs: noise in, then a tail, with the
// reverb time jumping (gliding gains), damping and chorus on.
uint64_t wetFingerprint(float rate, float fxSize) {
    ChorusReverb rv;
    rv.seed(0x1234567u);
    rv.resize(rate, fxSize);
    uint64_t h = 1469598103934665603ull;
    const auto mix = [&h](const float* v) {
        for (int i = 0; i < 64; ++i) {
            uint32_t bits;
            std::memcpy(&bits, &v[i], 4);
            for (int b = 0; b < 4; ++b) {
                h ^= (bits >> (8 * b)) & 0xFFu;
                h *= 1099511628211ull;
            }
        }
    };
    uint32_t r = 99;
    float in[64], l[64], rr[64];
    for (int b = 0; b < 700; ++b) {
        const bool loud = b < 550;
        for (float& v : in) {
            r = r * 1664525u + 1013904223u;
            v = loud ? (float(r >> 8) / 8388608.0f - 1.0f) * 0.5f : 0.0f;
        }
        const float T = b < 120 ? 1.5f : 6.0f;
        rv.process(in, l, rr, loud ? 1.0f : 0.0f, T, 3000.0f, 1.0f);
        mix(l);
        mix(rr);
    }
    return h;
}

}  // namespace

TEST(ReverbTest, PrimeTableAndDelays) {
    const int* P = ChorusReverb::primes();
    EXPECT_EQ(P[0], 3);
    EXPECT_EQ(P[1], 5);
    EXPECT_EQ(P[12], 43);
    EXPECT_EQ(P[32], 139);
    ChorusReverb rv;
    rv.resize(44100.0f, 0.5f);
    // size 2.55 s: N = 112455; line 0 prime 43, line 11 prime 113; diffuser 0 prime 79.
    EXPECT_EQ(rv.size(), 4.9f * 0.5f + 0.1f);
    const int N = int(std::floor(rv.size() * 44100.0f + 0.5f));
    EXPECT_EQ(rv.lineDelay(0), (43 / 2 + N) / 43);
    EXPECT_EQ(rv.lineDelay(11), (113 / 2 + N) / 113);
    EXPECT_EQ(rv.diffDelay(0), (79 / 2 + N) / 79);
    EXPECT_EQ(rv.diffDelay(5), (139 / 2 + N) / 139);
    // The ring is a power of two.
    EXPECT_EQ(rv.capacity() & (rv.capacity() - 1), 0u);
}

TEST(ReverbTest, ChorusZeroReadsExactDelaysWhateverTheRandomWords) {
    ChorusReverb a, b;
    a.seed(1);
    b.seed(0xDEADBEEF);
    a.resize(44100.0f, 0.1f);
    b.resize(44100.0f, 0.1f);
    WetRun ra = play(a, 20, 20, 2.0f, 0.0f, 0.0f);
    WetRun rb = play(b, 20, 20, 2.0f, 0.0f, 0.0f);
    EXPECT_EQ(ra.left, rb.left);
    EXPECT_EQ(ra.right, rb.right);
    // With chorus the random walks move the reads apart.
    ChorusReverb c, d;
    c.seed(1);
    d.seed(0xDEADBEEF);
    c.resize(44100.0f, 0.1f);
    d.resize(44100.0f, 0.1f);
    WetRun rc = play(c, 20, 200, 2.0f, 0.0f, 1.0f);
    WetRun rd = play(d, 20, 200, 2.0f, 0.0f, 1.0f);
    EXPECT_NE(rc.left, rd.left);
}

TEST(ReverbTest, DampingZeroMeansNoDamping) {
    // D = 0 gives a damping coefficient of exactly 1, as does a corner so
    // high that its exponential vanishes.
    ChorusReverb a, b, c;
    a.resize(44100.0f, 0.2f);
    b.resize(44100.0f, 0.2f);
    c.resize(44100.0f, 0.2f);
    WetRun ra = play(a, 10, 30, 3.0f, 0.0f, 0.5f);
    WetRun rb = play(b, 10, 30, 3.0f, 1e9f, 0.5f);
    WetRun rc = play(c, 10, 30, 3.0f, 2000.0f, 0.5f);
    EXPECT_EQ(ra.left, rb.left);
    EXPECT_NE(ra.left, rc.left);
}

TEST(ReverbTest, ReverbTimeJumpGlides) {
    ChorusReverb rv;
    rv.resize(44100.0f, 0.3f);
    play(rv, 5, 0, 1.0f, 0.0f, 1.0f);
    const float oldGain = rv.gainNow(0);
    float in[64] = {}, l[64], r[64];
    in[0] = 0.1f;
    rv.process(in, l, r, 1.0f, 10.0f, 0.0f, 1.0f);
    const float target = rv.gainTarget(0);
    EXPECT_GT(target, oldGain);
    EXPECT_GT(rv.gainNow(0), oldGain);
    EXPECT_LT(rv.gainNow(0), target);
    // About 40 Hz: most of the way after 20 ms, there after 200 ms.
    for (int b = 0; b < 140; ++b) rv.process(in, l, r, 1.0f, 10.0f, 0.0f, 1.0f);
    EXPECT_NEAR(rv.gainNow(0), target, 1e-5);
}

TEST(ReverbTest, NewSizeClearsTheTail) {
    ChorusReverb rv;
    rv.resize(44100.0f, 0.3f);
    WetRun before = play(rv, 20, 5, 5.0f, 0.0f, 1.0f);
    EXPECT_GT(std::fabs(before.left.back()), 0.0f);
    EXPECT_GT(rv.level(), 0.0f);
    rv.resize(44100.0f, 0.31f);
    EXPECT_EQ(rv.level(), 0.0f);
    WetRun after = play(rv, 0, 3, 5.0f, 0.0f, 1.0f);
    for (float v : after.left) EXPECT_EQ(v, 0.0f);
}

TEST(ReverbTest, TailEndsCleanlyAndCostsNothingAfter) {
    ChorusReverb rv;
    rv.resize(44100.0f, 0.1f);
    WetRun run = play(rv, 10, 3000, 0.5f, 5000.0f, 1.0f);
    EXPECT_EQ(rv.level(), 0.0f);
    for (std::size_t i = run.left.size() - 64; i < run.left.size(); ++i) EXPECT_EQ(run.left[i], 0.0f);
    for (float v : run.left) ASSERT_TRUE(std::isfinite(v));
}

TEST(ReverbTest, SameOutputWithAndWithoutFlushToZeroAndNoDenormalStates) {
    ChorusReverb a, b;
    a.resize(44100.0f, 0.05f);
    b.resize(44100.0f, 0.05f);
    WetRun ra, rb;
    {
        testsupport::FlushToZero ftz(false);
        ra = play(a, 30, 2500, 1.0f, 3000.0f, 1.0f);
    }
    {
        testsupport::FlushToZero ftz(true);
        rb = play(b, 30, 2500, 1.0f, 3000.0f, 1.0f);
    }
    ASSERT_EQ(ra.left.size(), rb.left.size());
    for (std::size_t i = 0; i < ra.left.size(); ++i) {
        ASSERT_EQ(ra.left[i], rb.left[i]) << i;
        ASSERT_EQ(ra.right[i], rb.right[i]) << i;
    }
    int subnormal = 0;
    a.forEachState([&](float s) {
        if (std::fpclassify(s) == FP_SUBNORMAL) ++subnormal;
    });
    EXPECT_EQ(subnormal, 0);
}

TEST(ReverbTest, OnlyAResizeAllocates) {
    ChorusReverb rv;
    rv.resize(44100.0f, 0.2f);
    float in[64] = {}, l[64], r[64];
    in[3] = 1.0f;
    testsupport::AllocationCounter counter;
    for (int b = 0; b < 50; ++b) rv.process(in, l, r, 1.0f, 2.0f, 4000.0f, 1.0f);
    rv.resize(44100.0f, 0.2f);  // same size: nothing
    EXPECT_EQ(counter.count(), 0u);
    rv.resize(44100.0f, 0.9f);  // new size, bigger ring
    EXPECT_EQ(counter.count(), 1u);
}

// The wet signal of stored patches never changes: these fingerprints were
// taken from the sample-by-sample loop, before it learned to take four
// samples at once. The sizes cover a large ring, a ring that wraps often, a
// rate too low for four at once (diffuser taps two apart), taps exactly four
// apart, and the farthest tap three short of the ring's end.
TEST(ReverbTest, WetSignalIsPinnedBitForBit) {
    struct Case {
        float rate, fxSize;
        uint64_t fingerprint;
    };
    const Case cases[] = {
        {44100.0f, 0.5f, 0x51E7318C37C6DDF2ull},  {96000.0f, 0.2f, 0x4EFCCD53A76F3D16ull},
        {22050.0f, 0.0f, 0x07B0C10AE5762874ull},  {8000.0f, 0.0f, 0x5C58EB8082909720ull},
        {16000.0f, 0.0f, 0x0C8052546C179C3Full},  {44100.0f, 0.69815f, 0x31C933D64D6AC53Dull},
    };
    for (const Case& c : cases)
        EXPECT_EQ(wetFingerprint(c.rate, c.fxSize), c.fingerprint) << c.rate << " Hz, fx_size " << c.fxSize;
}

// Asleep, a rest is the block of silence that process would give, without
// writing the silence: the gains follow the reverb time at once, and the
// next sound comes out the same.
TEST(ReverbTest, RestIsASilentBlockAsleep) {
    ChorusReverb resting, processing;
    for (ChorusReverb* rv : {&resting, &processing}) {
        rv->seed(9);
        rv->resize(44100.0f, 0.1f);
        play(*rv, 5, 0, 0.3f, 3000.0f, 1.0f);
    }
    float silence[64] = {}, l[64], r[64];
    int blocks = 0;
    while (!resting.asleep(0.0f) && blocks < 100000) {
        resting.process(silence, l, r, 0.0f, 0.3f, 3000.0f, 1.0f);
        processing.process(silence, l, r, 0.0f, 0.3f, 3000.0f, 1.0f);
        ++blocks;
    }
    ASSERT_TRUE(resting.asleep(0.0f));
    ASSERT_GT(blocks, 10);
    EXPECT_FALSE(resting.asleep(1.0f));
    // The reverb time moves while asleep.
    for (int b = 0; b < 30; ++b) {
        const float T = b < 10 ? 0.3f : 1.7f;
        resting.rest(T);
        for (float& v : l) v = 1.0f;
        processing.process(silence, l, r, 0.0f, T, 3000.0f, 1.0f);
        for (float v : l) ASSERT_EQ(v, 0.0f);
    }
    for (int k = 0; k < ChorusReverb::LINES; ++k) EXPECT_EQ(resting.gainNow(k), processing.gainNow(k));
    EXPECT_EQ(resting.level(), 0.0f);
    const WetRun a = play(resting, 3, 3, 1.7f, 3000.0f, 1.0f);
    const WetRun b = play(processing, 3, 3, 1.7f, 3000.0f, 1.0f);
    ASSERT_EQ(a.left, b.left);
    ASSERT_EQ(a.right, b.right);
    float loudest = 0.0f;
    for (float v : a.left) loudest = std::max(loudest, std::fabs(v));
    EXPECT_GT(loudest, 1e-3f);
}
