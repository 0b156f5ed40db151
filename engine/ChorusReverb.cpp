#include "engine/ChorusReverb.h"

#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "engine/PhaseWrap.h"

namespace engine {

namespace {

struct PrimeTable {
    int p[33];
    PrimeTable() {
        int n = 0;
        for (int candidate = 3; n < 33; candidate += 2) {
            bool prime = true;
            for (int d = 3; d * d <= candidate; d += 2)
                if (candidate % d == 0) prime = false;
            if (prime) p[n++] = candidate;
        }
    }
};

// The line primes skip every third entry from the thirteenth on.
constexpr int kLinePrime[ChorusReverb::LINES] = {12, 13, 15, 16, 18, 19, 21, 22, 24, 25, 27, 28};
constexpr int kDiffPrime[ChorusReverb::DIFFUSERS] = {20, 23, 29, 17, 26, 32};  // 79 97 127 67 107 139

// The walk generator steps x -> x * M - S. Taken j times in one go it is
// x -> x * M^j - S (M^(j-1) + ... + M + 1), all modulo 2^32.
constexpr uint32_t kDrawStepMul = 0x569CF9F3u;
constexpr uint32_t kDrawStepSub = 0x06DC3E2Du;
constexpr uint32_t kDrawMul[4] = {kDrawStepMul, kDrawStepMul * kDrawStepMul,
                                  kDrawStepMul * kDrawStepMul * kDrawStepMul,
                                  kDrawStepMul * kDrawStepMul * kDrawStepMul * kDrawStepMul};
constexpr uint32_t kDrawSub[4] = {kDrawStepSub, kDrawStepSub * kDrawMul[0] + kDrawStepSub,
                                  kDrawStepSub * kDrawMul[1] + kDrawStepSub * kDrawMul[0] + kDrawStepSub,
                                  kDrawStepSub * kDrawMul[2] + kDrawStepSub * kDrawMul[1] +
                                      kDrawStepSub * kDrawMul[0] + kDrawStepSub};

// N / p rounded to nearest, in integers.
int delayFor(int N, int p) { return (p / 2 + N) / p; }

// The low 32 bits of each lane's product.
inline __m128i multiplyLow(__m128i a, __m128i b) {
    const __m128i even = _mm_mul_epu32(a, b);
    const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(0, 0, 2, 0)),
                              _mm_shuffle_epi32(odd, _MM_SHUFFLE(0, 0, 2, 0)));
}

// The four words of an integer vector, taken out through the shuffle unit
// rather than a store and four loads.
struct Words {
    uint32_t v[4];
    explicit Words(__m128i x)
        : v{uint32_t(_mm_cvtsi128_si32(x)), uint32_t(_mm_cvtsi128_si32(_mm_shuffle_epi32(x, _MM_SHUFFLE(1, 1, 1, 1)))),
            uint32_t(_mm_cvtsi128_si32(_mm_shuffle_epi32(x, _MM_SHUFFLE(2, 2, 2, 2)))),
            uint32_t(_mm_cvtsi128_si32(_mm_shuffle_epi32(x, _MM_SHUFFLE(3, 3, 3, 3))))} {}
    uint32_t operator[](int k) const { return v[k]; }
};

// The same for a float vector.
struct FloatLanes {
    float v[4];
    explicit FloatLanes(__m128 x)
        : v{_mm_cvtss_f32(x), _mm_cvtss_f32(_mm_shuffle_ps(x, x, _MM_SHUFFLE(1, 1, 1, 1))),
            _mm_cvtss_f32(_mm_shuffle_ps(x, x, _MM_SHUFFLE(2, 2, 2, 2))),
            _mm_cvtss_f32(_mm_shuffle_ps(x, x, _MM_SHUFFLE(3, 3, 3, 3)))} {}
    float operator[](int k) const { return v[k]; }
};

// The modulators' phase wrap on a register of this loop.
inline __m128 slowPhase(__m128 p) {
    alignas(16) float x[4];
    _mm_store_ps(x, p);
    wrapSlowPhase(Lanes<4>::load(x)).store(x);
    return _mm_load_ps(x);
}

