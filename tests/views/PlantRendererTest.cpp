// The plant's growth geometry: its generator, normal draw and fast sine by
// hand; whole lines against the vectors that tests/golden/plant/derive_plant.py
// derives from the written rules on its own (never from this code's output);
// and every edge case of the growth: zero-length lines, the 64-point limit,
// the twist mask, the twig generations, independent branches, twig alpha,
// root alpha above 1, decay, rotation, and bounded work for extreme settings.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "notation/Notation.h"
#include "patch/NorvelleProgram.h"
#include "platform/Exceptions.h"
#include "views/PlantGeometry.h"
#include "views/PlantMainPanel.h"
#include "views/PlantRandom.h"
#include "views/PlantRenderer.h"
#include "views/PlantSettings.h"

namespace {

using views::PlantGeometry;
using views::PlantLine;
using views::PlantPoint;
using views::PlantRandom;
using views::PlantRenderer;
using views::PlantSettings;

std::uint32_t bitsOf(float f) {
    std::uint32_t u;
    std::memcpy(&u, &f, 4);
    return u;
}

std::uint64_t bitsOf(double d) {
    std::uint64_t u;
    std::memcpy(&u, &d, 8);
    return u;
}

float floatOfBits(std::uint32_t u) {
    float f;
    std::memcpy(&f, &u, 4);
    return f;
}

// The main panel's settings, as the panel's layout gives them.
PlantSettings panelSettings() { return views::mainPanelPlant().settings; }

// ---------------------------------------------------------------------------
// Generator, normal draw, wave: by hand.

TEST(PlantRandom, FirstStepsFromSeedOneByHand) {
    // Seeded with 1: a = 1, b = ~1 = 0xFFFFFFFE.
    // t  = 1 * 0xAD39F3E6 + 0xF24783A6 = 0x1_9F81778C -> 0x9F81778C
    // b * 0x323785AF = -2 * 0x323785AF = 0x9B90F4A2 (mod 2^32);
    //    + 0xCA0D3029 = 0x659E24CB, top bit 0
    // a' = 0x9F81778C | 0 = 0x9F81778C
    // b * 0x646F0B5E = -2 * 0x646F0B5E = 0x3721E944; + 0x941A6052 = 0xCB3C4996
    // b' = 0xCB3C4996 | (t >> 31 = 1) = 0xCB3C4997
    PlantRandom g = PlantRandom::fromSeed(1);
    EXPECT_EQ(g.a, 1u);
    EXPECT_EQ(g.b, 0xFFFFFFFEu);
    g.step();
    EXPECT_EQ(g.a, 0x9F81778Cu);
    EXPECT_EQ(g.b, 0xCB3C4997u);
    // Second step: t = 0x9F81778C * 0xAD39F3E6 + 0xF24783A6 = 0x5F3ECF6E (mod 2^32),
    // b * 0x323785AF + 0xCA0D3029 = 0x57EFF162 (top bit 0): a' = 0x5F3ECF6E;
    // b * 0x646F0B5E + 0x941A6052 = 0xAFDFE2C4, t >> 31 = 0: b' = 0xAFDFE2C4.
    g.step();
    EXPECT_EQ(g.a, 0x5F3ECF6Eu);
    EXPECT_EQ(g.b, 0xAFDFE2C4u);
}

TEST(PlantRandom, NormalDrawFromSeedOneByHand) {
    // The four words of the two steps above as single precision numbers:
    //   0x9F81778C = 2676062092 -> 2676062208
    //   0xCB3C4997 = 3409725847 -> 3409725952
    //   0x5F3ECF6E = 1597951854 -> 1597951872
    //   0xAFDFE2C4 = 2950685380 -> 2950685440
    // Sums in float: 6085788160, 7683740160, 10634425344.
    // * 4.0327452e-10 (float 4.03274525e-10) = 4.28859282 (float)
    // - 3.4641016 (float 3.46410155) = 0.824491262 (0x3F5311DC).
    PlantRandom g = PlantRandom::fromSeed(1);
    const float n = g.normal();
    EXPECT_EQ(bitsOf(n), 0x3F5311DCu);
    EXPECT_FLOAT_EQ(n, 0.824491262f);
    // The draw took two steps.
    EXPECT_EQ(g.a, 0x5F3ECF6Eu);
}

TEST(PlantRandom, NormalDrawsHaveMeanZeroAndUnitDeviation) {
    PlantRandom g = PlantRandom::fromSeed(12345);
    double sum = 0, sum2 = 0;
    const int n = 200000;
    for (int i = 0; i < n; ++i) {
        const double v = g.normal();
        sum += v;
        sum2 += v * v;
        ASSERT_LE(std::fabs(v), 3.47);  // four uniforms reach at most +-2 sqrt(3)
    }
    EXPECT_NEAR(sum / n, 0.0, 0.02);
    EXPECT_NEAR(std::sqrt(sum2 / n), 1.0, 0.02);
}

TEST(PlantWave, IsTheParabolaAtAFewPhases) {
    // x = p - floor(p); x = 2x - 1; wave = 4 x (|x| - 1).
    EXPECT_EQ(views::wave(0.0f), 0.0f);      // x = -1: 4 * -1 * 0
    EXPECT_EQ(views::wave(0.125f), 0.75f);   // x = -0.75: -3 * -0.25
    EXPECT_EQ(views::wave(0.25f), 1.0f);     // x = -0.5: -2 * -0.5
    EXPECT_EQ(views::wave(0.5f), 0.0f);      // x = 0
    EXPECT_EQ(views::wave(0.75f), -1.0f);    // x = 0.5: 2 * -0.5
    EXPECT_EQ(views::wave(0.875f), -0.75f);  // x = 0.75: 3 * -0.25
    EXPECT_EQ(views::wave(-0.25f), -1.0f);   // floor(-0.25) = -1: x = 0.75 -> 0.5
    EXPECT_EQ(views::wave(1.25f), 1.0f);     // whole turns don't count
    // p = 0.3: x = 0.3 (float 0.300000012), 2x - 1 = -0.399999976,
    // |x| - 1 = -0.600000024, 4x = -1.59999990: product 0.95999998 in
    // exact arithmetic, whose nearest float is 0.96f (0.959999979).
    EXPECT_EQ(views::wave(0.3f), 0.96f);
    // Close to the sine everywhere, never equal to it in between.
    for (int i = 0; i < 100; ++i) {
        const float p = float(i) / 100.0f;
        EXPECT_NEAR(views::wave(p), std::sin(2 * M_PI * p), 0.06) << p;
    }
}

// ---------------------------------------------------------------------------
// Vectors derived independently by derive_plant.py.

struct Derived {
    struct Line {
        int branch = 0, generation = 0, r = 0, g = 0, b = 0;
        std::uint32_t alpha = 0;
        std::vector<std::pair<std::uint64_t, std::uint64_t>> points;
        std::vector<int> pieces;  // k, e, byte, ...
    };
    std::vector<std::vector<std::string>> records;
    std::vector<std::pair<std::string, std::vector<Line>>> cases;
};

const Derived& derived() {
    static const Derived d = [] {
        Derived out;
        std::ifstream in(std::string(TENDRANE_SOURCE_DIR) + "/tests/golden/plant/derived.txt");
        std::string text;
        while (std::getline(in, text)) {
            std::istringstream words(text);
            std::vector<std::string> w;
            for (std::string s; words >> s;) w.push_back(s);
            if (w.empty()) continue;
            if (w[0] == "case") {
                out.cases.push_back({w[1], {}});
            } else if (w[0] == "line") {
                Derived::Line line;
                line.branch = std::stoi(w[1]);
                line.generation = std::stoi(w[2]);
                line.r = std::stoi(w[3]);
                line.g = std::stoi(w[4]);
                line.b = std::stoi(w[5]);
                line.alpha = std::stoul(w[6], nullptr, 16);
                const int count = std::stoi(w[7]);
                for (int i = 0; i < count; ++i)
                    line.points.push_back({std::stoull(w[8 + 2 * i], nullptr, 16), std::stoull(w[9 + 2 * i], nullptr, 16)});
                out.cases.back().second.push_back(line);
            } else if (w[0] == "pieces") {
                for (std::size_t i = 1; i < w.size(); ++i) out.cases.back().second.back().pieces.push_back(std::stoi(w[i]));
            } else {
                out.records.push_back(w);
            }
        }
        return out;
    }();
    return d;
}

const std::vector<Derived::Line>& derivedCase(const std::string& name) {
    for (const auto& c : derived().cases)
        if (c.first == name) return c.second;
    static const std::vector<Derived::Line> none;
    ADD_FAILURE() << "no derived case " << name;
    return none;
}

void expectSameLines(const PlantGeometry& geometry, const std::vector<Derived::Line>& expected) {
    ASSERT_FALSE(expected.empty());
    ASSERT_EQ(geometry.lines().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const PlantLine& line = geometry.lines()[i];
        const Derived::Line& want = expected[i];
        SCOPED_TRACE("line " + std::to_string(i));
        EXPECT_EQ(line.branch, want.branch);
        EXPECT_EQ(line.generation, want.generation);
        EXPECT_EQ(line.red, want.r);
        EXPECT_EQ(line.green, want.g);
        EXPECT_EQ(line.blue, want.b);
        EXPECT_EQ(bitsOf(line.alpha), want.alpha);
        const auto points = geometry.points(line);
        ASSERT_EQ(points.size(), want.points.size());
        for (std::size_t k = 0; k < points.size(); ++k) {
            EXPECT_EQ(bitsOf(points[k].x), want.points[k].first) << "point " << k;
            EXPECT_EQ(bitsOf(points[k].y), want.points[k].second) << "point " << k;
        }
        std::vector<int> pieces;
        for (const auto& p : geometry.pieces(line)) pieces.insert(pieces.end(), {p.first, p.last, int(p.byte)});
        EXPECT_EQ(pieces, want.pieces);
    }
}

TEST(PlantDerived, GeneratorStepsMatchTheDerivation) {
    int seen = 0;
    for (const auto& w : derived().records) {
        if (w[0] != "generator") continue;
        ++seen;
        PlantRandom g = PlantRandom::fromSeed(std::stoul(w[1], nullptr, 16));
        for (int i = 0; i < 3; ++i) {
            g.step();
            EXPECT_EQ(g.a, std::stoul(w[2 + 2 * i], nullptr, 16)) << w[1] << " step " << i;
            EXPECT_EQ(g.b, std::stoul(w[3 + 2 * i], nullptr, 16)) << w[1] << " step " << i;
        }
    }
    EXPECT_EQ(seen, 3);
}

TEST(PlantDerived, NormalDrawsMatchTheDerivation) {
    int seen = 0;
    for (const auto& w : derived().records) {
        if (w[0] != "normal") continue;
        ++seen;
        PlantRandom g = PlantRandom::fromSeed(std::stoul(w[1], nullptr, 16));
        for (int i = 0; i < 3; ++i) EXPECT_EQ(bitsOf(g.normal()), std::stoul(w[2 + i], nullptr, 16)) << w[1];
    }
    EXPECT_EQ(seen, 3);
}

TEST(PlantDerived, WaveAndColourMatchTheDerivation) {
    int waves = 0, colours = 0;
    for (const auto& w : derived().records) {
        if (w[0] == "wave") {
            ++waves;
            const float p = floatOfBits(std::stoul(w[1], nullptr, 16));
            EXPECT_EQ(bitsOf(views::wave(p)), std::stoul(w[2], nullptr, 16)) << p;
        } else if (w[0] == "color") {
            ++colours;
            const float h = floatOfBits(std::stoul(w[1], nullptr, 16));
            const float s = floatOfBits(std::stoul(w[2], nullptr, 16));
            std::uint8_t rgb[3];
            views::plantLineColor(h, s, rgb);
            EXPECT_EQ(rgb[0], std::stoi(w[3])) << h << " " << s;
            EXPECT_EQ(rgb[1], std::stoi(w[4])) << h << " " << s;
            EXPECT_EQ(rgb[2], std::stoi(w[5])) << h << " " << s;
        }
    }
    EXPECT_EQ(waves, 10);
    EXPECT_EQ(colours, 7);
}

TEST(PlantDerived, ALoneLineWithThePanelsSettings) {
    PlantSettings s = panelSettings();
    s.twigMaxGenerations = 0;
    PlantRenderer renderer(s);
    PlantGeometry g;
    renderer.growLine(g, 3, (3 + 1000) ^ 0x12345678u, {100.0, 200.0}, 0.7f, 20.0f, 0.3f, 6.5f, 1003u, 0.0f, 0.5f, 0.0f,
                      0, 2.2f);
    expectSameLines(g, derivedCase("lone"));
}

TEST(PlantDerived, ALineWithTwigsSwayBendAndDrop) {
    PlantRenderer renderer(panelSettings());
    renderer.twigTwist = 7.0f;
    renderer.rotationOffset = 1.5f;
    PlantGeometry g;
    renderer.growLine(g, 3, (3 + 1000) ^ 0x12345678u, {100.0, 200.0}, 0.7f, 20.0f, 0.3f, 6.5f, 1003u, 1.25f, 2.5f, 4.0f,
                      0, 2.2f);
    expectSameLines(g, derivedCase("twigs"));
}

TEST(PlantDerived, ALineWithTheDefaultSettings) {
    PlantRenderer renderer;  // every key at its default
    renderer.twigTwist = 6.0f;
    PlantGeometry g;
    renderer.growLine(g, 0, 0x12345678u ^ 5u, {0.0, 0.0}, -1.5707964f, 9.0f, 0.25f, 1.0f, 5u, 0.0f, 0.0f, 0.0f, 0, 3.0f);
    expectSameLines(g, derivedCase("defaults"));
}

TEST(PlantDerived, ALongLineStopsAt64Points) {
    PlantSettings s;
    s.twigMaxGenerations = 0;
    PlantRenderer renderer(s);
    PlantGeometry g;
    renderer.growLine(g, 2, 0xABCDEFu, {50.0, 50.0}, 2.0f, 500.0f, 0.6f, 1.0f, 77u, 0.0f, 0.0f, 0.0f, 0, 4.0f);
    expectSameLines(g, derivedCase("capped"));
    ASSERT_EQ(g.lines().size(), 1u);
    EXPECT_EQ(g.lines()[0].pointCount, 64u);
}

TEST(PlantDerived, ABendOfMoreThanATurnIsWrappedOnceAStep) {
    PlantSettings s;
    s.twigMaxGenerations = 0;
    s.hueVariation = 0.0f;
    PlantRenderer renderer(s);
    renderer.rotationOffset = 500.0f;
    PlantGeometry g;
    renderer.growLine(g, 1, 4321u, {0.0, 0.0}, 0.25f, 12.0f, 0.3f, 1.0f, 4322u, 0.0f, 0.0f, 0.0f, 0, 2.0f);
    expectSameLines(g, derivedCase("spinning"));
}

TEST(PlantDerived, ATwigScaleAboveOneWithoutDistributionIsKept) {
    PlantSettings s;
    s.twigMaxGenerations = 1;
    s.twigScale = 1.5f;
    s.alphaDrop = 0.9f;
    PlantRenderer renderer(s);
    PlantGeometry g;
    renderer.growLine(g, 4, 999u, {10.0, 20.0}, 3.0f, 6.0f, 0.7f, 1.0f, 998u, 0.0f, 0.0f, 0.0f, 0, 5.0f);
    expectSameLines(g, derivedCase("unclamped"));
}

// ---------------------------------------------------------------------------
// Edge cases of the growth.

TEST(PlantGrowth, ALineTooShortForOneSegmentDrawsNothingAndTakesNoStep) {
    PlantRenderer renderer(panelSettings());
    PlantGeometry g;
    // Length 0: stepShrink is infinite, r is below the threshold at once.
    renderer.growLine(g, 0, 99u, {0.0, 0.0}, 0.0f, 0.0f, 0.3f, 1.0f, 5u, 0.0f, 0.0f, 0.0f, 0, 2.0f);
    EXPECT_TRUE(g.lines().empty());
    EXPECT_EQ(renderer.stepsTaken(), 0);
    // Length 1.25 with segments of 5 and threshold 1: r = 5 - 4 = 1 at the first step.
    renderer.growLine(g, 0, 99u, {0.0, 0.0}, 0.0f, 1.25f, 0.3f, 1.0f, 5u, 0.0f, 0.0f, 0.0f, 0, 2.0f);
    EXPECT_TRUE(g.lines().empty());
    EXPECT_EQ(renderer.stepsTaken(), 0);
}

TEST(PlantGrowth, AZeroLengthBranchLeavesTheOtherBranchesAsTheyWere) {
    PlantSettings s = panelSettings();
    s.minBranchLength = 0.0f;
    views::PlantShapeSettings shape = views::mainPanelPlant().shape;
    PlantRenderer renderer(s);
    renderer.seed = 4242;
    views::PlantFrame frame;
    frame.centerX = 192;
    frame.centerY = 264;
    for (int i = 0; i < BRANCH_COUNT; ++i) frame.shown[i] = 0.1f * float(i % 7) + 0.2f;
    frame.shown[6] = 0.0f;  // length 0: the branch grows nothing
    PlantGeometry zero;
    renderer.growBranches(zero, frame, shape);
    frame.shown[6] = 0.9f;
    PlantGeometry grown;
    renderer.growBranches(grown, frame, shape);
    std::vector<const PlantLine*> a, b;
    for (const PlantLine& l : zero.lines()) {
        EXPECT_NE(l.branch, 6);
        a.push_back(&l);
    }
    for (const PlantLine& l : grown.lines())
        if (l.branch != 6) b.push_back(&l);
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        ASSERT_EQ(a[i]->pointCount, b[i]->pointCount);
        const auto pa = zero.points(*a[i]), pb = grown.points(*b[i]);
        for (std::size_t k = 0; k < pa.size(); ++k) {
            EXPECT_EQ(pa[k].x, pb[k].x);
            EXPECT_EQ(pa[k].y, pb[k].y);
        }
    }
}

