// BranchDecoder: the key of the last computation, the mutation along its own
// branch's row, and the decoding of the mutated genes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "engine/BranchDecoder.h"
#include "engine/GeneDecoding.h"
#include "patch/MutateGenes.h"
#include "patch/NorvelleProgram.h"
#include "tests/support/AllocationCounter.h"

namespace {

using engine::BranchDecoder;
using engine::BranchParams;

bool sameParams(const BranchParams& a, const BranchParams& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// A genome away from the middle, so that every branch sounds different.
NorvelleProgram sampleRecord() {
    NorvelleProgram record;
    for (int i = 0; i < GENE_COUNT; ++i) record.setGene(i, 0.1f + 0.8f * float((i * 7) % 11) / 10.0f);
    record.seed = 1234;
    record.computeBranchDeviations();
    record.touch(true);
    return record;
}

TEST(BranchDecoder, FirstUpdateComputesAndARepeatDoesNothing) {
    const NorvelleProgram record = sampleRecord();
    BranchDecoder decoder(3);
    EXPECT_TRUE(decoder.update(record, 0.4f, 0.5f, 0.0f, 44100.0f));
    const BranchParams first = decoder.params();
    EXPECT_GT(first.aFreq, 0.0f);
    EXPECT_FALSE(decoder.update(record, 0.4f, 0.5f, 0.0f, 44100.0f));
    EXPECT_TRUE(sameParams(decoder.params(), first));
}

TEST(BranchDecoder, EachPartOfTheKeyTriggersARecomputation) {
    NorvelleProgram record = sampleRecord();
    BranchDecoder decoder(5);
    ASSERT_TRUE(decoder.update(record, 0.4f, 0.5f, 0.0f, 44100.0f));
    EXPECT_TRUE(decoder.update(record, 0.5f, 0.5f, 0.0f, 44100.0f));   // amount
    EXPECT_TRUE(decoder.update(record, 0.5f, 0.75f, 0.0f, 44100.0f));  // atonality
    EXPECT_TRUE(decoder.update(record, 0.5f, 0.75f, 0.2f, 44100.0f));  // effect
    EXPECT_TRUE(decoder.update(record, 0.5f, 0.75f, 0.2f, 48000.0f));  // sample rate
    EXPECT_FALSE(decoder.update(record, 0.5f, 0.75f, 0.2f, 48000.0f));
    record.touch(false);  // a new state of the record
    EXPECT_TRUE(decoder.update(record, 0.5f, 0.75f, 0.2f, 48000.0f));
    EXPECT_FALSE(decoder.update(record, 0.5f, 0.75f, 0.2f, 48000.0f));
}

TEST(BranchDecoder, TheStampNotTheContentIsTheKey) {
    // Two records with equal stamps are the same state: a change made without a
    // fresh stamp is not seen. This is what lets the voices skip the work.
    NorvelleProgram record = sampleRecord();
    BranchDecoder decoder(0);
    ASSERT_TRUE(decoder.update(record, 0.0f, 0.5f, 0.0f, 44100.0f));
    const BranchParams before = decoder.params();
    record.genes[Gene::a_freq] = 0.9f;  // no stamp taken
    EXPECT_FALSE(decoder.update(record, 0.0f, 0.5f, 0.0f, 44100.0f));
    EXPECT_TRUE(sameParams(decoder.params(), before));
    record.touch(true);
    EXPECT_TRUE(decoder.update(record, 0.0f, 0.5f, 0.0f, 44100.0f));
    EXPECT_GT(decoder.params().aFreq, before.aFreq);
}

TEST(BranchDecoder, MovingToAnotherBranchRecomputes) {
    const NorvelleProgram record = sampleRecord();
    BranchDecoder decoder(2);
    ASSERT_TRUE(decoder.update(record, 1.0f, 0.5f, 0.0f, 44100.0f));
    const BranchParams onTwo = decoder.params();
    decoder.setBranch(2);
    EXPECT_FALSE(decoder.update(record, 1.0f, 0.5f, 0.0f, 44100.0f));
    decoder.setBranch(7);
    EXPECT_EQ(decoder.branch(), 7);
    EXPECT_TRUE(decoder.update(record, 1.0f, 0.5f, 0.0f, 44100.0f));
    EXPECT_FALSE(sameParams(decoder.params(), onTwo));
}

TEST(BranchDecoder, MutatesAlongItsOwnRowThenDecodes) {
    const NorvelleProgram record = sampleRecord();
    for (int branch = 0; branch < BRANCH_COUNT; ++branch) {
        BranchDecoder decoder(branch);
        decoder.update(record, 0.7f, 0.6f, -0.3f, 48000.0f);
        float expected[MUTABLE_GENE_COUNT];
        mutateGenes(record.genes, record.branchDeviations[branch], 0.7f, 0.6f, record.implementation, expected);
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) ASSERT_EQ(decoder.genes()[i], expected[i]) << branch << " " << i;
        const BranchParams direct = engine::decodeGenes(expected, record.genes[Gene::fx_size], -0.3f, 48000.0f);
        EXPECT_TRUE(sameParams(decoder.params(), direct)) << branch;
    }
}

TEST(BranchDecoder, TheRecordsImplementationReachesTheMutation) {
    // Implementations up to 3 pull fm_amt towards the middle as the branch grows
    // (below the middle of Atonality); later ones don't. The decoder itself has no
    // case by implementation: it hands the record's on.
    NorvelleProgram record = sampleRecord();
    record.genes[Gene::fm_amt] = 0.9f;
    record.implementation = 3;
    record.computeBranchDeviations();
    record.touch(false);
    BranchDecoder decoder(1);
    decoder.update(record, 1.0f, 0.0f, 0.0f, 44100.0f);
    float expected[MUTABLE_GENE_COUNT];
    mutateGenes(record.genes, record.branchDeviations[1], 1.0f, 0.0f, 3, expected);
    EXPECT_EQ(decoder.genes()[Gene::fm_amt], expected[Gene::fm_amt]);
    mutateGenes(record.genes, record.branchDeviations[1], 1.0f, 0.0f, 10, expected);
    EXPECT_NE(decoder.genes()[Gene::fm_amt], expected[Gene::fm_amt]);
}

TEST(BranchDecoder, ZeroLengthAtMiddleAtonalityIsThePlainGenome) {
    // Length 0: every strength is 0 and Atonality 0.5 pulls nothing, so the fold
    // hands back the genome itself (up to the fold's own rounding) on every branch.
    const NorvelleProgram record = sampleRecord();
    const BranchParams plain = engine::decodeGenes(record.genes, record.genes[Gene::fx_size], 0.0f, 44100.0f);
    for (int branch = 0; branch < BRANCH_COUNT; ++branch) {
        BranchDecoder decoder(branch);
        decoder.update(record, 0.0f, 0.5f, 0.0f, 44100.0f);
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i)
            EXPECT_NEAR(decoder.genes()[i], record.genes[i], 6e-8f) << branch << " " << i;
        EXPECT_NEAR(decoder.params().aFreq, plain.aFreq, plain.aFreq * 1e-6f);
        EXPECT_NEAR(decoder.params().filterFreq, plain.filterFreq, plain.filterFreq * 1e-6f);
        EXPECT_NEAR(decoder.params().dryGain, plain.dryGain, plain.dryGain * 1e-6f);
    }
}

