#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "patch/GaussianPair.h"
#include "patch/NorvelleProgram.h"
#include "patch/ProcessGenerator.h"
#include "patch/SeededGenerator.h"
#include "tests/patch/GrowthGoldenFiles.h"

namespace {

using growthgolden::toFloat;
using growthgolden::toWord;
using growthgolden::ulpDistance;
using growthgolden::words;

TEST(Generator, FirstStepFromSeedOneWorkedByHand) {
    // a = 1, b = NOT 1 = 0xFFFFFFFE = -2 (mod 2^32).
    // u  = b * 0x323785AF - 0x35F2CFD7 = -(0x646F0B5E + 0x35F2CFD7) = -0x9A61DB35
    //    = 0x659E24CB; its top bit is 0.
    // a' = ((1 * 0x569CF9F3 - 0x06DC3E2D) << 1) | 0 = 0x4FC0BBC6 << 1 = 0x9F81778C
    // b' = (u << 1) | (a' >> 31) = 0xCB3C4996 | 1 = 0xCB3C4997
    SeededGenerator g = SeededGenerator::fromSeed(1);
    EXPECT_EQ(g.a, 1u);
    EXPECT_EQ(g.b, 0xFFFFFFFEu);
    g.step();
    EXPECT_EQ(g.a, 0x9F81778Cu);
    EXPECT_EQ(g.b, 0xCB3C4997u);
}

TEST(Generator, NewBTakesTheTopBitOfTheNewANotTheBitShiftedOut) {
    // From a = 0x80000000, b = 0: a * 0x569CF9F3 = 0x80000000 (odd factor),
    // minus 0x06DC3E2D gives 0x7923C1D3, whose shifted-out top bit is 0, while
    // the new a = 0xF24783A6 | (u >> 31) has its top bit set.
    // u = 0 * 0x323785AF - 0x35F2CFD7 = 0xCA0D3029, top bit 1, so a' = 0xF24783A7.
    // b' = (0xCA0D3029 << 1) | 1 = 0x941A6053.
    SeededGenerator g{0x80000000u, 0u};
    g.step();
    EXPECT_EQ(g.a, 0xF24783A7u);
    EXPECT_EQ(g.b, 0x941A6053u);
}

TEST(Generator, SequencesMatchTheGoldenVectors) {
    const auto lines = growthgolden::lines("generator.txt");
    ASSERT_EQ(lines.size(), 6u);
    for (const auto& line : lines) {
        const auto w = words(line);
        ASSERT_EQ(w.size(), 17u);
        SeededGenerator g = SeededGenerator::fromSeed(toWord(w[0]));
        for (int i = 0; i < 8; ++i) {
            g.step();
            EXPECT_EQ(g.a, toWord(w[1 + 2 * i], 16)) << line << " step " << i + 1;
            EXPECT_EQ(g.b, toWord(w[2 + 2 * i], 16)) << line << " step " << i + 1;
        }
    }
}

TEST(Generator, FirstGaussianPairFromSeedOneWorkedByHand) {
    // The first step from seed 1 gives a = 0x9F81778C, b = 0xCB3C4997.
    // x = (int)a >> 1 = -0x607E8874 >> 1 = -0x303F443A = -809452602
    // y = (int)b >> 1 = -0x34C3B669 >> 1 = -0x1A61DB35 = -442620725 (rounds down)
    // s = x^2 + y^2 = 851126621084096029, upper word 0x0BCFCF27: within
    //     16 .. 0x0FFFFFEF, so the point is taken.
    // w = s / 2^60 = 0.73823, ln w = -0.30349, r = sqrt(-2 ln w / w) = 0.90676
    // pair = (x / 2^30 * r, y / 2^30 * r) = (-0.75386 * 0.90676, -0.41222 * 0.90676)
    //      = (-0.68357, -0.37379)
    EXPECT_EQ(halfOfWord(0x9F81778Cu), -809452602);
    EXPECT_EQ(halfOfWord(0xCB3C4997u), -442620725);
    SeededGenerator g = SeededGenerator::fromSeed(1);
    const GaussianPair pair = nextGaussianPair(g);
    EXPECT_NEAR(pair.first, -0.68357, 2e-5);
    EXPECT_NEAR(pair.second, -0.37379, 2e-5);
    EXPECT_EQ(g.a, 0x9F81778Cu);  // one step only: the first candidate was taken
}

TEST(Generator, GaussianRejectsPointsOutsideTheRing) {
    GaussianPair pair{7.0f, 7.0f};
    // Upper word of s below 16: the point is too close to the centre.
    EXPECT_FALSE(gaussianFromPoint(0, 0, pair));
    EXPECT_FALSE(gaussianFromPoint(262143, 0, pair));  // s = 0x3FFFF^2 < 16 * 2^32
    EXPECT_TRUE(gaussianFromPoint(262144, 0, pair));   // s = 2^36: upper word exactly 16
    // Upper word at or above 0x0FFFFFF0: on or outside the unit circle.
    EXPECT_FALSE(gaussianFromPoint(1 << 30, 0, pair));      // s = 2^60, upper 0x10000000
    EXPECT_FALSE(gaussianFromPoint(-(1 << 30), 0, pair));
    // s = 0x0FFFFFF0 * 2^32 exactly: x = 2^30 * sqrt(1 - 2^-24) is not whole,
    // so take one just above and one just below the limit.
    const int32_t outside = 1073741792;  // 2^30 - 32: s = 2^60 - 2^36 + 1024
    EXPECT_FALSE(gaussianFromPoint(outside, 0, pair));
    const int32_t inside = 1073741791;   // s < 0x0FFFFFF0 * 2^32
    EXPECT_TRUE(gaussianFromPoint(inside, 0, pair));
    EXPECT_EQ(pair.second, 0.0f);
}

TEST(Generator, GaussianPairsMatchTheGoldenVectors) {
    const auto lines = growthgolden::lines("gaussian.txt");
    ASSERT_EQ(lines.size(), 5u);
    for (const auto& line : lines) {
        const auto w = words(line);
        ASSERT_EQ(w.size(), 23u);
        SeededGenerator g = SeededGenerator::fromSeed(toWord(w[0]));
        for (int i = 0; i < 10; ++i) {
            const GaussianPair pair = nextGaussianPair(g);
            EXPECT_EQ(ulpDistance(pair.first, toFloat(w[3 + 2 * i])), 0) << line << " pair " << i;
            EXPECT_EQ(ulpDistance(pair.second, toFloat(w[4 + 2 * i])), 0) << line << " pair " << i;
        }
        // The integer state after ten pairs pins every rejection on the way.
        EXPECT_EQ(g.a, toWord(w[1], 16)) << line;
        EXPECT_EQ(g.b, toWord(w[2], 16)) << line;
    }
}

TEST(Generator, ProcessGeneratorStartsFromTheTickCount) {
    ProcessGenerator g(123456u);
    EXPECT_EQ(g.wordA(), 123456u);
    EXPECT_EQ(g.wordB(), ~123456u);
    EXPECT_FALSE(g.hasSpareGaussian());
    // There is one per process.
    EXPECT_EQ(&ProcessGenerator::instance(), &ProcessGenerator::instance());
}

TEST(Generator, ProcessGeneratorStepsLikeTheSeededOne) {
    ProcessGenerator g(0u);
    g.setWords(1u, 0xFFFFFFFEu);
    EXPECT_EQ(g.next(), 0x9F81778Cu);
    EXPECT_EQ(g.wordB(), 0xCB3C4997u);
}

TEST(Generator, ProcessGeneratorKeepsTheSpareGaussian) {
    ProcessGenerator g(0u);
    g.setWords(1u, 0xFFFFFFFEu);
    const float first = g.nextGaussian();
    EXPECT_TRUE(g.hasSpareGaussian());
    const uint32_t aAfterPair = g.wordA();
    const float second = g.nextGaussian();
    EXPECT_FALSE(g.hasSpareGaussian());
    EXPECT_EQ(g.wordA(), aAfterPair);  // the spare cost no step
    SeededGenerator s = SeededGenerator::fromSeed(1);
    const GaussianPair pair = nextGaussianPair(s);
    EXPECT_EQ(first, pair.first);
    EXPECT_EQ(second, pair.second);
    // Setting the words drops the spare value.
    g.nextGaussian();
    EXPECT_TRUE(g.hasSpareGaussian());
    g.setWords(5u, 6u);
    EXPECT_FALSE(g.hasSpareGaussian());
}

TEST(Generator, NoteDetuneWorkedByHand) {
    // seed 1, note 60: H = (1 << 7) + 60 + 0x10C39AA1 = 0x10C39B5D, b = NOT H = 0xEF3C64A2.
    // u = 0xEF3C64A2 * 0x323785AF - 0x35F2CFD7 = 0xF76C24E7 (top bit 1)
    // a' = ((0x10C39B5D * 0x569CF9F3 - 0x06DC3E2D) << 1) | 1 = (0x0F99B01A << 1) | 1
    //    = 0x1F336035 = 523460661, as a float 523460672.
    // 523460672 * 2.3283064e-11 = 0.01218777; - 0.05 = -0.03781223.
    // Atonality 1: factor (2 - 1)^2 = 1; 0.75: factor 0.25; 0.5 and below: 0.
    EXPECT_NEAR(noteDetune(1, 60, 1.0f), -0.03781223f, 1e-8);
    EXPECT_NEAR(noteDetune(1, 60, 0.75f), -0.03781223f * 0.25f, 1e-8);
    EXPECT_EQ(noteDetune(1, 60, 0.5f), 0.0f);
    EXPECT_EQ(noteDetune(1, 60, 0.2f), 0.0f);
}

TEST(Generator, NoteDetuneMatchesTheGoldenVectors) {
    const auto lines = growthgolden::lines("detune.txt");
    ASSERT_EQ(lines.size(), 45u);
    for (const auto& line : lines) {
        const auto w = words(line);
        ASSERT_EQ(w.size(), 4u);
        const float d = noteDetune(toWord(w[0]), std::atoi(w[1].c_str()), toFloat(w[2]));
        EXPECT_EQ(d, toFloat(w[3])) << line;
        EXPECT_LE(std::fabs(d), 0.05f);
    }
}

}  // namespace
