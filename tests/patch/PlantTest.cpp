#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "patch/BranchDeviations.h"
#include "patch/NorvelleProgram.h"
#include "patch/PlantBranch.h"
#include "patch/ProcessGenerator.h"
#include "tests/patch/GrowthGoldenFiles.h"

namespace {

using growthgolden::toFloat;
using growthgolden::toWord;
using growthgolden::ulpDistance;
using growthgolden::words;

// The offset in octaves that Tuning and pitch make together.
float tuningAndPitch(const NorvelleProgram& p) {
    return (2.0f * p.param(Param::Tuning) - 1.0f) + p.pitch;
}

NorvelleProgram patchWithGenes(uint32_t seed, int32_t implementation) {
    NorvelleProgram p;
    p.seed = seed;
    p.implementation = implementation;
    for (int i = 0; i < GENE_COUNT; ++i) {
        p.genes[i] = 0.5f + 0.45f * std::sin(static_cast<float>(i) * 0.9f);
    }
    p.computeBranchDeviations();
    return p;
}

TEST(Plant, MatchesTheGoldenVectors) {
    const auto lines = growthgolden::lines("plant.txt");
    ASSERT_EQ(lines.size(), 8u);
    for (size_t c = 0; c < lines.size(); c += 2) {
        const auto src = words(lines[c]);
        const auto dst = words(lines[c + 1]);
        ASSERT_EQ(src.size(), 7u + 1u + 21u + 1u + 37u);
        ASSERT_EQ(dst.size(), 3u + 1u + 37u);
        NorvelleProgram s;
        s.seed = toWord(src[0]);
        s.implementation = std::atoi(src[1].c_str());
        s.cloned = src[2] == "1";
        s.pitch = toFloat(src[3]);
        const int branch = std::atoi(src[4].c_str());
        ProcessGenerator generator(0);
        generator.setWords(toWord(src[5], 16), toWord(src[6], 16));
        for (int i = 0; i < PARAM_COUNT; ++i) s.setParam(i, toFloat(src[8 + i]));
        for (int i = 0; i < GENE_COUNT; ++i) s.genes[i] = toFloat(src[30 + i]);
        s.computeBranchDeviations();

        const NorvelleProgram d = plantBranch(s, branch, generator);
        EXPECT_EQ(d.seed, toWord(dst[0])) << lines[c];
        EXPECT_EQ(ulpDistance(d.pitch, toFloat(dst[1])), 0) << d.pitch << " vs " << dst[1];
        EXPECT_EQ(ulpDistance(d.param(Param::Tuning), toFloat(dst[2])), 0)
            << d.param(Param::Tuning) << " vs " << dst[2];
        for (int i = 0; i < GENE_COUNT; ++i) {
            EXPECT_EQ(ulpDistance(d.genes[i], toFloat(dst[4 + i])), 0)
                << "case " << c / 2 << " gene " << i << ": " << d.genes[i] << " vs " << dst[4 + i];
        }
    }
}

TEST(Plant, TheNewSeedIsTheGeneratorsNextWord) {
    NorvelleProgram s = patchWithGenes(12345u, 10);
    ProcessGenerator generator(0);
    generator.setWords(1u, 0xFFFFFFFEu);  // first step gives a = 0x9F81778C
    const NorvelleProgram d = plantBranch(s, 2, generator);
    EXPECT_EQ(d.seed, 0x9F81778Cu);
    EXPECT_EQ(generator.wordA(), 0x9F81778Cu);  // stepped exactly once
}

TEST(Plant, NeverYieldsSeedZero) {
    // a = 0x06DC3E2D / 0x569CF9F3 and b = 0x35F2CFD7 / 0x323785AF (mod 2^32)
    // make a * 0x569CF9F3 - 0x06DC3E2D = 0 and u = 0, so the next a is 0.
    NorvelleProgram s = patchWithGenes(12345u, 10);
    ProcessGenerator generator(0);
    generator.setWords(0xD980CF5Fu, 0x40FB8A59u);
    const NorvelleProgram d = plantBranch(s, 0, generator);
    EXPECT_EQ(generator.wordA(), 0u);
    EXPECT_EQ(d.seed, 1u);
}

TEST(Plant, MakesACurrentUnclonedRecordWithBranchesAtRest) {
    NorvelleProgram s = patchWithGenes(777u, 1);
    s.cloned = true;
    s.computeBranchDeviations();
    for (int k = 0; k < BRANCH_COUNT; ++k) s.setParam(Param::Branch1 + k, 0.1f * static_cast<float>(k % 5));
    s.setParam(Param::ModWheel, 0.4f);
    s.setParam(Param::Rotation, 0.3f);
    s.setParam(Param::Volume, 0.7f);
    s.setName(u"Source");
    ProcessGenerator generator(0);
    generator.setWords(99u, 100u);
    std::vector<std::string> labels;
    const NorvelleProgram d =
        plantBranch(s, 7, generator, [&](std::string_view label) { labels.emplace_back(label); });

    ASSERT_EQ(labels.size(), 1u);
    EXPECT_EQ(labels[0], "Plant");
    EXPECT_EQ(d.implementation, CURRENT_IMPLEMENTATION);
    EXPECT_FALSE(d.cloned);
    EXPECT_TRUE(d.modified);
    EXPECT_NE(d.stamp(), s.stamp());
    for (int k = 0; k < BRANCH_COUNT; ++k) EXPECT_EQ(d.param(Param::Branch1 + k), 0.0f);
    EXPECT_EQ(d.param(Param::ModWheel), 0.0f);
    EXPECT_EQ(d.param(Param::Rotation), 0.0f);
    EXPECT_EQ(d.param(Param::Volume), 0.7f);
    EXPECT_EQ(d.getName(), u"Source");
    // fx_size stays as it was.
    EXPECT_EQ(d.genes[Gene::fx_size], s.genes[Gene::fx_size]);
    // The rows are those of the new seed, current implementation, uncloned.
    float rows[BRANCH_COUNT][MUTABLE_GENE_COUNT];
    computeBranchDeviations(d.seed, CURRENT_IMPLEMENTATION, false, rows);
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) EXPECT_EQ(d.branchDeviations[k][i], rows[k][i]);
    }
    // The source is left as it was.
    EXPECT_EQ(s.implementation, 1);
    EXPECT_TRUE(s.cloned);
    EXPECT_EQ(s.param(Param::ModWheel), 0.4f);
}

