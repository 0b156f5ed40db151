#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include "patch/NorvelleProgram.h"
#include "patch/ProgramText.h"
#include "patch/ProgramTextEscape.h"
#include "platform/Exceptions.h"

namespace {

const char* const kInitFileText =
    "TendranePatch: {\n"
    "\tVersion: 10\n"
    "\tImplementation: 10\n"
    "\tName: 'Init'\n"
    "\tModWheel: 0.00000000 %\n"
    "\tRotation: 0.00000000 degrees\n"
    "\tTuning: +0.00000000 ct \n"
    "\tAtonality: 50.00000000 %\n"
    "\tEffect: 0.00000000 %\n"
    "\tRelease: 223.60679775 ms \n"
    "\tWheelScale: 100.00000000 %\n"
    "\tVelSens: 50.00000000 %\n"
    "\tVolume: 0.00000000 dB\n"
    "\tBranch1: 0.00000000 %\n"
    "\tBranch2: 0.00000000 %\n"
    "\tBranch3: 0.00000000 %\n"
    "\tBranch4: 0.00000000 %\n"
    "\tBranch5: 0.00000000 %\n"
    "\tBranch6: 0.00000000 %\n"
    "\tBranch7: 0.00000000 %\n"
    "\tBranch8: 0.00000000 %\n"
    "\tBranch9: 0.00000000 %\n"
    "\tBranch10: 0.00000000 %\n"
    "\tBranch11: 0.00000000 %\n"
    "\tBranch12: 0.00000000 %\n"
    "\tSeed: 0x00000001\n"
    "\tPitch: 0.00000000\n"
    "\tCloned: false\n"
    "\tGenome: {\n"
    "\t\tenv_time: 0.50000000,\n\t\tenv_loop: 0.50000000,\n\t\tenv_tilt: 0.50000000,\n"
    "\t\tvol_atk: 0.50000000,\n\t\tvol_dcy: 0.50000000,\n\t\tvol_sus: 0.50000000,\n"
    "\t\tmod_atk: 0.50000000,\n\t\tmod_dcy: 0.50000000,\n\t\tmod_sh: 0.50000000,\n"
    "\t\tmod_vel: 0.50000000,\n\t\tlfo_rate: 0.50000000,\n\t\tlfo_amt: 0.50000000,\n"
    "\t\tlfo_bal: 0.50000000,\n\t\ta_form: 0.50000000,\n\t\ta_noise: 0.50000000,\n"
    "\t\ta_color: 0.50000000,\n\t\ta_freq: 0.50000000,\n\t\ta_mod: 0.50000000,\n"
    "\t\tb_form: 0.50000000,\n\t\tb_noise: 0.50000000,\n\t\tb_freq: 0.50000000,\n"
    "\t\tb_mod: 0.50000000,\n\t\tb_sh: 0.50000000,\n\t\tfm_amt: 0.50000000,\n"
    "\t\tfm_mod: 0.50000000,\n\t\tsub_am: 0.50000000,\n\t\tbalance: 0.50000000,\n"
    "\t\tflt_freq: 0.50000000,\n\t\tflt_mod: 0.50000000,\n\t\tflt_sep: 0.50000000,\n"
    "\t\tflt_q: 0.50000000,\n\t\tflt_kf: 0.50000000,\n\t\tfx_mix: 0.50000000,\n"
    "\t\tfx_len: 0.50000000,\n\t\tfx_damp: 0.50000000,\n\t\tfx_chors: 0.50000000,\n"
    "\t\tfx_size: 0.50000000\n"
    "\t}\n"
    "}\n";

std::string failureOf(const std::string& text) {
    try {
        readProgramText(text);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "no failure";
}

std::string wrap(const std::string& fields) { return "TendranePatch: {\n\tVersion: 10\n" + fields + "\n}\n"; }

float readParam(const std::string& line, int param) { return readProgramText(wrap(line)).param(param); }

void expectSameRecord(const NorvelleProgram& a, const NorvelleProgram& b, float tolerance) {
    EXPECT_EQ(a.implementation, b.implementation);
    EXPECT_EQ(a.getName(), b.getName());
    EXPECT_EQ(a.path, b.path);
    EXPECT_EQ(a.seed, b.seed);
    EXPECT_EQ(a.cloned, b.cloned);
    EXPECT_NEAR(a.pitch, b.pitch, tolerance);
    for (int p = 0; p < PARAM_COUNT; ++p) EXPECT_NEAR(a.param(p), b.param(p), tolerance) << PARAMETER_TABLE[p].name;
    for (int g = 0; g < GENE_COUNT; ++g) EXPECT_NEAR(a.genes[g], b.genes[g], tolerance) << GENE_TABLE[g].name;
}

}  // namespace

TEST(TextFormatTest, InitRecordWritesTheExactFileText) {
    NorvelleProgram record;
    EXPECT_EQ(writeProgramText(record, true), kInitFileText);
}

TEST(TextFormatTest, ClipboardFormAddsPathAndModifiedOnlyWithAPath) {
    NorvelleProgram record;
    EXPECT_EQ(writeProgramText(record, false), kInitFileText);
    record.path = u"C:\\Patches\\Deep Sea.tdrn";
    record.modified = true;
    std::string clip = writeProgramText(record, false);
    EXPECT_NE(clip.find("\tName: 'Init'\n\tPath: 'C:\\Patches\\Deep Sea.tdrn'\n\tModified: true\n\tModWheel: "),
              std::string::npos);
    std::string file = writeProgramText(record, true);
    EXPECT_EQ(file, kInitFileText);  // a saved file never holds its own path
}

TEST(TextFormatTest, SeedIsEightLowerCaseHexDigits) {
    NorvelleProgram record;
    record.seed = 0xDEB05159u;
    EXPECT_NE(writeProgramText(record, true).find("\tSeed: 0xdeb05159\n"), std::string::npos);
}

TEST(TextFormatTest, ParameterValueTexts) {
    EXPECT_EQ(parameterValueText(Param::Rotation, 0.25f), "90.00000000 degrees");
    EXPECT_EQ(parameterValueText(Param::Tuning, 1.0f), "+12.00000000 sm ");
    EXPECT_EQ(parameterValueText(Param::Tuning, 0.0f), "-12.00000000 sm ");
    EXPECT_EQ(parameterValueText(Param::Tuning, 0.53125f), "+75.00000000 ct ");
    EXPECT_EQ(parameterValueText(Param::Tuning, 0.46875f), "-75.00000000 ct ");
    EXPECT_EQ(parameterValueText(Param::Effect, 1.0f), "100.00000000 %");
    EXPECT_EQ(parameterValueText(Param::Effect, 0.0f), "-100.00000000 %");
    EXPECT_EQ(parameterValueText(Param::Release, 1.0f), "20.00000000 s ");
    EXPECT_EQ(parameterValueText(Param::Release, 0.0f), "50.00000000 ms ");
    EXPECT_EQ(parameterValueText(Param::Volume, 0.0f), "-inf dB");
    EXPECT_EQ(parameterValueText(Param::Volume, 0.000009f), "-inf dB");
    EXPECT_EQ(parameterValueText(Param::Volume, 1.0f), "20.00000000 dB");
    EXPECT_EQ(parameterValueText(Param::Volume, 0.25f), "-20.00000000 dB");
    EXPECT_EQ(parameterValueText(Param::Branch12, 0.5f), "50.00000000 %");
}

TEST(TextFormatTest, TinyNumbersSnapToZero) {
    // 100 * 0.00000005 is 0.000005, under the snap limit.
    EXPECT_EQ(parameterValueText(Param::ModWheel, 0.00000005f), "0.00000000 %");
    // A hair below no effect prints as 0, never as -0.00000596.
    EXPECT_EQ(parameterValueText(Param::Effect, 0.49999997f), "0.00000000 %");
    EXPECT_EQ(parameterValueText(Param::Effect, 0.4999999f), "-0.00001788 %");
}

TEST(TextFormatTest, VersionAloneLoadsTheDefaults) {
    NorvelleProgram record = readProgramText("TendranePatch: { Version: 10 }");
    EXPECT_EQ(record.implementation, 1);
    EXPECT_EQ(record.seed, 1u);
    EXPECT_EQ(record.getName(), u"");
    EXPECT_TRUE(record.path.empty());
    EXPECT_FALSE(record.modified);
    EXPECT_FALSE(record.cloned);
    EXPECT_EQ(record.pitch, 0.0f);
    for (int g = 0; g < GENE_COUNT; ++g) EXPECT_EQ(record.genes[g], 0.5f);
    for (int p = 0; p < PARAM_COUNT; ++p) EXPECT_EQ(record.param(p), PARAMETER_TABLE[p].initValue);
}

TEST(TextFormatTest, WrongVersionsFail) {
    EXPECT_EQ(failureOf("TendranePatch: { Version: 9 }"), "Invalid data format");
    EXPECT_EQ(failureOf("TendranePatch: { Version: 11 }"), "Invalid data format");
    EXPECT_EQ(failureOf("TendranePatch: { }"), "Invalid data format");
    EXPECT_EQ(failureOf("TendranePatch: { Version: ten }"), "Invalid data format");
    EXPECT_EQ(failureOf("Other: { Version: 10 }"), "Invalid data format");
    EXPECT_EQ(failureOf(""), "Invalid data format");
    EXPECT_THROW(readProgramText("TendranePatch: { Version: 9 }"), FormatException);
}

TEST(TextFormatTest, IntegersReadByTheCRuleOfBaseZero) {
    EXPECT_EQ(readProgramText("TendranePatch: { Version: 0xA }").implementation, 1);
    EXPECT_EQ(readProgramText("TendranePatch: { Version: 012 }").implementation, 1);  // octal ten
    EXPECT_EQ(readProgramText("TendranePatch: { Version: 10, Implementation: 0x3 }").implementation, 3);
    EXPECT_EQ(readProgramText(wrap("Seed: 0xdeb05159")).seed, 0xDEB05159u);
    EXPECT_EQ(readProgramText(wrap("Seed: 4294967295")).seed, 0xFFFFFFFFu);
    EXPECT_EQ(readProgramText(wrap("Seed: 99999999999")).seed, 0xFFFFFFFFu);  // saturates
    EXPECT_EQ(readProgramText(wrap("Seed: -1")).seed, 0xFFFFFFFFu);           // negated modulo 2^32
    EXPECT_EQ(readProgramText(wrap("Seed: zero")).seed, 1u);
    EXPECT_EQ(readProgramText(wrap("Seed: 017")).seed, 15u);
}

TEST(TextFormatTest, ImplementationMustBeZeroToTen) {
    EXPECT_EQ(readProgramText(wrap("Implementation: 0")).implementation, 0);
    EXPECT_EQ(readProgramText(wrap("Implementation: 10")).implementation, 10);
    EXPECT_EQ(failureOf(wrap("Implementation: 11")), "Invalid data format");
    EXPECT_EQ(failureOf(wrap("Implementation: -1")), "Invalid data format");
    EXPECT_EQ(readProgramText(wrap("Implementation: x")).implementation, 1);
}

TEST(TextFormatTest, ReleaseUnits) {
    EXPECT_EQ(readParam("Release: 20.00000000 s ", Param::Release), 1.0f);
    EXPECT_EQ(readParam("Release: 5 ms", Param::Release), 0.0f);
    EXPECT_NEAR(readParam("Release: 223.60679775 ms ", Param::Release), 0.25f, 1e-7);
    EXPECT_NEAR(readParam("Release: 0.22360679775 s", Param::Release), 0.25f, 1e-7);
    EXPECT_NEAR(readParam("Release: 223.60679775 MS", Param::Release), 0.25f, 1e-7);
    EXPECT_NEAR(readParam("Release: 223.60679775\tmS", Param::Release), 0.25f, 1e-7);
    EXPECT_EQ(readParam("Release: 223.6 minutes", Param::Release), 1.0f);  // any other unit is seconds
    EXPECT_EQ(readParam("Release: -3 s", Param::Release), 0.0f);           // can't be compared: lower limit
    EXPECT_EQ(readParam("Release: nothing", Param::Release), 0.0f);
}

TEST(TextFormatTest, TuningUnits) {
    EXPECT_EQ(readParam("Tuning: +12.00000000 sm ", Param::Tuning), 1.0f);
    EXPECT_EQ(readParam("Tuning: -12.00000000 sm ", Param::Tuning), 0.0f);
    float t = readParam("Tuning: +35.00003815 ct ", Param::Tuning);
    EXPECT_GT(t, 0.5f + 0.0145f);
    EXPECT_LT(t, 0.5f + 0.0146f);
    EXPECT_NEAR(readParam("Tuning: +50 CT", Param::Tuning), 0.5f + 1.0f / 48.0f, 1e-7);
    EXPECT_NEAR(readParam("Tuning: 6 semitones", Param::Tuning), 0.75f, 1e-7);
    EXPECT_EQ(readParam("Tuning: 30 sm", Param::Tuning), 1.0f);
}

TEST(TextFormatTest, PercentRotationEffectAndVolume) {
    EXPECT_NEAR(readParam("ModWheel: 50.00000000 %", Param::ModWheel), 0.5f, 1e-8);
    EXPECT_EQ(readParam("Branch3: 150 %", Param::Branch3), 1.0f);
    EXPECT_EQ(readParam("Branch3: -1 %", Param::Branch3), 0.0f);
    EXPECT_EQ(readParam("Rotation: 180 degrees", Param::Rotation), 0.5f);
    EXPECT_EQ(readParam("Effect: -100 %", Param::Effect), 0.0f);
    EXPECT_EQ(readParam("Effect: 0 %", Param::Effect), 0.5f);
    EXPECT_EQ(readParam("Volume: -inf dB", Param::Volume), 0.0f);
    EXPECT_EQ(readParam("Volume: -INF", Param::Volume), 0.0f);
    EXPECT_NEAR(readParam("Volume: 0 dB", Param::Volume), 0.5f, 1e-8);
    EXPECT_NEAR(readParam("Volume: -20.00000000 dB", Param::Volume), 0.25f, 1e-7);
    EXPECT_NEAR(readParam("Volume: 20 dB", Param::Volume), 1.0f, 1e-7);
    EXPECT_EQ(readParam("Volume: 100 dB", Param::Volume), 1.0f);
    EXPECT_EQ(readParam("ModWheel: nan %", Param::ModWheel), 0.0f);  // can't be compared
    EXPECT_EQ(readParam("ModWheel: inf %", Param::ModWheel), 1.0f);
    EXPECT_EQ(readParam("WheelScale: junk", Param::WheelScale), 0.0f);  // no number reads as 0
}

TEST(TextFormatTest, GenesAreLimitedAndDefaultToHalf) {
    NorvelleProgram r = readProgramText(wrap("Genome: { env_time: 1.5, env_loop: -0.25, env_tilt: abc, vol_atk: 0.125 }"));
    EXPECT_EQ(r.genes[Gene::env_time], 1.0f);
    EXPECT_EQ(r.genes[Gene::env_loop], 0.0f);
    EXPECT_EQ(r.genes[Gene::env_tilt], 0.5f);
    EXPECT_EQ(r.genes[Gene::vol_atk], 0.125f);
    EXPECT_EQ(r.genes[Gene::fx_size], 0.5f);
}

TEST(TextFormatTest, BooleansNameAndPath) {
    NorvelleProgram r = readProgramText(
        wrap("Name: \"Caf\\xe9 \\u0141\\u00f3d\\u017a\"\nPath: '/tmp/x.tdrn'\nModified: true\nCloned: true\nPitch: -1.5"));
    EXPECT_EQ(r.getName(), u"Caf\u00e9 \u0141\u00f3d\u017a");
    EXPECT_EQ(r.path, u"/tmp/x.tdrn");
    EXPECT_TRUE(r.modified);
    EXPECT_TRUE(r.cloned);
    EXPECT_EQ(r.pitch, -1.5f);
    NorvelleProgram bare = readProgramText(wrap("Name: Deep Sea\nModified: yes\nCloned: TRUE"));
    EXPECT_EQ(bare.getName(), u"Deep Sea");
    EXPECT_FALSE(bare.modified);
    EXPECT_FALSE(bare.cloned);
}

TEST(TextFormatTest, PitchThatIsNoFiniteNumberIsUnreadable) {
    EXPECT_EQ(readProgramText(wrap("Pitch: nan")).pitch, 0.0f);
    EXPECT_EQ(readProgramText(wrap("Pitch: -inf")).pitch, 0.0f);
    EXPECT_EQ(readProgramText(wrap("Pitch: x")).pitch, 0.0f);
    EXPECT_EQ(readProgramText(wrap("Pitch: 1e300")).pitch, 3.4028234663852886e38f);
    EXPECT_EQ(readProgramText(wrap("Pitch: 0.25 octaves")).pitch, 0.25f);
}

TEST(TextFormatTest, UnterminatedNameFails) {
    EXPECT_EQ(failureOf(wrap("Name: \"open")), "Unterminated string");
}

TEST(TextFormatTest, UnknownKeysAreIgnoredAtEveryLevel) {
    NorvelleProgram r =
        readProgramText("Extra: 1\nTendranePatch: { Version: 10, Colour: 'blue', Genome: { wings: 3, fx_mix: 0.25 } }");
    EXPECT_EQ(r.genes[Gene::fx_mix], 0.25f);
}

TEST(TextFormatTest, CarriageReturnsReadTheSame) {
    NorvelleProgram source;
    source.setName(u"Line Ends");
    source.seed = 0x1234567u;
    source.genes[Gene::a_freq] = 0.75f;
    source.setParam(Param::Volume, 0.3f);
    std::string text = writeProgramText(source, true);
    std::string crlf = withCrLf(text);
    EXPECT_NE(crlf.find("TendranePatch: {\r\n\tVersion: 10\r\n"), std::string::npos);
    EXPECT_EQ(crlf.size(), text.size() + std::count(text.begin(), text.end(), '\n'));  // one CR per line
    NorvelleProgram a = readProgramText(text);
    NorvelleProgram b = readProgramText(crlf);
    expectSameRecord(a, b, 0.0f);
}

TEST(TextFormatTest, KeepsTheImplementation) {
    NorvelleProgram source;
    source.implementation = 3;
    source.computeBranchDeviations();
    NorvelleProgram read = readProgramText(writeProgramText(source, true));
    EXPECT_EQ(read.implementation, 3);
    for (int b = 0; b < BRANCH_COUNT; ++b)
        for (int g = 0; g < MUTABLE_GENE_COUNT; ++g) EXPECT_EQ(read.branchDeviations[b][g], source.branchDeviations[b][g]);
}

TEST(TextFormatTest, NamesAboveByteRangeAndSpecialCharactersSurvive) {
    NorvelleProgram source;
    source.setName(u"it's \"q\" \\ \n\t\u00ff\u0100\uffff");
    source.path = u"/home/\u4e2d/p.tdrn";
    std::string text = writeProgramText(source, false);
    for (char c : text) EXPECT_TRUE(c == '\n' || c == '\t' || (c >= 32 && c <= 126)) << int(c);
    NorvelleProgram read = readProgramText(text);
    EXPECT_EQ(read.getName(), source.getName());
    EXPECT_EQ(read.path, source.path);
}

TEST(TextFormatTest, RandomRecordsSurviveWithinEightDecimals) {
    std::mt19937 rng(20261121);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (int round = 0; round < 200; ++round) {
        NorvelleProgram source;
        source.implementation = static_cast<int32_t>(rng() % 11);
        source.seed = rng();
        source.cloned = rng() & 1;
        source.pitch = static_cast<float>(static_cast<int>(rng() % 7) - 3) + unit(rng) * 0.5f;
        std::u16string name;
        for (unsigned n = rng() % 24; n > 0; --n) name += static_cast<char16_t>(1 + rng() % 0xFFFE);
        source.setName(name);
        if (rng() & 1) source.path = u"/patches/" + name + u".tdrn";
        source.modified = rng() & 1;
        for (int p = 0; p < PARAM_COUNT; ++p) source.setParam(p, unit(rng));
        for (int g = 0; g < GENE_COUNT; ++g) source.genes[g] = unit(rng);
        source.computeBranchDeviations();

        NorvelleProgram read = readProgramText(writeProgramText(source, false));
        // Volume and Release pass through logarithms; eight decimals of dB or
        // ms still keep them within a few parts in 10^7.
        expectSameRecord(source, read, 2e-7f);
        EXPECT_EQ(read.modified, source.path.empty() ? false : source.modified);
        NorvelleProgram fileRead = readProgramText(writeProgramText(source, true));
        EXPECT_TRUE(fileRead.path.empty());
        EXPECT_FALSE(fileRead.modified);
    }
}

TEST(TextFormatTest, WideEscapeUsesSingleQuotesWhenPlain) {
    EXPECT_EQ(escapeWide(u"Deep Sea"), "'Deep Sea'");
    EXPECT_EQ(escapeWide(u"a'b"), "\"a'b\"");
    EXPECT_EQ(escapeWide(u"\u00e9\u0141"), "\"\\xe9\\u0141\"");
    EXPECT_EQ(unescapeWide("\"\\l0001f600\""), u"\uf600");
    EXPECT_EQ(unescapeWide("bare"), u"bare");
}