TEST(BranchDecoder, InitRecordDecodesToTheInitSound) {
    // The Init record, branch length 0: T ~ 1.45 s, A on middle C, B an octave below,
    // no FM, filter a quarter octave above A, no LFO, no noise.
    const NorvelleProgram record;
    BranchDecoder decoder(0);
    ASSERT_TRUE(decoder.update(record, effectiveLength(record, 0), record.param(Param::Atonality),
                               2.0f * record.param(Param::Effect) - 1.0f, 44100.0f));
    const BranchParams& p = decoder.params();
    EXPECT_FLOAT_EQ(p.aFreq, 261.6256f / 44100.0f);
    EXPECT_EQ(p.bFreq, p.aFreq * 0.5f);
    EXPECT_EQ(p.fmDepth, 0.0f);
    EXPECT_FLOAT_EQ(p.filterFreq, p.aFreq * std::exp2(0.25f));
    EXPECT_EQ(p.vibrato, 0.0f);
    EXPECT_EQ(p.tremolo, 0.0f);
    EXPECT_EQ(p.aNoiseGain, 0.0f);
    EXPECT_EQ(p.bNoise, 0.0f);
    const float T = 16.0f / (p.atkRate * 44100.0f) + 16.0f / (p.dcyRate * 44100.0f);
    EXPECT_NEAR(T, 1.453f, 0.001f);
}

TEST(BranchDecoder, UpdateAllocatesNothing) {
    const NorvelleProgram record = sampleRecord();
    BranchDecoder decoder(4);
    testsupport::AllocationCounter counter;
    for (int i = 0; i < 100; ++i) decoder.update(record, float(i) / 100.0f, 0.5f, 0.0f, 44100.0f);
    EXPECT_EQ(counter.count(), 0u);
}

}  // namespace
