// The editor at work, on the layout of every plain widget: a full repaint,
// a paint with nothing invalidated, the mouse moving over the panel (hit
// test, cursor, the hint's timer), a slider dragged (value, cap and hint
// redrawn), and the idle tick when nothing moves, which a window's timer
// calls tens of times a second.
#include <benchmark/benchmark.h>

#include <fstream>
#include <iterator>
#include <string>

#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"
#include "views/LivingViews.h"

namespace {

std::string everyWidgetLayout() {
    std::ifstream in(std::string(TENDRANE_SOURCE_DIR) + "/tests/golden/panel/every-widget.fomal");
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

struct Panel {
    Fomal::StillHost host{"Fundus Tenebrosus"};
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor{host, clock};
    Panel() {
        views::registerLivingViews();
        editor.openLayoutText(everyWidgetLayout());
        editor.paint();
    }
};

void BM_FullRepaint(benchmark::State& state) {
    Panel p;
    for (auto _ : state) {
        p.editor.invalidate(OrlPixels::IntRect(0, 0, 384, 512));
        benchmark::DoNotOptimize(p.editor.paint());
    }
}

void BM_PaintWithNothingToDo(benchmark::State& state) {
    Panel p;
    for (auto _ : state) benchmark::DoNotOptimize(p.editor.paint());
}

// The mouse crossing the panel row by row, with the paint that follows.
void BM_MouseMove(benchmark::State& state) {
    Panel p;
    int x = 0, y = 0;
    for (auto _ : state) {
        p.editor.mouseMove({x, y, 0});
        benchmark::DoNotOptimize(p.editor.paint());
        x += 7;
        if (x >= 384) x -= 384, y = (y + 11) % 512;
    }
}

// A hint appearing where the mouse rests: the substitution, the window and
// its paint.
void BM_HintShown(benchmark::State& state) {
    Panel p;
    for (auto _ : state) {
        p.editor.mouseMove({160, 114, 0});
        p.clock.advance(Fomal::EditorCore::HINT_DELAY_MS);
        p.editor.idle();
        benchmark::DoNotOptimize(p.editor.paint());
    }
}

// One step of a slider drag: the value changes, the cap and the hint move.
void BM_SliderDragStep(benchmark::State& state) {
    Panel p;
    p.editor.mouseDown({112, 114, Fomal::LEFT_BIT});
    int x = 112, step = 1;
    for (auto _ : state) {
        x += step;
        if (x >= 200 || x <= 20) step = -step;
        p.editor.mouseMove({x, 114, Fomal::LEFT_BIT});
        benchmark::DoNotOptimize(p.editor.paint());
    }
    p.editor.mouseUp({x, 114, Fomal::LEFT_BIT});
}

// The idle tick at rest: the host's revision polled, nothing due.
void BM_IdleAtRest(benchmark::State& state) {
    Panel p;
    p.clock.advance(1000);
    p.editor.idle();
    p.editor.paint();
    for (auto _ : state) {
        p.clock.advance(20);
        p.editor.idle();
        benchmark::DoNotOptimize(p.editor.paint());
    }
}

}  // namespace

BENCHMARK(BM_FullRepaint)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PaintWithNothingToDo);
BENCHMARK(BM_MouseMove)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HintShown)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_SliderDragStep)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_IdleAtRest);
