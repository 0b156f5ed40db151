// A wrapper that refines an operand's raw spans: four equal elements start
// a solid run, which goes on while they stay equal; four opaque ones start
// an opaque raw span that ends at the first element below. Solid spans pass
// through. Used when compressing to run-length form.
#pragma once

#include "pixels/Raster.h"

namespace OrlPixels {

template <class T>
class BasicRunOptimizer : public GeneratorOf<T>::Type {
public:
    typedef typename GeneratorOf<T>::Type Generator;

    explicit BasicRunOptimizer(Generator& operand) : operand_(operand) {}
    BasicRunOptimizer(const BasicRunOptimizer&) = delete;
    BasicRunOptimizer& operator=(const BasicRunOptimizer&) = delete;

    void calcBounds(IntRect& out) override { operand_.calcBounds(out); }

    void render(int x, int y, int length, BasicSpanOutput<T>& out) override {
        if (length <= 0) return;
        BasicSpanOutput<T> inner = scratch_.output();
        operand_.render(x, y, length, inner);
        for (int i = 0; i < length;) {
            const BasicSpan<T> s = scratch_.table[i];
            if (s.solid())
                out.putSolid(s.length(), *s.data, s.opaque() || isOpaqueValue<T>(*s.data));
            else
                refine(s.data, s.length(), out);
            i += s.length();
        }
    }

private:
    static bool fourEqual(const T* p) { return p[0] == p[1] && p[0] == p[2] && p[0] == p[3]; }
    static bool fourOpaque(const T* p) {
        return isOpaqueValue<T>(p[0]) && isOpaqueValue<T>(p[1]) && isOpaqueValue<T>(p[2]) && isOpaqueValue<T>(p[3]);
    }

    static void refine(const T* p, int n, BasicSpanOutput<T>& out) {
        int rawStart = 0;
        bool opaqueRun = false;
        int i = 0;
        auto flush = [&](int end) {
            if (end > rawStart) out.putRaw(end - rawStart, p + rawStart, opaqueRun);
        };
        while (i < n) {
            if (i + 4 <= n && fourEqual(p + i)) {
                flush(i);
                int j = i + 4;
                while (j < n && p[j] == p[i]) ++j;
                out.putSolid(j - i, p[i], isOpaqueValue<T>(p[i]));
                i = j;
                rawStart = i;
                opaqueRun = false;
                continue;
            }
            if (!opaqueRun) {
                if (i + 4 <= n && fourOpaque(p + i)) {
                    flush(i);
                    rawStart = i;
                    opaqueRun = true;
                }
                ++i;
            } else if (!isOpaqueValue<T>(p[i])) {
                flush(i);
                rawStart = i;
                opaqueRun = false;
            } else {
                ++i;
            }
        }
        flush(n);
    }

    Generator& operand_;
    SpanScratch<T> scratch_;
};

typedef BasicRunOptimizer<Pixel> RunOptimizer;
typedef BasicRunOptimizer<Coverage> MaskRunOptimizer;

}  // namespace OrlPixels
