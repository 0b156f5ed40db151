// The speech bubble: compiling a tutorial-sized page of mark-up with the
// tutorial's styles and fonts, one typing frame of the bubble (the editor's
// tick at 30 frames a second and the repaint of what it changed), and a
// tick of a bubble at rest. Reports the time per page or per frame.
#include <benchmark/benchmark.h>

#include <string>

#include "fomal/ActionDispatcher.h"
#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"
#include "views/BubbleMarkup.h"
#include "views/BubbleView.h"
#include "views/LivingViews.h"

namespace {

// About as long as the tutorial's longest pages, with every kind of tag.
const char* const PAGE =
    "The <term>rotation</term> control decides which <i>branch</i> plays which key. Turn it and listen: "
    "the branch that played <key>C</key> now plays <key>C#</key>, and so on round the octave.<pause delay: 0.5 /> "
    "Hold <symbol>1</symbol>&nbsp;and click a slider to put it back where it started, or hold <symbol>3</symbol> "
    "while dragging for finer steps. <tip>(The <u>mod wheel</u> grows every branch at once, so sample-and-hold "
    "sounds and slow attacks appear as it moves.)</tip> When you are ready, "
    "<click action: nop><item>go on to the next page</item></click> &gt;&gt; or close the tutorial; it will "
    "remember where you were the next time you open it.<do action: nop />";

const std::string STYLES =
    "styles: { default: { font: { fnt: \"futura18\", color: 0xFF000000, gamma: 1.8 }, lineSpacing: -4, typingRate: 20 },"
    " term: { font: { fnt: \"futura18\", color: 0xFF000000, gamma: 1.8 }, lineSpacing: -5, typingRate: 20 },"
    " i: { font: { fnt: \"futura18i\", color: 0xFF000000, gamma: 1.8 }, lineSpacing: -5, typingRate: 20 },"
    " tip: { font: { fnt: \"futura18i\", color: 0xFF000000, gamma: 1.8 }, lineSpacing: -5, typingRate: 20 },"
    " symbol: { font: { fnt: \"spSymbols\" }, lineSpacing: -8 },"
    " key: { font: { fnt: \"segoe14b\" }, frame: { color: 0x40000000, stroke: 1, margin: 0, padding: 0, joints: miter } },"
    " u: { underline: { color: 0xFF000000, stroke: 1, dash: 4, gap: 2, offset: 2 } },"
    " item: { font: { fnt: \"futura18i\", color: 0xFF005000 },"
    "   underline: { color: 0xC0003000, stroke: 1, dash: 3, gap: 1, offset: 2 } } }";

// The tutorial's bubble at the foot of the panel.
std::string layout() {
    return "views: { { type: \"bubble\", label: \"tutorialBubble\", bounds: { 0, 502, 384, 10 }, fill: 0xE8E8E8E8,"
           " frame: { color: 0xE0202020, stroke: 2 }, margins: { 10, 10, -10, -10 }, paddings: { 15, 7, -15, -12 },"
           " minHeight: 10, maxHeight: 450, corners: { 15, 15 }, moveResizeFPS: 30.0, moveResizeTime: 0.3,"
           " moveResizeCurve: 0.8, " + STYLES + ", pages: { \"" + std::string(PAGE) + "\" } } }";
}

struct Panel {
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};
    Panel() {
        views::registerLivingViews();
        core.openLayoutText(layout());
        core.paint();
    }
    views::BubbleView& bubble() { return static_cast<views::BubbleView&>(*core.root()->findView("tutorialBubble")); }
    void frame() {
        clock.advance(33);
        core.idle();
        core.paint();
    }
};

void BM_BubbleCompileTutorialPage(benchmark::State& state) {
    Panel panel;
    const views::BubbleStyles& styles = panel.bubble().styles();
    std::size_t lines = 0;
    for (auto _ : state) {
        const views::CompiledPage page = views::compileMarkup(PAGE, styles);
        const views::WrappedPage wrapped = views::wrapMarkup(page, 324, styles);
        lines = wrapped.lines.size();
        benchmark::DoNotOptimize(wrapped.runs.data());
    }
    state.counters["lines"] = double(lines);
    state.SetLabel("ns per page compiled and wrapped");
}
BENCHMARK(BM_BubbleCompileTutorialPage);

void BM_BubbleTypingFrame(benchmark::State& state) {
    Panel panel;
    for (auto _ : state) {
        if (!panel.bubble().typing()) {
            state.PauseTiming();
            panel.core.actions().perform(*panel.core.root(), "gotoPage", "{ label: \"tutorialBubble\", page: 0 }",
                                         false);
            panel.core.paint();
            state.ResumeTiming();
        }
        panel.frame();
    }
    state.SetLabel("ns per typing frame: tick and repaint");
}
BENCHMARK(BM_BubbleTypingFrame);

void BM_BubbleAtRest(benchmark::State& state) {
    Panel panel;
    panel.bubble().performOwn("typingRate", "{ rate: 0 }");
    for (int i = 0; i < 60; ++i) panel.frame();
    for (auto _ : state) panel.frame();
    state.counters["ticking"] = panel.core.nextWake() == INT64_MAX ? 0.0 : 1.0;
    state.SetLabel("ns per frame of a fully typed bubble");
}
BENCHMARK(BM_BubbleAtRest);

}  // namespace