TEST(PlantGrowth, ATwigOfZeroLengthChangesNothingOfItsParent) {
    // The fork draws its numbers (twist, seed words) whether the twig grows
    // or not, and the zero-length twig takes its hue draw from its own
    // generator: the parent is the same line with or without its twigs.
    PlantSettings s = panelSettings();
    s.twigScaleDistribution = 0.0f;
    PlantRenderer withTwigs(s);
    s.twigScale = 0.0f;
    PlantRenderer noTwigs(s);
    PlantGeometry a, b;
    withTwigs.growLine(a, 1, 777u, {10.0, 10.0}, 1.0f, 40.0f, 0.3f, 3.0f, 778u, 0.0f, 1.0f, 0.0f, 0, 3.0f);
    noTwigs.growLine(b, 1, 777u, {10.0, 10.0}, 1.0f, 40.0f, 0.3f, 3.0f, 778u, 0.0f, 1.0f, 0.0f, 0, 3.0f);
    ASSERT_GT(a.lines().size(), 1u);
    ASSERT_EQ(b.lines().size(), 1u);
    const PlantLine& parentA = a.lines().back();
    const PlantLine& parentB = b.lines().back();
    EXPECT_EQ(parentA.generation, 0);
    ASSERT_EQ(parentA.pointCount, parentB.pointCount);
    for (std::size_t k = 0; k < parentA.pointCount; ++k) {
        EXPECT_EQ(a.points(parentA)[k].x, b.points(parentB)[k].x);
        EXPECT_EQ(a.points(parentA)[k].y, b.points(parentB)[k].y);
    }
    EXPECT_EQ(parentA.red, parentB.red);
    EXPECT_EQ(parentA.green, parentB.green);
}

