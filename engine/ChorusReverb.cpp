#include "engine/ChorusReverb.h"

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

// Four floats and four 32-bit words in one register, with the compiler's
// vector operations: SSE or NEON, or plain arithmetic where there are none.
typedef float F4 __attribute__((vector_size(16)));
typedef int32_t I4 __attribute__((vector_size(16)));
typedef uint32_t U4 __attribute__((vector_size(16)));

inline F4 f4(float x) { return F4{x, x, x, x}; }
inline I4 i4(int32_t x) { return I4{x, x, x, x}; }
inline F4 loadF4(const float* p) {
    F4 v;
    std::memcpy(&v, p, 16);
    return v;
}
inline void storeF4(float* p, F4 v) { std::memcpy(p, &v, 16); }
inline I4 loadI4(const void* p) {
    I4 v;
    std::memcpy(&v, p, 16);
    return v;
}
inline F4 andF4(F4 a, F4 b) { return (F4)((I4)a & (I4)b); }
inline F4 xorF4(F4 a, F4 b) { return (F4)((I4)a ^ (I4)b); }
// Differences of positions, modulo 2^32.
inline I4 subI4(I4 a, I4 b) { return (I4)((U4)a - (U4)b); }
// The low 32 bits of each lane's product.
inline I4 multiplyLow(I4 a, I4 b) { return (I4)((U4)a * (U4)b); }
// Whether any lane's, or every lane's, top bit is set (of masks of whole
// words, 0 or all ones): folded in the register, not lane by lane.
inline bool anyLane(I4 m) {
    m = m | __builtin_shufflevector(m, m, 2, 3, 0, 1);
    m = m | __builtin_shufflevector(m, m, 1, 0, 3, 2);
    return m[0] < 0;
}
inline bool everyLane(I4 m) {
    m = m & __builtin_shufflevector(m, m, 2, 3, 0, 1);
    m = m & __builtin_shufflevector(m, m, 1, 0, 3, 2);
    return m[0] < 0;
}
// Four registers as a 4 x 4 matrix, turned over.
inline void transpose4(F4& r0, F4& r1, F4& r2, F4& r3) {
    const F4 t0 = __builtin_shufflevector(r0, r1, 0, 4, 1, 5), t1 = __builtin_shufflevector(r2, r3, 0, 4, 1, 5);
    const F4 t2 = __builtin_shufflevector(r0, r1, 2, 6, 3, 7), t3 = __builtin_shufflevector(r2, r3, 2, 6, 3, 7);
    r0 = __builtin_shufflevector(t0, t1, 0, 1, 4, 5);
    r1 = __builtin_shufflevector(t0, t1, 2, 3, 6, 7);
    r2 = __builtin_shufflevector(t2, t3, 0, 1, 4, 5);
    r3 = __builtin_shufflevector(t2, t3, 2, 3, 6, 7);
}

// The four words of an integer vector.
struct Words {
    uint32_t v[4];
    explicit Words(I4 x) : v{uint32_t(x[0]), uint32_t(x[1]), uint32_t(x[2]), uint32_t(x[3])} {}
    uint32_t operator[](int k) const { return v[k]; }
};

// The same for a float vector.
struct FloatLanes {
    float v[4];
    explicit FloatLanes(F4 x) : v{x[0], x[1], x[2], x[3]} {}
    float operator[](int k) const { return v[k]; }
};

// The modulators' phase wrap on a register of this loop.
inline F4 slowPhase(F4 p) {
    alignas(16) float x[4];
    storeF4(x, p);
    wrapSlowPhase(Lanes<4>::load(x)).store(x);
    return loadF4(x);
}

// The delay ring as the loop sees it: positions count up with time and the
// mask folds them in.
struct Ring {
    float* buf;
    uint32_t mask;

    float& at(uint32_t pos) const { return buf[pos & mask]; }

    // s0 at each lane's position, s1 one further back.
    void gather(I4 pos, F4& s0, F4& s1) const {
        const Words p(pos);
        s0 = F4{at(p[0]), at(p[1]), at(p[2]), at(p[3])};
        s1 = F4{at(p[0] - 1u), at(p[1] - 1u), at(p[2] - 1u), at(p[3] - 1u)};
    }

