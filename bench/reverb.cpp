// The reverb alone, in the cases its loop treats apart: noise at the send
// with gains at rest; gains gliding all the time (the reverb time changing
// every block); no chorus (reads that never move); a small room at a low
// rate, where the ring is too short to take four samples at once.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "engine/ChorusReverb.h"

namespace {

struct NoiseBlock {
    alignas(16) float in[64];
    uint32_t r = 5;
    void next() {
        for (float& v : in) {
            r = r * 1664525u + 1013904223u;
            v = (float(r >> 8) / 8388608.0f - 1.0f) * 0.3f;
        }
    }
};

void run(benchmark::State& state, float rate, float fxSize, bool gliding, float chorus) {
    engine::ChorusReverb reverb;
    reverb.seed(1);
    reverb.resize(rate, fxSize);
    NoiseBlock noise;
    alignas(16) float l[64], r[64];
    int block = 0;
    for (auto _ : state) {
        noise.next();
        const float T = gliding && (block++ & 1) ? 2.5f : 2.0f;
        reverb.process(noise.in, l, r, 1.0f, T, 6000.0f, chorus);
        benchmark::DoNotOptimize(l[0]);
        benchmark::DoNotOptimize(r[0]);
    }
    state.counters["ns_per_sample"] =
        benchmark::Counter(64.0 * 1e-9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_ReverbNoise(benchmark::State& state) { run(state, float(state.range(0)), 0.5f, false, 1.0f); }
BENCHMARK(BM_ReverbNoise)->Arg(44100)->Arg(96000);

void BM_ReverbGliding(benchmark::State& state) { run(state, float(state.range(0)), 0.5f, true, 1.0f); }
BENCHMARK(BM_ReverbGliding)->Arg(44100)->Arg(96000);

void BM_ReverbNoChorus(benchmark::State& state) { run(state, 44100.0f, 0.5f, false, 0.0f); }
BENCHMARK(BM_ReverbNoChorus);

void BM_ReverbSmallRoomLowRate(benchmark::State& state) { run(state, 8000.0f, 0.0f, false, 1.0f); }
BENCHMARK(BM_ReverbSmallRoomLowRate);

}  // namespace