TEST(Plant, OscillatorALandsOnAWholeOctave) {
    NorvelleProgram s = patchWithGenes(4242u, 10);
    s.setParam(Param::Atonality, 0.9f);  // a_freq mutates
    s.setParam(Param::Branch1 + 3, 1.0f);
    ProcessGenerator generator(0);
    generator.setWords(5u, 6u);
    const NorvelleProgram d = plantBranch(s, 3, generator);
    EXPECT_NE(d.genes[Gene::a_freq], s.genes[Gene::a_freq]);
    // Step 6 alone puts 6 * a_freq - 3 + pitch on a whole number; what step 11
    // adds is whole octaves of tuning plus the sub-octave rest kept on Tuning.
    const float octave = 6.0f * d.genes[Gene::a_freq] - 3.0f;
    const float steppedPitch = std::round(octave) - octave;
    const float movedOut = (d.pitch - steppedPitch);
    const float totalTuning = movedOut + (2.0f * d.param(Param::Tuning) - 1.0f);
    const float expectedTotal = (2.0f * s.param(Param::Tuning) - 1.0f) + (s.pitch - steppedPitch) +
                                noteDetune(s.seed, 60 + 3, 0.9f) - noteDetune(d.seed, 63, 0.9f);
    EXPECT_NEAR(totalTuning, expectedTotal, 2e-6f);
    EXPECT_NEAR(movedOut, std::round(movedOut), 2e-6f);
}

