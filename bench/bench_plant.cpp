// The geometry of one frame of the main panel's plant: twelve branches grown
// with their twigs, as the plant view computes it on every frame it draws.
// The storage is reused from frame to frame, as the view keeps it. Reports
// the time per frame and the lines and points of the frame.
#include <benchmark/benchmark.h>

#include <vector>

#include "patch/NorvelleProgram.h"
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

}  // namespace