TEST(PlantGrowth, TheTipBeyond64PointsIsNotDrawnAndGrowsNoTwigs) {
    PlantSettings s;  // segments of 3, threshold 0.5, no alpha drop
    s.twigMaxGenerations = 1;
    PlantRenderer renderer(s);
    PlantGeometry g;
    renderer.growLine(g, 0, 5u, {0.0, 0.0}, 0.0f, 1000.0f, 0.25f, 1.0f, 6u, 0.0f, 0.0f, 0.0f, 0, 3.0f);
    int twigs = 0;
    for (const PlantLine& l : g.lines()) {
        EXPECT_LE(l.pointCount, 64u);
        if (l.generation == 1) ++twigs;
    }
    ASSERT_EQ(g.lines().back().generation, 0);
    EXPECT_EQ(g.lines().back().pointCount, 64u);
    // Steps 0 to 62 added points 1 to 63 and forked; step 63 found 64
    // points held and ended the line before moving on or forking.
    EXPECT_EQ(twigs, 63);
}

TEST(PlantGrowth, WithTwistMaskOneOddStepsTurnByThePreviousStep) {
    // A separate calculation of the first four steps, with no sway, bend,
    // drop or twigs and a hue variation of 0: the only angle is the twist
    // n * twistRad * g, and g is drawn at steps 0 and 2 only.
    PlantSettings s;
    s.twistMask = 1;
    s.twigMaxGenerations = 0;
    s.hueVariation = 0.0f;
    s.twigSegmentSize = 4.0f;
    s.twigThreshold = 0.5f;
    PlantRenderer renderer(s);
    PlantGeometry g;
    const float twist = 20.0f;
    renderer.growLine(g, 0, 31u, {0.0, 0.0}, 1.0f, 8.0f, 0.5f, 1.0f, 32u, 0.0f, 0.0f, 0.0f, 0, twist);
    ASSERT_EQ(g.lines().size(), 1u);
    const auto points = g.points(g.lines()[0]);
    ASSERT_GE(points.size(), 5u);

    PlantRandom R = PlantRandom::fromSeed(31u);
    R.normal();  // the hue
    const float twistRad = twist * 0.017453292f;
    float rotation = 1.0f;
    float angleStep = 0.0f;
    double x = 0.0, y = 0.0;
    for (int i = 0; i < 4; ++i) {
        if (i % 2 == 0) {
            const float n = std::min(float(i + 1) * 1.0f, 1.0f);
            const float gauss = R.normal();
            // wave(phase) * 0 + 0 leaves only the twist.
            angleStep = (0.0f * 0.0f + 0.0f) * 0.017453292f + n * twistRad * gauss;
        }
        const float r = 4.0f - (4.0f / 8.0f) * float(i + 1);
        rotation += angleStep;
        x -= double(views::wave((rotation + 1.5707964f) * 0.15915494f) * r);
        y -= double(views::wave(rotation * 0.15915494f) * r);
        EXPECT_EQ(points[i + 1].x, x) << i;
        EXPECT_EQ(points[i + 1].y, y) << i;
    }
}

