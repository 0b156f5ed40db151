// The cost of the plug-in core's block path alone: cutting host blocks into
// 64-sample engine blocks, queueing and sorting events, publishing the plant
// state. The engine here only fills its buffers, so what is measured is the
// core's own work per engine block.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

#include "plugin/PluginCore.h"

namespace {

class FillEngine : public RenderInterface {
public:
    void init(float, uint32_t) override { level = 0.0f; }
    void render(const NorvelleProgram&, const MidiConfigRecord&, int eventCount, const TimedEvent* events,
                float* left, float* right, bool& silentFlag) override {
        for (int i = 0; i < eventCount; ++i) level += static_cast<float>(events[i].data1) * 1e-6f;
        for (int i = 0; i < BLOCK; ++i) left[i] = right[i] = level;
        silentFlag = level == 0.0f;
        ++blocks;
    }
    void copyVisualState(VisualState& target) const override {
        target = VisualState{};
        target.clip = level;
    }
    float level = 0.0f;
    int64_t blocks = 0;
};

VstIntPtr VST_CALL benchHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

// Arguments: host block size, host notes per call.
void BM_RenderBlock(benchmark::State& state) {
    const int frames = static_cast<int>(state.range(0));
    const int notesPerCall = static_cast<int>(state.range(1));
    auto e = std::make_unique<FillEngine>();
    FillEngine* engine = e.get();
    PluginCore core(&benchHost, std::move(e));
    core.resume();
    std::vector<float> left(static_cast<size_t>(frames)), right(static_cast<size_t>(frames));
    float* outs[2] = {left.data(), right.data()};
    int k = 0;
    for (auto _ : state) {
        for (int n = 0; n < notesPerCall; ++n) {
            TimedEvent ev;
            ev.time = (k * 13 + n * 7) % frames;
            ev.status = static_cast<uint8_t>(n % 2 ? 0x80 : 0x90);
            ev.data1 = static_cast<uint8_t>(40 + (k + n) % 40);
            ev.data2 = 100;
            core.queueHostEvent(ev);
        }
        core.processReplacing(nullptr, outs, frames);
        benchmark::DoNotOptimize(left.data());
        ++k;
    }
    state.counters["engineBlocks"] = static_cast<double>(engine->blocks);
    state.counters["perEngineBlock"] =
        benchmark::Counter(static_cast<double>(engine->blocks), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * frames);
}

}  // namespace

BENCHMARK(BM_RenderBlock)
    ->Args({1, 0})
    ->Args({64, 0})
    ->Args({64, 2})
    ->Args({256, 4})
    ->Args({1024, 8})
    ->Args({4096, 0})
    ->Args({4096, 32});
