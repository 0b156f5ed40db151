// tendrane inspect: the JSON carries every record field, every deviation and,
// per branch, the effective length, the mutated genes and every decoded
// coefficient; the record options build and adjust the record.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/RecordJson.h"
#include "cli/RecordOptions.h"
#include "engine/BranchDecoder.h"
#include "engine/BranchParams.h"
#include "patch/NorvelleProgram.h"
#include "patch/ProgramText.h"

namespace {

// ---------------------------------------------------------------------------
// A small strict JSON reader, enough to walk the output.

struct Json {
    enum Kind { Null, Bool, Number, String, Array, Object } kind = Null;
    bool boolean = false;
    std::string text;  // the number's text or the string's content
    std::vector<Json> items;
    struct Member;  // a key and its value, complete once Json is
    std::vector<Member> members;

    const Json& operator[](const std::string& key) const;
    bool has(const std::string& key) const;
    float number() const {
        if (kind != Number) throw std::runtime_error("not a number");
        return std::strtof(text.c_str(), nullptr);
    }
};

struct Json::Member {
    std::string first;
    Json second;
};

const Json& Json::operator[](const std::string& key) const {
    for (const auto& m : members)
        if (m.first == key) return m.second;
    throw std::runtime_error("no member " + key);
}

bool Json::has(const std::string& key) const {
    for (const auto& m : members)
        if (m.first == key) return true;
    return false;
}

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
    bool literal(const char* word) {
        const std::string w(word);
        if (s_.compare(i_, w.size(), w) == 0) {
            i_ += w.size();
            return true;
        }
        return false;
    }
    std::string string() {
        expect('"');
        std::string out;
        while (i_ < s_.size() && s_[i_] != '"') {
            if (s_[i_] == '\\') {
                ++i_;
                if (i_ >= s_.size()) fail("bad escape");
                out += s_[i_] == 'n' ? '\n' : s_[i_];
            } else {
                out += s_[i_];
            }
            ++i_;
        }
        expect('"');
        return out;
    }
    Json value() {
        space();
        if (i_ >= s_.size()) fail("end of text");
        Json v;
        const char c = s_[i_];
        if (c == '{') {
            v.kind = Json::Object;
            ++i_;
            space();
            if (s_[i_] == '}') {
                ++i_;
                return v;
            }
            do {
                std::string key = string();
                expect(':');
                v.members.push_back({key, value()});
                space();
            } while (s_[i_] == ',' && ++i_);
            expect('}');
        } else if (c == '[') {
            v.kind = Json::Array;
            ++i_;
            space();
            if (s_[i_] == ']') {
                ++i_;
                return v;
            }
            do {
                v.items.push_back(value());
                space();
            } while (s_[i_] == ',' && ++i_);
            expect(']');
        } else if (c == '"') {
            v.kind = Json::String;
            v.text = string();
        } else if (literal("true")) {
            v.kind = Json::Bool;
            v.boolean = true;
        } else if (literal("false")) {
            v.kind = Json::Bool;
        } else if (literal("null")) {
            v.kind = Json::Null;
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

// Runs the command in-process and returns what it printed.
std::string inspect(const std::vector<std::string>& args) {
    testing::internal::CaptureStdout();
    int status = -1;
    try {
        status = cli::runInspect(args);
    } catch (...) {
        testing::internal::GetCapturedStdout();
        throw;
    }
    std::fflush(stdout);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, 0);
    return out;
}

NorvelleProgram buildFrom(const std::vector<std::string>& args, const std::string& file = "") {
    cli::Options options(cli::recordOptionSpecs());
    options.parse(args);
    return cli::buildRecord(options, file);
}

// ---------------------------------------------------------------------------

TEST(Inspect, JsonCarriesEveryRecordField) {
    const Json doc = parse(inspect({}));
    ASSERT_EQ(doc.kind, Json::Object);
    for (const char* key : {"name", "implementation", "seed", "cloned", "pitch", "modified", "params", "genes",
                            "branchDeviations", "branches"})
        EXPECT_TRUE(doc.has(key)) << key;
    EXPECT_EQ(doc["name"].text, "Init");
    EXPECT_EQ(doc["implementation"].text, "10");
    EXPECT_EQ(doc["seed"].text, "1");
    EXPECT_FALSE(doc["cloned"].boolean);
    EXPECT_EQ(doc["cloned"].kind, Json::Bool);
    EXPECT_EQ(doc["pitch"].number(), 0.0f);
    EXPECT_EQ(doc["modified"].kind, Json::Bool);
    EXPECT_FALSE(doc["modified"].boolean);

    const Json& params = doc["params"];
    ASSERT_EQ(params.members.size(), std::size_t(PARAM_COUNT));
    for (int i = 0; i < PARAM_COUNT; ++i) {
        EXPECT_EQ(params.members[i].first, PARAMETER_TABLE[i].name);
        EXPECT_EQ(params.members[i].second.number(), PARAMETER_TABLE[i].initValue);
    }
    const Json& genes = doc["genes"];
    ASSERT_EQ(genes.members.size(), std::size_t(GENE_COUNT));
    for (int i = 0; i < GENE_COUNT; ++i) {
        EXPECT_EQ(genes.members[i].first, GENE_TABLE[i].name);
        EXPECT_EQ(genes.members[i].second.number(), 0.5f);
    }
}

TEST(Inspect, DeviationsAreTwelveRowsOf36AndReadBackExactly) {
    const NorvelleProgram record;
    const Json doc = parse(inspect({}));
    const Json& rows = doc["branchDeviations"];
    ASSERT_EQ(rows.items.size(), std::size_t(BRANCH_COUNT));
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        ASSERT_EQ(rows.items[k].items.size(), std::size_t(MUTABLE_GENE_COUNT));
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i)
            EXPECT_EQ(rows.items[k].items[i].number(), record.branchDeviations[k][i]) << k << " " << i;
    }
}