TEST(PlantGrowth, TwigMaxGenerationsTwoGivesTwigsOfGenerationsOneAndTwo) {
    NorvelleProgram record;
    for (int i = 0; i < BRANCH_COUNT; ++i) record.setParam(Param::Branch1 + i, 1.0f);
    PlantGeometry g;
    views::growMainPanelPlantAtRest(record, g);
    std::set<int> generations;
    for (const PlantLine& l : g.lines()) generations.insert(l.generation);
    EXPECT_EQ(generations, (std::set<int>{0, 1, 2}));

    PlantSettings s = panelSettings();
    s.twigMaxGenerations = 0;
    PlantRenderer renderer(s);
    PlantGeometry single;
    renderer.growLine(single, 0, 5u, {0.0, 0.0}, 0.0f, 50.0f, 0.3f, 40.0f, 6u, 0.0f, 0.0f, 0.0f, 0, 3.0f);
    ASSERT_EQ(single.lines().size(), 1u);
    EXPECT_EQ(single.lines()[0].generation, 0);
}

TEST(PlantGrowth, ChangingOneBranchLeavesTheOtherBranchesLinesTheSame) {
    NorvelleProgram before;
    for (int i = 0; i < BRANCH_COUNT; ++i) before.setParam(Param::Branch1 + i, 0.08f * float(i));
    NorvelleProgram after(before);
    after.setParam(Param::Branch5, 0.95f);
    PlantGeometry a, b;
    views::growMainPanelPlantAtRest(before, a);
    views::growMainPanelPlantAtRest(after, b);
    std::vector<const PlantLine*> la, lb;
    int changed = 0;
    for (const PlantLine& l : a.lines())
        if (l.branch != 4) la.push_back(&l);
    for (const PlantLine& l : b.lines()) {
        if (l.branch != 4) lb.push_back(&l);
        else ++changed;
    }
    EXPECT_GT(changed, 0);
    ASSERT_EQ(la.size(), lb.size());
    for (std::size_t i = 0; i < la.size(); ++i) {
        EXPECT_EQ(la[i]->branch, lb[i]->branch);
        EXPECT_EQ(la[i]->alpha, lb[i]->alpha);
        ASSERT_EQ(la[i]->pointCount, lb[i]->pointCount);
        for (std::size_t k = 0; k < la[i]->pointCount; ++k) {
            EXPECT_EQ(a.points(*la[i])[k].x, b.points(*lb[i])[k].x);
            EXPECT_EQ(a.points(*la[i])[k].y, b.points(*lb[i])[k].y);
        }
    }
}

TEST(PlantGrowth, ATwigStartsAtItsParentsAlphaAtTheForkTimesTwigAlpha) {
    // Exact binary factors: the parent starts at 4 and halves each step, a
    // twig starts at a quarter of the parent's alpha at its fork step.
    PlantSettings s;
    s.alphaDrop = 0.5f;
    s.twigAlpha = 0.25f;
    s.twigMaxGenerations = 1;
    PlantRenderer renderer(s);
    PlantGeometry g;
    renderer.growLine(g, 0, 11u, {0.0, 0.0}, 0.0f, 40.0f, 0.3f, 4.0f, 12u, 0.0f, 0.0f, 0.0f, 0, 3.0f);
    std::vector<float> twigAlphas;
    for (const PlantLine& l : g.lines())
        if (l.generation == 1) twigAlphas.push_back(l.alpha);
    // Forks at steps 0 to 6 (alpha 4 * 0.5^6 = 0.0625 is the last above 0.05).
    const std::vector<float> expected{1.0f, 0.5f, 0.25f, 0.125f, 0.0625f, 0.03125f, 0.015625f};
    EXPECT_EQ(twigAlphas, expected);
    EXPECT_EQ(g.lines().back().alpha, 4.0f);
}

TEST(PlantGrowth, RootAlphaAboveOneKeepsTheFirstPartAtFullAlpha) {
    // The panel's longest branch starts at alpha 40 and drops by 0.8 a point:
    // 40 * 0.8^16 = 1.126 is the last point at or above 1, so pieces from
    // points 0 to 16 draw with the full byte trunc(1 * 0.6 * 255.99998) = 153,
    // and the piece from point 17 with trunc(0.9007 * 0.6 * 255.99998) = 138.
    NorvelleProgram record;
    record.setParam(Param::Branch1, 1.0f);
    PlantGeometry g;
    views::growMainPanelPlantAtRest(record, g);
    const PlantLine* branch = nullptr;
    for (const PlantLine& l : g.lines())
        if (l.branch == 0 && l.generation == 0) branch = &l;
    ASSERT_NE(branch, nullptr);
    EXPECT_EQ(branch->alpha, 40.0f);
    const auto pieces = g.pieces(*branch);
    ASSERT_GE(pieces.size(), 18u);
    for (int k = 0; k < 17; ++k) {
        EXPECT_EQ(pieces[k].first, k);
        EXPECT_EQ(pieces[k].last, k + 1);  // alpha falls by far more than 0.1: no merging
        EXPECT_EQ(pieces[k].byte, 153) << k;
    }
    EXPECT_EQ(pieces[17].first, 17);
    EXPECT_EQ(pieces[17].byte, 138);
}