// The delay ring as the loop sees it: positions count up with time and the
// mask folds them in.
struct Ring {
    float* buf;
    uint32_t mask;

    float& at(uint32_t pos) const { return buf[pos & mask]; }

    // s0 at each lane's position, s1 one further back.
    void gather(__m128i pos, __m128& s0, __m128& s1) const {
        const Words p(pos);
        s0 = _mm_setr_ps(at(p[0]), at(p[1]), at(p[2]), at(p[3]));
        s1 = _mm_setr_ps(at(p[0] - 1u), at(p[1] - 1u), at(p[2] - 1u), at(p[3] - 1u));
    }

    // Each lane to its position, lane 0 first.
    void scatter(__m128i pos, __m128 v) const {
        const Words p(pos);
        const FloatLanes x(v);
#pragma GCC unroll 4
        for (int k = 0; k < 4; ++k) at(p[k]) = x[k];
    }
};

}  // namespace

const int* ChorusReverb::primes() {
    static const PrimeTable table;
    return table.p;
}

void ChorusReverb::seed(uint32_t seed) {
    random1_ = seed;
    random2_ = ~seed;
}

void ChorusReverb::resize(float sampleRate, float fxSize, bool force) {
    const float size = 4.9f * fxSize + 0.1f;
    if (!force && size == size_ && sampleRate == sampleRate_) return;
    sampleRate_ = sampleRate;
    size_ = size;
    smoothCoef_ = 1.0f - std::exp(-6.2831855f * std::min(40.0f / sampleRate, 0.5f));

    const int* P = primes();
    const int N = int(std::floor(size * sampleRate + 0.5f));
    for (int k = 0; k < LINES; ++k) lineDelay_[k] = delayFor(N, P[kLinePrime[k]]);
    for (int k = 0; k < DIFFUSERS; ++k) diffDelay_[k] = delayFor(N, P[kDiffPrime[k]]);
    const int spare = int(std::ceil(float(lineDelay_[11]) * 0.015f));
    lineOffset_[0] = 0;
    for (int k = 0; k + 1 < LINES; ++k) lineOffset_[k + 1] = lineOffset_[k] + lineDelay_[k] + spare + 2;
    for (int k = 0; k < LINES; ++k) lineBase_[k] = uint32_t(lineOffset_[k] + lineDelay_[k]);
    diffPos_[0] = lineOffset_[11] + lineDelay_[11] + spare + 2;
    diffPos_[1] = diffPos_[0] + diffDelay_[0];
    diffPos_[2] = diffPos_[0] + diffDelay_[1];
    diffPos_[3] = diffPos_[1] + diffDelay_[2];
    diffPos_[4] = diffPos_[3] + diffDelay_[3];
    diffPos_[5] = diffPos_[3] + diffDelay_[4];
    diffPos_[6] = diffPos_[4] + diffDelay_[5];

    std::size_t capacity = 1;
    while (capacity <= std::size_t(diffPos_[6])) capacity *= 2;
    if (capacity != capacity_ || !buffer_) {
        buffer_.reset();
        capacity_ = 0;
        // Without memory the reverb stays silent until the size changes
        // again: the audio thread neither throws nor retries every block.
        buffer_.reset(new (std::nothrow) float[capacity]);
        if (!buffer_) {
            level_ = 0.0f;
            return;
        }
        capacity_ = capacity;
    }
    // Taking four samples at once reorders the ring's reads and writes: all
    // line reads of the four before their writes, all lines before the
    // diffusers. That is exact when nothing written in one of the four is
    // touched again within them: each line reads at least four samples behind
    // its write (its shortest reach is its delay less spare and one), no two
    // diffuser taps lie one to three samples apart, and the diffusers'
    // farthest tap stays four clear of the ring's end, where line 0 writes.
    bool spaced = true;
    for (int a = 0; a <= DIFFUSERS; ++a)
        for (int b = 0; b <= DIFFUSERS; ++b)
            if (const int d = diffPos_[b] - diffPos_[a]; d >= 1 && d <= 3) spaced = false;
    inFours_ = spaced && lineDelay_[11] >= spare + 5 && capacity_ - std::size_t(diffPos_[6]) >= 4;
    clearStates();
    setGains();
    std::memcpy(gainNow_, gainTarget_, sizeof gainNow_);
    level_ = 0.0f;
}