TEST(Inspect, EachBranchHasLengthGenesAndEveryDecodedField) {
    // Branch lengths and a gene away from the middle, at 48000 Hz.
    const std::vector<std::string> args = {"--param", "Branch1=0.25", "--param", "Branch7=1", "--param",
                                           "Atonality=0.8", "--gene", "a_form=0.9", "--rate", "48000"};
    const Json doc = parse(inspect(args));
    const NorvelleProgram record = buildFrom({"--param", "Branch1=0.25", "--param", "Branch7=1", "--param",
                                              "Atonality=0.8", "--gene", "a_form=0.9"});
    const Json& branches = doc["branches"];
    ASSERT_EQ(branches.items.size(), std::size_t(BRANCH_COUNT));
    for (int k = 0; k < BRANCH_COUNT; ++k) {
        const Json& b = branches.items[k];
        EXPECT_EQ(b["length"].number(), effectiveLength(record, k)) << k;
        engine::BranchDecoder decoder(k);
        decoder.update(record, effectiveLength(record, k), 0.8f, 0.0f, 48000.0f);
        const Json& genes = b["genes"];
        ASSERT_EQ(genes.members.size(), std::size_t(MUTABLE_GENE_COUNT));
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) {
            EXPECT_EQ(genes.members[i].first, GENE_TABLE[i].name);
            EXPECT_EQ(genes.members[i].second.number(), decoder.genes()[i]) << k << " " << i;
        }
        const Json& params = b["params"];
        ASSERT_EQ(params.members.size(), engine::kBranchParamsFieldCount);
        for (std::size_t f = 0; f < engine::kBranchParamsFieldCount; ++f) {
            const engine::BranchParamsField& field = engine::kBranchParamsFields[f];
            EXPECT_EQ(params.members[f].first, field.name);
            EXPECT_EQ(params.members[f].second.number(), decoder.params().*field.member) << k << " " << field.name;
        }
    }
    EXPECT_EQ(branches.items[0]["length"].number(), 0.25f);
    EXPECT_EQ(branches.items[6]["length"].number(), 1.0f);
    // A branch that has grown sounds different from one that hasn't.
    EXPECT_NE(branches.items[6]["genes"]["env_time"].number(), 0.5f);
    EXPECT_EQ(branches.items[1]["genes"]["a_form"].number(), 0.9f);
}