TEST(PlantGrowth, AStraightLineWithSteadyAlphaIsOnePiece) {
    PlantSettings s;
    s.twigMaxGenerations = 0;
    s.alpha = 0.5f;
    PlantRenderer renderer(s);
    PlantGeometry g;
    // No twist, sway, bend or drop: every step goes the same way.
    renderer.growLine(g, 0, 3u, {0.0, 0.0}, 1.0f, 20.0f, 0.3f, 0.75f, 4u, 0.0f, 0.0f, 0.0f, 0, 0.0f);
    ASSERT_EQ(g.lines().size(), 1u);
    const auto pieces = g.pieces(g.lines()[0]);
    ASSERT_EQ(pieces.size(), 1u);
    EXPECT_EQ(pieces[0].first, 0);
    EXPECT_EQ(pieces[0].last, int(g.lines()[0].pointCount) - 1);
    EXPECT_EQ(pieces[0].byte, 95);  // trunc(0.75 * 0.5 * 255.99998) = trunc(95.99999)
}

TEST(PlantGrowth, ADropLeansEveryLineTowardsTheBottom) {
    // Lines pointing left, right and up (rotation 0, pi and pi / 2 grow along
    // -u: right, left and up on the screen) all end lower with a drop.
    PlantSettings s;
    s.twigMaxGenerations = 0;
    PlantRenderer renderer(s);
    for (const float rotation : {0.0f, 3.1415927f, 1.5707964f}) {
        SCOPED_TRACE(rotation);
        PlantGeometry standing, drooping;
        renderer.growLine(standing, 0, 21u, {0.0, 0.0}, rotation, 30.0f, 0.3f, 1.0f, 22u, 0.0f, 0.0f, 0.0f, 0, 0.0f);
        renderer.growLine(drooping, 0, 21u, {0.0, 0.0}, rotation, 30.0f, 0.3f, 1.0f, 22u, 0.0f, 0.0f, 5.0f, 0, 0.0f);
        ASSERT_EQ(standing.lines().size(), 1u);
        ASSERT_EQ(drooping.lines().size(), 1u);
        EXPECT_GT(drooping.points(drooping.lines()[0]).back().y, standing.points(standing.lines()[0]).back().y + 5.0);
    }
}

TEST(PlantGrowth, SquaredDistanceToASegment) {
    const PlantPoint a{0, 0}, b{4, 0};
    EXPECT_EQ(views::squaredDistanceToSegment({2, 3}, a, b), 9.0);   // over the segment: to the line
    EXPECT_EQ(views::squaredDistanceToSegment({-1, 2}, a, b), 5.0);  // before a: to a
    EXPECT_EQ(views::squaredDistanceToSegment({7, 4}, a, b), 25.0);  // after b: to b
    EXPECT_EQ(views::squaredDistanceToSegment({1, 1}, a, a), 2.0);   // a point segment
}

TEST(PlantGrowth, AWitheringLineShowsOnlyItsOuterEnd) {
    PlantSettings s = panelSettings();
    s.twigMaxGenerations = 0;
    PlantRenderer renderer(s);
    PlantGeometry full, outer;
    // Segments of 5 shrinking by 1/6 a step: r = 5 - (i + 1) / 6 stays above
    // 1 for 23 steps, and below 2.5 from step 15 on.
    renderer.growLine(full, 0, 9u, {0.0, 0.0}, 2.0f, 30.0f, 0.3f, 40.0f, 10u, 0.0f, 1.0f, 0.0f, 0, 3.0f);
    renderer.growthLimit = 2.5f;
    renderer.growLine(outer, 0, 9u, {0.0, 0.0}, 2.0f, 30.0f, 0.3f, 40.0f, 10u, 0.0f, 1.0f, 0.0f, 0, 3.0f);
    ASSERT_EQ(full.lines().size(), 1u);
    ASSERT_EQ(outer.lines().size(), 1u);
    const auto f = full.points(full.lines()[0]);
    const auto o = outer.points(outer.lines()[0]);
    ASSERT_EQ(f.size(), 24u);
    ASSERT_EQ(o.size(), 9u);
    const std::size_t skip = f.size() - o.size();
    for (std::size_t k = 0; k < o.size(); ++k) {
        EXPECT_EQ(o[k].x, f[skip + k].x);
        EXPECT_EQ(o[k].y, f[skip + k].y);
    }
}

TEST(PlantGrowth, SaturationZeroIsWhiteAndHueOneFallsInTheSecondSector) {
    std::uint8_t rgb[3];
    views::plantLineColor(0.3f, 0.0f, rgb);
    EXPECT_EQ(rgb[0], 255);
    EXPECT_EQ(rgb[1], 255);
    EXPECT_EQ(rgb[2], 255);
    // Hue 1 is not multiplied by 6: sector 1, f = 0: (q, 1, p) = (1, 1, 1 - s).
    views::plantLineColor(1.0f, 0.5f, rgb);
    EXPECT_EQ(rgb[0], 255);
    EXPECT_EQ(rgb[1], 255);
    EXPECT_EQ(rgb[2], 127);  // trunc(0.5 * 255.99999999)
    // Hue 0 at full saturation: sector 0, (1, t, p) = (1, 0, 0).
    views::plantLineColor(0.0f, 1.0f, rgb);
    EXPECT_EQ(rgb[0], 255);
    EXPECT_EQ(rgb[1], 0);
    EXPECT_EQ(rgb[2], 0);
}

TEST(PlantGrowth, TwistFollowsAtonalityGeometrically) {
    EXPECT_EQ(views::plantTwist(1.0f, 5.0f, 0.0f), 1.0f);
    EXPECT_NEAR(views::plantTwist(1.0f, 5.0f, 1.0f), 5.0f, 1e-5f);
    EXPECT_NEAR(views::plantTwist(4.0f, 10.0f, 0.5f), std::sqrt(40.0f), 1e-5f);
}

// ---------------------------------------------------------------------------
// The branches of a frame.

views::PlantFrame centredFrame() {
    views::PlantFrame frame;
    frame.centerX = 192;
    frame.centerY = 264;
    return frame;
}

