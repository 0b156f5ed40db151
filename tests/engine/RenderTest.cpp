// The whole engine, voices to output stage: pitch and level of the Init
// patch, finite output, the same sound with and without flush-to-zero, no
// denormal states after long silences and no allocation in steady state.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/SoundEngine.h"
#include "patch/GeneTable.h"
#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"
#include "tests/engine/FloatingPointMode.h"
#include "tests/support/AllocationCounter.h"

namespace {

TimedEvent ev(int32_t time, int status, int d1, int d2) {
    TimedEvent e;
    e.time = time;
    e.status = static_cast<uint8_t>(status);
    e.data1 = static_cast<uint8_t>(d1);
    e.data2 = static_cast<uint8_t>(d2);
    return e;
}

// A patch with every gene drawn from a small generator of the test's own.
void randomGenes(NorvelleProgram& p, uint32_t seed) {
    uint32_t r = seed * 2654435761u + 1;
    for (int g = 0; g < GENE_COUNT; ++g) {
        r = r * 1664525u + 1013904223u;
        p.setGene(g, float(r >> 8) / 16777216.0f);
    }
    p.seed = seed;
    for (int b = 0; b < BRANCH_COUNT; ++b) p.setParam(Param::Branch1 + b, float((seed + b) % 5) / 5.0f);
    p.computeBranchDeviations();
    p.touch(false);
}

struct Render {
    std::vector<float> left, right;
};

// Plays notes (held for `hold` blocks each, one after another with the given
// start blocks), then `tail` blocks of silence.
Render play(SoundEngine& engine, const NorvelleProgram& program, const std::vector<int>& notes, int hold,
            int blocks) {
    MidiConfigRecord config;
    Render out;
    float l[64], r[64];
    for (int b = 0; b < blocks; ++b) {
        std::vector<TimedEvent> events;
        for (std::size_t i = 0; i < notes.size(); ++i) {
            const int start = int(i) * hold / 2;
            if (b == start) events.push_back(ev(int(i * 7) % 64, 0x90, notes[i], 100));
            if (b == start + hold) events.push_back(ev(5, 0x80, notes[i], 64));
        }
        bool silent = false;
        engine.render(program, config, int(events.size()), events.data(), l, r, silent);
        if (silent)
            for (int i = 0; i < 64; ++i)
                if (l[i] != 0.0f || r[i] != 0.0f) ADD_FAILURE() << "silent block holds sound at block " << b;
        out.left.insert(out.left.end(), l, l + 64);
        out.right.insert(out.right.end(), r, r + 64);
    }
    return out;
}

double goertzel(const std::vector<float>& x, std::size_t from, std::size_t n, double freq, double rate) {
    const double w = 2.0 * M_PI * freq / rate;
    const double c = 2.0 * std::cos(w);
    double s1 = 0, s2 = 0;
    for (std::size_t i = 0; i < n; ++i) {
        // Hann window
        const double h = 0.5 - 0.5 * std::cos(2.0 * M_PI * double(i) / double(n - 1));
        const double s = x[from + i] * h + c * s1 - s2;
        s2 = s1;
        s1 = s;
    }
    return std::sqrt(s1 * s1 + s2 * s2 - c * s1 * s2);
}

}  // namespace

namespace {

// The frequency of the strongest partial from 40 Hz to 2 kHz, to 0.05 Hz.
double strongestPartial(const std::vector<float>& x, std::size_t from, std::size_t n) {
    // Coarse over a short stretch, then fine over the whole one.
    double best = 0, bestFreq = 0;
    for (double f = 40.0; f <= 2000.0; f += 2.0) {
        const double m = goertzel(x, from, 8192, f, 44100.0);
        if (m > best) {
            best = m;
            bestFreq = f;
        }
    }
    best = 0;
    double fine = bestFreq;
    for (int k = -60; k <= 60; ++k) {
        const double f = bestFreq + 0.05 * k;
        const double m = goertzel(x, from, n, f, 44100.0);
        if (m > best) {
            best = m;
            fine = f;
        }
    }
    return fine;
}

double rmsDb(const std::vector<float>& x, std::size_t from, std::size_t n) {
    double sum = 0;
    for (std::size_t i = from; i < from + n; ++i) sum += double(x[i]) * x[i];
    return 10.0 * std::log10(sum / double(n));
}

}  // namespace

