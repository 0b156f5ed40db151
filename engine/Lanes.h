// A small value type of W floats side by side (W = 1, 4 or 8), with the few
// operations the sound's formulas use. A formula written once against it
// runs one value at a time, four or eight: every operation acts on each lane
// alone, in 32-bit float, so all widths give the same bits.
//
// Built on the compiler's vector types, which become the processor's vector
// instructions where it has them (SSE, AVX inside the wide entry points,
// NEON) and plain float arithmetic elsewhere. With TENDRANE_SCALAR_LANES the
// lanes are a plain array worked through one by one: the same results by
// construction, for processors without vectors and to check the others.
#pragma once

#include <cstdint>
#include <cstring>

// Every operation is inlined where it is used, so that inside a function
// built for wider registers it takes them.
#define TENDRANE_LANES_INLINE __attribute__((always_inline)) inline

namespace engine {

namespace lanes_detail {

// How W lanes are kept: a vector of the compiler's where it has one for
// them, else a plain array.
template <int W>
struct Storage {
    static constexpr bool vector = false;
    using Floats = float[W];
    struct Bits {
        int32_t b[W];
        TENDRANE_LANES_INLINE int32_t& operator[](int k) { return b[k]; }
        TENDRANE_LANES_INLINE int32_t operator[](int k) const { return b[k]; }
        TENDRANE_LANES_INLINE friend Bits operator&(Bits x, Bits y) {
            for (int k = 0; k < W; ++k) x.b[k] &= y.b[k];
            return x;
        }
        TENDRANE_LANES_INLINE friend Bits operator|(Bits x, Bits y) {
            for (int k = 0; k < W; ++k) x.b[k] |= y.b[k];
            return x;
        }
        TENDRANE_LANES_INLINE friend Bits operator~(Bits x) {
            for (int k = 0; k < W; ++k) x.b[k] = ~x.b[k];
            return x;
        }
    };
};
#if !defined(TENDRANE_SCALAR_LANES)
template <>
struct Storage<4> {
    static constexpr bool vector = true;
    typedef float Floats __attribute__((vector_size(16)));
    typedef int32_t Bits __attribute__((vector_size(16)));
};
template <>
struct Storage<8> {
    static constexpr bool vector = true;
    typedef float Floats __attribute__((vector_size(32)));
    typedef int32_t Bits __attribute__((vector_size(32)));
};
#endif

// The bits of one float and a mask.
TENDRANE_LANES_INLINE float andBits(float x, uint32_t mask) {
    uint32_t u;
    std::memcpy(&u, &x, 4);
    u &= mask;
    std::memcpy(&x, &u, 4);
    return x;
}

}  // namespace lanes_detail

// Per lane true or false, as comparisons give them.
template <int W>
struct LaneMask {
    typename lanes_detail::Storage<W>::Bits bits;  // all ones where true

    TENDRANE_LANES_INLINE friend LaneMask operator&(LaneMask a, LaneMask b) { return {a.bits & b.bits}; }
    TENDRANE_LANES_INLINE friend LaneMask operator|(LaneMask a, LaneMask b) { return {a.bits | b.bits}; }
    TENDRANE_LANES_INLINE friend LaneMask operator~(LaneMask a) { return {~a.bits}; }
    // a and not b.
    TENDRANE_LANES_INLINE friend LaneMask andNot(LaneMask a, LaneMask b) { return {a.bits & ~b.bits}; }
    // Whether any lane is true.
    TENDRANE_LANES_INLINE bool any() const {
        for (int k = 0; k < W; ++k)
            if (bits[k]) return true;
        return false;
    }
};

template <int W>
struct Lanes {
    static_assert(W == 1 || W == 4 || W == 8, "one, four or eight lanes");
    static constexpr int width = W;
    using Storage = lanes_detail::Storage<W>;
    typename Storage::Floats v;