TEST(PlantBranches, AtRotationZeroBranchZeroGrowsDownFromTheSeed) {
    NorvelleProgram record;
    PlantGeometry g;
    views::growMainPanelPlantAtRest(record, g);
    // The panel's plant: bounds { 74, 146, 236, 236 }, middle ((74 + 310) / 2,
    // (146 + 382) / 2) = (192, 264), core 11. Branch 0's angle is -90 degrees:
    // u = (cos, sin) = (~0, -1), start = c - u * 11 = (192, 275), growing along -u.
    for (const PlantLine& l : g.lines()) {
        if (l.branch != 0 || l.generation != 0) continue;
        const auto p = g.points(l);
        EXPECT_NEAR(p[0].x, 192.0, 1e-6);
        EXPECT_EQ(p[0].y, 275.0);
        EXPECT_GT(p.back().y, p[0].y + 20.0);
        return;
    }
    FAIL() << "no line of branch 0";
}

TEST(PlantBranches, BranchesGoRoundClockwiseOnTheScreenInStepsOf30Degrees) {
    NorvelleProgram record;
    PlantGeometry g;
    views::growMainPanelPlantAtRest(record, g);
    int seen = 0;
    for (const PlantLine& l : g.lines()) {
        if (l.generation != 0) continue;
        const auto p = g.points(l);
        // Start at c - u * core with u at (30 i - 90) degrees.
        const double a = (l.branch * 30.0 - 90.0) * 0.017453292;
        EXPECT_NEAR(p[0].x, 192.0 - std::cos(a) * 11.0, 1e-9) << l.branch;
        EXPECT_NEAR(p[0].y, 264.0 - std::sin(a) * 11.0, 1e-9) << l.branch;
        EXPECT_EQ(l.branch, seen);
        ++seen;
    }
    EXPECT_EQ(seen, 12);
}

TEST(PlantBranches, RotationTurnsTheStartsAndAFullTurnIsNoTurn) {
    NorvelleProgram record;
    record.setParam(Param::Rotation, 0.25f);  // 90 degrees: branch 0 at angle 0
    PlantGeometry g;
    views::growMainPanelPlantAtRest(record, g);
    bool found = false;
    for (const PlantLine& l : g.lines()) {
        if (l.branch != 0 || l.generation != 0) continue;
        EXPECT_EQ(g.points(l)[0].x, 181.0);
        EXPECT_NEAR(g.points(l)[0].y, 264.0, 1e-6);
        found = true;
    }
    EXPECT_TRUE(found);
    // The degrees are Rotation x 360 in double: 0.3f x 360 = 108.00000429...,
    // not the float product 108.0000076; branch 0 starts at c - u * 11 with u
    // at (0 * 30 - 90 + 108.00000429...) * 0.017453292.
    NorvelleProgram tilted;
    tilted.setParam(Param::Rotation, 0.3f);
    PlantGeometry t;
    views::growMainPanelPlantAtRest(tilted, t);
    const double degrees = double(0.3f) * 360.0;
    EXPECT_NE(degrees, double(0.3f * 360.0f));
    const double angle = (0.0 - 90.0 + degrees) * 0.017453292;
    bool tiltedFound = false;
    for (const PlantLine& l : t.lines()) {
        if (l.branch != 0 || l.generation != 0) continue;
        EXPECT_EQ(t.points(l)[0].x, 192.0 - std::cos(angle) * 11.0);
        EXPECT_EQ(t.points(l)[0].y, 264.0 - std::sin(angle) * 11.0);
        tiltedFound = true;
    }
    EXPECT_TRUE(tiltedFound);
    // Rotation 1 is 360 degrees, wrapped to 0: the plant of Rotation 0.
    NorvelleProgram turned;
    turned.setParam(Param::Rotation, 1.0f);
    PlantGeometry a, b;
    views::growMainPanelPlantAtRest(NorvelleProgram(), a);
    views::growMainPanelPlantAtRest(turned, b);
    ASSERT_EQ(a.lines().size(), b.lines().size());
    ASSERT_EQ(a.pointTotal(), b.pointTotal());
    for (std::size_t i = 0; i < a.lines().size(); ++i)
        for (std::size_t k = 0; k < a.lines()[i].pointCount; ++k) {
            EXPECT_EQ(a.points(a.lines()[i])[k].x, b.points(b.lines()[i])[k].x);
            EXPECT_EQ(a.points(a.lines()[i])[k].y, b.points(b.lines()[i])[k].y);
        }
}

TEST(PlantBranches, FullDecayGrowsEveryBranchToFullLength) {
    PlantRenderer renderer(panelSettings());
    renderer.seed = 99;
    const views::PlantShapeSettings shape = views::mainPanelPlant().shape;
    views::PlantFrame withered = centredFrame();
    views::PlantFrame full = centredFrame();
    withered.decay = full.decay = 1.0f;
    for (int i = 0; i < BRANCH_COUNT; ++i) {
        withered.shown[i] = float(i) / 13.0f;  // any length
        full.shown[i] = 1.0f;
    }
    PlantGeometry a, b;
    renderer.growBranches(a, withered, shape);
    renderer.growBranches(b, full, shape);
    ASSERT_EQ(a.lines().size(), b.lines().size());
    for (std::size_t i = 0; i < a.lines().size(); ++i) {
        EXPECT_EQ(a.lines()[i].alpha, b.lines()[i].alpha);
        ASSERT_EQ(a.lines()[i].pointCount, b.lines()[i].pointCount);
        for (std::size_t k = 0; k < a.lines()[i].pointCount; ++k)
            EXPECT_EQ(a.points(a.lines()[i])[k].y, b.points(b.lines()[i])[k].y);
    }
    // Not the plant of the same lengths standing: the decay's drop bends it.
    full.decay = 0.0f;
    PlantGeometry standing;
    renderer.growBranches(standing, full, shape);
    EXPECT_NE(standing.points(standing.lines()[0])[2].x, b.points(b.lines()[0])[2].x);
}

TEST(PlantBranches, ACloneSwaysAllBranchesAlike) {
    // With a sway amount and a phase, the sway seed decides each step's
    // phase offset: a cloned plant's branches use the patch's seed for all.
    PlantRenderer renderer(panelSettings());
    renderer.seed = 500;
    views::PlantShapeSettings shape;
    shape.swayMinAmount = shape.swayMaxAmount = 4.0f;
    views::PlantFrame frame = centredFrame();
    for (int i = 0; i < BRANCH_COUNT; ++i) frame.shown[i] = 0.5f, frame.phase[i] = 1.0f;
    PlantGeometry normal, cloned;
    renderer.growBranches(normal, frame, shape);
    frame.cloned = true;
    renderer.growBranches(cloned, frame, shape);
    // Line seeds don't depend on the flag: colours and alphas stay, positions move.
    ASSERT_EQ(normal.lines().size(), cloned.lines().size());
    bool moved = false;
    for (std::size_t i = 0; i < normal.lines().size(); ++i) {
        EXPECT_EQ(normal.lines()[i].green, cloned.lines()[i].green);
        EXPECT_EQ(normal.lines()[i].blue, cloned.lines()[i].blue);
        if (normal.lines()[i].branch == 0) continue;  // branch 0's sway seed is the seed either way
        if (normal.points(normal.lines()[i]).back().x != cloned.points(cloned.lines()[i]).back().x) moved = true;
    }
    EXPECT_TRUE(moved);
}

