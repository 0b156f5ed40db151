// The editor at work: a full repaint of a layout with every plain view,
// hit testing under the mouse, and a paint with nothing invalidated.
#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>

#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"

namespace {

std::string widgetsLayout() {
    std::ifstream in(std::string(TENDRANE_SOURCE_DIR) + "/tests/golden/panel/widgets.fomal");
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void BM_FullRepaint(benchmark::State& state) {
    Fomal::StillHost host("Glass Harmonium");
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(host, clock);
    editor.openLayoutText(widgetsLayout());
    for (auto _ : state) {
        editor.invalidate(OrlPixels::IntRect(0, 0, 384, 512));
        benchmark::DoNotOptimize(editor.paint());
    }
}

void BM_HitTest(benchmark::State& state) {
    Fomal::StillHost host("Glass Harmonium");
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(host, clock);
    editor.openLayoutText(widgetsLayout());
    int x = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(editor.root()->hitTest(x, 300));
        x = (x + 7) % 384;
    }
}

void BM_PaintWithNothingToDo(benchmark::State& state) {
    Fomal::StillHost host("Glass Harmonium");
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(host, clock);
    editor.openLayoutText(widgetsLayout());
    editor.paint();
    for (auto _ : state) benchmark::DoNotOptimize(editor.paint());
}

}  // namespace

BENCHMARK(BM_FullRepaint)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HitTest);
BENCHMARK(BM_PaintWithNothingToDo);
