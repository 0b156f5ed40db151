// The geometry of one frame of the main panel's plant: twelve branches grown
// with their twigs, as the plant view computes it on every frame it draws.
// The storage is reused from frame to frame, as the view keeps it. Reports
// the time per frame and the lines and points of the frame.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "fomal/MessageCatalogue.h"
#include "patch/NorvelleProgram.h"
#include "plugin/PluginCore.h"
#include "plugin/PluginEditorHost.h"
#include "views/ApplicationScripts.h"
#include "views/LivingViews.h"
#include "pixels/Surface.h"
#include "views/PlantGeometry.h"
#include "views/PlantMainPanel.h"
#include "views/PlantPainter.h"
#include "views/PlantRenderer.h"

namespace {

// One frame of the panel's plant with every branch at `length`, swaying with
// notes on every branch when `swaying`.
void growFrames(benchmark::State& state, float length, bool swaying) {
    const views::MainPanelPlant& panel = views::mainPanelPlant();
    NorvelleProgram record;
    record.seed = 0x5EA5C0A5u;
    record.setParam(Param::Atonality, 0.55f);
    for (int i = 0; i < BRANCH_COUNT; ++i) record.setParam(Param::Branch1 + i, length);
    views::PlantRenderer renderer(panel.settings);
    views::PlantFrame frame = views::restingPlantFrame(record, panel.bounds, panel.shape, renderer);
    views::PlantGeometry geometry;
    float phase = 0.0f;
    for (auto _ : state) {
        if (swaying) {
            // The sway moves on as it does at 30 frames a second.
            phase += 0.5f;
            for (int i = 0; i < BRANCH_COUNT; ++i) {
                frame.level[i] = 0.6f;
                frame.phase[i] = phase + 0.3f * float(i);
            }
        }
        renderer.growBranches(geometry, frame, panel.shape);
        benchmark::DoNotOptimize(geometry.lines().data());
    }
    state.counters["lines"] = double(geometry.lines().size());
    state.counters["points"] = double(geometry.pointTotal());
    state.counters["steps"] = double(renderer.stepsTaken());
    state.SetLabel("ns per frame of 12 branches with twigs");
}

void BM_PlantFrameFullyGrown(benchmark::State& state) { growFrames(state, 1.0f, false); }
BENCHMARK(BM_PlantFrameFullyGrown);

void BM_PlantFrameFullyGrownSwaying(benchmark::State& state) { growFrames(state, 1.0f, true); }
BENCHMARK(BM_PlantFrameFullyGrownSwaying);

void BM_PlantFrameHalfGrown(benchmark::State& state) { growFrames(state, 0.5f, false); }
BENCHMARK(BM_PlantFrameHalfGrown);

// The same frame painted: geometry and every piece drawn into the panel.
void BM_PlantFrameGrownAndPainted(benchmark::State& state) {
    const views::MainPanelPlant& panel = views::mainPanelPlant();
    NorvelleProgram record;
    record.seed = 0x5EA5C0A5u;
    for (int i = 0; i < BRANCH_COUNT; ++i) record.setParam(Param::Branch1 + i, 1.0f);
    views::PlantRenderer renderer(panel.settings);
    const views::PlantFrame frame = views::restingPlantFrame(record, panel.bounds, panel.shape, renderer);
    const views::PlantCoverageTable table(panel.settings.gamma);
    std::vector<OrlPixels::Pixel> block(384 * 512, 0xFF000000u);
    OrlPixels::Surface surface(block.data(), 384, OrlPixels::IntRect(0, 0, 384, 512), true);
    views::PlantGeometry geometry;
    for (auto _ : state) {
        renderer.growBranches(geometry, frame, panel.shape);
        views::paintPlant(surface, geometry, table);
        benchmark::DoNotOptimize(block.data());
    }
    state.SetLabel("ns per frame: geometry and painting");
}
BENCHMARK(BM_PlantFrameGrownAndPainted);

// The line painter alone: lines of 1 to 120 pixels at every slope, drawn
// over the panel's middle; reports nanoseconds per pixel touched along the
// major axis (each touches two).
void BM_PlantLinePainter(benchmark::State& state) {
    const views::PlantCoverageTable table(2.0);
    std::vector<OrlPixels::Pixel> block(384 * 512, 0xFF000000u);
    OrlPixels::Surface surface(block.data(), 384, OrlPixels::IntRect(0, 0, 384, 512), true);
    struct Line {
        double x0, y0, x1, y1;
    };
    std::vector<Line> lines;
    double pixels = 0.0;
    for (int k = 0; k < 240; ++k) {
        const double angle = k * 0.0261799;  // 1.5 degrees
        const double length = 1.0 + (k * 37 % 120);
        const double x0 = 192.3 + (k % 7), y0 = 264.6 - (k % 5);
        const double x1 = x0 + std::cos(angle) * length, y1 = y0 + std::sin(angle) * length;
        lines.push_back({x0, y0, x1, y1});
        pixels += std::max(std::fabs(x1 - x0), std::fabs(y1 - y0));
    }
    const OrlPixels::Pixel color = 0x60406020u;
    for (auto _ : state) {
        for (const Line& l : lines) views::drawPlantLine(l.x0, l.y0, l.x1, l.y1, surface, table, color);
        benchmark::DoNotOptimize(block.data());
    }
    state.counters["ns_per_pixel"] = benchmark::Counter(pixels * 1e-9 * double(state.iterations()),
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.SetLabel("line painter, per pixel along the major axis");
}
BENCHMARK(BM_PlantLinePainter);

VstIntPtr VST_CALL quietHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

// The main panel open over a plug-in, with a patch whose plant is fully
// grown, on a virtual clock.
struct GrownPanel {
    int limit = 100;
    PluginCore plugin{&quietHost};
    PluginEditorHost host{plugin, limit,
                          [](std::string_view label) { return Fomal::MessageCatalogue::product().lookup(label); }};
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};
    bool opened = false;

    explicit GrownPanel(float length = 1.0f) {
        views::registerLivingViews();
        NorvelleProgram record;
        record.seed = 0x5EA5C0A5u;
        record.setParam(Param::Atonality, 0.55f);
        for (int i = 0; i < BRANCH_COUNT; ++i) record.setParam(Param::Branch1 + i, length);
        host.writeProgram(record);
        plugin.resume();
        opened = core.open(views::applicationScripts(host, core));
        for (int i = 0; i < 200; ++i) frame();
    }
    ~GrownPanel() { core.close(); }
    // One frame of the panel's 30 a second: the tick and what it invalidated.
    void frame() {
        clock.advance(33);
        core.idle();
        core.paint();
    }
};

// A full repaint of the main panel with the grown plant: every view, the
// plant grown and painted, the bulb's glass over it.
void BM_MainPanelRepaintWithGrownPlant(benchmark::State& state) {
    GrownPanel panel;
    if (!panel.opened) state.SkipWithError("the editor did not open");
    const OrlPixels::IntRect whole(0, 0, Fomal::EditorCore::WIDTH, Fomal::EditorCore::HEIGHT);
    for (auto _ : state) {
        panel.core.invalidate(whole);
        benchmark::DoNotOptimize(panel.core.paint());
    }
    state.SetLabel("full repaint of the main panel, grown plant");
}
BENCHMARK(BM_MainPanelRepaintWithGrownPlant)->Unit(benchmark::kMillisecond);

// One second of the plant swaying with notes on every branch at 30 frames a
// second: the view's ticks, the repaint of what they invalidate. The time
// per iteration over one second is the share of a core.
void BM_PlantSwayingOneSecondAt30Fps(benchmark::State& state) {
    GrownPanel panel;
    if (!panel.opened) state.SkipWithError("the editor did not open");
    VisualState notes;
    for (int i = 0; i < BRANCH_COUNT; ++i) {
        notes.levelLow[i] = 0.4f;
        notes.levelHigh[i] = 0.3f;
        notes.flash[i] = 0.5f;
    }
    for (auto _ : state) {
        for (int f = 0; f < 30; ++f) {
            panel.plugin.visualState().publish(notes);
            panel.frame();
        }
    }
    state.counters["core_percent"] = benchmark::Counter(
        double(state.iterations()) / 100.0, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.SetLabel("one second of frames; core_percent = share of one core");
}
BENCHMARK(BM_PlantSwayingOneSecondAt30Fps)->Unit(benchmark::kMillisecond);

// One second of a small plant with no note: it still sways a little, and
// each frame redraws only where it moves.
void BM_PlantAtRestOneSecondAt30Fps(benchmark::State& state) {
    GrownPanel panel(0.0f);
    if (!panel.opened) state.SkipWithError("the editor did not open");
    for (auto _ : state)
        for (int f = 0; f < 30; ++f) panel.frame();
    state.counters["core_percent"] = benchmark::Counter(
        double(state.iterations()) / 100.0, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.SetLabel("one second of frames; core_percent = share of one core");
}
BENCHMARK(BM_PlantAtRestOneSecondAt30Fps)->Unit(benchmark::kMillisecond);

}  // namespace
