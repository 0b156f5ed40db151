// tendrane inspect --plant: the main panel's plant of the patch at rest is
// added as "plant" with its lines in drawing order; the numbers read back to
// exactly the renderer's geometry; the plant of the Init patch and of two
// factory patches is pinned by golden files.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/PlantJson.h"
#include "cli/RecordOptions.h"
#include "patch/NorvelleProgram.h"
#include "patch/ProgramText.h"
#include "views/PlantMainPanel.h"

namespace {

const std::string SOURCE = TENDRANE_SOURCE_DIR;

// ---------------------------------------------------------------------------
// A small strict JSON reader, enough to walk the plant.

struct Json {
    enum Kind { Null, Bool, Number, String, Array, Object } kind = Null;
    std::string text;  // a number's text or a string's content
    std::vector<Json> items;
    std::vector<std::pair<std::string, Json>> members;

    const Json& operator[](const std::string& key) const {
        for (const auto& m : members)
            if (m.first == key) return m.second;
        throw std::runtime_error("no member " + key);
    }
    bool has(const std::string& key) const {
        for (const auto& m : members)
            if (m.first == key) return true;
        return false;
    }
    double number() const {
        if (kind != Number) throw std::runtime_error("not a number");
        return std::strtod(text.c_str(), nullptr);
    }
    float single() const {
        if (kind != Number) throw std::runtime_error("not a number");
        return std::strtof(text.c_str(), nullptr);
    }
    int integer() const { return std::stoi(text); }
};

class JsonReader {
public:
    explicit JsonReader(const std::string& s) : s_(s) {}
    Json document() {
        Json v = value();
        space();
        if (i_ != s_.size()) fail("trailing text");
        return v;
    }

private:
    [[noreturn]] void fail(const std::string& what) { throw std::runtime_error(what + " at " + std::to_string(i_)); }
    void space() {
        while (i_ < s_.size() && (s_[i_] == ' ' || s_[i_] == '\n' || s_[i_] == '\t' || s_[i_] == '\r')) ++i_;
    }
    void expect(char c) {
        space();
        if (i_ >= s_.size() || s_[i_] != c) fail(std::string("expected ") + c);
        ++i_;
    }
    bool peek(char c) {
        space();
        return i_ < s_.size() && s_[i_] == c;
    }
    std::string string() {
        expect('"');
        std::string out;
        while (i_ < s_.size() && s_[i_] != '"') {
            if (s_[i_] == '\\') ++i_;
            if (i_ < s_.size()) out += s_[i_++];
        }
        expect('"');
        return out;
    }
    Json value() {
        space();
        if (i_ >= s_.size()) fail("end of text");
        Json v;
        if (s_[i_] == '{') {
            v.kind = Json::Object;
            ++i_;
            if (peek('}')) return ++i_, v;
            do {
                std::string key = string();
                expect(':');
                v.members.emplace_back(key, value());
            } while (peek(',') && ++i_);
            expect('}');
        } else if (s_[i_] == '[') {
            v.kind = Json::Array;
            ++i_;
            if (peek(']')) return ++i_, v;
            do v.items.push_back(value());
            while (peek(',') && ++i_);
            expect(']');
        } else if (s_[i_] == '"') {
            v.kind = Json::String;
            v.text = string();
        } else if (s_.compare(i_, 4, "null") == 0) {
            i_ += 4;
        } else if (s_.compare(i_, 4, "true") == 0 || s_.compare(i_, 5, "false") == 0) {
            v.kind = Json::Bool;
            i_ += s_[i_] == 't' ? 4 : 5;
        } else {
            v.kind = Json::Number;
            const std::size_t start = i_;
            while (i_ < s_.size() && std::string("+-0123456789.eE").find(s_[i_]) != std::string::npos) ++i_;
            if (i_ == start) fail("unexpected character");
            v.text = s_.substr(start, i_ - start);
        }
        return v;
    }

    const std::string& s_;
    std::size_t i_ = 0;
};

Json parse(const std::string& text) { return JsonReader(text).document(); }

std::string inspect(const std::vector<std::string>& args) {
    testing::internal::CaptureStdout();
    int status = -1;
    try {
        status = cli::runInspect(args);
    } catch (...) {
        testing::internal::GetCapturedStdout();
        throw;
    }
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, 0);
    return out;
}

