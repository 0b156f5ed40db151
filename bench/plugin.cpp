// The plug-in as a host meets it: the cost of making an instance (the core,
// its engine, the slots from the startup bank, the MIDI configuration) and of
// processReplacing for one 64-sample block with the real engine and notes
// sounding.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "patch/FactoryPatches.h"
#include "plugin/PluginCore.h"

namespace {

VstIntPtr VST_CALL benchHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

// The instances keep their startup bank away from the user's preferences.
void privatePreferences() {
    static const bool done = [] {
        const std::string dir = std::string(std::getenv("TMPDIR") ? std::getenv("TMPDIR") : "/tmp") +
                                "/tendrane-bench-config";
        return setenv("XDG_CONFIG_HOME", dir.c_str(), 1) == 0;
    }();
    (void)done;
}

void BM_Instantiate(benchmark::State& state) {
    privatePreferences();
    // The first instance of a process loads the startup bank; measure the rest.
    auto first = std::make_unique<PluginCore>(&benchHost);
    first->lateConstruction();
    for (auto _ : state) {
        auto core = std::make_unique<PluginCore>(&benchHost);
        core->lateConstruction();
        benchmark::DoNotOptimize(core->getAeffect());
    }
}
BENCHMARK(BM_Instantiate)->Unit(benchmark::kMillisecond);

void playNotes(PluginCore& core, int notes, bool on) {
    for (int n = 0; n < notes; ++n) {
        TimedEvent e;
        e.status = on ? 0x90 : 0x80;
        e.data1 = static_cast<uint8_t>(36 + 5 * n);
        e.data2 = on ? 100 : 0;
        core.queueHostEvent(e);
    }
}

// Argument: notes held (a pad's voices sounding, with reverb). The notes
// start again every second, so that they never fade out during a run.
void BM_ProcessReplacing64(benchmark::State& state) {
    const int notes = static_cast<int>(state.range(0));
    PluginCore core(&benchHost);
    core.fixNoiseSeed(1);
    core.programSlot(0).publish(factoryProgram(2));
    core.setSampleRate(44100.0f);
    core.resume();
    std::vector<float> left(64), right(64);
    float* outs[2] = {left.data(), right.data()};
    core.processReplacing(nullptr, outs, 64);
    playNotes(core, notes, true);
    for (int i = 0; i < 100; ++i) core.processReplacing(nullptr, outs, 64);
    int block = 0;
    for (auto _ : state) {
        if (++block == 689) {
            state.PauseTiming();
            playNotes(core, notes, false);
            playNotes(core, notes, true);
            block = 0;
            state.ResumeTiming();
        }
        core.processReplacing(nullptr, outs, 64);
        benchmark::DoNotOptimize(left.data());
    }
    state.counters["realtime_x"] = benchmark::Counter(64.0 / 44100.0 * static_cast<double>(state.iterations()),
                                                      benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ProcessReplacing64)->Arg(0)->Arg(1)->Arg(4)->Arg(12)->Unit(benchmark::kMicrosecond);

}  // namespace