    Lanes() = default;
    // Every lane the same value.
    TENDRANE_LANES_INLINE Lanes(float x) {  // a constant stands for all its lanes
        // Written as one value for all lanes, so it is one broadcast and not
        // W inserts one after the other.
        if constexpr (Storage::vector && W == 4)
            v = typename Storage::Floats{x, x, x, x};
        else if constexpr (Storage::vector && W == 8)
            v = typename Storage::Floats{x, x, x, x, x, x, x, x};
        else
            for (int k = 0; k < W; ++k) v[k] = x;
    }
    // 0, 1, 2... : the lanes' own positions.
    TENDRANE_LANES_INLINE static Lanes ramp() {
        Lanes r;
        for (int k = 0; k < W; ++k) r.v[k] = float(k);
        return r;
    }
    TENDRANE_LANES_INLINE static Lanes load(const float* p) {
        Lanes r;
        std::memcpy(&r.v, p, sizeof r.v);
        return r;
    }
    // W values worked out one by one, as one value of W lanes: the compiler
    // puts them together pairwise in registers, not one insert after another.
    TENDRANE_LANES_INLINE static Lanes of(const float (&x)[W]) {
        Lanes r;
        if constexpr (Storage::vector && W == 4)
            r.v = typename Storage::Floats{x[0], x[1], x[2], x[3]};
        else if constexpr (Storage::vector && W == 8)
            r.v = typename Storage::Floats{x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7]};
        else
            std::memcpy(&r.v, x, sizeof r.v);
        return r;
    }
    TENDRANE_LANES_INLINE void store(float* p) const { std::memcpy(p, &v, sizeof v); }
    TENDRANE_LANES_INLINE float operator[](int k) const { return v[k]; }
    TENDRANE_LANES_INLINE void set(int k, float x) { v[k] = x; }

    TENDRANE_LANES_INLINE friend Lanes operator+(Lanes a, Lanes b) {
        if constexpr (Storage::vector) return from(a.v + b.v);
        else return each(a, b, [](float x, float y) { return x + y; });
    }
    TENDRANE_LANES_INLINE friend Lanes operator-(Lanes a, Lanes b) {
        if constexpr (Storage::vector) return from(a.v - b.v);
        else return each(a, b, [](float x, float y) { return x - y; });
    }
    TENDRANE_LANES_INLINE friend Lanes operator*(Lanes a, Lanes b) {
        if constexpr (Storage::vector) return from(a.v * b.v);
        else return each(a, b, [](float x, float y) { return x * y; });
    }
    TENDRANE_LANES_INLINE friend Lanes operator/(Lanes a, Lanes b) {
        if constexpr (Storage::vector) return from(a.v / b.v);
        else return each(a, b, [](float x, float y) { return x / y; });
    }
    // The smaller of each pair, and b where either is not a number.
    TENDRANE_LANES_INLINE friend Lanes min(Lanes a, Lanes b) {
#if defined(__GNUC__) && defined(__SSE__)
        // The compiler makes a compare and a blend of the choice below; the
        // processor's minimum is the same choice, lane by lane, in one step.
        if constexpr (Storage::vector && W == 4) return from(__builtin_ia32_minps(a.v, b.v));
#endif
        if constexpr (Storage::vector) return from(a.v < b.v ? a.v : b.v);
        else return each(a, b, [](float x, float y) { return x < y ? x : y; });
    }
    // The greater of each pair, and b where either is not a number.
    TENDRANE_LANES_INLINE friend Lanes max(Lanes a, Lanes b) {
#if defined(__GNUC__) && defined(__SSE__)
        if constexpr (Storage::vector && W == 4) return from(__builtin_ia32_maxps(a.v, b.v));
#endif
        if constexpr (Storage::vector) return from(a.v > b.v ? a.v : b.v);
        else return each(a, b, [](float x, float y) { return x > y ? x : y; });
    }
    // The bits of each lane and a mask.
    TENDRANE_LANES_INLINE friend Lanes andBits(Lanes a, uint32_t mask) {
        if constexpr (Storage::vector) {
            using Bits = typename Storage::Bits;
            using Floats = typename Storage::Floats;
            return from(reinterpret_cast<Floats>(reinterpret_cast<Bits>(a.v) & int32_t(mask)));
        } else {
            return each(a, a, [mask](float x, float) { return lanes_detail::andBits(x, mask); });
        }
    }

