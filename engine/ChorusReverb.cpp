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

void ChorusReverb::process(const float* in, float* outLeft, float* outRight, float wetIn, float T, float D,
                           float C) {
    if (!buffer_) {
        std::fill(outLeft, outLeft + BLOCK, 0.0f);
        std::fill(outRight, outRight + BLOCK, 0.0f);
        return;
    }
    if (T != length_) {
        length_ = T;
        setGains();
    }
    const float v = std::max(level_, wetIn);
    if (!(v > 1e-5f)) {
        std::memcpy(gainNow_, gainTarget_, sizeof gainNow_);
        std::fill(outLeft, outLeft + BLOCK, 0.0f);
        std::fill(outRight, outRight + BLOCK, 0.0f);
        level_ = 0.0f;
        return;
    }
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
    const uint32_t mask = uint32_t(capacity_ - 1);
    float* buf = buffer_.get();
    // Gains at their targets stay there: each step would add exactly zero.
    const bool gainsSettled = std::memcmp(gainNow_, gainTarget_, sizeof gainNow_) == 0;

    // Ring positions as locals: the ring's float stores can't alias them.
    uint32_t lineBase[LINES], lineOffset[LINES], diffPos[DIFFUSERS + 1];
    for (int k = 0; k < LINES; ++k) {
        lineBase[k] = lineBase_[k];
        lineOffset[k] = uint32_t(lineOffset_[k]);
    }
    for (int k = 0; k <= DIFFUSERS; ++k) diffPos[k] = uint32_t(diffPos_[k]);

    // Every state the loop carries lives in locals: the ring's float stores
    // could otherwise alias the members, and each sample would reload them.
    __m128 walk1 = _mm_load_ps(walk1_), walk2 = _mm_load_ps(walk2_);
    __m128 lineOut[3], lineDamp[3], gain[5];
    for (int g = 0; g < 3; ++g) {
        lineOut[g] = _mm_load_ps(lineOut_ + 4 * g);
        lineDamp[g] = _mm_load_ps(lineDamp_ + 4 * g);
    }
    for (int k = 0; k < 5; ++k) gain[k] = _mm_load_ps(gainNow_ + 4 * k);
    __m128 gainGoal[5];
    for (int k = 0; k < 5; ++k) gainGoal[k] = _mm_load_ps(gainTarget_ + 4 * k);
    float antiDenormal = antiDenormal_;
    uint32_t random1 = random1_;
    const uint32_t start = writePos_;
    for (int n = 0; n < BLOCK; ++n) {
        // Four random draws drive the four walks, low-passed twice at 1.25 Hz.
        // The four steps of the generator, each taken straight from the
        // word it starts with: the same numbers without a chain of four.
        const uint32_t r = random1;
        random1 = r * kDrawMul[3] - kDrawSub[3];
        const __m128i draws = _mm_setr_epi32(int32_t(r * kDrawMul[0] - kDrawSub[0]), int32_t(r * kDrawMul[1] - kDrawSub[1]),
                                             int32_t(r * kDrawMul[2] - kDrawSub[2]), int32_t(random1));
        const __m128 noise = _mm_cvtepi32_ps(draws);
        walk1 = _mm_add_ps(walk1, _mm_mul_ps(_mm_sub_ps(_mm_mul_ps(noise, noiseGain), walk1), walkCoef));
        walk2 = _mm_add_ps(walk2, _mm_mul_ps(_mm_sub_ps(walk1, walk2), walkCoef));
        // A parabolic sine of each walk: it wraps softly and never runs away.
        const __m128 ph = wrapSlowPhase(_mm_mul_ps(walk2, _mm_set1_ps(0.15915494f)));
        const __m128 bend = _mm_sub_ps(_mm_set1_ps(8.0f),
                                       _mm_and_ps(_mm_sub_ps(_mm_mul_ps(_mm_set1_ps(16.0f), ph), _mm_set1_ps(8.0f)),
                                                  absMask));
        const __m128 m = _mm_mul_ps(_mm_mul_ps(_mm_sub_ps(_mm_set1_ps(0.5f), ph), bend), _mm_set1_ps(depth));
        // Each group reads with the four modulations in its own signs and order.
        const __m128 g1 = _mm_mul_ps(m, _mm_setr_ps(1.0f, -1.0f, 1.0f, -1.0f));
        const __m128 g2 = _mm_sub_ps(_mm_setzero_ps(), g1);
        const __m128 g3 = _mm_mul_ps(_mm_shuffle_ps(m, m, _MM_SHUFFLE(2, 3, 0, 1)), _mm_setr_ps(-1.0f, 1.0f, -1.0f, 1.0f));
        const __m128 groupMod[3] = {g1, g2, g3};

        if (!gainsSettled)
            for (int k = 0; k < 5; ++k) gain[k] = _mm_add_ps(gain[k], _mm_mul_ps(_mm_sub_ps(gainGoal[k], gain[k]), smooth));

        const uint32_t at = start + uint32_t(n);
        const float x = in[n];
        const __m128 feed = _mm_set1_ps(x + antiDenormal);
        // The input once in each sum, before the first group.
        float L = x, R = x;
        for (int g = 0; g < 3; ++g) {
            // i = floor(mu), an exact integer counted one lower: ceil(mu) - 1.
            const __m128 mu = groupMod[g];
            __m128 c = _mm_cvtepi32_ps(_mm_cvttps_epi32(mu));
            c = _mm_add_ps(c, _mm_and_ps(_mm_cmplt_ps(c, mu), one));
            const __m128 i = _mm_sub_ps(c, one);
            const __m128 f = _mm_sub_ps(mu, i);
            const __m128 ap = _mm_div_ps(_mm_sub_ps(one, f), _mm_add_ps(one, f));
            // at - floor(mu) - base, for the four lines at once.
            const __m128i base = _mm_sub_epi32(_mm_set1_epi32(int32_t(at)), _mm_cvtps_epi32(i));
            alignas(16) uint32_t pos[4];
            _mm_store_si128(reinterpret_cast<__m128i*>(pos),
                            _mm_sub_epi32(base, _mm_loadu_si128(reinterpret_cast<const __m128i*>(lineBase + 4 * g))));
            const uint32_t a0 = pos[0], a1 = pos[1], a2 = pos[2], a3 = pos[3];
            const __m128 s0 = _mm_setr_ps(buf[a0 & mask], buf[a1 & mask], buf[a2 & mask], buf[a3 & mask]);
            const __m128 s1 = _mm_setr_ps(buf[(a0 - 1u) & mask], buf[(a1 - 1u) & mask], buf[(a2 - 1u) & mask],
                                          buf[(a3 - 1u) & mask]);
            // Fractional allpass read, feedback gain, damping.
            const __m128 y = _mm_add_ps(s1, _mm_mul_ps(ap, _mm_sub_ps(s0, lineOut[g])));
            lineOut[g] = y;
            const __m128 t = _mm_mul_ps(_mm_add_ps(feed, y), gain[g]);
            const __m128 newDamp = _mm_add_ps(lineDamp[g], _mm_mul_ps(_mm_sub_ps(t, lineDamp[g]), dampCoef));
            lineDamp[g] = newDamp;
            // Lanes straight from the registers; positions from locals.
            const uint32_t* off = &lineOffset[4 * g];
            buf[(at - off[0]) & mask] = _mm_cvtss_f32(newDamp);
            buf[(at - off[1]) & mask] = _mm_cvtss_f32(_mm_shuffle_ps(newDamp, newDamp, _MM_SHUFFLE(1, 1, 1, 1)));
            buf[(at - off[2]) & mask] = _mm_cvtss_f32(_mm_shuffle_ps(newDamp, newDamp, _MM_SHUFFLE(2, 2, 2, 2)));
            buf[(at - off[3]) & mask] = _mm_cvtss_f32(_mm_shuffle_ps(newDamp, newDamp, _MM_SHUFFLE(3, 3, 3, 3)));
            const float o0 = _mm_cvtss_f32(y), o1 = _mm_cvtss_f32(_mm_shuffle_ps(y, y, _MM_SHUFFLE(1, 1, 1, 1)));
            const float o2 = _mm_cvtss_f32(_mm_shuffle_ps(y, y, _MM_SHUFFLE(2, 2, 2, 2)));
            const float o3 = _mm_cvtss_f32(_mm_shuffle_ps(y, y, _MM_SHUFFLE(3, 3, 3, 3)));
            L += o0 + o1 - o2 - o3;
            R += o0 - o1 - o2 + o3;
        }

        // Diffusers: read all six first, then write.
        float rd[DIFFUSERS];
        for (int j = 0; j < DIFFUSERS; ++j) rd[j] = buf[(at - diffPos[j + 1]) & mask];
        alignas(16) float gd[8];
        _mm_store_ps(gd, gain[3]);
        _mm_store_ps(gd + 4, gain[4]);
        const float* g = gd + 1;  // the diffusers' gains are entries 13 to 18
        const float u0 = rd[0] - g[0] * L;
        const float w0 = g[0] * u0 + L;
        const float u1 = rd[1] - g[1] * w0;
        const float u2 = rd[2] - g[2] * u0;
        const float u3 = rd[3] - g[3] * R;
        const float w3 = g[3] * u3 + R;
        const float u4 = rd[4] - g[4] * w3;
        const float u5 = rd[5] - g[5] * u3;
        buf[(at - diffPos[0]) & mask] = w0 + g[1] * u1;
        buf[(at - diffPos[1]) & mask] = u0 + g[2] * u2;
        buf[(at - diffPos[2]) & mask] = u1;
        buf[(at - diffPos[3]) & mask] = w3 + g[4] * u4;
        buf[(at - diffPos[4]) & mask] = u3 + g[5] * u5;
        buf[(at - diffPos[5]) & mask] = u4;

        outLeft[n] = -u2 * 0.11785113f;
        outRight[n] = -u5 * 0.11785113f;
        antiDenormal = -antiDenormal;
    }
    writePos_ = start + uint32_t(BLOCK);
    antiDenormal_ = antiDenormal;
    random1_ = random1;
    _mm_store_ps(walk1_, walk1);
    _mm_store_ps(walk2_, walk2);
    for (int g = 0; g < 3; ++g) {
        _mm_store_ps(lineOut_ + 4 * g, lineOut[g]);
        _mm_store_ps(lineDamp_ + 4 * g, lineDamp[g]);
    }
    for (int k = 0; k < 5; ++k) _mm_store_ps(gainNow_ + 4 * k, gain[k]);

    const uint32_t u = random2_ * 0x323785AFu - 0x35F2CFD7u;
    random1_ = (2u * random1_) | (u >> 31);
    random2_ = (2u * u) | (random1_ >> 31);
    level_ *= std::pow(gainTarget_[0], 64.0f / float(lineDelay_[0]));
}

}  // namespace engine