TEST(Inspect, RateDefaultsTo44100AndChangesTheFrequencies) {
    const float at44 = parse(inspect({}))["branches"].items[0]["params"]["aFreq"].number();
    const float at48 = parse(inspect({"--rate", "48000"}))["branches"].items[0]["params"]["aFreq"].number();
    EXPECT_FLOAT_EQ(at44, 261.6256f / 44100.0f);
    EXPECT_FLOAT_EQ(at48, 261.6256f / 48000.0f);
}

TEST(Inspect, FloatsPrintWithNineSignificantDigits) {
    EXPECT_EQ(cli::jsonFloat(0.1f), "0.100000001");
    EXPECT_EQ(cli::jsonFloat(261.6256f / 44100.0f), "0.00593255367");
    EXPECT_EQ(cli::jsonFloat(0.0f), "0");
    EXPECT_EQ(cli::jsonFloat(INFINITY), "null");
    EXPECT_EQ(cli::jsonString("a\"b\\c\n"), "\"a\\\"b\\\\c\\n\"");
}

TEST(Inspect, SeedClonedAndImplementationOptionsShowAndRecomputeTheRows) {
    const Json doc = parse(inspect({"--seed", "4000000000", "--cloned", "--implementation", "3", "--pitch", "-1.5"}));
    EXPECT_EQ(doc["seed"].text, "4000000000");
    EXPECT_TRUE(doc["cloned"].boolean);
    EXPECT_EQ(doc["implementation"].text, "3");
    EXPECT_EQ(doc["pitch"].number(), -1.5f);
    EXPECT_TRUE(doc["modified"].boolean);
    const Json& rows = doc["branchDeviations"];
    for (int k = 1; k < BRANCH_COUNT; ++k)
        for (int i = 0; i < MUTABLE_GENE_COUNT; ++i)
            EXPECT_EQ(rows.items[k].items[i].text, rows.items[0].items[i].text) << k << " " << i;
    // Implementation 3 has no deviation on mod_vel (9) and flt_kf (31).
    EXPECT_EQ(rows.items[0].items[9].number(), 0.0f);
    EXPECT_EQ(rows.items[0].items[31].number(), 0.0f);

    NorvelleProgram expected;
    expected.seed = 4000000000u;
    expected.cloned = true;
    expected.implementation = 3;
    expected.computeBranchDeviations();
    for (int i = 0; i < MUTABLE_GENE_COUNT; ++i) EXPECT_EQ(rows.items[5].items[i].number(), expected.branchDeviations[5][i]);
}

TEST(Inspect, GeneAndParamOptionsApplyInOrder) {
    const NorvelleProgram r = buildFrom({"--gene", "a_freq=1", "--gene", "fx_size=0", "--param", "ModWheel=0.5",
                                         "--gene", "a_freq=0.25"});
    EXPECT_EQ(r.genes[Gene::a_freq], 0.25f);
    EXPECT_EQ(r.genes[Gene::fx_size], 0.0f);
    EXPECT_EQ(r.param(Param::ModWheel), 0.5f);
    EXPECT_TRUE(r.modified);
    EXPECT_EQ(effectiveLength(r, 4), 0.5f);  // 0 + (1 - 0) * (0.5 * 1)
}

TEST(Inspect, InitWithoutChangesIsNotModified) {
    const NorvelleProgram r = buildFrom({"--init"});
    EXPECT_FALSE(r.modified);
    EXPECT_EQ(r.seed, 1u);
    // Setting a value to what it already is changes nothing.
    EXPECT_FALSE(buildFrom({"--gene", "a_form=0.5", "--seed", "1"}).modified);
}