    // Each lane to its position, lane 0 first.
    void scatter(I4 pos, F4 v) const {
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
    const F4 walkCoef = f4(1.0f - std::exp(-6.2831855f * w));
    const float depth = float(lineDelay_[11]) * 0.015f;
    const F4 noiseGain = f4(std::sqrt(0.5f / w) * 7.3145906e-10f * lengthTrim_ * C);
    if (std::fabs(gainNow_[0] - gainTarget_[0]) < 1e-5f) std::memcpy(gainNow_, gainTarget_, sizeof gainNow_);
    const F4 dampCoef = f4(D == 0.0f ? 1.0f : 1.0f - std::exp(-6.2831855f * D / r));
    const F4 smooth = f4(smoothCoef_);
    const F4 absMask = ((F4)(i4(0x7FFFFFFF)));
    const F4 one = f4(1.0f);
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
    F4 mod[BLOCK];
    alignas(16) float gainAt[BLOCK][20];
    {
        F4 walk1 = loadF4(walk1_), walk2 = loadF4(walk2_);
        F4 gain[5], gainGoal[5];
        for (int k = 0; k < 5; ++k) {
            gain[k] = loadF4(gainNow_ + 4 * k);
            gainGoal[k] = loadF4(gainTarget_ + 4 * k);
        }
        // The four draws of a sample are one to four steps of the generator
        // from the word it starts with; the next sample's are four steps on
        // from these, one multiply for all four lanes.
        const uint32_t r0 = random1_;
        I4 draws = I4{int32_t(r0 * kDrawMul[0] - kDrawSub[0]), int32_t(r0 * kDrawMul[1] - kDrawSub[1]), int32_t(r0 * kDrawMul[2] - kDrawSub[2]), int32_t(r0 * kDrawMul[3] - kDrawSub[3])};
        const I4 fourStepsMul = i4(int32_t(kDrawMul[3]));
        const I4 fourStepsSub = i4(int32_t(kDrawSub[3]));
        for (int n = 0; n < BLOCK; ++n) {
            if (n > 0) draws = subI4(multiplyLow(draws, fourStepsMul), fourStepsSub);
            // Four random draws drive the four walks, low-passed twice at 1.25 Hz.
            const F4 noise = __builtin_convertvector(draws, F4);
            walk1 = (walk1 + (((noise * noiseGain) - walk1) * walkCoef));
            walk2 = (walk2 + ((walk1 - walk2) * walkCoef));
            // A parabolic sine of each walk: it wraps softly and never runs away.
            const F4 ph = slowPhase((walk2 * f4(0.15915494f)));
            const F4 bend = (f4(8.0f) - andF4(((f4(16.0f) * ph) - f4(8.0f)), absMask));
            mod[n] = (((f4(0.5f) - ph) * bend) * f4(depth));
        }
        random1_ = uint32_t((__builtin_shufflevector(draws, draws, 3, 3, 3, 3))[0]);
        storeF4(walk1_, walk1);
        storeF4(walk2_, walk2);
        // Settled gains are one row for the whole block.
        for (int k = 0; k < 5; ++k) storeF4(gainAt[0] + 4 * k, gain[k]);
        if (!gainsSettled)
            for (int n = 0; n < BLOCK; ++n) {
                for (int k = 0; k < 5; ++k)
                    gain[k] = (gain[k] + ((gainGoal[k] - gain[k]) * smooth));
                for (int k = 0; k < 5; ++k) storeF4(gainAt[n] + 4 * k, gain[k]);
            }
        for (int k = 0; k < 5; ++k) storeF4(gainNow_ + 4 * k, gain[k]);
    }
    const int gainStep = gainsSettled ? 0 : 1;
    const auto gainRow = [&](int n) -> const float* { return gainAt[n * gainStep]; };
    I4 shift[BLOCK][3];
    F4 allpass[BLOCK][3];
    for (int n = 0; n < BLOCK; ++n) {
        // Each group reads with the four modulations in its own signs and
        // order: +m0 -m1 +m2 -m3, its negation, and -m1 +m0 -m3 +m2. The
        // third is the first with its lanes swapped in pairs, the same
        // products exactly, so it takes the first's results swapped.
        const F4 m = mod[n];
        const F4 g1 = (m * F4{1.0f, -1.0f, 1.0f, -1.0f});
        const F4 g2 = (F4{} - g1);
        const F4 groupMod[2] = {g1, g2};
#pragma GCC unroll 2
        for (int g = 0; g < 2; ++g) {
            // i = floor(mu), an exact integer counted one lower: ceil(mu) - 1.
            const F4 mu = groupMod[g];
            F4 c = __builtin_convertvector(__builtin_convertvector(mu, I4), F4);
            c = (c + andF4(((F4)(c < mu)), one));
            const F4 i = (c - one);
            const F4 f = (mu - i);
            allpass[n][g] = ((one - f) / (one + f));
            shift[n][g] = __builtin_convertvector(i, I4);
        }
        allpass[n][2] = __builtin_shufflevector(allpass[n][0], allpass[n][0], 1, 0, 7, 6);
        shift[n][2] = __builtin_shufflevector(shift[n][0], shift[n][0], 1, 0, 3, 2);
    }

    // The sounding side. Every state it carries lives in locals: the ring's
    // float stores could otherwise alias the members.
    Ring ring{buffer_.get(), uint32_t(capacity_ - 1)};
    const I4 ringMask = i4(int32_t(ring.mask));
    I4 lineBase[3], lineOffset[3];
    F4 lineOut[3], lineDamp[3];
    for (int g = 0; g < 3; ++g) {
        lineBase[g] = loadI4(lineBase_ + 4 * g);
        lineOffset[g] = loadI4(lineOffset_ + 4 * g);
        lineOut[g] = loadF4(lineOut_ + 4 * g);
        lineDamp[g] = loadF4(lineDamp_ + 4 * g);
    }
    alignas(16) int diffPos[8];  // the last one twice, for two full vectors
    for (int k = 0; k <= DIFFUSERS; ++k) diffPos[k] = diffPos_[k];
    diffPos[7] = diffPos[6];
    const I4 writeLimit = i4(int32_t(ring.mask - 3u));
    const float antiDenormal = antiDenormal_;
    static_assert(BLOCK % 4 == 0, "whole runs of four, so an even count of sign flips per block");
    const uint32_t start = writePos_;

    // One sample of one group: fractional allpass read, feedback gain,
    // damping. Returns the lines' outputs; lineDamp holds what to write.
    const auto lineStep = [&](int g, F4 s0, F4 s1, F4 ap, F4 feed, F4 gain) {
        const F4 y = (s1 + (ap * (s0 - lineOut[g])));
        lineOut[g] = y;
        const F4 t = ((feed + y) * gain);
        lineDamp[g] = (lineDamp[g] + ((t - lineDamp[g]) * dampCoef));
        return y;
    };
    // Where a group reads its s0 at sample n: at - i - lineOffset - lineDelay.
    const auto readPos = [&](int n, int g) {
        return subI4(subI4(i4(int32_t(start + uint32_t(n))), shift[n][g]), lineBase[g]);
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
    F4 restingDiffGain[DIFFUSERS];
    for (int j = 0; j < DIFFUSERS; ++j) restingDiffGain[j] = f4(gainAt[0][13 + j]);
    const auto diffuseFour = [&](int n, F4 L, F4 R) {
        const I4 at = i4(int32_t(start + uint32_t(n)));
        const I4 pos0 =
            (subI4(at, loadI4(diffPos)) & ringMask);
        const I4 pos4 =
            (subI4(at, loadI4(diffPos + 4)) & ringMask);
        if (anyLane(((I4)(pos0 > writeLimit)) | ((I4)(pos4 > writeLimit)))) {
            const FloatLanes l(L), r(R);
#pragma GCC unroll 4
            for (int j = 0; j < 4; ++j) diffuse(n + j, l[j], r[j]);
            return;
        }
        const Words p0(pos0), p4(pos4);
        const uint32_t p[7] = {p0[0], p0[1], p0[2], p0[3], p4[0], p4[1], p4[2]};
        F4 rd[DIFFUSERS], g[DIFFUSERS];
#pragma GCC unroll 6
        for (int j = 0; j < DIFFUSERS; ++j) rd[j] = loadF4(ring.buf + p[j + 1]);
        if (gainsSettled) {
#pragma GCC unroll 6
            for (int j = 0; j < DIFFUSERS; ++j) g[j] = restingDiffGain[j];
        } else {
#pragma GCC unroll 6
            for (int j = 0; j < DIFFUSERS; ++j) {
                const int e = 13 + j;
                g[j] = F4{gainAt[n][e], gainAt[n + 1][e], gainAt[n + 2][e], gainAt[n + 3][e]};
            }
        }
        const F4 u0 = (rd[0] - (g[0] * L));
        const F4 w0 = ((g[0] * u0) + L);
        const F4 u1 = (rd[1] - (g[1] * w0));
        const F4 u2 = (rd[2] - (g[2] * u0));
        const F4 u3 = (rd[3] - (g[3] * R));
        const F4 w3 = ((g[3] * u3) + R);
        const F4 u4 = (rd[4] - (g[4] * w3));
        const F4 u5 = (rd[5] - (g[5] * u3));
        storeF4(ring.buf + p[0], (w0 + (g[1] * u1)));
        storeF4(ring.buf + p[1], (u0 + (g[2] * u2)));
        storeF4(ring.buf + p[2], u1);
        storeF4(ring.buf + p[3], (w3 + (g[4] * u4)));
        storeF4(ring.buf + p[4], (u3 + (g[5] * u5)));
        storeF4(ring.buf + p[5], u4);
        // -u * 0.11785113: the sign flip first, as a flip of the sign bit.
        const F4 signBit = f4(-0.0f);
        const F4 outGain = f4(0.11785113f);
        storeF4(outLeft + n, (xorF4(u2, signBit) * outGain));
        storeF4(outRight + n, (xorF4(u5, signBit) * outGain));
    };

    if (!inFours_) {
        // A ring too small to take four samples at once: one at a time.
        float sign = antiDenormal;
        for (int n = 0; n < BLOCK; ++n) {
            const float x = in[n];
            const F4 feed = f4(x + sign);
            // The input once in each sum, before the first group.
            float L = x, R = x;
#pragma GCC unroll 3
            for (int g = 0; g < 3; ++g) {
                F4 s0, s1;
                ring.gather(readPos(n, g), s0, s1);
                const F4 y = lineStep(g, s0, s1, allpass[n][g], feed, loadF4(gainRow(n) + 4 * g));
                ring.scatter(subI4(i4(int32_t(start + uint32_t(n))), lineOffset[g]), lineDamp[g]);
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
        const F4 signs = F4{antiDenormal, -antiDenormal, antiDenormal, -antiDenormal};
        const I4 readLimit = i4(int32_t(ring.mask - 4u));
        for (int n = 0; n < BLOCK; n += 4) {
            const uint32_t at = start + uint32_t(n);
            const F4 x = loadF4(in + n);
            const F4 feed4 = (x + signs);
            const F4 feed[4] = {__builtin_shufflevector(feed4, feed4, 0, 0, 4, 4),
                                    __builtin_shufflevector(feed4, feed4, 1, 1, 5, 5),
                                    __builtin_shufflevector(feed4, feed4, 2, 2, 6, 6),
                                    __builtin_shufflevector(feed4, feed4, 3, 3, 7, 7)};
            // Reads first, group by group.
            F4 s0[3][4], s1[3][4];
#pragma GCC unroll 3
            for (int g = 0; g < 3; ++g) {
                const I4 i = shift[n][g];
                const I4 still = ((((I4)(i == shift[n + 1][g])) & ((I4)(i == shift[n + 2][g]))) & ((I4)(i == shift[n + 3][g])));
                // s1 of the first sample; the run goes on for four more.
                const I4 first = (subI4(readPos(n, g), i4(1)) & ringMask);
                if (everyLane((~((I4)(first > readLimit))) & still)) {
                    // Each sample's s0 is the next one's s1; the last
                    // sample's s0 is the fifth of each run.
                    const Words p(first);
#pragma GCC unroll 4
                    for (int k = 0; k < 4; ++k) s1[g][k] = loadF4(ring.buf + p[k]);
                    transpose4(s1[g][0], s1[g][1], s1[g][2], s1[g][3]);
                    s0[g][0] = s1[g][1];
                    s0[g][1] = s1[g][2];
                    s0[g][2] = s1[g][3];
                    s0[g][3] = F4{ring.buf[p[0] + 4], ring.buf[p[1] + 4], ring.buf[p[2] + 4], ring.buf[p[3] + 4]};
                } else {
                    for (int j = 0; j < 4; ++j) ring.gather(readPos(n + j, g), s0[g][j], s1[g][j]);
                }
            }
            // The three groups side by side: three chains at once.
            F4 y[3][4], d[3][4];
#pragma GCC unroll 4
            for (int j = 0; j < 4; ++j)
#pragma GCC unroll 3
                for (int g = 0; g < 3; ++g) {
                    y[g][j] = lineStep(g, s0[g][j], s1[g][j], allpass[n + j][g], feed[j],
                                       loadF4(gainRow(n + j) + 4 * g));
                    d[g][j] = lineDamp[g];
                }
            // The four samples' sums, lane by sample; the input once in each.
            F4 L = x, R = x;
#pragma GCC unroll 3
            for (int g = 0; g < 3; ++g) {
                // Line by line now, lane by sample.
                F4* o = y[g];
                transpose4(o[0], o[1], o[2], o[3]);
                L = (L + (((o[0] + o[1]) - o[2]) - o[3]));
                R = (R + (((o[0] - o[1]) - o[2]) + o[3]));
                F4* e = d[g];
                transpose4(e[0], e[1], e[2], e[3]);
                const I4 dest = (subI4(i4(int32_t(at)), lineOffset[g]) & ringMask);
                const Words q(dest);
                if (!anyLane((I4)(dest > writeLimit))) {
#pragma GCC unroll 4
                    for (int k = 0; k < 4; ++k) storeF4(ring.buf + q[k], e[k]);
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
        storeF4(lineOut_ + 4 * g, lineOut[g]);
        storeF4(lineDamp_ + 4 * g, lineDamp[g]);
    }

    const uint32_t u = random2_ * 0x323785AFu - 0x35F2CFD7u;
    random1_ = (2u * random1_) | (u >> 31);
    random2_ = (2u * u) | (random1_ >> 31);
    level_ *= std::pow(gainTarget_[0], 64.0f / float(lineDelay_[0]));
}

}  // namespace engine
