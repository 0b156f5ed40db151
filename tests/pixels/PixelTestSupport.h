// Helpers for the pixel tests: expanding spans to plain rows, a canvas that
// owns its pixels, and wrappers that count or record what a node was asked.
#pragma once

#include <cstdint>
#include <vector>

#include "pixels/Raster.h"
#include "pixels/Surface.h"

namespace pixeltest {

using namespace OrlPixels;

// Renders one strip and expands the spans, checking the table's invariants.
template <class Generator, class T = typename Generator::Element>
std::vector<T> renderRow(Generator& g, int x, int y, int n, std::vector<BasicSpan<T>>* spans = nullptr) {
    BasicSpan<T> table[MAX_SPAN_REQUEST];
    T area[MAX_SPAN_REQUEST];
    BasicSpanOutput<T> out(table, area);
    g.render(x, y, n, out);
    std::vector<T> row;
    if (out.count() != n) return row;  // callers check the size
    for (int i = 0; i < n;) {
        const BasicSpan<T> s = table[i];
        const int len = s.length();
        if (len <= 0 || i + len > n) return std::vector<T>();
        const BasicSpan<T> last = table[i + len - 1];
        if (last.bits != s.bits || last.data != s.data) return std::vector<T>();
        if (spans) spans->push_back(s);
        for (int k = 0; k < len; ++k) row.push_back(s.solid() ? *s.data : s.data[k]);
        i += len;
    }
    return row;
}

// A whole rectangle of a generator, strip by strip, rows top down.
template <class Generator, class T = typename Generator::Element>
std::vector<T> renderRect(Generator& g, const IntRect& r, int strip = MAX_SPAN_REQUEST) {
    std::vector<T> all;
    for (int y = r.top; y < r.bottom(); ++y) {
        for (int x = r.left; x < r.right(); x += strip) {
            const int n = int(std::min<std::int64_t>(strip, r.right() - x));
            std::vector<T> row = renderRow(g, x, y, n);
            if (int(row.size()) != n) return std::vector<T>();
            all.insert(all.end(), row.begin(), row.end());
        }
    }
    return all;
}

struct Canvas {
    int width;
    int height;
    std::vector<Pixel> pixels;
    Surface surface;

    Canvas(int w, int h, Pixel fill = 0) : width(w), height(h), pixels(std::size_t(w) * h, fill) {
        surface = Surface(pixels.data(), w, IntRect(0, 0, w, h));
    }
    Pixel at(int x, int y) const { return pixels[std::size_t(y) * width + x]; }
};

// Counts render calls and remembers the pointer range of its last output.
class CountingRaster : public Raster {
public:
    explicit CountingRaster(Raster& inner) : inner_(inner) {}
    void calcBounds(IntRect& out) override { inner_.calcBounds(out); }
    void render(int x, int y, int length, SpanOutput& out) override {
        ++calls;
        pixels += length;
        inner_.render(x, y, length, out);
    }
    int calls = 0;
    long pixels = 0;

private:
    Raster& inner_;
};

// A raster that yields a fixed list of spans (raw ones from its own data).
class ScriptedRaster : public Raster {
public:
    struct Piece {
        int length;
        bool solid;
        std::vector<Pixel> values;  // one for solid, `length` otherwise
        bool opaque;
    };
    std::vector<Piece> pieces;
    IntRect bounds = INFINITE_RECT;

    void calcBounds(IntRect& out) override { out = bounds; }
    void render(int, int, int length, SpanOutput& out) override {
        int done = 0;
        for (const Piece& p : pieces) {
            if (done >= length) break;
            const int n = std::min(p.length, length - done);
            if (p.solid)
                out.putSolid(n, p.values[0], p.opaque);
            else
                out.putRaw(n, p.values.data(), p.opaque);
            done += n;
        }
        if (done < length) out.putSolid(length - done, 0, false);
    }
};

}  // namespace pixeltest
