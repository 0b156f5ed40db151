// OrlPixels: anti-aliased fills, image composition and stroking.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "pixels/MaskedRaster.h"
#include "pixels/PlainImage.h"
#include "pixels/PolygonMask.h"
#include "pixels/RadialRampMask.h"
#include "pixels/RunLengthImage.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"
#include "pixels/Surface.h"

using namespace OrlPixels;

namespace {

struct Board {
    int width, height;
    std::vector<Pixel> pixels;
    Surface surface;
    Board(int w, int h) : width(w), height(h), pixels(std::size_t(w) * h, 0xFF202020u) {
        surface = Surface(pixels.data(), w, IntRect(0, 0, w, h), true);
    }
};

Polygon star(double cx, double cy, double outer, double inner, int points) {
    Polygon p;
    for (int i = 0; i < 2 * points; ++i) {
        const double r = i % 2 == 0 ? outer : inner;
        const double a = i * 3.141592653589793 / points;
        if (i == 0)
            p.moveTo(cx + r * std::sin(a), cy - r * std::cos(a));
        else
            p.lineTo(cx + r * std::sin(a), cy - r * std::cos(a));
    }
    p.close(0);
    return p;
}

void fill(Surface& s, const Polygon& p, Pixel color) {
    PolygonMask mask(p, s.bounds);
    SolidRaster ink(color);
    MaskedRaster masked(ink, mask);
    s.draw(masked);
}

// Shown as time per megapixel of the target.
void perMegapixel(benchmark::State& state, double pixels) {
    state.counters["per_Mpx"] =
        benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_StarFill1000(benchmark::State& state) {
    Board b(1000, 1000);
    const Polygon p = star(500.3, 500.7, 495, 190, 5);
    for (auto _ : state) {
        fill(b.surface, p, 0xFFF0C020u);
        benchmark::DoNotOptimize(b.pixels.data());
    }
    perMegapixel(state, 1e6);
}
BENCHMARK(BM_StarFill1000)->Unit(benchmark::kMillisecond);

void BM_SmallCircles100(benchmark::State& state) {
    Board b(1000, 1000);
    std::vector<Polygon> circles;
    for (int i = 0; i < 100; ++i) {
        Polygon c;
        c.addCircle(50 + (i % 10) * 100 + 0.3, 50 + (i / 10) * 100 + 0.6, 12.5);
        circles.push_back(c);
    }
    for (auto _ : state) {
        for (const Polygon& c : circles) fill(b.surface, c, 0xC0806020u);
        benchmark::DoNotOptimize(b.pixels.data());
    }
    perMegapixel(state, 1e6);
}
BENCHMARK(BM_SmallCircles100)->Unit(benchmark::kMillisecond);

// A panel-sized image: opaque background areas, a translucent glow and
// anti-aliased shapes, as the panel images have.
std::vector<Pixel> panelImage() {
    Board b(384, 512);
    std::fill(b.pixels.begin(), b.pixels.end(), 0u);
    Polygon frame;
    frame.addRectangle(10, 10, 364, 200);
    fill(b.surface, frame, 0xFF303848u);
    for (int i = 0; i < 12; ++i) fill(b.surface, star(60 + (i % 4) * 90, 260 + (i / 4) * 80, 35, 14, 5), 0xFFC0A040u);
    RadialRampMask glow(192, 110, 150, 90);
    SolidRaster white(0x80808080u);
    MaskedRaster g(white, glow);
    b.surface.draw(g);
    return b.pixels;
}

void BM_ComposePlain384x512(benchmark::State& state) {
    PlainImage image(384, 512, false, panelImage());
    Board b(384, 512);
    for (auto _ : state) {
        image.draw(b.surface, 0, 0);
        benchmark::DoNotOptimize(b.pixels.data());
    }
    perMegapixel(state, 384.0 * 512);
}
BENCHMARK(BM_ComposePlain384x512)->Unit(benchmark::kMillisecond);

void BM_ComposeRle384x512(benchmark::State& state) {
    PlainImage plain(384, 512, false, panelImage());
    RleRaster image(*plain.asRaster());
    Board b(384, 512);
    for (auto _ : state) {
        image.draw(b.surface, 0, 0);
        benchmark::DoNotOptimize(b.pixels.data());
    }
    perMegapixel(state, 384.0 * 512);
    state.counters["runs"] = double(image.table().runs.size());
}
BENCHMARK(BM_ComposeRle384x512)->Unit(benchmark::kMillisecond);

void BM_StrokePolyline1000(benchmark::State& state) {
    Polygon line;
    for (int i = 0; i < 1000; ++i) {
        const double x = 10 + i * 0.98;
        const double y = 500 + 300 * std::sin(i * 0.05) + 40 * std::sin(i * 0.31);
        if (i == 0)
            line.moveTo(x, y);
        else
            line.lineTo(x, y);
    }
    Pen pen;
    pen.color = 0xFFE0E0E0u;
    pen.stroke = 3;
    pen.joints = CURVE_JOINTS;
    pen.caps = ROUND_CAPS;
    Board b(1000, 1000);
    for (auto _ : state) {
        Polygon p = line;
        applyPen(p, pen);
        fill(b.surface, p, pen.color);
        benchmark::DoNotOptimize(b.pixels.data());
    }
}
BENCHMARK(BM_StrokePolyline1000)->Unit(benchmark::kMillisecond);

void BM_StrokeGeometryOnly1000(benchmark::State& state) {
    Polygon line;
    for (int i = 0; i < 1000; ++i) {
        const double x = 10 + i * 0.98;
        const double y = 500 + 300 * std::sin(i * 0.05) + 40 * std::sin(i * 0.31);
        if (i == 0)
            line.moveTo(x, y);
        else
            line.lineTo(x, y);
    }
    Pen pen;
    pen.stroke = 3;
    pen.joints = CURVE_JOINTS;
    pen.caps = ROUND_CAPS;
    for (auto _ : state) {
        Polygon p = line;
        applyPen(p, pen);
        benchmark::DoNotOptimize(p.points().data());
    }
}
BENCHMARK(BM_StrokeGeometryOnly1000)->Unit(benchmark::kMillisecond);

}  // namespace