void ChorusReverb::clearStates() {
    std::fill(buffer_.get(), buffer_.get() + capacity_, 0.0f);
    writePos_ = 0;
    antiDenormal_ = 1e-11f;
    std::fill(std::begin(lineOut_), std::end(lineOut_), 0.0f);
    std::fill(std::begin(lineDamp_), std::end(lineDamp_), 0.0f);
    std::fill(std::begin(walk1_), std::end(walk1_), 0.0f);
    std::fill(std::begin(walk2_), std::end(walk2_), 0.0f);
}

void ChorusReverb::setGains() {
    const float T = length_;
    const float r = sampleRate_;
    const float d0 = float(lineDelay_[0]);
    const float h = T == 0.0f ? 1.0f : std::exp(std::log(0.001f) * d0 / (r * T));
    const float a = std::pow(h, 1.0f / d0);
    const float b = std::pow(0.25f * h, 1.0f / d0);
    for (int k = 0; k < LINES; ++k) gainTarget_[k] = std::pow(a, float(lineDelay_[k]));
    gainTarget_[12] = 0.0f;
    for (int j = 0; j < DIFFUSERS; ++j) gainTarget_[13 + j] = std::pow(b, float(diffDelay_[j]));
    lengthTrim_ = T == 0.0f ? 0.5f : std::min(std::pow(T, -0.25f), 2.0f);
}

void ChorusReverb::rest(float T) {
    if (!buffer_) return;
    if (T != length_) {
        length_ = T;
        setGains();
    }
    std::memcpy(gainNow_, gainTarget_, sizeof gainNow_);
    level_ = 0.0f;
}