// The text of the "plant" member as the command printed it.
std::string plantText(const std::string& out) {
    const std::string head = "\n  \"plant\": ";
    const std::size_t at = out.find(head);
    if (at == std::string::npos) return {};
    const std::string tail = "\n}\n";
    if (out.size() < at + head.size() + tail.size() || out.compare(out.size() - tail.size(), tail.size(), tail) != 0)
        return {};
    return out.substr(at + head.size(), out.size() - tail.size() - at - head.size()) + "\n";
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Every printed line against the renderer's own geometry for the record:
// doubles printed with 17 digits and floats with 9 read back to the same bits.
void expectPlantOf(const Json& plant, const NorvelleProgram& record) {
    views::PlantGeometry geometry;
    views::growMainPanelPlantAtRest(record, geometry);
    const Json& lines = plant["lines"];
    ASSERT_EQ(lines.items.size(), geometry.lines().size());
    for (std::size_t i = 0; i < lines.items.size(); ++i) {
        SCOPED_TRACE("line " + std::to_string(i));
        const Json& line = lines.items[i];
        const views::PlantLine& want = geometry.lines()[i];
        EXPECT_EQ(line["branch"].integer(), want.branch);
        EXPECT_EQ(line["generation"].integer(), want.generation);
        ASSERT_EQ(line["color"].items.size(), 3u);
        EXPECT_EQ(line["color"].items[0].integer(), want.red);
        EXPECT_EQ(line["color"].items[1].integer(), want.green);
        EXPECT_EQ(line["color"].items[2].integer(), want.blue);
        EXPECT_EQ(line["alpha"].single(), want.alpha);
        const auto points = geometry.points(want);
        ASSERT_EQ(line["points"].items.size(), points.size());
        for (std::size_t k = 0; k < points.size(); ++k) {
            ASSERT_EQ(line["points"].items[k].items.size(), 2u);
            EXPECT_EQ(line["points"].items[k].items[0].number(), points[k].x);
            EXPECT_EQ(line["points"].items[k].items[1].number(), points[k].y);
        }
        const auto pieces = geometry.pieces(want);
        ASSERT_EQ(line["pieces"].items.size(), pieces.size());
        for (std::size_t k = 0; k < pieces.size(); ++k) {
            EXPECT_EQ(line["pieces"].items[k].items[0].integer(), pieces[k].first);
            EXPECT_EQ(line["pieces"].items[k].items[1].integer(), pieces[k].last);
            EXPECT_EQ(line["pieces"].items[k].items[2].integer(), pieces[k].byte);
        }
    }
}

TEST(InspectPlant, WithoutTheOptionThereIsNoPlant) {
    const Json doc = parse(inspect({}));
    EXPECT_FALSE(doc.has("plant"));
    EXPECT_TRUE(doc.has("branches"));
}

TEST(InspectPlant, AddsThePlantAfterTheRestOfTheInspection) {
    const Json doc = parse(inspect({"--plant"}));
    ASSERT_TRUE(doc.has("plant"));
    EXPECT_TRUE(doc.has("branches"));
    EXPECT_EQ(doc.members.back().first, "plant");
    EXPECT_EQ(doc["plant"].members.size(), 1u);
    expectPlantOf(doc["plant"], NorvelleProgram());
}

TEST(InspectPlant, EachLineHasTwoPointsOrMoreAndPiecesFromFirstToLast) {
    const Json doc = parse(inspect({"--seed", "31337", "--param", "Branch3=0.9", "--param", "ModWheel=0.3"}));
    EXPECT_FALSE(doc.has("plant"));
    const Json plant = parse(inspect({"--seed", "31337", "--param", "Branch3=0.9", "--param", "ModWheel=0.3",
                                      "--plant"}))["plant"];
    ASSERT_FALSE(plant["lines"].items.empty());
    int previousBranch = 0;
    for (const Json& line : plant["lines"].items) {
        const int branch = line["branch"].integer();
        EXPECT_GE(branch, previousBranch);  // branches in order, twigs before their parent line
        previousBranch = branch;
        EXPECT_LE(branch, 11);
        EXPECT_GE(line["generation"].integer(), 0);
        EXPECT_LE(line["generation"].integer(), 2);
        const std::size_t n = line["points"].items.size();
        ASSERT_GE(n, 2u);
        ASSERT_LE(n, 64u);
        // The pieces run through the line: each starts where the last ended.
        int at = 0;
        for (const Json& piece : line["pieces"].items) {
            EXPECT_EQ(piece.items[0].integer(), at);
            EXPECT_GT(piece.items[1].integer(), at);
            at = piece.items[1].integer();
            EXPECT_LE(piece.items[2].integer(), 255);
        }
        EXPECT_EQ(at, int(n) - 1);
    }
    // A generation 0 line of every branch: none is too short at the panel's
    // shortest length of 12 steps.
    std::vector<int> roots(12, 0);
    for (const Json& line : plant["lines"].items)
        if (line["generation"].integer() == 0) ++roots[line["branch"].integer()];
    EXPECT_EQ(roots, std::vector<int>(12, 1));
}

TEST(InspectPlant, ThePlantFollowsTheRecordOptions) {
    NorvelleProgram record;
    record.seed = 31337;
    record.setParam(Param::Branch3, 0.9f);
    record.setParam(Param::ModWheel, 0.3f);
    record.setParam(Param::Atonality, 0.8f);
    record.cloned = true;
    record.computeBranchDeviations();
    const Json doc = parse(inspect({"--seed", "31337", "--param", "Branch3=0.9", "--param", "ModWheel=0.3", "--param",
                                    "Atonality=0.8", "--cloned", "--plant"}));
    expectPlantOf(doc["plant"], record);
}

TEST(InspectPlant, RotationIsWrappedIntoOneTurn) {
    // Rotation 0.5 is 180 degrees: branch 0's angle is 90 degrees, u = (0, 1),
    // its start c - u * 11 = (192, 253), above the seed.
    const Json half = parse(inspect({"--param", "Rotation=0.5", "--plant"}))["plant"];
    bool found = false;
    for (const Json& line : half["lines"].items) {
        if (line["branch"].integer() != 0 || line["generation"].integer() != 0) continue;
        // 0.017453292 is a little less than pi / 180: cos(90 * 0.017453292) is
        // 4.7e-8, not 0.
        EXPECT_NEAR(line["points"].items[0].items[0].number(), 192.0, 1e-6);
        EXPECT_EQ(line["points"].items[0].items[1].number(), 253.0);
        found = true;
    }
    EXPECT_TRUE(found);
    // Rotation 1 is 360 degrees, that is 0.
    EXPECT_EQ(plantText(inspect({"--param", "Rotation=1", "--plant"})), plantText(inspect({"--plant"})));
}

TEST(InspectPlant, HelpNamesTheOption) {
    const std::string usage = cli::kInspectUsage;
    EXPECT_NE(usage.find("--plant"), std::string::npos);
    EXPECT_NE(usage.find("[--plant]"), std::string::npos);
}

TEST(InspectPlant, DoublesPrintWith17Digits) {
    EXPECT_EQ(cli::jsonDouble(192.0), "192");
    EXPECT_EQ(cli::jsonDouble(0.1), "0.10000000000000001");
    EXPECT_EQ(cli::jsonDouble(std::numeric_limits<double>::infinity()), "null");
}

// Golden plants. The files were written by this command (only the text of
// the "plant" member) after the hand-derived and independently derived unit
// tests of tests/views/PlantRendererTest.cpp passed; they pin the plant of
// the Init patch and of the factory patches "Aurora Tacita" (Factory3) and
// "Ventus Ruinae" (Factory15), so that no change of the plant's look goes
// unnoticed.
struct GoldenCase {
    const char* file;
    std::vector<std::string> args;
};

TEST(InspectPlant, GoldenPlantsOfTheInitAndTwoFactoryPatches) {
    const GoldenCase cases[] = {
        {"init.json", {"--plant"}},
        {"factory3.json", {SOURCE + "/resources/patches/Factory3.tdrn", "--plant"}},
        {"factory15.json", {SOURCE + "/resources/patches/Factory15.tdrn", "--plant"}},
    };
    for (const GoldenCase& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string golden = readFile(SOURCE + "/tests/golden/plant/" + c.file);
        ASSERT_FALSE(golden.empty());
        const std::string printed = plantText(inspect(c.args));
        ASSERT_FALSE(printed.empty());
        EXPECT_TRUE(printed == golden) << "the plant differs from tests/golden/plant/" << c.file;
        // And it is well-formed JSON with lines.
        EXPECT_FALSE(parse(golden)["lines"].items.empty());
    }
}

}  // namespace
