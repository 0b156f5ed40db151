// The engine's cost: ns per voice-sample and the real-time factor for 1, 12
// and 20 sounding voices, with and without the reverb, at 44.1 and 96 kHz;
// and the whole engine path (voice allocation, decoding, reverb, output
// stage) for 12 held notes and for silence, in ns per frame.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "engine/BranchDecoder.h"
#include "engine/ChorusReverb.h"
#include "engine/EngineRates.h"
#include "engine/OutputStage.h"
#include "engine/SoundEngine.h"
#include "engine/Voice.h"
#include "engine/WideProcessor.h"
#include "patch/FactoryPatches.h"
#include "patch/GeneTable.h"
#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"

namespace {

// A patch that exercises every path: noise in both oscillators, FM, the
// sub-oscillator, a long envelope that never ends while held, full sustain.
NorvelleProgram benchPatch(bool reverb) {
    NorvelleProgram p;
    p.setGene(Gene::a_noise, 0.8f);
    p.setGene(Gene::b_noise, 0.75f);
    p.setGene(Gene::fm_amt, 0.8f);
    p.setGene(Gene::sub_am, 0.9f);
    p.setGene(Gene::a_form, 0.7f);
    p.setGene(Gene::env_time, 0.95f);
    p.setGene(Gene::vol_sus, 1.0f);
    p.setGene(Gene::fx_mix, reverb ? 0.7f : 0.0f);
    // Without reverb the send must be exactly silent on every branch: Effect
    // at 0 takes the mix to 0 whatever the mutation did to it.
    if (!reverb) p.setParam(Param::Effect, 0.0f);
    for (int b = 0; b < BRANCH_COUNT; ++b) p.setParam(Param::Branch1 + b, 0.4f);
    p.computeBranchDeviations();
    p.touch(false);
    return p;
}

// Voices rendered directly (no reserve), then the reverb and output stage
// as the engine runs them: so 20 voices can sound at once.
struct VoiceRig {
    VoiceRig(int count, float rate, bool reverbOn) : rates(EngineRates::forSampleRate(rate)), reverb(reverbOn) {
        program = benchPatch(reverbOn);
        for (int k = 0; k < 12; ++k) decoders[k].setBranch(k);
        voices.reserve(std::size_t(count));
        for (int i = 0; i < count; ++i) {
            voices.emplace_back(&rates);
            voices.back().clear(uint32_t(i + 1));
            voices.back().start(0, 0, 40 + i * 2, 100);
        }
        for (Voice& v : voices) all.push_back(&v);
        stage.init(rate);
        chorus.seed(1);
        chorus.resize(rate, program.genes[Gene::fx_size]);
        block.program = &program;
        block.midiConfig = &config;
        block.releaseCoef = 1.0f;
        block.left = left;
        block.right = right;
        block.send = send;
        block.silent = &silent;
        block.sendSilent = &sendSilent;
        block.decoders = decoders;
        for (int i = 0; i < 8; ++i) run();  // past the starts
    }
    void run() {
        for (int i = 0; i < 64; ++i) left[i] = right[i] = send[i] = 0.0f;
        silent = true;
        sendSilent = true;
        // As the engine does: all voices at once.
        Voice::renderAll(all.data(), int(all.size()), block);
        if (reverb) {
            chorus.process(send, wetL, wetR, 1.0f, 2.0f, 8000.0f, 1.0f);
            for (int i = 0; i < 64; ++i) {
                left[i] += wetL[i];
                right[i] += wetR[i];
            }
        }
        stage.process(left, right, silent, 0.2f);
    }
    EngineRates rates;
    bool reverb;
    NorvelleProgram program;
    MidiConfigRecord config;
    engine::BranchDecoder decoders[12];
    std::vector<Voice> voices;
    std::vector<Voice*> all;
    engine::ChorusReverb chorus;
    engine::OutputStage stage;
    VoiceBlock block;
    alignas(16) float left[64], right[64], send[64], wetL[64], wetR[64];
    bool silent = true, sendSilent = true;
};

void setCounters(benchmark::State& state, int voices, float rate) {
    // Items are voice-samples: inverted, the rate is seconds per voice-sample.
    state.counters["ns_per_voice_sample"] = benchmark::Counter(
        double(voices) * 64.0 * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["realtime_x"] =
        benchmark::Counter(64.0 / double(rate), benchmark::Counter::kIsIterationInvariantRate);
    // ns per frame (one stereo sample of the block), whatever the voices.
    state.counters["ns_per_frame"] =
        benchmark::Counter(64.0 * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_Voices(benchmark::State& state) {
    const int count = int(state.range(0));
    const bool reverb = state.range(1) != 0;
    const float rate = float(state.range(2));
    VoiceRig rig(count, rate, reverb);
    for (auto _ : state) {
        rig.run();
        benchmark::DoNotOptimize(rig.left[0]);
    }
    setCounters(state, count, rate);
}
BENCHMARK(BM_Voices)
    ->ArgNames({"voices", "reverb", "rate"})
    ->ArgsProduct({{1, 12, 20}, {0, 1}, {44100, 96000}});

// Twelve voices with the reverb at 44.1 kHz, the loops at a chosen lane
// width: one value at a time, four or eight lanes (where they run).
void BM_VoicesAtWidth(benchmark::State& state) {
    engine::wide::forceLanes(int(state.range(0)));
    if (state.range(0) == 8 && engine::wide::laneWidth() != 8) {
        engine::wide::forceLanes(0);
        state.SkipWithError("no eight-lane loops on this processor");
        return;
    }
    {
        VoiceRig rig(12, 44100.0f, true);
        for (auto _ : state) {
            rig.run();
            benchmark::DoNotOptimize(rig.left[0]);
        }
    }
    engine::wide::forceLanes(0);
    setCounters(state, 12, 44100.0f);
}
BENCHMARK(BM_VoicesAtWidth)->ArgName("lanes")->Arg(1)->Arg(4)->Arg(8);

// Twelve notes held through the engine with a given record.
void engineHeld(benchmark::State& state, const NorvelleProgram& p, float rate, int firstNote, int noteStep) {
    auto engine = std::make_unique<SoundEngine>();
    engine->init(rate, 1);
    MidiConfigRecord config;
    std::vector<TimedEvent> notes;
    for (int i = 0; i < 12; ++i) {
        TimedEvent e;
        e.time = i;
        e.status = 0x90;
        e.data1 = uint8_t(firstNote + i * noteStep);
        e.data2 = 100;
        notes.push_back(e);
    }
    float l[64], r[64];
    bool silent = false;
    engine->render(p, config, int(notes.size()), notes.data(), l, r, silent);
    for (int i = 0; i < 8; ++i) engine->render(p, config, 0, nullptr, l, r, silent);
    for (auto _ : state) {
        engine->render(p, config, 0, nullptr, l, r, silent);
        benchmark::DoNotOptimize(l[0]);
    }
    setCounters(state, 12, rate);
}

// The whole engine: 12 held notes through the VoiceManager.
void BM_Engine12Held(benchmark::State& state) {
    engineHeld(state, benchPatch(state.range(0) != 0), float(state.range(1)), 48, 2);
}
BENCHMARK(BM_Engine12Held)->ArgNames({"reverb", "rate"})->ArgsProduct({{0, 1}, {44100, 96000}});

// The same with the plain Init patch (no noise, no FM; its own reverb mix).
void BM_Engine12HeldInit(benchmark::State& state) {
    engineHeld(state, NorvelleProgram(), float(state.range(0)), 48, 1);
}
BENCHMARK(BM_Engine12HeldInit)->ArgName("rate")->Arg(44100)->Arg(96000);

// Each factory patch, twelve notes over an octave and a half, at 44.1 kHz:
// patches as users hear them, reverb included.
void BM_Engine12HeldFactory(benchmark::State& state) {
    engineHeld(state, factoryProgram(int(state.range(0))), 44100.0f, 48, 2);
}
BENCHMARK(BM_Engine12HeldFactory)->ArgName("patch")->DenseRange(0, 15);

// ns per frame (one stereo sample of the block).
void setFrameCounter(benchmark::State& state) {
    state.counters["ns_per_frame"] =
        benchmark::Counter(64.0 * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The engine at rest: no note sounding and the reverb asleep, as between
// the songs of a session. The block is still rendered: smoothing, the LFO
// and every phase go on.
void BM_EngineSilent(benchmark::State& state) {
    const float rate = float(state.range(0));
    auto engine = std::make_unique<SoundEngine>();
    engine->init(rate, 1);
    const NorvelleProgram p = factoryProgram(0);
    MidiConfigRecord config;
    float l[64], r[64];
    bool silent = false;
    // Long enough for the reverb to fall asleep (its level decays from the
    // first block on, with nothing sent).
    for (int i = 0; i < 64; ++i) engine->render(p, config, 0, nullptr, l, r, silent);
    for (auto _ : state) {
        engine->render(p, config, 0, nullptr, l, r, silent);
        benchmark::DoNotOptimize(l[0]);
        benchmark::DoNotOptimize(silent);
    }
    setFrameCounter(state);
}
BENCHMARK(BM_EngineSilent)->ArgName("rate")->Arg(44100)->Arg(96000);

// What silence is measured against: writing the zeros of a stereo block.
void BM_WriteZeros(benchmark::State& state) {
    alignas(16) float l[64], r[64];
    for (auto _ : state) {
        benchmark::DoNotOptimize(l);
        benchmark::DoNotOptimize(r);
        for (int i = 0; i < 64; ++i) l[i] = r[i] = 0.0f;
        benchmark::ClobberMemory();
    }
    setFrameCounter(state);
}
BENCHMARK(BM_WriteZeros);

void BM_ReverbOnly(benchmark::State& state) {
    const float rate = float(state.range(0));
    engine::ChorusReverb chorus;
    chorus.seed(1);
    chorus.resize(rate, 0.5f);
    alignas(16) float in[64] = {}, l[64], r[64];
    in[0] = 0.5f;
    for (auto _ : state) {
        chorus.process(in, l, r, 1.0f, 2.0f, 8000.0f, 1.0f);
        benchmark::DoNotOptimize(l[0]);
    }
    state.counters["realtime_x"] =
        benchmark::Counter(64.0 / double(rate), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_ReverbOnly)->Arg(44100)->Arg(96000);

}  // namespace