void ChorusReverb::process(const float* in, float* outLeft, float* outRight, float wetIn, float T, float D,
                           float C) {
    if (!buffer_) {
        std::fill(outLeft, outLeft + BLOCK, 0.0f);
        std::fill(outRight, outRight + BLOCK, 0.0f);
        return;
    }
    if (asleep(wetIn)) {
        rest(T);
        std::fill(outLeft, outLeft + BLOCK, 0.0f);
        std::fill(outRight, outRight + BLOCK, 0.0f);
        return;
    }
    if (T != length_) {
        length_ = T;
        setGains();
    }
    const float v = std::max(level_, wetIn);
    level_ = v;
    const float r = sampleRate_;
    const float w = 1.25f / r;
    const __m128 walkCoef = _mm_set1_ps(1.0f - std::exp(-6.2831855f * w));
    const float depth = float(lineDelay_[11]) * 0.015f;
    const __m128 noiseGain = _mm_set1_ps(std::sqrt(0.5f / w) * 7.3145906e-10f * lengthTrim_ * C);
    if (std::fabs(gainNow_[0] - gainTarget_[0]) < 1e-5f) std::memcpy(gainNow_, gainTarget_, sizeof gainNow_);
    const __m128 dampCoef = _mm_set1_ps(D == 0.0f ? 1.0f : 1.0f - std::exp(-6.2831855f * D / r));
    const __m128 smooth = _mm_set1_ps(smoothCoef_);
    const __m128 absMask = _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF));
    const __m128 one = _mm_set1_ps(1.0f);
    // Gains at their targets stay there: each step would add exactly zero.
    // So do gains that one step leaves bit for bit where they are (a step
    // too small to move them short of the target, common at high rates):
    // every further step is that same step.
    bool gainsSettled = std::memcmp(gainNow_, gainTarget_, sizeof gainNow_) == 0;
    if (!gainsSettled) {
        float next[20];
        for (int k = 0; k < 20; ++k) next[k] = gainNow_[k] + (gainTarget_[k] - gainNow_[k]) * smoothCoef_;
        gainsSettled = std::memcmp(next, gainNow_, sizeof next) == 0;
    }

    // The modulation side hears nothing of the sound: it runs for the whole
    // block first, in two passes. The first carries the walks and the gains
    // from sample to sample; the second, free of any such chain, leaves per
    // sample and group of four lines the whole part of each read's
    // modulation (an exact integer, one lower at integers) and the allpass
    // coefficient.
    __m128 mod[BLOCK];
    alignas(16) float gainAt[BLOCK][20];
    {
        __m128 walk1 = _mm_load_ps(walk1_), walk2 = _mm_load_ps(walk2_);
        __m128 gain[5], gainGoal[5];
        for (int k = 0; k < 5; ++k) {
            gain[k] = _mm_load_ps(gainNow_ + 4 * k);
            gainGoal[k] = _mm_load_ps(gainTarget_ + 4 * k);
        }
        // The four draws of a sample are one to four steps of the generator
        // from the word it starts with; the next sample's are four steps on
        // from these, one multiply for all four lanes.
        const uint32_t r0 = random1_;
        __m128i draws = _mm_setr_epi32(int32_t(r0 * kDrawMul[0] - kDrawSub[0]), int32_t(r0 * kDrawMul[1] - kDrawSub[1]),
                                       int32_t(r0 * kDrawMul[2] - kDrawSub[2]), int32_t(r0 * kDrawMul[3] - kDrawSub[3]));
        const __m128i fourStepsMul = _mm_set1_epi32(int32_t(kDrawMul[3]));
        const __m128i fourStepsSub = _mm_set1_epi32(int32_t(kDrawSub[3]));
        for (int n = 0; n < BLOCK; ++n) {
            if (n > 0) draws = _mm_sub_epi32(multiplyLow(draws, fourStepsMul), fourStepsSub);
            // Four random draws drive the four walks, low-passed twice at 1.25 Hz.
            const __m128 noise = _mm_cvtepi32_ps(draws);
            walk1 = _mm_add_ps(walk1, _mm_mul_ps(_mm_sub_ps(_mm_mul_ps(noise, noiseGain), walk1), walkCoef));
            walk2 = _mm_add_ps(walk2, _mm_mul_ps(_mm_sub_ps(walk1, walk2), walkCoef));
            // A parabolic sine of each walk: it wraps softly and never runs away.
            const __m128 ph = slowPhase(_mm_mul_ps(walk2, _mm_set1_ps(0.15915494f)));
            const __m128 bend = _mm_sub_ps(
                _mm_set1_ps(8.0f),
                _mm_and_ps(_mm_sub_ps(_mm_mul_ps(_mm_set1_ps(16.0f), ph), _mm_set1_ps(8.0f)), absMask));
            mod[n] = _mm_mul_ps(_mm_mul_ps(_mm_sub_ps(_mm_set1_ps(0.5f), ph), bend), _mm_set1_ps(depth));
        }
        random1_ = uint32_t(_mm_cvtsi128_si32(_mm_shuffle_epi32(draws, _MM_SHUFFLE(3, 3, 3, 3))));
        _mm_store_ps(walk1_, walk1);
        _mm_store_ps(walk2_, walk2);
        // Settled gains are one row for the whole block.
        for (int k = 0; k < 5; ++k) _mm_store_ps(gainAt[0] + 4 * k, gain[k]);
        if (!gainsSettled)
            for (int n = 0; n < BLOCK; ++n) {
                for (int k = 0; k < 5; ++k)
                    gain[k] = _mm_add_ps(gain[k], _mm_mul_ps(_mm_sub_ps(gainGoal[k], gain[k]), smooth));
                for (int k = 0; k < 5; ++k) _mm_store_ps(gainAt[n] + 4 * k, gain[k]);
            }
        for (int k = 0; k < 5; ++k) _mm_store_ps(gainNow_ + 4 * k, gain[k]);
    }
    const int gainStep = gainsSettled ? 0 : 1;
    const auto gainRow = [&](int n) -> const float* { return gainAt[n * gainStep]; };
    __m128i shift[BLOCK][3];
    __m128 allpass[BLOCK][3];
    for (int n = 0; n < BLOCK; ++n) {
        // Each group reads with the four modulations in its own signs and
        // order: +m0 -m1 +m2 -m3, its negation, and -m1 +m0 -m3 +m2. The
        // third is the first with its lanes swapped in pairs, the same
        // products exactly, so it takes the first's results swapped.
        const __m128 m = mod[n];
        const __m128 g1 = _mm_mul_ps(m, _mm_setr_ps(1.0f, -1.0f, 1.0f, -1.0f));
        const __m128 g2 = _mm_sub_ps(_mm_setzero_ps(), g1);
        const __m128 groupMod[2] = {g1, g2};
#pragma GCC unroll 2
        for (int g = 0; g < 2; ++g) {
            // i = floor(mu), an exact integer counted one lower: ceil(mu) - 1.
            const __m128 mu = groupMod[g];
            __m128 c = _mm_cvtepi32_ps(_mm_cvttps_epi32(mu));
            c = _mm_add_ps(c, _mm_and_ps(_mm_cmplt_ps(c, mu), one));
            const __m128 i = _mm_sub_ps(c, one);
            const __m128 f = _mm_sub_ps(mu, i);
            allpass[n][g] = _mm_div_ps(_mm_sub_ps(one, f), _mm_add_ps(one, f));
            shift[n][g] = _mm_cvtps_epi32(i);
        }
        allpass[n][2] = _mm_shuffle_ps(allpass[n][0], allpass[n][0], _MM_SHUFFLE(2, 3, 0, 1));
        shift[n][2] = _mm_shuffle_epi32(shift[n][0], _MM_SHUFFLE(2, 3, 0, 1));
    }

    // The sounding side. Every state it carries lives in locals: the ring's
    // float stores could otherwise alias the members.
    Ring ring{buffer_.get(), uint32_t(capacity_ - 1)};
    const __m128i ringMask = _mm_set1_epi32(int32_t(ring.mask));
    __m128i lineBase[3], lineOffset[3];
    __m128 lineOut[3], lineDamp[3];
    for (int g = 0; g < 3; ++g) {
        lineBase[g] = _mm_load_si128(reinterpret_cast<const __m128i*>(lineBase_ + 4 * g));
        lineOffset[g] = _mm_load_si128(reinterpret_cast<const __m128i*>(lineOffset_ + 4 * g));
        lineOut[g] = _mm_load_ps(lineOut_ + 4 * g);
        lineDamp[g] = _mm_load_ps(lineDamp_ + 4 * g);
    }
    alignas(16) int diffPos[8];  // the last one twice, for two full vectors
    for (int k = 0; k <= DIFFUSERS; ++k) diffPos[k] = diffPos_[k];
    diffPos[7] = diffPos[6];
    const __m128i writeLimit = _mm_set1_epi32(int32_t(ring.mask - 3u));
    const float antiDenormal = antiDenormal_;
    static_assert(BLOCK % 4 == 0, "whole runs of four, so an even count of sign flips per block");
    const uint32_t start = writePos_;

    // One sample of one group: fractional allpass read, feedback gain,
    // damping. Returns the lines' outputs; lineDamp holds what to write.
    const auto lineStep = [&](int g, __m128 s0, __m128 s1, __m128 ap, __m128 feed, __m128 gain) {
        const __m128 y = _mm_add_ps(s1, _mm_mul_ps(ap, _mm_sub_ps(s0, lineOut[g])));
        lineOut[g] = y;
        const __m128 t = _mm_mul_ps(_mm_add_ps(feed, y), gain);
        lineDamp[g] = _mm_add_ps(lineDamp[g], _mm_mul_ps(_mm_sub_ps(t, lineDamp[g]), dampCoef));
        return y;
    };
    // Where a group reads its s0 at sample n: at - i - lineOffset - lineDelay.
    const auto readPos = [&](int n, int g) {
        return _mm_sub_epi32(_mm_sub_epi32(_mm_set1_epi32(int32_t(start + uint32_t(n))), shift[n][g]), lineBase[g]);
    };
    // The six diffusers of one sample: read all six first, then write.
    const auto diffuse = [&](int n, float L, float R) {
        const uint32_t at = start + uint32_t(n);
        float rd[DIFFUSERS];
        for (int j = 0; j < DIFFUSERS; ++j) rd[j] = ring.at(at - uint32_t(diffPos[j + 1]));
        const float* g = gainRow(n) + 13;
        const float u0 = rd[0] - g[0] * L;
        const float w0 = g[0] * u0 + L;
        const float u1 = rd[1] - g[1] * w0;
        const float u2 = rd[2] - g[2] * u0;
        const float u3 = rd[3] - g[3] * R;
        const float w3 = g[3] * u3 + R;
        const float u4 = rd[4] - g[4] * w3;
        const float u5 = rd[5] - g[5] * u3;
        ring.at(at - uint32_t(diffPos[0])) = w0 + g[1] * u1;
        ring.at(at - uint32_t(diffPos[1])) = u0 + g[2] * u2;
        ring.at(at - uint32_t(diffPos[2])) = u1;
        ring.at(at - uint32_t(diffPos[3])) = w3 + g[4] * u4;
        ring.at(at - uint32_t(diffPos[4])) = u3 + g[5] * u5;
        ring.at(at - uint32_t(diffPos[5])) = u4;
        outLeft[n] = -u2 * 0.11785113f;
        outRight[n] = -u5 * 0.11785113f;
    };

    // The diffusers of four samples, lane by sample, when none of their runs
    // wraps; else one sample at a time.
    __m128 restingDiffGain[DIFFUSERS];
    for (int j = 0; j < DIFFUSERS; ++j) restingDiffGain[j] = _mm_set1_ps(gainAt[0][13 + j]);
    const auto diffuseFour = [&](int n, __m128 L, __m128 R) {
        const __m128i at = _mm_set1_epi32(int32_t(start + uint32_t(n)));
        const __m128i pos0 =
            _mm_and_si128(_mm_sub_epi32(at, _mm_load_si128(reinterpret_cast<const __m128i*>(diffPos))), ringMask);
        const __m128i pos4 =
            _mm_and_si128(_mm_sub_epi32(at, _mm_load_si128(reinterpret_cast<const __m128i*>(diffPos + 4))), ringMask);
        if (_mm_movemask_epi8(_mm_or_si128(_mm_cmpgt_epi32(pos0, writeLimit), _mm_cmpgt_epi32(pos4, writeLimit)))) {
            const FloatLanes l(L), r(R);
#pragma GCC unroll 4
            for (int j = 0; j < 4; ++j) diffuse(n + j, l[j], r[j]);
            return;
        }
        const Words p0(pos0), p4(pos4);
        const uint32_t p[7] = {p0[0], p0[1], p0[2], p0[3], p4[0], p4[1], p4[2]};
        __m128 rd[DIFFUSERS], g[DIFFUSERS];
#pragma GCC unroll 6
        for (int j = 0; j < DIFFUSERS; ++j) rd[j] = _mm_loadu_ps(ring.buf + p[j + 1]);
        if (gainsSettled) {
#pragma GCC unroll 6
            for (int j = 0; j < DIFFUSERS; ++j) g[j] = restingDiffGain[j];
        } else {
#pragma GCC unroll 6
            for (int j = 0; j < DIFFUSERS; ++j) {
                const int e = 13 + j;
                g[j] = _mm_setr_ps(gainAt[n][e], gainAt[n + 1][e], gainAt[n + 2][e], gainAt[n + 3][e]);
            }
        }
        const __m128 u0 = _mm_sub_ps(rd[0], _mm_mul_ps(g[0], L));
        const __m128 w0 = _mm_add_ps(_mm_mul_ps(g[0], u0), L);
        const __m128 u1 = _mm_sub_ps(rd[1], _mm_mul_ps(g[1], w0));
        const __m128 u2 = _mm_sub_ps(rd[2], _mm_mul_ps(g[2], u0));
        const __m128 u3 = _mm_sub_ps(rd[3], _mm_mul_ps(g[3], R));
        const __m128 w3 = _mm_add_ps(_mm_mul_ps(g[3], u3), R);
        const __m128 u4 = _mm_sub_ps(rd[4], _mm_mul_ps(g[4], w3));
        const __m128 u5 = _mm_sub_ps(rd[5], _mm_mul_ps(g[5], u3));
        _mm_storeu_ps(ring.buf + p[0], _mm_add_ps(w0, _mm_mul_ps(g[1], u1)));
        _mm_storeu_ps(ring.buf + p[1], _mm_add_ps(u0, _mm_mul_ps(g[2], u2)));
        _mm_storeu_ps(ring.buf + p[2], u1);
        _mm_storeu_ps(ring.buf + p[3], _mm_add_ps(w3, _mm_mul_ps(g[4], u4)));
        _mm_storeu_ps(ring.buf + p[4], _mm_add_ps(u3, _mm_mul_ps(g[5], u5)));
        _mm_storeu_ps(ring.buf + p[5], u4);
        // -u * 0.11785113: the sign flip first, as a flip of the sign bit.
        const __m128 signBit = _mm_set1_ps(-0.0f);
        const __m128 outGain = _mm_set1_ps(0.11785113f);
        _mm_storeu_ps(outLeft + n, _mm_mul_ps(_mm_xor_ps(u2, signBit), outGain));
        _mm_storeu_ps(outRight + n, _mm_mul_ps(_mm_xor_ps(u5, signBit), outGain));
    };

    if (!inFours_) {
        // A ring too small to take four samples at once: one at a time.
        float sign = antiDenormal;
        for (int n = 0; n < BLOCK; ++n) {
            const float x = in[n];
            const __m128 feed = _mm_set1_ps(x + sign);
            // The input once in each sum, before the first group.
            float L = x, R = x;
#pragma GCC unroll 3
            for (int g = 0; g < 3; ++g) {
                __m128 s0, s1;
                ring.gather(readPos(n, g), s0, s1);
                const __m128 y = lineStep(g, s0, s1, allpass[n][g], feed, _mm_load_ps(gainRow(n) + 4 * g));
                ring.scatter(_mm_sub_epi32(_mm_set1_epi32(int32_t(start + uint32_t(n))), lineOffset[g]), lineDamp[g]);
                const FloatLanes o(y);
                L += o[0] + o[1] - o[2] - o[3];
                R += o[0] - o[1] - o[2] + o[3];
            }
            diffuse(n, L, R);
            sign = -sign;
        }
    } else {
        // Four samples at a time. A group's reads for the four come from four
        // runs of the ring when its read positions hold still and don't wrap;
        // its writes go to four runs when they don't wrap. Transposes turn
        // runs into samples and back.
        const __m128 signs = _mm_setr_ps(antiDenormal, -antiDenormal, antiDenormal, -antiDenormal);
        const __m128i readLimit = _mm_set1_epi32(int32_t(ring.mask - 4u));
        for (int n = 0; n < BLOCK; n += 4) {
            const uint32_t at = start + uint32_t(n);
            const __m128 x = _mm_loadu_ps(in + n);
            const __m128 feed4 = _mm_add_ps(x, signs);
            const __m128 feed[4] = {_mm_shuffle_ps(feed4, feed4, _MM_SHUFFLE(0, 0, 0, 0)),
                                    _mm_shuffle_ps(feed4, feed4, _MM_SHUFFLE(1, 1, 1, 1)),
                                    _mm_shuffle_ps(feed4, feed4, _MM_SHUFFLE(2, 2, 2, 2)),
                                    _mm_shuffle_ps(feed4, feed4, _MM_SHUFFLE(3, 3, 3, 3))};
            // Reads first, group by group.
            __m128 s0[3][4], s1[3][4];
#pragma GCC unroll 3
            for (int g = 0; g < 3; ++g) {
                const __m128i i = shift[n][g];
                const __m128i still = _mm_and_si128(_mm_and_si128(_mm_cmpeq_epi32(i, shift[n + 1][g]),
                                                                  _mm_cmpeq_epi32(i, shift[n + 2][g])),
                                                    _mm_cmpeq_epi32(i, shift[n + 3][g]));
                // s1 of the first sample; the run goes on for four more.
                const __m128i first = _mm_and_si128(_mm_sub_epi32(readPos(n, g), _mm_set1_epi32(1)), ringMask);
                if (_mm_movemask_epi8(_mm_andnot_si128(_mm_cmpgt_epi32(first, readLimit), still)) == 0xFFFF) {
                    // Each sample's s0 is the next one's s1; the last
                    // sample's s0 is the fifth of each run.
                    const Words p(first);
#pragma GCC unroll 4
                    for (int k = 0; k < 4; ++k) s1[g][k] = _mm_loadu_ps(ring.buf + p[k]);
                    _MM_TRANSPOSE4_PS(s1[g][0], s1[g][1], s1[g][2], s1[g][3]);
                    s0[g][0] = s1[g][1];
                    s0[g][1] = s1[g][2];
                    s0[g][2] = s1[g][3];
                    s0[g][3] = _mm_setr_ps(ring.buf[p[0] + 4], ring.buf[p[1] + 4], ring.buf[p[2] + 4], ring.buf[p[3] + 4]);
                } else {
                    for (int j = 0; j < 4; ++j) ring.gather(readPos(n + j, g), s0[g][j], s1[g][j]);
                }
            }
            // The three groups side by side: three chains at once.
            __m128 y[3][4], d[3][4];
#pragma GCC unroll 4
            for (int j = 0; j < 4; ++j)
#pragma GCC unroll 3
                for (int g = 0; g < 3; ++g) {
                    y[g][j] = lineStep(g, s0[g][j], s1[g][j], allpass[n + j][g], feed[j],
                                       _mm_load_ps(gainRow(n + j) + 4 * g));
                    d[g][j] = lineDamp[g];
                }
            // The four samples' sums, lane by sample; the input once in each.
            __m128 L = x, R = x;
#pragma GCC unroll 3
            for (int g = 0; g < 3; ++g) {
                // Line by line now, lane by sample.
                __m128* o = y[g];
                _MM_TRANSPOSE4_PS(o[0], o[1], o[2], o[3]);
                L = _mm_add_ps(L, _mm_sub_ps(_mm_sub_ps(_mm_add_ps(o[0], o[1]), o[2]), o[3]));
                R = _mm_add_ps(R, _mm_add_ps(_mm_sub_ps(_mm_sub_ps(o[0], o[1]), o[2]), o[3]));
                __m128* e = d[g];
                _MM_TRANSPOSE4_PS(e[0], e[1], e[2], e[3]);
                const __m128i dest = _mm_and_si128(_mm_sub_epi32(_mm_set1_epi32(int32_t(at)), lineOffset[g]), ringMask);
                const Words q(dest);
                if (_mm_movemask_epi8(_mm_cmpgt_epi32(dest, writeLimit)) == 0) {
#pragma GCC unroll 4
                    for (int k = 0; k < 4; ++k) _mm_storeu_ps(ring.buf + q[k], e[k]);
                } else {
                    for (int k = 0; k < 4; ++k) {
                        const FloatLanes run(e[k]);
#pragma GCC unroll 4
                        for (int j = 0; j < 4; ++j) ring.at(q[k] + uint32_t(j)) = run[j];
                    }
                }
            }
            diffuseFour(n, L, R);
        }
    }
    writePos_ = start + uint32_t(BLOCK);
    for (int g = 0; g < 3; ++g) {
        _mm_store_ps(lineOut_ + 4 * g, lineOut[g]);
        _mm_store_ps(lineDamp_ + 4 * g, lineDamp[g]);
    }

    const uint32_t u = random2_ * 0x323785AFu - 0x35F2CFD7u;
    random1_ = (2u * random1_) | (u >> 31);
    random2_ = (2u * u) | (random1_ >> 31);
    level_ *= std::pow(gainTarget_[0], 64.0f / float(lineDelay_[0]));
}

}  // namespace engine