TEST(PlantBranches, TheSameFrameGrowsTheSamePlant) {
    NorvelleProgram record;
    record.seed = 0xC0FFEE;
    for (int i = 0; i < BRANCH_COUNT; ++i) record.setParam(Param::Branch1 + i, float(i) / 11.0f);
    PlantGeometry a, b;
    views::growMainPanelPlantAtRest(record, a);
    views::growMainPanelPlantAtRest(record, b);
    views::growMainPanelPlantAtRest(record, b);  // a second frame into the same storage
    ASSERT_EQ(a.lines().size(), b.lines().size());
    ASSERT_EQ(a.pointTotal(), b.pointTotal());
    for (std::size_t i = 0; i < a.lines().size(); ++i)
        for (std::size_t k = 0; k < a.lines()[i].pointCount; ++k)
            EXPECT_EQ(a.points(a.lines()[i])[k].x, b.points(b.lines()[i])[k].x);
}

// ---------------------------------------------------------------------------
// Settings.

const char* const RENDERER_KEYS[] = {
    "gamma",           "coreSize",        "baseHue",          "hueVariation",     "minRootAlpha",
    "maxRootAlpha",    "minBranchLength", "maxBranchLength",  "twigAlpha",        "twigSegmentSize",
    "twigThreshold",   "twigNonlinearity", "twigMaxGenerations", "twigScale",     "twigScaleDistribution",
    "twigMask",        "twistMask",       "plantZoom",        "alpha",            "saturation",
    "alphaDrop"};

const char* const SHAPE_KEYS[] = {"rootMinTwist",  "rootMaxTwist",  "twigMinTwist", "twigMaxTwist",
                                  "swayMinAmount", "swayMaxAmount", "decayMax"};

std::string messageOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "(no failure)";
}

TEST(PlantSettings, DefaultsWhenNoKeyIsGiven) {
    const PlantSettings s = views::readPlantSettings(notation::parseObject("{ type: \"plant\" }"));
    EXPECT_EQ(s.gamma, 2.0);
    EXPECT_EQ(s.coreSize, 10);
    EXPECT_EQ(s.baseHue, 0.25f);
    EXPECT_EQ(s.hueVariation, 0.25f);
    EXPECT_EQ(s.minRootAlpha, 1.0f);
    EXPECT_EQ(s.maxRootAlpha, 1.0f);
    EXPECT_EQ(s.minBranchLength, 0.1f);
    EXPECT_EQ(s.maxBranchLength, 50.0f);
    EXPECT_EQ(s.twigAlpha, 1.0f);
    EXPECT_EQ(s.twigSegmentSize, 3.0f);
    EXPECT_EQ(s.twigThreshold, 0.5f);
    EXPECT_EQ(s.twigNonlinearity, 1.0f);
    EXPECT_EQ(s.twigMaxGenerations, 3);
    EXPECT_EQ(s.twigScale, 0.5f);
    EXPECT_EQ(s.twigScaleDistribution, 0.0f);
    EXPECT_EQ(s.twigMask, 0);
    EXPECT_EQ(s.twistMask, 0);
    EXPECT_EQ(s.plantZoom, 1.0f);
    EXPECT_EQ(s.alpha, 1.0f);
    EXPECT_EQ(s.saturation, 1.0f);
    EXPECT_EQ(s.alphaDrop, 1.0f);
    const views::PlantShapeSettings shape = views::readPlantShapeSettings(notation::parseObject("{}"));
    EXPECT_EQ(shape.rootMinTwist, 2.0f);
    EXPECT_EQ(shape.rootMaxTwist, 8.0f);
    EXPECT_EQ(shape.twigMinTwist, 5.0f);
    EXPECT_EQ(shape.twigMaxTwist, 10.0f);
    EXPECT_EQ(shape.swayMinAmount, 0.0f);
    EXPECT_EQ(shape.swayMaxAmount, 5.0f);
    EXPECT_EQ(shape.decayMax, 10.0f);
}

TEST(PlantSettings, TheMainPanelsValues) {
    const views::MainPanelPlant& p = views::mainPanelPlant();
    EXPECT_EQ(p.bounds, OrlPixels::IntRect(74, 146, 236, 236));
    const PlantSettings& s = p.settings;
    EXPECT_EQ(s.coreSize, 11);
    EXPECT_EQ(s.baseHue, 0.3f);
    EXPECT_EQ(s.hueVariation, 0.07f);
    EXPECT_EQ(s.saturation, 0.8f);
    EXPECT_EQ(s.alpha, 0.6f);
    EXPECT_EQ(s.alphaDrop, 0.8f);
    EXPECT_EQ(s.minRootAlpha, 0.8f);
    EXPECT_EQ(s.maxRootAlpha, 40.0f);
    EXPECT_EQ(s.twigAlpha, 0.5f);
    EXPECT_EQ(s.twigSegmentSize, 5.0f);
    EXPECT_EQ(s.twigThreshold, 1.0f);
    EXPECT_EQ(s.twigNonlinearity, 1.0f);
    EXPECT_EQ(s.twigMaxGenerations, 2);
    EXPECT_EQ(s.twigScale, 0.5f);
    EXPECT_EQ(s.twigScaleDistribution, 0.1f);
    EXPECT_EQ(s.twigMask, 2);
    EXPECT_EQ(s.twistMask, 1);
    EXPECT_EQ(s.plantZoom, 1.0f);
    EXPECT_EQ(s.minBranchLength, 12.0f);
    EXPECT_EQ(s.maxBranchLength, 50.0f);
    EXPECT_EQ(s.gamma, 2.0);
    EXPECT_EQ(p.shape.rootMinTwist, 1.0f);
    EXPECT_EQ(p.shape.rootMaxTwist, 5.0f);
    EXPECT_EQ(p.shape.twigMinTwist, 4.0f);
    EXPECT_EQ(p.shape.twigMaxTwist, 10.0f);
    EXPECT_EQ(p.shape.swayMinAmount, 0.5f);
    EXPECT_EQ(p.shape.swayMaxAmount, 4.5f);
    EXPECT_EQ(p.shape.decayMax, 15.0f);
}

