// The cost of one branch recomputation: mutating the 36 genes along the
// branch's row and decoding them into BranchParams. A parameter sweep costs
// one of these per branch per 64-sample block; the budget is well under 10 us.
#include <benchmark/benchmark.h>

#include "engine/BranchDecoder.h"
#include "engine/GeneDecoding.h"
#include "patch/MutateGenes.h"
#include "patch/NorvelleProgram.h"

namespace {

NorvelleProgram benchRecord() {
    NorvelleProgram record;
    for (int i = 0; i < GENE_COUNT; ++i) record.setGene(i, 0.05f + 0.9f * float((i * 5) % 13) / 12.0f);
    record.seed = 987654321u;
    record.computeBranchDeviations();
    record.touch(true);
    return record;
}

// A full recomputation by the decoder: every call changes the amount, as the
// mod wheel does while it moves, so the key never matches.
void BM_DecoderUpdateRecomputes(benchmark::State& state) {
    const NorvelleProgram record = benchRecord();
    engine::BranchDecoder decoders[BRANCH_COUNT];
    for (int k = 0; k < BRANCH_COUNT; ++k) decoders[k].setBranch(k);
    float amount = 0.0f;
    int k = 0;
    for (auto _ : state) {
        amount += 1.0f / 4096.0f;
        if (amount > 1.0f) amount = 0.0f;
        benchmark::DoNotOptimize(decoders[k].update(record, amount, 0.6f, 0.1f, 44100.0f));
        benchmark::DoNotOptimize(decoders[k].params());
        k = (k + 1) % BRANCH_COUNT;
    }
    state.SetLabel("mutateGenes + decode, per branch");
}
BENCHMARK(BM_DecoderUpdateRecomputes);

// The common case at each block: the key matches and nothing is done.
void BM_DecoderUpdateKeyHit(benchmark::State& state) {
    const NorvelleProgram record = benchRecord();
    engine::BranchDecoder decoder(3);
    decoder.update(record, 0.5f, 0.6f, 0.1f, 44100.0f);
    for (auto _ : state) benchmark::DoNotOptimize(decoder.update(record, 0.5f, 0.6f, 0.1f, 44100.0f));
}
BENCHMARK(BM_DecoderUpdateKeyHit);

void BM_MutateGenesOnly(benchmark::State& state) {
    const NorvelleProgram record = benchRecord();
    float genes[MUTABLE_GENE_COUNT];
    float amount = 0.0f;
    for (auto _ : state) {
        amount += 1.0f / 4096.0f;
        if (amount > 1.0f) amount = 0.0f;
        mutateGenes(record.genes, record.branchDeviations[5], amount, 0.6f, record.implementation, genes);
        benchmark::DoNotOptimize(genes);
    }
}
BENCHMARK(BM_MutateGenesOnly);

void BM_DecodeGenesOnly(benchmark::State& state) {
    const NorvelleProgram record = benchRecord();
    float effect = -1.0f;
    for (auto _ : state) {
        effect += 1.0f / 4096.0f;
        if (effect > 1.0f) effect = -1.0f;
        benchmark::DoNotOptimize(engine::decodeGenes(record.genes, record.genes[Gene::fx_size], effect, 44100.0f));
    }
}
BENCHMARK(BM_DecodeGenesOnly);

}  // namespace
