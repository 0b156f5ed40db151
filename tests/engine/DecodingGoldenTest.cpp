// Decoded coefficients of a few whole genomes, against tests/golden/decoding/
// decoded.txt. Those values come from reference.py next to it: a second,
// separate reading of the gene curves in Python, rounding every operation to
// 32-bit float. Transcendental functions and the processor's reciprocal
// square-root estimate may differ in their last bits, so each value may be a
// few units in the last place away; where a value is a difference of two
// larger ones (the modulation rises), the allowance is taken from the larger.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "engine/BranchParams.h"
#include "engine/GeneDecoding.h"

namespace {

struct GoldenCase {
    std::string name;
    std::vector<float> genes;
    float fxSize = 0.0f;
    float effect = 0.0f;
    float rate = 0.0f;
    std::map<std::string, float> expected;
};

std::vector<GoldenCase> readGolden() {
    std::ifstream in(std::string(TENDRANE_SOURCE_DIR) + "/tests/golden/decoding/decoded.txt");
    std::vector<GoldenCase> cases;
    GoldenCase current;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream words(line);
        std::string key;
        words >> key;
        if (key == "genome") {
            current = GoldenCase();
            words >> current.name;
        } else if (key == "genes") {
            float g;
            while (words >> g) current.genes.push_back(g);
        } else if (key == "fxSize") {
            words >> current.fxSize;
        } else if (key == "effect") {
            words >> current.effect;
        } else if (key == "rate") {
            words >> current.rate;
        } else if (key == "end") {
            cases.push_back(current);
        } else {
            float v;
            words >> v;
            current.expected[key] = v;
        }
    }
    return cases;
}

// Distance in units of the last place of `reference`.
double ulpsApart(float got, float want, float reference) {
    const float magnitude = std::max(std::fabs(want), std::fabs(reference));
    if (magnitude == 0.0f) return got == 0.0f ? 0.0 : 1e30;
    const float ulp = std::nextafter(magnitude, INFINITY) - magnitude;
    return std::fabs(double(got) - double(want)) / ulp;
}

// The fields that are the difference of a top value and a base value: their
// last place is that of the larger operand.
float operandScale(const std::string& field, const engine::BranchParams& p) {
    if (field == "aFreqMod") return p.aFreq + p.aFreqMod;
    if (field == "bFreqMod") return p.bFreq + p.bFreqMod;
    if (field == "filterFreqMod") return p.filterFreq + p.filterFreqMod;
    if (field == "fmDepthMod") return std::max(std::fabs(p.fmDepth), std::fabs(p.fmDepth + p.fmDepthMod));
    if (field == "aNoiseCoef") return 1.0f;
    return 0.0f;
}

TEST(DecodingGolden, GenomesDecodeAsTheReferenceReadsThem) {
    const std::vector<GoldenCase> cases = readGolden();
    ASSERT_EQ(cases.size(), 10u) << "five genomes at two rates";
    for (const GoldenCase& c : cases) {
        ASSERT_EQ(c.genes.size(), 36u) << c.name;
        ASSERT_EQ(c.expected.size(), engine::kBranchParamsFieldCount) << c.name;
        const engine::BranchParams p = engine::decodeGenes(c.genes.data(), c.fxSize, c.effect, c.rate);
        for (const engine::BranchParamsField& field : engine::kBranchParamsFields) {
            const auto it = c.expected.find(field.name);
            ASSERT_NE(it, c.expected.end()) << c.name << " lacks " << field.name;
            const float got = p.*field.member;
            const double apart = ulpsApart(got, it->second, operandScale(field.name, p));
            EXPECT_LE(apart, 4.0) << c.name << " at " << c.rate << " Hz: " << field.name << " = " << got
                                  << ", expected " << it->second;
        }
    }
}

}  // namespace