TEST(RenderTest, InitPatchNote60HasItsStrongestPartialAtMiddleC) {
    // Dry (no reverb mix): the partial sits at 261.63 Hz.
    {
        SoundEngine engine;
        engine.init(44100.0f, 1);
        NorvelleProgram dry;
        dry.setGene(Gene::fx_mix, 0.0f);
        Render r = play(engine, dry, {60}, 2000, 1400);
        EXPECT_NEAR(strongestPartial(r.left, 8820, 44100), 261.6256, 0.1);
    }
    // The Init patch itself: its chorused reverb wobbles the pitch of the
    // wet part, so over a long stretch the peak is still middle C, within 1 Hz.
    SoundEngine engine;
    engine.init(44100.0f, 1);
    NorvelleProgram init;
    Render r = play(engine, init, {60}, 2000, 1400);
    EXPECT_NEAR(strongestPartial(r.left, 8820, 66150), 261.6256, 1.0);
    const double dB = rmsDb(r.left, 8820, 22050);
    RecordProperty("init_note60_rms_db", std::to_string(dB));
    EXPECT_GT(dB, -40.0);
    EXPECT_LT(dB, -3.0);
}

TEST(RenderTest, ManyPatchesGiveFiniteSoundAndEndInSilence) {
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        SoundEngine engine;
        engine.init(seed % 2 ? 44100.0f : 48000.0f, seed);
        NorvelleProgram p;
        randomGenes(p, seed);
        p.setParam(Param::Release, 0.2f);
        Render r = play(engine, p, {48, 55, 60, 64, 67, 72, 79, 84}, 60, 400);
        float peak = 0;
        for (std::size_t i = 0; i < r.left.size(); ++i) {
            ASSERT_TRUE(std::isfinite(r.left[i]) && std::isfinite(r.right[i])) << "seed " << seed << " at " << i;
            peak = std::max(peak, std::fabs(r.left[i]));
        }
        EXPECT_LE(peak, 0.99f) << seed;  // the clipper's ceiling
    }
}

TEST(RenderTest, SameSoundWithAndWithoutFlushToZero) {
    for (uint32_t seed : {3u, 8u, 11u}) {
        NorvelleProgram p;
        randomGenes(p, seed);
        Render a, b;
        {
            testsupport::FlushToZero ftz(false);
            SoundEngine engine;
            engine.init(44100.0f, 5);
            a = play(engine, p, {50, 62, 69, 74}, 100, 1500);
        }
        {
            testsupport::FlushToZero ftz(true);
            SoundEngine engine;
            engine.init(44100.0f, 5);
            b = play(engine, p, {50, 62, 69, 74}, 100, 1500);
        }
        ASSERT_EQ(a.left.size(), b.left.size());
        std::size_t differ = 0;
        for (std::size_t i = 0; i < a.left.size(); ++i) differ += a.left[i] != b.left[i] || a.right[i] != b.right[i];
        EXPECT_EQ(differ, 0u) << "seed " << seed;
    }
}

TEST(RenderTest, NoDenormalStatesAfterLongSilence) {
    NorvelleProgram p;
    randomGenes(p, 4);
    p.setGene(Gene::fx_mix, 0.9f);
    SoundEngine engine;
    engine.init(44100.0f, 2);
    testsupport::FlushToZero ftz(false);
    play(engine, p, {60, 67, 72}, 200, 44100 * 30 / 64);  // 30 s, mostly silence
    int subnormal = 0;
    auto check = [&](float s) {
        if (std::fpclassify(s) == FP_SUBNORMAL) ++subnormal;
    };
    for (int i = 0; i < VoiceManager::VOICE_COUNT; ++i) {
        const Voice& v = engine.voice(i);
        for (float s : v.filterLow) check(s);
        for (float s : v.filterBand) check(s);
        for (float s : v.noise) check(s);
        for (float s : {v.gainLeft, v.gainRight, v.gainSend, v.pan, v.aForm, v.bForm, v.aGain, v.bGain,
                        v.subAmount, v.volSus, v.releaseGain, v.meanStep})
            check(s);
    }
    engine.reverb().forEachState(check);
    check(engine.outputStage().meterState());
    check(engine.outputStage().dcLeft());
    check(engine.outputStage().dcRight());
    EXPECT_EQ(subnormal, 0);
}