TEST(Plant, ZeroLengthAtOrUnderHalfAtonalityKeepsThePitchOfTheNote) {
    int cases = 0;
    for (float atonality : {0.0f, 0.3f, 0.5f}) {
        for (float tuning : {0.0f, 0.2f, 0.5f, 0.74f, 0.9f, 1.0f}) {
            for (float pitch : {-1.7f, 0.0f, 0.33f}) {
                for (float rotation : {0.0f, 0.5f, 0.97f}) {
                    NorvelleProgram s = patchWithGenes(31u + static_cast<uint32_t>(cases), 10);
                    s.setParam(Param::Atonality, atonality);
                    s.setParam(Param::Tuning, tuning);
                    s.setParam(Param::Rotation, rotation);
                    s.pitch = pitch;
                    ProcessGenerator generator(0);
                    generator.setWords(static_cast<uint32_t>(cases) * 7919u, 3u);
                    const int branch = cases % BRANCH_COUNT;
                    const NorvelleProgram d = plantBranch(s, branch, generator);
                    EXPECT_NEAR(tuningAndPitch(d), tuningAndPitch(s), 2e-6f)
                        << atonality << " " << tuning << " " << pitch << " " << rotation;
                    // The genome is unchanged apart from the rounding of the fold.
                    for (int i = 0; i < GENE_COUNT; ++i) EXPECT_NEAR(d.genes[i], s.genes[i], 6e-8f);
                    ++cases;
                }
            }
        }
    }
}

TEST(Plant, AboveHalfAtonalityCarriesTheNoteDetuneOver) {
    NorvelleProgram s = patchWithGenes(2024u, 10);
    s.setParam(Param::Atonality, 1.0f);
    s.setParam(Param::Rotation, 2.0f / 12.0f);  // two steps
    s.setParam(Param::Tuning, 0.6f);
    ProcessGenerator generator(0);
    generator.setWords(777u, 888u);
    const NorvelleProgram d = plantBranch(s, 5, generator);
    const float before = tuningAndPitch(s) + noteDetune(s.seed, 60 + 5 - 2, 1.0f);
    const float after = tuningAndPitch(d) + noteDetune(d.seed, 60 + 5, 1.0f);
    // Branch length 0 but Atonality 1: a_freq doesn't move (its strength is L^2 * 0.4 = 0).
    EXPECT_NEAR(after, before, 2e-6f);
    EXPECT_NE(noteDetune(s.seed, 63, 1.0f), 0.0f);
}

TEST(Plant, TuningStaysInItsHalfOctave) {
    ProcessGenerator generator(0);
    generator.setWords(0x12345678u, 0x9ABCDEF0u);
    NorvelleProgram s = patchWithGenes(1u, 10);
    for (int round = 0; round < 300; ++round) {
        s.setParam(Param::Tuning, static_cast<float>(round % 101) / 100.0f);
        s.setParam(Param::Atonality, static_cast<float>(round % 7) / 6.0f);
        s.setParam(Param::Branch1 + round % 12, static_cast<float>(round % 5) / 4.0f);
        s.pitch = static_cast<float>(round % 13) * 0.37f - 2.0f;
        NorvelleProgram d = plantBranch(s, round % 12, generator);
        EXPECT_GE(d.param(Param::Tuning), 0.25f);
        EXPECT_LT(d.param(Param::Tuning), 0.75f);
        EXPECT_NE(d.seed, 0u);
        s = d;  // plant again from the planted patch
    }
}

TEST(Plant, PlantedTuningKeepsBelowThreeQuarters) {
    EXPECT_EQ(plantedTuning(0.5f), 0.5f);
    EXPECT_EQ(plantedTuning(0.25f), 0.25f);
    EXPECT_EQ(plantedTuning(0.75f), 0.25f);   // exactly half an octave up wraps down
    EXPECT_EQ(plantedTuning(1.0f), 0.5f);     // one octave up: the control shows no detune
    EXPECT_EQ(plantedTuning(-0.1f), 0.4f);    // -0.35 has the positive remainder 0.15
    EXPECT_FLOAT_EQ(plantedTuning(0.8f), 0.3f);
    // A remainder of -2^-26 plus 0.5 rounds to 0.5 exactly: counts as 0.
    const float justUnderQuarter = std::nextafter(0.25f, 0.0f);  // 0.25 - 2^-26
    EXPECT_EQ(plantedTuning(justUnderQuarter), 0.25f);
    // A remainder of 0.5 - 2^-25 is below 0.5, but 0.25 plus it rounds to 0.75:
    // also taken as 0.
    const float n = 0.25f - std::ldexp(1.0f, -25);
    ASSERT_EQ(n - 0.25f, -std::ldexp(1.0f, -25));
    EXPECT_EQ(plantedTuning(n), 0.25f);
    // The largest Tuning that can come out.
    const float below = std::nextafter(0.25f, 0.0f) - std::ldexp(1.0f, -24);
    EXPECT_LT(plantedTuning(below), 0.75f);
}

}  // namespace