    // Four values from each of W / 4 places, one after the other.
    TENDRANE_LANES_INLINE static Lanes loadFours(const float* const* p) requires(W >= 4) {
        if constexpr (W == 8 && Storage::vector) {
            typedef float Four __attribute__((vector_size(16)));
            Four a, b;
            std::memcpy(&a, p[0], 16);
            std::memcpy(&b, p[1], 16);
            return from(__builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7));
        } else {
            Lanes r;
            for (int h = 0; h < W / 4; ++h) std::memcpy(reinterpret_cast<float*>(&r.v) + 4 * h, p[h], 16);
            return r;
        }
    }
    // Lanes 4h to 4h + 3 to p[h].
    TENDRANE_LANES_INLINE void storeFours(float* const* p) const requires(W >= 4) {
        if constexpr (W == 8 && Storage::vector) {
            const auto a = __builtin_shufflevector(v, v, 0, 1, 2, 3);
            const auto b = __builtin_shufflevector(v, v, 4, 5, 6, 7);
            std::memcpy(p[0], &a, 16);
            std::memcpy(p[1], &b, 16);
        } else {
            for (int h = 0; h < W / 4; ++h) std::memcpy(p[h], reinterpret_cast<const float*>(&v) + 4 * h, 16);
        }
    }

    // Four registers as a 4 x 4 matrix in each group of four lanes, turned
    // over: lane k of register n goes to lane n of register k, within each
    // group of four.
    TENDRANE_LANES_INLINE friend void transposeFours(Lanes& r0, Lanes& r1, Lanes& r2, Lanes& r3) requires(W >= 4) {
        if constexpr (Storage::vector) {
            using Bits = typename Storage::Bits;
            Bits lo, hi, pairsLo, pairsHi;
            for (int g = 0; g < W; g += 4) {
                // unpack low and high, then pairs of the two
                lo[g] = g, lo[g + 1] = g + W, lo[g + 2] = g + 1, lo[g + 3] = g + 1 + W;
                hi[g] = g + 2, hi[g + 1] = g + 2 + W, hi[g + 2] = g + 3, hi[g + 3] = g + 3 + W;
                pairsLo[g] = g, pairsLo[g + 1] = g + 1, pairsLo[g + 2] = g + W, pairsLo[g + 3] = g + 1 + W;
                pairsHi[g] = g + 2, pairsHi[g + 1] = g + 3, pairsHi[g + 2] = g + 2 + W, pairsHi[g + 3] = g + 3 + W;
            }
            const auto t0 = __builtin_shuffle(r0.v, r1.v, lo), t1 = __builtin_shuffle(r2.v, r3.v, lo);
            const auto t2 = __builtin_shuffle(r0.v, r1.v, hi), t3 = __builtin_shuffle(r2.v, r3.v, hi);
            r0.v = __builtin_shuffle(t0, t1, pairsLo);
            r1.v = __builtin_shuffle(t0, t1, pairsHi);
            r2.v = __builtin_shuffle(t2, t3, pairsLo);
            r3.v = __builtin_shuffle(t2, t3, pairsHi);
        } else {
            Lanes* r[4] = {&r0, &r1, &r2, &r3};
            for (int g = 0; g < W; g += 4)
                for (int a = 0; a < 4; ++a)
                    for (int b = a + 1; b < 4; ++b) {
                        const float x = r[a]->v[g + b];
                        r[a]->v[g + b] = r[b]->v[g + a];
                        r[b]->v[g + a] = x;
                    }
        }
    }

    // Lanes picked from a (0 to W - 1) and b (W to 2W - 1), by position.
    template <int... I>
    TENDRANE_LANES_INLINE friend Lanes pick(Lanes a, Lanes b) {
        static_assert(sizeof...(I) == W, "one pick a lane");
        if constexpr (Storage::vector) {
            return from(__builtin_shufflevector(a.v, b.v, I...));
        } else {
            const int at[W] = {I...};
            Lanes r;
            for (int k = 0; k < W; ++k) r.v[k] = at[k] < W ? a.v[at[k]] : b.v[at[k] - W];
            return r;
        }
    }

    // a < b in each lane; false where either is not a number.
    TENDRANE_LANES_INLINE friend LaneMask<W> operator<(Lanes a, Lanes b) {
        LaneMask<W> m;
        if constexpr (Storage::vector)
            m.bits = a.v < b.v;
        else
            for (int k = 0; k < W; ++k) m.bits[k] = a.v[k] < b.v[k] ? -1 : 0;
        return m;
    }
    // yes where the mask is true, else no.
    TENDRANE_LANES_INLINE friend Lanes select(LaneMask<W> m, Lanes yes, Lanes no) {
        if constexpr (Storage::vector) {
            using Bits = typename Storage::Bits;
            using Floats = typename Storage::Floats;
            return from(reinterpret_cast<Floats>((m.bits & reinterpret_cast<Bits>(yes.v)) |
                                                 (~m.bits & reinterpret_cast<Bits>(no.v))));
        } else {
            Lanes r;
            for (int k = 0; k < W; ++k) r.v[k] = m.bits[k] ? yes.v[k] : no.v[k];
            return r;
        }
    }

private:
    template <class V>
    TENDRANE_LANES_INLINE static Lanes from(V x) {
        Lanes r;
        r.v = x;
        return r;
    }
    template <class F>
    TENDRANE_LANES_INLINE static Lanes each(Lanes a, Lanes b, F f) {
        Lanes r;
        for (int k = 0; k < W; ++k) r.v[k] = f(a.v[k], b.v[k]);
        return r;
    }
};

}  // namespace engine