TEST(RenderTest, SteadyStateAllocatesNothing) {
    NorvelleProgram p;
    randomGenes(p, 6);
    SoundEngine engine;
    engine.init(44100.0f, 1);
    play(engine, p, {60}, 4, 8);  // the first blocks build the reverb ring
    MidiConfigRecord config;
    const int notes[14] = {40, 45, 52, 57, 60, 64, 67, 71, 74, 77, 81, 84, 88, 91};
    TimedEvent events[2];
    float l[64], r[64];
    testsupport::AllocationCounter counter;
    for (int b = 0; b < 600; ++b) {
        int count = 0;
        if (b % 20 == 0) events[count++] = ev(b % 64, 0x90, notes[(b / 20) % 14], 90);
        if (b % 20 == 10) events[count++] = ev(3, 0x80, notes[(b / 20 + 9) % 14], 0);
        bool silent = false;
        engine.render(p, config, count, events, l, r, silent);
    }
    EXPECT_EQ(counter.count(), 0u);
}

TEST(RenderTest, ReverbTailOutlastsTheNoteAndEnds) {
    NorvelleProgram p;  // Init: some reverb mix
    p.setGene(Gene::fx_mix, 0.8f);
    p.touch(false);
    SoundEngine engine;
    engine.init(44100.0f, 1);
    Render r = play(engine, p, {60}, 100, 100 + 44100 * 12 / 64);
    // Sound after the voice has ended...
    double late = 0;
    for (std::size_t i = 64 * 300; i < 64 * 320; ++i) late += std::fabs(r.left[i]);
    EXPECT_GT(late, 0.0);
    // ...and exact silence at the very end.
    for (std::size_t i = r.left.size() - 64; i < r.left.size(); ++i) EXPECT_EQ(r.left[i], 0.0f);
}

TEST(RenderTest, WithoutSustainTheVoiceEndsWhileTheKeyIsHeld) {
    NorvelleProgram p;
    p.setGene(Gene::vol_sus, 0.0f);  // no sustain; Init's loops fall 80 dB in 1.46 s
    p.touch(false);
    SoundEngine engine;
    engine.init(44100.0f, 1);
    play(engine, p, {60}, 100000, 44100 * 4 / 64);
    EXPECT_EQ(engine.slot(0).state, VoiceManager::Held);
    EXPECT_FALSE(engine.voice(0).active);
}

TEST(RenderTest, LongEnvelopeTimeNeverEndsWhileHeld) {
    NorvelleProgram p;
    p.setGene(Gene::vol_sus, 0.0f);
    p.setGene(Gene::env_time, 0.95f);  // loopDecay 1
    p.touch(false);
    SoundEngine engine;
    engine.init(44100.0f, 1);
    Render r = play(engine, p, {60}, 100000, 44100 * 6 / 64);
    EXPECT_TRUE(engine.voice(0).active);
    double late = 0;
    for (std::size_t i = r.left.size() - 4410; i < r.left.size(); ++i) late += std::fabs(r.left[i]);
    EXPECT_GT(late, 1.0);
}

TEST(RenderTest, DisplayLevelsAndClipFollowTheSound) {
    NorvelleProgram p;
    SoundEngine engine;
    engine.init(44100.0f, 1);
    play(engine, p, {62}, 100000, 100);
    VisualState v;
    engine.copyVisualState(v);
    EXPECT_EQ(v.lastBranch, 2);
    EXPECT_GT(v.levelLow[2] + v.levelHigh[2], 0.1f);
    for (int k = 0; k < 12; ++k) {
        if (k != 2) {
            EXPECT_EQ(v.levelLow[k], 0.0f);
        }
    }
    EXPECT_GE(v.clip, 0.0f);
    EXPECT_LE(v.clip, 1.0f);
    // Driven hard (volume up: ten times the level) the clipper works and shows it.
    p.setParam(Param::Volume, 1.0f);
    p.touch(false);
    SoundEngine loud;
    loud.init(44100.0f, 1);
    play(loud, p, {60}, 100000, 200);
    loud.copyVisualState(v);
    EXPECT_GT(v.clip, 0.0f);
}

TEST(RenderTest, VolumeZeroSilencesWithoutAClick) {
    NorvelleProgram p;
    SoundEngine engine;
    engine.init(44100.0f, 1);
    Render before = play(engine, p, {60}, 100000, 80);
    p.setParam(Param::Volume, 0.0f);
    Render after = play(engine, p, {}, 1, 40);
    // The smoothed volume glides down; no step between samples anywhere.
    float last = before.left.back();
    float biggestStep = 0;
    for (float x : after.left) {
        biggestStep = std::max(biggestStep, std::fabs(x - last));
        last = x;
    }
    EXPECT_LT(biggestStep, 0.05f);
    EXPECT_LT(std::fabs(after.left.back()), 1e-3f);
}
