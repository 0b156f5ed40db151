#include "engine/GeneDecoding.h"

#include <algorithm>
#include <cmath>

#include "engine/ReciprocalSqrt.h"
#include "patch/GeneTable.h"

// Every expression below is 32-bit float in the order it is written: float
// literals only, float overloads of the library functions only, and no fused
// multiply-add (the build turns contraction off). A stored patch must decode
// to the same sound forever.

namespace engine {

namespace {

float sq(float x) { return x * x; }
float cube(float x) { return x * x * x; }
float fourth(float x) { return sq(sq(x)); }
float clamp01(float x) { return std::min(std::max(x, 0.0f), 1.0f); }
float sign(float x) { return x > 0.0f ? 1.0f : (x < 0.0f ? -1.0f : 0.0f); }
float pow2(float x) { return std::exp2(x); }
float flushBelow(float x, float limit) { return std::fabs(x) < limit ? 0.0f : x; }

// 0.5 is 0; the curve reaches the ends as the fourth root of the distance:
// steep around the middle, flat towards 0 and 1.
float shapeBias(float gene) {
    const float v = 2.0f * gene - 1.0f;
    const float root = std::sqrt(std::sqrt(std::fabs(v)));
    return (sign(v) * root + 1.0f) * 0.998f / 2.0f + 0.001f;
}

// A modulation depth in octaves: +-8 octaves, cubic around the middle.
float modOctaves(float gene) { return flushBelow(8.0f * cube(2.0f * gene - 1.0f), 1e-5f); }

// A noise share with its dead zone: none up to about 0.671.
float noiseShare(float gene) { return flushBelow(fourth(clamp01(3.5f * gene - 2.35f)), 1e-5f); }

}  // namespace

float formLevel(float f) {
    float lo;
    float hi;
    if (f < 0.33333f) {
        lo = 0.1f;
        hi = 1.0f;
    } else if (f >= 0.66666f) {
        const float u = 0.5f * sq(1.0f - (f - 0.66666f) / 0.33334f);
        lo = std::min(std::max(0.1f, u), 0.9f);
        hi = std::max(lo + 0.1f, u);
    } else {
        const float q = sq(1.0f - (f - 0.33333f) / 0.33333f);
        const float u = (1.0f - q * q) / 2.0f;
        lo = std::min(std::max(0.1f, u), 0.9f);
        hi = std::max(lo + 0.1f, (q + 1.0f) / 2.0f);
    }
    const float w = 1.1f - lo - hi;
    const float power = (hi - lo + 0.1f) * (w * w + 0.5f) + sq(1.0f + w) * (lo - 0.1f) + sq(1.0f - w) * (1.0f - hi);
    return reciprocalSqrt(power);
}

BranchParams decodeGenes(const float* E, float fxSize, float effect, float r) {
    BranchParams p;

    // Envelope times. T is the whole length of the sound in seconds; from
    // env_time 0.9 on it never ends.
    const bool endless = !(E[Gene::env_time] < 0.899999f);
    const float e = E[Gene::env_time] / 0.9f;
    const float T = endless ? 100000.0f : 0.05f * std::pow(100.0f, e) / (1.0f - e);
    const float loop = std::min(std::min(0.02f * std::pow(1000.0f, E[Gene::env_loop] / 0.8f), T), 20.0f);
    const float tilt = fourth(E[Gene::env_tilt]);
    const float oneSample = 1.0f / r;
    p.atkRate = 1.0f / (std::max(loop * tilt, oneSample) * r / 16.0f);
    p.dcyRate = 1.0f / (std::max(loop * (1.0f - tilt), oneSample) * r / 16.0f);
    if (endless) {
        p.loopDecay = 1.0f;
    } else {
        // The loop height falls to about -80 dB by T.
        const float q = T / loop;
        p.loopDecay = q == 0.0f ? 0.0f : std::pow(10010.0107f, -1.0f / q);
    }

    // Volume and modulation shapes.
    p.volAtkBias = 1.0f - 0.7f * cube(1.0f - E[Gene::vol_atk]);
    p.volDcyBias = 0.899f * E[Gene::vol_dcy] + 0.1f;
    // The dead zone of the sustain ends near 0.354, and 0.5 gives 0.0625.
    p.volSus = flushBelow(sq(std::max(3.0f * E[Gene::vol_sus] - 1.0f, 0.0f) * 0.5f), 0.001f);
    p.modAtkBias = shapeBias(E[Gene::mod_atk]);
    p.modDcyBias = shapeBias(E[Gene::mod_dcy]);
    p.modHoldRate = std::min(1.0f, std::max(std::min(2.0f / (T * r), 1.0f),
                                            (800000.0f / r) * std::pow(2e-5f, 2.0f * E[Gene::mod_sh] - 1.0f)));
    p.modVelBias = sq(std::min(1.1f - E[Gene::mod_vel], 1.0f));

    // LFO: 0.5 Hz to 20 Hz, stepped every 64 samples; a faster LFO gets more depth.
    p.lfoStep = std::min((32.0f / r) * std::pow(40.0f, E[Gene::lfo_rate]), 0.5f);
    const float lfoDepth = cube(std::max(2.0f * E[Gene::lfo_amt] - 1.0f, 0.0f));
    p.vibrato = (0.5f * E[Gene::lfo_rate] + 0.5f) / 12.0f * lfoDepth * clamp01(3.0f - 4.0f * E[Gene::lfo_bal]);
    p.tremolo = lfoDepth * clamp01(4.0f * E[Gene::lfo_bal] - 1.0f);

    // Oscillator A: middle C plus or minus three octaves.
    p.aForm = sq(E[Gene::a_form]);
    const float aNoise = noiseShare(E[Gene::a_noise]);
    const float corner = std::min((50.0f / r) * std::pow(400.0f, E[Gene::a_color]), 0.5f);
    p.aNoiseCoef = 1.0f - std::exp(-6.28318531f * corner);
    const float noiseLevel = std::sqrt(0.5f / corner) * aNoise;
    const float toneLevel = std::sqrt(1.0f - aNoise);
    p.aFreq = (261.6256f / r) * pow2(6.0f * E[Gene::a_freq] - 3.0f);
    const float aTop = p.aFreq * pow2(modOctaves(E[Gene::a_mod]));
    p.aFreqMod = aTop - p.aFreq;

    // Oscillator B, with sticky octaves: near whole octaves from -7 to +5
    // relative to A, moving quickly between them.
    p.bForm = sq(E[Gene::b_form]);
    p.bNoise = noiseShare(E[Gene::b_noise]);
    p.bTone = 1.0f - p.bNoise;
    const float y = 12.0f * E[Gene::b_freq] - 7.0f;
    const float k = std::floor(y + 0.5f);
    const float d = y - k;
    const float x = k + 16.0f * (fourth(d) * d);
    const float bm = modOctaves(E[Gene::b_mod]);
    p.bFreq = p.aFreq * pow2(x);
    p.bFreqMod = aTop * pow2(x + bm) - p.bFreq;  // at full modulation B follows A's rise too
    const float hold = sq(E[Gene::b_sh]);
    p.bHoldRate = std::min((50000.0f / r) * std::pow(4e-5f, 2.0f * hold - 1.0f), 1.0f);
    // B's share fades out as its hold gets slow and as it goes far below A.
    const float limit = std::min(std::max(7.0f - 8.0f * hold, 0.0f), clamp01(x + 4.0f));

    // FM and mix.
    const float f = 2.0f * E[Gene::fm_amt] - 1.0f;
    const float fmBase = 16.0f * sign(f) * fourth(f);
    const float g = 4.0f * E[Gene::fm_mod] - 2.0f;
    p.fmDepth = fmBase * pow2(g);
    p.fmDepthMod = fmBase * pow2(-g) - p.fmDepth;
    p.subAmount = sq(std::max(1.5f * E[Gene::sub_am] - 0.5f, 0.0f));
    const float bal = std::min(cube(E[Gene::balance]), limit);
    const float balA = std::sqrt(1.0f - bal);
    const float balB = std::sqrt(bal);
    p.aNoiseGain = noiseLevel * balA;
    p.aGain = toneLevel * formLevel(p.aForm) * balA;
    p.bGain = formLevel(p.bForm) * balB;

    // Filter, in octaves above oscillator A. A narrowing pulse opens it by up
    // to four octaves.
    const float pulseLift = std::max(12.00012f * (p.aForm - 0.66666f), 0.0f);
    const float cut = pulseLift + 16.0f * cube(1.5f * E[Gene::flt_freq] - 0.5f);
    const float vm = 2.0f * E[Gene::flt_mod] - 1.0f;
    const float fm = 8.0f * vm * std::fabs(vm);
    const float lower = pow2(cut - std::min(0.0f, fm));
    const float upper = pow2(cut + std::max(0.0f, fm));
    p.filterFreq = p.aFreq * lower;
    p.filterFreqMod = aTop * upper - p.filterFreq;
    const float vs = 2.0f * E[Gene::flt_sep] - 1.0f;
    p.filterSep = pow2(4.0f * vs * std::fabs(vs));
    p.filterDamp = 0.6931472f - 4.60517f * E[Gene::flt_q];  // ln of 2 * 100^-E
    const float level = 0.5f * std::min(std::max(2.0f / std::max(lower, upper), 1.0f), 4.0f) *
                        std::exp(p.filterDamp * 0.125f);
    p.keyFollow = clamp01(2.0f * E[Gene::flt_kf] - 0.5f);

    // Reverb and output. The effect control moves the mix towards 0 or 1
    // from wherever the gene put it.
    float m = E[Gene::fx_mix];
    if (effect < 0.0f)
        m += m * effect;
    else
        m += (1.0f - m) * effect;
    const float wet = cube(m);
    p.reverbLen = 0.2f * std::pow(100.0f, sq(E[Gene::fx_len]));  // 0.2 s to 20 s
    const float s = 4.9f * fxSize + 0.1f;
    const float sizeGain = s >= 0.25f ? 4.0f * std::sqrt(s) : 2.0f;
    float tailGain;
    if (E[Gene::fx_damp] >= 0.25f) {
        // Jumps at 0.25 from no damping to a corner near 28.8 kHz, by design.
        p.reverbDamp = 22500.0f - 20250.0f * (cube(E[Gene::fx_damp]) - 0.25f) / 0.75f;
        tailGain = sizeGain * std::pow(p.reverbLen, 0.440867f - 0.09585059f * std::log(p.reverbDamp)) *
                   std::pow(p.reverbDamp, -0.13287712f);
    } else {
        p.reverbDamp = 0.0f;
        tailGain = sizeGain * 0.26f * std::pow(p.reverbLen, -0.5291331f);
    }
    p.reverbChorus = fourth(2.0f * E[Gene::fx_chors]);
    p.dryGain = std::sqrt(1.0f - wet) * level;
    p.sendGain = tailGain * level * std::sqrt(wet);
    return p;
}

}  // namespace engine
