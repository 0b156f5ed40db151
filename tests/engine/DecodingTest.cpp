// The gene curves, one behaviour at a time, with the expected values worked
// out by hand from the curves (the working is in the comments).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "engine/BranchParams.h"
#include "engine/GeneDecoding.h"
#include "engine/ReciprocalSqrt.h"
#include "patch/GeneTable.h"

namespace {

using engine::BranchParams;
using engine::decodeGenes;

constexpr double kPi = 3.14159265358979323846;

std::vector<float> genome(float value = 0.5f) { return std::vector<float>(MUTABLE_GENE_COUNT, value); }

BranchParams decode(const std::vector<float>& genes, float rate = 44100.0f, float fxSize = 0.5f,
                    float effect = 0.0f) {
    return decodeGenes(genes.data(), fxSize, effect, rate);
}

// Relative closeness for values derived by hand in double precision.
#define EXPECT_CLOSE(got, want) EXPECT_NEAR((got), (want), 2e-6 * std::fabs(want) + 1e-12)

// ---------------------------------------------------------------------------
// The Init genome, every gene 0.5.

TEST(Decoding, InitGenomeEnvelopeLastsAboutOneAndAHalfSeconds) {
    // e = 0.5 / 0.9 = 5/9, T = 0.05 * 100^(5/9) / (4/9) = 0.1125 * 10^(10/9) = 1.45299 s.
    // loop = min(0.02 * 1000^(0.5/0.8), T, 20) = min(1.49979, 1.45299, 20) = T: the
    // loop gene reaches past the whole time, so the loop is the whole time.
    // tilt = 0.5^4 = 0.0625.
    // atkRate = 16 / (T * 0.0625 * r), dcyRate = 16 / (T * 0.9375 * r).
    // q = T / loop = 1, so loopDecay = 10010.0107^-1: one loop falls all the way.
    const double T = 0.05 * std::pow(100.0, 5.0 / 9.0) / (4.0 / 9.0);
    EXPECT_NEAR(T, 1.46, 0.01);
    for (float r : {44100.0f, 48000.0f}) {
        const BranchParams p = decode(genome(), r);
        EXPECT_CLOSE(p.atkRate, 16.0 / (T * 0.0625 * r));
        EXPECT_CLOSE(p.dcyRate, 16.0 / (T * 0.9375 * r));
        EXPECT_CLOSE(p.loopDecay, 1.0 / 10010.0107);
        // The total time the two rates describe is T itself.
        EXPECT_NEAR(16.0 / (p.atkRate * r) + 16.0 / (p.dcyRate * r), T, 1e-5);
    }
}

TEST(Decoding, InitGenomeOscillatorsSitOnMiddleCAndAnOctaveBelow) {
    // aFreq = (261.6256 / r) * 2^(6 * 0.5 - 3) = 261.6256 / r.
    // b_freq 0.5: y = 12 * 0.5 - 7 = -1, k = floor(-0.5) = -1, d = 0, x = -1,
    // so bFreq = aFreq * 2^-1. a_mod and b_mod 0.5: no modulation, am = bm = 0.
    for (float r : {44100.0f, 48000.0f}) {
        const BranchParams p = decode(genome(), r);
        EXPECT_CLOSE(p.aFreq, 261.6256 / r);
        EXPECT_EQ(p.bFreq, p.aFreq * 0.5f);
        EXPECT_EQ(p.aFreqMod, 0.0f);
        EXPECT_EQ(p.bFreqMod, 0.0f);
    }
    EXPECT_CLOSE(decode(genome(), 44100.0f).aFreq, 0.0059325533);
    EXPECT_CLOSE(decode(genome(), 48000.0f).aFreq, 0.0054505333);
}

TEST(Decoding, InitGenomeHasNoNoiseNoFmNoLfoAndNoSampleAndHold) {
    const BranchParams p = decode(genome());
    // a_noise, b_noise 0.5: 3.5 * 0.5 - 2.35 = -0.6, clamped to 0.
    EXPECT_EQ(p.aNoiseGain, 0.0f);
    EXPECT_EQ(p.bNoise, 0.0f);
    EXPECT_EQ(p.bTone, 1.0f);
    // fm_amt 0.5: f = 0, fmBase = 0.
    EXPECT_EQ(p.fmDepth, 0.0f);
    EXPECT_EQ(p.fmDepthMod, 0.0f);
    // lfo_amt 0.5: a = max(0, 0)^3 = 0.
    EXPECT_EQ(p.vibrato, 0.0f);
    EXPECT_EQ(p.tremolo, 0.0f);
    // mod_sh 0.5: (800000 / 44100) * (2e-5)^0 = 18.1, capped at 1. b_sh 0.5:
    // w = 0.25, (50000 / 44100) * (4e-5)^-0.5 = 179.3, capped at 1.
    EXPECT_EQ(p.modHoldRate, 1.0f);
    EXPECT_EQ(p.bHoldRate, 1.0f);
}

TEST(Decoding, InitGenomeFilterOpensAQuarterOctaveAboveOscillatorA) {
    // aForm = 0.25 (no pulse lift); cut = 16 * (1.5 * 0.5 - 0.5)^3 = 16 / 64 = 0.25.
    // flt_mod 0.5: fm = 0, lower = upper = 2^0.25. flt_sep 0.5: 2^0 = 1.
    // filterDamp = 0.6931472 - 4.60517 * 0.5 = -1.6094378 (ln 0.2). keyFollow = 2 * 0.5 - 0.5.
    const BranchParams p = decode(genome());
    EXPECT_CLOSE(p.filterFreq, p.aFreq * std::pow(2.0, 0.25));
    EXPECT_EQ(p.filterFreqMod, 0.0f);
    EXPECT_EQ(p.filterSep, 1.0f);
    EXPECT_CLOSE(p.filterDamp, std::log(0.2));
    EXPECT_EQ(p.keyFollow, 0.5f);
}

TEST(Decoding, InitGenomeLevelsAndReverb) {
    // Both forms 0.25 < 1/3: lo = 0.1, hi = 1, w = 0, P = 1 * 0.5 = 0.5, rms = sqrt(2).
    // balance: bal = min(0.125, limit); limit = min(max(7 - 8 * 0.25, 0), clamp(-1 + 4)) = 1.
    // aGain = 1 * sqrt(2) * sqrt(0.875) = sqrt(1.75); bGain = sqrt(2) * sqrt(0.125) = 0.5.
    // level = 0.5 * clamp(2 / 2^0.25, 1, 4) * exp(ln(0.2) / 8) = 2^-0.25 * 0.2^(1/8).
    // fx_mix 0.5 at effect 0: wet = 0.125; dryGain = sqrt(0.875) * level.
    // reverbLen = 0.2 * 100^0.25 = 0.2 * sqrt(10). fx_damp 0.5: 22500 - 20250 * (0.125 - 0.25) / 0.75 = 25875 Hz.
    // s = 4.9 * 0.5 + 0.1 = 2.55, sizeGain = 4 sqrt(2.55);
    // tailGain = sizeGain * len^(0.440867 - 0.09585059 ln 25875) * 25875^-0.13287712;
    // sendGain = tailGain * level * sqrt(0.125).
    const BranchParams p = decode(genome());
    const double level = std::pow(2.0, -0.25) * std::pow(0.2, 0.125);
    const double len = 0.2 * std::sqrt(10.0);
    const double tail = 4.0 * std::sqrt(2.55) * std::pow(len, 0.440867 - 0.09585059 * std::log(25875.0)) *
                        std::pow(25875.0, -0.13287712);
    EXPECT_NEAR(p.aGain, std::sqrt(1.75), 2e-6);  // the reciprocal-root estimate leaves an ulp or two
    EXPECT_NEAR(p.bGain, 0.5, 2e-6);
    EXPECT_CLOSE(p.aForm, 0.25);
    EXPECT_CLOSE(p.subAmount, 0.0625);  // (1.5 * 0.5 - 0.5)^2
    EXPECT_CLOSE(p.dryGain, std::sqrt(0.875) * level);
    EXPECT_CLOSE(p.reverbLen, len);
    EXPECT_EQ(p.reverbDamp, 25875.0f);
    EXPECT_CLOSE(p.sendGain, tail * level * std::sqrt(0.125));
    EXPECT_EQ(p.reverbChorus, 1.0f);  // (2 * 0.5)^4
}

TEST(Decoding, InitGenomeShapes) {
    // volAtkBias = 1 - 0.7 * 0.125; volDcyBias = 0.899 * 0.5 + 0.1; volSus = (0.5 * 0.5)^2;
    // mod shapes: v = 0, sign 0, (0 + 1) * 0.998 / 2 + 0.001 = 0.5; modVelBias = 0.6^2.
    // lfoStep = (32 / r) * 40^0.5.
    const BranchParams p = decode(genome());
    EXPECT_CLOSE(p.volAtkBias, 0.9125);
    EXPECT_CLOSE(p.volDcyBias, 0.5495);
    EXPECT_EQ(p.volSus, 0.0625f);
    EXPECT_EQ(p.modAtkBias, 0.5f);
    EXPECT_EQ(p.modDcyBias, 0.5f);
    EXPECT_CLOSE(p.modVelBias, 0.36);
    EXPECT_CLOSE(p.lfoStep, 32.0 / 44100.0 * std::sqrt(40.0));
}

// ---------------------------------------------------------------------------
// Envelope edges.

TEST(Decoding, EnvTimeFromPointNineNeverEnds) {
    for (float t : {0.899999f, 0.9f, 0.95f, 1.0f}) {
        std::vector<float> g = genome();
        g[Gene::env_time] = t;
        const BranchParams p = decode(g);
        EXPECT_EQ(p.loopDecay, 1.0f) << t;
        // T = 100000 s: the hold rate's floor 2 / (T r) is far below anything.
        EXPECT_TRUE(std::isfinite(p.atkRate) && std::isfinite(p.dcyRate)) << t;
    }
    // Just below, the sound is very long but it does end.
    std::vector<float> g = genome();
    g[Gene::env_time] = 0.8999f;
    const float decay = decode(g).loopDecay;
    EXPECT_LT(decay, 1.0f);
    EXPECT_GT(decay, 0.99f);
}

TEST(Decoding, EnvLoopBeyondEnvTimeIsCappedAndFallsInOneLoop) {
    // env_time 0.2: e = 2/9, T = 0.05 * 10^(4/9) / (7/9) = 0.05 * 2.78256 / 0.77778 = 0.178879 s. env_loop 0.9:
    // 0.02 * 1000^1.125 = 47.4 s, capped at 20 and then at T. q = T / loop = 1:
    // loopDecay = 1 / 10010.0107, the whole -80 dB fall in the one loop.
    // env_tilt 0.5: atkRate = 16 / (T * 0.0625 * r).
    std::vector<float> g = genome();
    g[Gene::env_time] = 0.2f;
    g[Gene::env_loop] = 0.9f;
    const BranchParams p = decode(g);
    const double T = 0.05 * std::pow(100.0, 2.0 / 9.0) / (7.0 / 9.0);
    EXPECT_NEAR(T, 0.178879, 1e-6);
    EXPECT_CLOSE(p.loopDecay, 1.0 / 10010.0107);
    EXPECT_CLOSE(p.atkRate, 16.0 / (T * 0.0625 * 44100.0));
    // A loop shorter than T: env_loop 0.1 gives 0.02 * 1000^0.125 = 0.047433 s, q = 3.77,
    // and three-odd loops share the fall.
    g[Gene::env_loop] = 0.1f;
    const double loop = 0.02 * std::pow(1000.0, 0.125);
    EXPECT_NEAR(decode(g).loopDecay, std::pow(10010.0107, -loop / T), 2e-6);
}

TEST(Decoding, LoopNeverLongerThanTwentySeconds) {
    // env_time 0.85: T = 0.05 * 100^(0.9444) / 0.0556 = 69.6 s; env_loop 1: 0.02 * 1000^1.25 = 112 s.
    // The loop is capped at 20 s; with tilt 0 the attack is a single sample.
    std::vector<float> g = genome();
    g[Gene::env_time] = 0.85f;
    g[Gene::env_loop] = 1.0f;
    g[Gene::env_tilt] = 0.0f;
    const BranchParams p = decode(g);
    EXPECT_CLOSE(p.dcyRate, 16.0 / (20.0 * 44100.0));
    EXPECT_CLOSE(p.atkRate, 16.0);  // max(0, 1/r) * r / 16 = 1/16
}

TEST(Decoding, SustainDeadZoneEndsNearPoint354) {
    // volSus = ((3E - 1) / 2)^2, flushed below 0.001: the edge is 3E - 1 = 2 sqrt(0.001) = 0.0632,
    // E = 0.35442.
    std::vector<float> g = genome();
    g[Gene::vol_sus] = 0.3541f;
    EXPECT_EQ(decode(g).volSus, 0.0f);
    g[Gene::vol_sus] = 0.3548f;
    EXPECT_CLOSE(decode(g).volSus, std::pow((3.0 * 0.3548f - 1.0) * 0.5, 2.0));
    g[Gene::vol_sus] = 1.0f;
    EXPECT_EQ(decode(g).volSus, 1.0f);
}

TEST(Decoding, ModulationShapesAreFourthRootsAroundTheMiddle) {
    // mod_atk 1: v = 1, (1 + 1) * 0.998 / 2 + 0.001 = 0.999; 0: (-1 + 1) ... = 0.001.
    // mod_dcy 0.5 + 0.5 / 16 = 0.53125: v = 1/16, root 0.5: (1.5) * 0.499 + 0.001 = 0.7495.
    std::vector<float> g = genome();
    g[Gene::mod_atk] = 1.0f;
    g[Gene::mod_dcy] = 0.53125f;
    BranchParams p = decode(g);
    EXPECT_CLOSE(p.modAtkBias, 0.999);
    EXPECT_CLOSE(p.modDcyBias, 0.7495);
    g[Gene::mod_atk] = 0.0f;
    g[Gene::mod_dcy] = 0.46875f;
    p = decode(g);
    EXPECT_CLOSE(p.modAtkBias, 0.001);
    EXPECT_CLOSE(p.modDcyBias, 0.2505);
}

TEST(Decoding, ModulationHoldStartsNearPoint63At44100) {
    // (800000 / 44100) * (2e-5)^(2E - 1) = 1 at 2E - 1 = ln(44100 / 800000) / ln(2e-5) = 0.26779,
    // E = 0.6339. At E = 1: 800000 / 44100 * 2e-5 = 0.362812.
    std::vector<float> g = genome();
    g[Gene::mod_sh] = 0.63f;
    EXPECT_EQ(decode(g).modHoldRate, 1.0f);
    g[Gene::mod_sh] = 0.64f;
    EXPECT_LT(decode(g).modHoldRate, 1.0f);
    g[Gene::mod_sh] = 1.0f;
    EXPECT_CLOSE(decode(g).modHoldRate, 800000.0 / 44100.0 * 2e-5);
}

TEST(Decoding, ModulationHoldNeverSlowerThanTwoStepsPerSound) {
    // The rate never falls below two steps over the whole sound: 2 / (T r). env_time 0 gives
    // T = 0.05 s; at r = 1000 that floor is 2 / 50 = 0.04, above mod_sh 1's 800 * 2e-5 = 0.016.
    std::vector<float> g = genome();
    g[Gene::env_time] = 0.0f;
    g[Gene::mod_sh] = 1.0f;
    EXPECT_CLOSE(decode(g, 1000.0f).modHoldRate, 0.04);
}

// ---------------------------------------------------------------------------
// LFO.

TEST(Decoding, LfoRunsFromHalfAHertzToTwentyHertz) {
    // lfoStep is the phase per 64 samples: f Hz gives f * 64 / r. 0.5 Hz: 32 / r; 20 Hz: 1280 / r.
    std::vector<float> g = genome();
    g[Gene::lfo_rate] = 0.0f;
    EXPECT_CLOSE(decode(g).lfoStep, 32.0 / 44100.0);
    g[Gene::lfo_rate] = 1.0f;
    EXPECT_CLOSE(decode(g).lfoStep, 1280.0 / 44100.0);
    // At a very low rate the step is capped at half a cycle.
    EXPECT_EQ(decode(g, 1000.0f).lfoStep, 0.5f);
}

TEST(Decoding, LfoBalanceSharesDepthBetweenVibratoAndTremolo) {
    // lfo_amt 1: a = 1. lfo_rate 1: vibrato depth (0.5 + 0.5) / 12 = 1/12 octave.
    // lfo_bal 0: vibrato clamp(3) = 1, tremolo clamp(-1) = 0. lfo_bal 1: vibrato 0, tremolo 1.
    // lfo_bal 0.5: both clamp(1) = 1.  lfo_amt 0.75: a = 0.5^3 = 0.125.
    std::vector<float> g = genome();
    g[Gene::lfo_amt] = 1.0f;
    g[Gene::lfo_rate] = 1.0f;
    g[Gene::lfo_bal] = 0.0f;
    BranchParams p = decode(g);
    EXPECT_CLOSE(p.vibrato, 1.0 / 12.0);
    EXPECT_EQ(p.tremolo, 0.0f);
    g[Gene::lfo_bal] = 1.0f;
    p = decode(g);
    EXPECT_EQ(p.vibrato, 0.0f);
    EXPECT_EQ(p.tremolo, 1.0f);
    g[Gene::lfo_bal] = 0.5f;
    g[Gene::lfo_amt] = 0.75f;
    g[Gene::lfo_rate] = 0.0f;
    p = decode(g);
    EXPECT_CLOSE(p.vibrato, 0.5 / 12.0 * 0.125);
    EXPECT_CLOSE(p.tremolo, 0.125);
}

// ---------------------------------------------------------------------------
// Oscillators.

TEST(Decoding, NoiseStartsAboveTheDeadZone) {
    // n = clamp(3.5 E - 2.35)^4, flushed below 1e-5: zero up to E = 0.6714 and, by the flush,
    // a little beyond (to 0.6875). At E = 1: clamp(1.15) = 1, all noise, no tone.
    std::vector<float> g = genome();
    g[Gene::a_noise] = 0.67f;
    g[Gene::b_noise] = 0.68f;
    BranchParams p = decode(g);
    EXPECT_EQ(p.aNoiseGain, 0.0f);
    EXPECT_EQ(p.bNoise, 0.0f);
    g[Gene::a_noise] = 1.0f;
    g[Gene::b_noise] = 0.8f;  // (2.8 - 2.35)^4 = 0.45^4 = 0.04100625
    p = decode(g);
    EXPECT_EQ(p.aGain, 0.0f);
    EXPECT_GT(p.aNoiseGain, 0.0f);
    EXPECT_CLOSE(p.bNoise, 0.04100625);
    EXPECT_CLOSE(p.bTone, 1.0 - 0.04100625);
}

TEST(Decoding, NoiseColourAndLevel) {
    // a_color 0: c = 50 / r, coef = 1 - exp(-2 pi 50 / r). a_color 1: 50 * 400 = 20000 Hz.
    // With all noise (a_noise 1) the noise level is sqrt(0.5 / c) * balA.
    std::vector<float> g = genome();
    g[Gene::a_color] = 0.0f;
    g[Gene::a_noise] = 1.0f;
    BranchParams p = decode(g);
    const double c = 50.0 / 44100.0;
    // 1 - exp(-x) in float keeps the absolute precision of 1: half a unit of 1's last place.
    EXPECT_NEAR(p.aNoiseCoef, 1.0 - std::exp(-2.0 * kPi * c), 6e-8);
    EXPECT_CLOSE(p.aNoiseGain, std::sqrt(0.5 / c) * std::sqrt(0.875));
    g[Gene::a_color] = 1.0f;
    EXPECT_NEAR(decode(g).aNoiseCoef, 1.0 - std::exp(-2.0 * kPi * 20000.0 / 44100.0), 2e-7);
    // At a low rate the corner stops at half the rate.
    EXPECT_NEAR(decode(g, 8000.0f).aNoiseCoef, 1.0 - std::exp(-kPi), 2e-7);
}

TEST(Decoding, OscillatorASpansThreeOctavesEachWay) {
    // a_freq 0: 2^-3; a_freq 1: 2^3. a_mod 1: am = 8 * 1^3 = 8 octaves up at full modulation.
    std::vector<float> g = genome();
    g[Gene::a_freq] = 0.0f;
    EXPECT_CLOSE(decode(g).aFreq, 261.6256 / 44100.0 / 8.0);
    g[Gene::a_freq] = 1.0f;
    g[Gene::a_mod] = 1.0f;
    const BranchParams p = decode(g);
    EXPECT_CLOSE(p.aFreq, 261.6256 / 44100.0 * 8.0);
    EXPECT_CLOSE(p.aFreqMod, p.aFreq * 255.0);
    // a_mod 0.25: am = 8 * (-0.5)^3 = -1: full modulation falls an octave.
    g[Gene::a_mod] = 0.25f;
    const BranchParams q = decode(g);
    EXPECT_CLOSE(q.aFreqMod, -0.5 * q.aFreq);
}

TEST(Decoding, OscillatorBStaysNearWholeOctaves) {
    // y = 12 E - 7, k = floor(y + 0.5), d = y - k, x = k + 16 d^5.
    // E = 0.75: y = 2, x = 2. E = 0.77: y = 2.24, d = 0.24, x = 2 + 16 * 0.24^5 = 2.01274.
    // E = 0.79: y = 2.48, x = 2 + 16 * 0.48^5 = 2.40768. Halfway it jumps from 2.5 to 2.5 (k = 3, d = -0.5).
    std::vector<float> g = genome();
    g[Gene::b_freq] = 0.75f;
    BranchParams p = decode(g);
    EXPECT_CLOSE(p.bFreq, p.aFreq * 4.0);
    g[Gene::b_freq] = 0.77f;
    p = decode(g);
    const double y77 = 12.0 * double(0.77f) - 7.0;
    EXPECT_NEAR(p.bFreq / p.aFreq, std::pow(2.0, 2.0 + 16.0 * std::pow(y77 - 2.0, 5.0)), 1e-5);
    g[Gene::b_freq] = 0.79f;
    p = decode(g);
    const double y79 = 12.0 * double(0.79f) - 7.0;
    EXPECT_NEAR(p.bFreq / p.aFreq, std::pow(2.0, 2.0 + 16.0 * std::pow(y79 - 2.0, 5.0)), 1e-5);
    // The ends: -7 and +5 octaves.
    g[Gene::b_freq] = 0.0f;
    EXPECT_CLOSE(decode(g).bFreq / decode(g).aFreq, 1.0 / 128.0);
    g[Gene::b_freq] = 1.0f;
    EXPECT_CLOSE(decode(g).bFreq / decode(g).aFreq, 32.0);
}

TEST(Decoding, OscillatorBFollowsTheRiseOfAAtFullModulation) {
    // a_mod 1: am = 8; b_mod 0.75: bm = 8 * 0.5^3 = 1; b_freq 0.75: x = 2.
    // bFreqMod = aTop * 2^(2 + 1) - bFreq = aFreq * 2^8 * 8 - aFreq * 4 = aFreq * 2044.
    std::vector<float> g = genome();
    g[Gene::a_mod] = 1.0f;
    g[Gene::b_mod] = 0.75f;
    g[Gene::b_freq] = 0.75f;
    const BranchParams p = decode(g);
    EXPECT_CLOSE(p.bFreqMod, p.aFreq * 2044.0);
}

TEST(Decoding, OscillatorBHoldRunsAtTwoHertzAtTheTopAndNotAtAllBelowTheMiddle) {
    // w = b_sh^2. w = 1: (50000 / r) * 4e-5 = 2 / r. At r = 44100 the rate reaches 1 for
    // 2w - 1 <= ln(44100 / 50000) / ln(4e-5) = 0.0124, w <= 0.5062, b_sh <= 0.7115.
    std::vector<float> g = genome();
    g[Gene::b_sh] = 1.0f;
    EXPECT_CLOSE(decode(g).bHoldRate, 2.0 / 44100.0);
    EXPECT_CLOSE(decode(g, 48000.0f).bHoldRate, 2.0 / 48000.0);
    g[Gene::b_sh] = 0.71f;
    EXPECT_EQ(decode(g).bHoldRate, 1.0f);
    g[Gene::b_sh] = 0.72f;
    EXPECT_LT(decode(g).bHoldRate, 1.0f);
}

TEST(Decoding, OscillatorBShareFadesWithSlowHoldAndLowPitch) {
    // balance 1: bal = min(1, limit). limit = min(max(7 - 8w, 0), clamp(x + 4)).
    // b_sh^2 = 0.8125 (b_sh = 0.901388): 7 - 6.5 = 0.5 -> bal 0.5, balB = sqrt(0.5).
    // b_sh^2 >= 0.875: no B at all. b_freq with x = -4 (y = -4, E = 0.25): no B either.
    std::vector<float> g = genome();
    g[Gene::balance] = 1.0f;
    g[Gene::b_sh] = 0.901388f;
    BranchParams p = decode(g);
    const double w = double(0.901388f * 0.901388f);
    EXPECT_NEAR(p.bGain, std::sqrt(2.0) * std::sqrt(7.0 - 8.0 * w), 1e-5);
    g[Gene::b_sh] = 0.94f;
    p = decode(g);
    EXPECT_EQ(p.bGain, 0.0f);
    EXPECT_NEAR(p.aGain, std::sqrt(2.0), 2e-6);
    g[Gene::b_sh] = 0.5f;
    g[Gene::b_freq] = 0.25f;
    EXPECT_EQ(decode(g).bGain, 0.0f);
    // x = -3 (E = 1/3): full share.
    g[Gene::b_freq] = 1.0f / 3.0f;
    EXPECT_NEAR(decode(g).bGain, std::sqrt(2.0), 2e-6);
}

TEST(Decoding, FmDepthIsAFourthPowerWithItsModulationSpread) {
    // fm_amt 1: f = 1, fmBase = 16. fm_mod 1: g = 2, fmDepth = 16 * 4 = 64,
    // fmDepthMod = 16 * 2^-2 - 64 = -60. fm_amt 0: fmBase = -16. fm_amt 0.75: 16 * 0.5^4 = 1.
    std::vector<float> g = genome();
    g[Gene::fm_amt] = 1.0f;
    g[Gene::fm_mod] = 1.0f;
    BranchParams p = decode(g);
    EXPECT_EQ(p.fmDepth, 64.0f);
    EXPECT_EQ(p.fmDepthMod, -60.0f);
    g[Gene::fm_amt] = 0.0f;
    g[Gene::fm_mod] = 0.5f;
    p = decode(g);
    EXPECT_EQ(p.fmDepth, -16.0f);
    EXPECT_EQ(p.fmDepthMod, 0.0f);
    g[Gene::fm_amt] = 0.75f;
    g[Gene::fm_mod] = 0.0f;
    p = decode(g);
    EXPECT_EQ(p.fmDepth, 0.25f);
    EXPECT_EQ(p.fmDepthMod, 3.75f);
}

TEST(Decoding, SubOscillatorHasADeadZoneBelowOneThird) {
    std::vector<float> g = genome();
    g[Gene::sub_am] = 0.3f;
    EXPECT_EQ(decode(g).subAmount, 0.0f);
    g[Gene::sub_am] = 1.0f;
    EXPECT_EQ(decode(g).subAmount, 1.0f);
}

TEST(Decoding, FormLevelKeepsEveryWaveformAtOneLoudness) {
    // Below a third: P = 0.5, sqrt(2). At f = 0.5 (middle region): q = (1 - 0.16667 / 0.33333)^2
    // ~ 0.25, u = (1 - 0.0625) / 2 = 0.46875, lo = 0.46875, hi = max(0.56875, 0.625) = 0.625,
    // w = 1.1 - 1.09375 = 0.00625, P = 0.25625 * 0.500039 + 1.012539 * 0.36875 + 0.987539 * 0.375
    // = 0.128135 + 0.373374 + 0.370327 = 0.871836 (0.871842 with q exact, as 0.33333 is not a third).
    // At f = 1 (top region): u = 0.5 * 0^2 = 0, lo = 0.1, hi = 0.2, w = 0.8,
    // P = 0.2 * 1.14 + 3.24 * 0 + 0.04 * 0.8 = 0.26.
    EXPECT_NEAR(engine::formLevel(0.0f), std::sqrt(2.0), 2e-6);
    const double q = std::pow(1.0 - (0.5 - 0.33333) / 0.33333, 2.0);
    const double lo = (1.0 - q * q) / 2.0, hi = (q + 1.0) / 2.0, w = 1.1 - lo - hi;
    const double P = (hi - lo + 0.1) * (w * w + 0.5) + (1 + w) * (1 + w) * (lo - 0.1) + (1 - w) * (1 - w) * (1 - hi);
    EXPECT_NEAR(P, 0.871836, 1e-5);
    EXPECT_NEAR(engine::formLevel(0.5f), 1.0 / std::sqrt(P), 4e-6);
    EXPECT_NEAR(engine::formLevel(1.0f), 1.0 / std::sqrt(0.26), 4e-6);
}

TEST(Decoding, ReciprocalSqrtIsTheEstimateWithOneNewtonStep) {
    // One Newton step squares the estimate's relative error (about 2^-12) to about 2^-22.
    for (float x : {1e-6f, 0.26f, 0.5f, 0.871836f, 1.0f, 2.0f, 3.0f, 1e6f}) {
        const double exact = 1.0 / std::sqrt(double(x));
        const float e = engine::reciprocalSqrtEstimate(x);
        EXPECT_NEAR(e, exact, exact * 1.0 / 2048.0) << x;
        EXPECT_EQ(engine::reciprocalSqrt(x), (-0.5f * e) * (x * (e * e) - 3.0f)) << x;
        EXPECT_NEAR(engine::reciprocalSqrt(x), exact, exact * 1e-6) << x;
    }
}

// ---------------------------------------------------------------------------
// Filter.

TEST(Decoding, NarrowPulseOpensTheFilterUpToFourOctaves) {
    // a_form 1: aForm = 1, pulseLift = 12.00012 * 0.33334 = 4.0001 octaves.
    // flt_freq 1/3: 1.5 E - 0.5 = 0, no cut of its own.
    std::vector<float> g = genome();
    g[Gene::a_form] = 1.0f;
    g[Gene::flt_freq] = 1.0f / 3.0f;
    const BranchParams p = decode(g);
    EXPECT_NEAR(p.filterFreq / p.aFreq, std::pow(2.0, 12.00012 * 0.33334), 1e-4);
}

TEST(Decoding, FilterModulationOpensUpOrClosesDown) {
    // flt_mod 1: v = 1, fm = 8: lower = 2^cut, upper = 2^(cut + 8). flt_mod 0: fm = -8:
    // lower = 2^(cut + 8), upper = 2^cut: the filter starts high and full modulation closes it.
    // cut = 0.25 (Init). level = 0.5 * clamp(2 / 2^8.25, 1, 4) * exp(filterDamp / 8).
    std::vector<float> g = genome();
    g[Gene::flt_mod] = 1.0f;
    BranchParams p = decode(g);
    EXPECT_CLOSE(p.filterFreq, p.aFreq * std::pow(2.0, 0.25));
    EXPECT_CLOSE(p.filterFreqMod, p.aFreq * (std::pow(2.0, 8.25) - std::pow(2.0, 0.25)));
    g[Gene::flt_mod] = 0.0f;
    p = decode(g);
    EXPECT_CLOSE(p.filterFreq, p.aFreq * std::pow(2.0, 8.25));
    EXPECT_CLOSE(p.filterFreqMod, p.aFreq * (std::pow(2.0, 0.25) - std::pow(2.0, 8.25)));
    // Both at full wet-free effect (-1): dryGain = level = 0.5 * 1 * 0.2^(1/8).
    EXPECT_CLOSE(decode(g, 44100.0f, 0.5f, -1.0f).dryGain, 0.5 * std::pow(0.2, 0.125));
}

TEST(Decoding, LowFilterRaisesTheLevelUpToFourfold) {
    // flt_freq 0: cut = 16 * (-0.5)^3 = -2 octaves; 2 / 2^-2 = 8, clamped to 4.
    // flt_q 0: filterDamp = ln 2, exp(ln 2 / 8) = 2^(1/8). level = 0.5 * 4 * 2^0.125.
    std::vector<float> g = genome();
    g[Gene::flt_freq] = 0.0f;
    g[Gene::flt_q] = 0.0f;
    const BranchParams p = decode(g, 44100.0f, 0.5f, -1.0f);
    EXPECT_CLOSE(p.filterDamp, 0.6931472);
    EXPECT_CLOSE(p.dryGain, 2.0 * std::pow(2.0, 0.125));
    EXPECT_EQ(p.sendGain, 0.0f);
}

TEST(Decoding, FilterSeparationAndKeyFollow) {
    // flt_sep 1: 2^4 = 16; 0: 2^-4. flt_kf: clamp(2E - 0.5): 0.25 -> 0, 0.75 -> 1.
    std::vector<float> g = genome();
    g[Gene::flt_sep] = 1.0f;
    g[Gene::flt_kf] = 0.2f;
    BranchParams p = decode(g);
    EXPECT_EQ(p.filterSep, 16.0f);
    EXPECT_EQ(p.keyFollow, 0.0f);
    g[Gene::flt_sep] = 0.0f;
    g[Gene::flt_kf] = 0.8f;
    p = decode(g);
    EXPECT_EQ(p.filterSep, 0.0625f);
    EXPECT_EQ(p.keyFollow, 1.0f);
}

// ---------------------------------------------------------------------------
// Reverb and output.

TEST(Decoding, EffectMovesTheMixTowardsDryOrWet) {
    // fx_mix 0.5. effect -1: m = 0, wet = 0 -> no send, dry = level. effect +1: m = 1,
    // wet = 1 -> no dry. effect -0.5: m = 0.25, wet = 1/64. effect +0.5: m = 0.75, wet = 27/64.
    const std::vector<float> g = genome();
    const BranchParams dry = decode(g, 44100.0f, 0.5f, -1.0f);
    const BranchParams wet = decode(g, 44100.0f, 0.5f, 1.0f);
    const BranchParams mid = decode(g);
    EXPECT_EQ(dry.sendGain, 0.0f);
    EXPECT_EQ(wet.dryGain, 0.0f);
    const double level = dry.dryGain;
    EXPECT_CLOSE(mid.dryGain, level * std::sqrt(1.0 - 0.125));
    EXPECT_CLOSE(decode(g, 44100.0f, 0.5f, -0.5f).dryGain, level * std::sqrt(1.0 - 1.0 / 64.0));
    EXPECT_CLOSE(decode(g, 44100.0f, 0.5f, 0.5f).dryGain, level * std::sqrt(1.0 - 27.0 / 64.0));
    EXPECT_CLOSE(mid.sendGain / wet.sendGain, std::sqrt(0.125));
}

TEST(Decoding, DampingJumpsAtAQuarterFromNoneToAbout28800Hertz) {
    // fx_damp >= 0.25: 22500 - 20250 * (E^3 - 0.25) / 0.75. At 0.25: E^3 = 1/64,
    // 22500 + 20250 * 0.234375 / 0.75 = 22500 + 6328.125 = 28828.125 Hz. At 1: 2250 Hz.
    // Below 0.25: no damping, and the tail gain takes the other branch:
    // sizeGain * 0.26 * len^-0.5291331, with len = 0.2 * sqrt(10) and sizeGain = 4 sqrt(2.55).
    std::vector<float> g = genome();
    g[Gene::fx_damp] = 0.25f;
    const BranchParams at = decode(g);
    EXPECT_EQ(at.reverbDamp, 28828.125f);
    g[Gene::fx_damp] = std::nextafter(0.25f, 0.0f);
    const BranchParams below = decode(g);
    EXPECT_EQ(below.reverbDamp, 0.0f);
    const double level = std::pow(2.0, -0.25) * std::pow(0.2, 0.125);
    const double len = 0.2 * std::sqrt(10.0);
    EXPECT_CLOSE(below.sendGain, 4.0 * std::sqrt(2.55) * 0.26 * std::pow(len, -0.5291331) * level * std::sqrt(0.125));
    const double tailAt = 4.0 * std::sqrt(2.55) * std::pow(len, 0.440867 - 0.09585059 * std::log(28828.125)) *
                          std::pow(28828.125, -0.13287712);
    EXPECT_CLOSE(at.sendGain, tailAt * level * std::sqrt(0.125));
    EXPECT_NE(at.sendGain, below.sendGain);  // the two branches don't meet
    g[Gene::fx_damp] = 1.0f;
    EXPECT_EQ(decode(g).reverbDamp, 2250.0f);
}

TEST(Decoding, ReverbLengthAndSize) {
    // fx_len 0: 0.2 s; 1: 0.2 * 100 = 20 s. fx_size 0: s = 0.1 < 0.25, sizeGain = 2;
    // fx_size 1: s = 5, 4 sqrt(5). fx_chors 1: 2^4 = 16; 0: 0.
    std::vector<float> g = genome();
    g[Gene::fx_len] = 0.0f;
    g[Gene::fx_damp] = 0.0f;
    g[Gene::fx_chors] = 0.0f;
    const BranchParams small = decode(g, 44100.0f, 0.0f);
    EXPECT_CLOSE(small.reverbLen, 0.2);
    EXPECT_EQ(small.reverbChorus, 0.0f);
    const double level = std::pow(2.0, -0.25) * std::pow(0.2, 0.125);
    EXPECT_CLOSE(small.sendGain, 2.0 * 0.26 * std::pow(0.2, -0.5291331) * level * std::sqrt(0.125));
    g[Gene::fx_len] = 1.0f;
    g[Gene::fx_chors] = 1.0f;
    const BranchParams large = decode(g, 44100.0f, 1.0f);
    EXPECT_CLOSE(large.reverbLen, 20.0);
    EXPECT_EQ(large.reverbChorus, 16.0f);
    EXPECT_CLOSE(large.sendGain, 4.0 * std::sqrt(5.0) * 0.26 * std::pow(20.0, -0.5291331) * level * std::sqrt(0.125));
}

// ---------------------------------------------------------------------------

TEST(Decoding, AnyGenesAndAnyRateGiveFiniteValues) {
    // A fixed pseudo-random walk over genomes, corners included, at rates from 1 Hz up.
    uint32_t state = 12345;
    auto next = [&state] {
        state = state * 1664525u + 1013904223u;
        return float(state >> 8) / float(1 << 24);
    };
    for (float rate : {1.0f, 100.0f, 8000.0f, 44100.0f, 48000.0f, 96000.0f, 192000.0f, 1e7f}) {
        for (int trial = 0; trial < 400; ++trial) {
            std::vector<float> g(MUTABLE_GENE_COUNT);
            for (float& x : g) {
                const float u = next();
                x = trial % 4 == 0 ? (u < 0.5f ? 0.0f : 1.0f) : u;  // every fourth genome all corners
            }
            const float fxSize = trial % 3 == 0 ? float(trial % 2) : next();
            const float effect = 2.0f * next() - 1.0f;
            const BranchParams p = decodeGenes(g.data(), fxSize, effect, rate);
            for (const engine::BranchParamsField& field : engine::kBranchParamsFields)
                ASSERT_TRUE(std::isfinite(p.*field.member)) << field.name << " at " << rate << " Hz, trial " << trial;
        }
    }
}

}  // namespace