TEST(PlantSettings, ExpressionsAndTheDollarSign) {
    const PlantSettings s = views::readPlantSettings(
        notation::parseObject("{ coreSize: $ + 2, maxBranchLength: $ * 2, twigMask: 1 + 2 * 3, baseHue: 10%, "
                              "plantZoom: -1.5, twistMask: -1 }"));
    EXPECT_EQ(s.coreSize, 12);
    EXPECT_EQ(s.maxBranchLength, 100.0f);
    EXPECT_EQ(s.twigMask, 7);
    EXPECT_EQ(s.baseHue, 10.0f);  // units after the number are ignored
    EXPECT_EQ(s.plantZoom, -1.5f);
    EXPECT_EQ(s.twistMask, -1);
}

TEST(PlantSettings, EveryBadKeyGivesItsReadersMessage) {
    for (const char* key : RENDERER_KEYS) {
        SCOPED_TRACE(key);
        const std::string k(key);
        EXPECT_EQ(messageOf([&] { views::readPlantSettings(notation::parseObject("{ " + k + ": nonsense }")); }),
                  "Undefined symbol: 'nonsense'");
        EXPECT_EQ(messageOf([&] { views::readPlantSettings(notation::parseObject("{ " + k + ": (1 + 2 }")); }),
                  "Expected ')'");
        EXPECT_EQ(messageOf([&] { views::readPlantSettings(notation::parseObject("{ " + k + ": 3 * }")); }),
                  "Unexpected end of string");
    }
    for (const char* key : SHAPE_KEYS) {
        SCOPED_TRACE(key);
        const std::string k(key);
        EXPECT_EQ(messageOf([&] { views::readPlantShapeSettings(notation::parseObject("{ " + k + ": twisty }")); }),
                  "Undefined symbol: 'twisty'");
        EXPECT_EQ(messageOf([&] { views::readPlantShapeSettings(notation::parseObject("{ " + k + ": 3 * }")); }),
                  "Unexpected end of string");
    }
}

TEST(PlantSettings, TheFirstBadKeyInReadingOrderIsReported) {
    // alphaDrop is read last, gamma first, whatever the text's order.
    EXPECT_EQ(messageOf([] {
                  views::readPlantSettings(notation::parseObject("{ alphaDrop: late, gamma: early, twigMask: middle }"));
              }),
              "Undefined symbol: 'early'");
    EXPECT_EQ(messageOf([] {
                  views::readPlantSettings(notation::parseObject("{ alphaDrop: late, twigMask: middle }"));
              }),
              "Undefined symbol: 'middle'");
}

// ---------------------------------------------------------------------------
// Extreme settings: bounded geometry, bounded work.

struct Extreme {
    const char* name;
    const char* keys;
    // Lengths and thresholds that keep every drawn segment within the
    // segment size, so that the reach of a point can be bounded closely;
    // otherwise the points are only required to be finite.
    bool close;
};

const Extreme EXTREMES[] = {
    {"zero lengths", "{ minBranchLength: 0, maxBranchLength: 0 }", true},
    {"huge lengths", "{ minBranchLength: 1e9, maxBranchLength: 1e9 }", true},
    {"huge lengths, every step forks, no alpha drop",
     "{ minBranchLength: 1e9, maxBranchLength: 1e9, twigMask: 0, twigMaxGenerations: 1000000, alphaDrop: 1 }", true},
    {"negative zoom", "{ plantZoom: -3, maxBranchLength: 80 }", true},
    {"masks of all ones", "{ twigMask: -1, twistMask: -1, maxBranchLength: 1e9 }", true},
    {"masks of the top bits", "{ twigMask: 2147483647, twistMask: 2147483647 }", true},
    {"growing twigs", "{ twigScale: 3, twigMaxGenerations: 50, alphaDrop: 1, twigMask: 0 }", true},
    {"huge alpha and saturation", "{ maxRootAlpha: 1e30, alpha: 1e30, saturation: -5, alphaDrop: 1.5 }", true},
    {"huge zoom", "{ plantZoom: 1e30 }", true},
    {"huge core", "{ coreSize: 2000000000 }", true},
    {"negative twigs", "{ twigScale: -2, twigMaxGenerations: 5, alphaDrop: 1 }", false},
    {"no threshold", "{ twigThreshold: -1e9, alphaDrop: 1, maxBranchLength: 1e9 }", false},
    {"zero segments", "{ twigSegmentSize: 0, minBranchLength: 0, maxBranchLength: 0, alphaDrop: 1 }", false},
    {"not a number", "{ maxBranchLength: 1e39 - 1e39, twigSegmentSize: 1e39 - 1e39, alphaDrop: 1 }", false},
};

TEST(PlantExtremes, EveryExtremeSettingGrowsABoundedPlantInBoundedWork) {
    for (const Extreme& e : EXTREMES) {
        SCOPED_TRACE(e.name);
        const PlantSettings s = views::readPlantSettings(notation::parseObject(e.keys));
        PlantRenderer renderer(s);
        renderer.seed = 1234;
        renderer.twigTwist = 10.0f;
        views::PlantShapeSettings shape;
        views::PlantFrame frame = centredFrame();
        frame.rootTwist = 5.0f;
        for (int i = 0; i < BRANCH_COUNT; ++i) frame.shown[i] = float(i) / 11.0f, frame.level[i] = 0.5f;
        PlantGeometry g;
        renderer.growBranches(g, frame, shape);
        EXPECT_LE(renderer.stepsTaken(), PlantRenderer::FRAME_STEP_BUDGET);
        // Every line has 2 to 64 points. Where segments stay within the
        // segment size, a step moves a point by at most |zoom * segment size|
        // on each axis (|wave| <= 1), and a point is at most 64 steps of each
        // generation away from its branch's start on the core.
        const double stride = std::fabs(double(s.plantZoom) * double(s.twigSegmentSize));
        const double core = std::fabs(double(s.coreSize) * double(s.plantZoom));
        const bool finiteSettings = std::isfinite(stride) && std::isfinite(core);
        std::size_t points = 0;
        for (const PlantLine& l : g.lines()) {
            ASSERT_GE(l.pointCount, 2u);
            ASSERT_LE(l.pointCount, 64u);
            ASSERT_LE(l.generation, PlantRenderer::MAX_TWIG_GENERATION);
            points += l.pointCount;
            const double reach = core + stride * 64.0 * (l.generation + 1);
            for (const PlantPoint& p : g.points(l)) {
                if (!finiteSettings) continue;
                ASSERT_TRUE(std::isfinite(p.x) && std::isfinite(p.y));
                if (!e.close) continue;
                ASSERT_LE(std::fabs(p.x - 192.0), reach * (1 + 1e-6) + 1e-6);
                ASSERT_LE(std::fabs(p.y - 264.0), reach * (1 + 1e-6) + 1e-6);
            }
            for (const auto& piece : g.pieces(l)) {
                ASSERT_LT(piece.first, piece.last);
                ASSERT_LT(std::size_t(piece.last), l.pointCount);
            }
        }
        // The points of a frame are bounded by its steps: each step adds at
        // most one point, and each line at most one more.
        EXPECT_LE(points, std::size_t(2 * renderer.stepsTaken()));
    }
}

}  // namespace