TEST(Inspect, UnknownNamesAndBadValuesAreClearErrors) {
    auto usageError = [](const std::vector<std::string>& args, const std::string& part) {
        try {
            buildFrom(args);
        } catch (const cli::UsageError& e) {
            EXPECT_NE(std::string(e.what()).find(part), std::string::npos) << e.what();
            return;
        }
        ADD_FAILURE() << "no error for " << args[0] << " " << args[1];
    };
    usageError({"--gene", "a_frq=0.5"}, "unknown gene 'a_frq'");
    usageError({"--param", "Modwheel=0.5"}, "unknown parameter 'Modwheel'");
    usageError({"--gene", "a_freq=1.5"}, "from 0 to 1");
    usageError({"--param", "Volume=-0.1"}, "from 0 to 1");
    usageError({"--gene", "a_freq"}, "NAME=VALUE");
    usageError({"--gene", "a_freq=x"}, "needs a number");
    usageError({"--seed", "0"}, "from 1 to 4294967295");
    usageError({"--seed", "4294967296"}, "from 1 to 4294967295");
    usageError({"--implementation", "11"}, "from 0 to 10");
    usageError({"--implementation", "-1"}, "from 0 to 10");
    EXPECT_THROW(inspect({"--rate", "0"}), cli::UsageError);
    EXPECT_THROW(inspect({"--rate", "-44100"}), cli::UsageError);
    EXPECT_THROW(inspect({"--rate", "1e-50"}), cli::UsageError);  // no rate left in 32 bits
    EXPECT_THROW(inspect({"a.tdrn", "b.tdrn"}), cli::UsageError);
    EXPECT_THROW(inspect({"--bogus"}), cli::UsageError);
}

// A patch file written in the patch text, under the test's temporary folder.
std::string writePatchFile(const NorvelleProgram& record, const std::string& name) {
    const std::string path = (std::filesystem::path(testing::TempDir()) / name).string();
    std::ofstream out(path, std::ios::binary);
    out << withCrLf(writeProgramText(record, true));
    return path;
}

TEST(Inspect, ReadsAPatchFileAndAppliesTheOptionsOnTop) {
    NorvelleProgram saved;
    saved.setName(u"Glass Reed");
    saved.seed = 31337;
    saved.implementation = 6;
    saved.setGene(Gene::b_freq, 0.75f);
    saved.setParam(Param::Branch4, 0.5f);
    saved.computeBranchDeviations();
    saved.modified = false;
    const std::string file = writePatchFile(saved, "inspect-glass-reed.tdrn");

    const Json doc = parse(inspect({file}));
    EXPECT_EQ(doc["name"].text, "Glass Reed");
    EXPECT_EQ(doc["seed"].text, "31337");
    EXPECT_EQ(doc["implementation"].text, "6");
    EXPECT_FALSE(doc["modified"].boolean);
    EXPECT_EQ(doc["genes"]["b_freq"].number(), 0.75f);
    EXPECT_EQ(doc["branches"].items[3]["length"].number(), 0.5f);
    EXPECT_EQ(doc["branchDeviations"].items[2].items[7].number(), saved.branchDeviations[2][7]);
    // B two octaves above A on the plain branches.
    const Json& plain = doc["branches"].items[0]["params"];
    EXPECT_FLOAT_EQ(plain["bFreq"].number(), 4.0f * plain["aFreq"].number());

    const Json over = parse(inspect({file, "--gene", "b_freq=0.5", "--seed", "99", "--rate", "96000"}));
    EXPECT_EQ(over["name"].text, "Glass Reed");
    EXPECT_EQ(over["seed"].text, "99");
    EXPECT_TRUE(over["modified"].boolean);
    const Json& changed = over["branches"].items[0]["params"];
    EXPECT_FLOAT_EQ(changed["aFreq"].number(), 261.6256f / 96000.0f);
    EXPECT_FLOAT_EQ(changed["bFreq"].number(), 0.5f * changed["aFreq"].number());
    std::filesystem::remove(file);
}

TEST(Inspect, MissingFileAndFileWithInitAreErrors) {
    try {
        inspect({"/no/such/folder/patch.tdrn"});
        ADD_FAILURE() << "no error for a missing file";
    } catch (const std::exception& e) {
        EXPECT_NE(std::string(e.what()).find("Error opening file"), std::string::npos) << e.what();
    }
    const std::string file = writePatchFile(NorvelleProgram(), "inspect-init.tdrn");
    EXPECT_THROW(inspect({file, "--init"}), cli::UsageError);
    std::filesystem::remove(file);
}

}  // namespace
