// Text: a 40-character caption drawn and measured with a panel font.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "pixels/BitmapFont.h"
#include "pixels/SystemFont.h"

using namespace OrlPixels;

namespace {

const std::string CAPTION = "Mod Wheel Scaling = 100% (Volume -16 dB)";  // 40 characters

void drawCaption(benchmark::State& state, const Font& font) {
    std::vector<Pixel> pixels(384 * 32, 0xFF101010u);
    Surface surface(pixels.data(), 384, IntRect(0, 0, 384, 32), true);
    for (auto _ : state) {
        font.draw(surface, CAPTION, 4, 4, 0xFFE0E0E0u);
        benchmark::DoNotOptimize(pixels.data());
    }
    state.counters["ns/glyph"] = benchmark::Counter(double(state.iterations()) * double(CAPTION.size()),
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void measureCaption(benchmark::State& state, const Font& font) {
    for (auto _ : state) benchmark::DoNotOptimize(font.measure(CAPTION));
    state.counters["ns/glyph"] = benchmark::Counter(double(state.iterations()) * double(CAPTION.size()),
                                                    benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void BM_BitmapFontDraw(benchmark::State& state) { drawCaption(state, *loadBitmapFont("futura18", 2.7)); }
void BM_BitmapFontMeasure(benchmark::State& state) { measureCaption(state, *loadBitmapFont("futura18", 2.7)); }
void BM_SystemFontDraw(benchmark::State& state) {
    platform::SystemTextStyle style;
    style.size = 10;
    SystemFont font(style);
    drawCaption(state, font);
}

}  // namespace

BENCHMARK(BM_BitmapFontDraw);
BENCHMARK(BM_BitmapFontMeasure);
BENCHMARK(BM_SystemFontDraw);
