#include "patch/FactoryPatches.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

#include "patch/ProgramText.h"
#include "patch/StartupBank.h"
#include "platform/Exceptions.h"
#include "platform/Resources.h"

TEST(FactoryPatchesTest, SixteenDistinctNamedPatchesLoad) {
    std::set<std::u16string> names;
    std::set<uint32_t> seeds;
    for (int i = 0; i < FACTORY_PATCH_COUNT; ++i) {
        NorvelleProgram p = factoryProgram(i);
        EXPECT_EQ(p.implementation, CURRENT_IMPLEMENTATION) << i;
        EXPECT_FALSE(p.getName().empty()) << i;
        EXPECT_NE(p.getName(), u"Init") << i;
        EXPECT_NE(p.seed, 0u) << i;
        EXPECT_TRUE(p.path.empty()) << i;
        EXPECT_FALSE(p.modified) << i;
        names.insert(p.getName());
        seeds.insert(p.seed);
    }
    EXPECT_EQ(names.size(), 16u);
    EXPECT_EQ(seeds.size(), 16u);
}

namespace {
// The start of a key's line: its indentation, the key and ": ". Appended
// piece by piece into one string (a chain of string additions here draws a
// false overlap warning from GCC 12 at -O3).
std::string keyLine(std::string_view indent, std::string_view key) {
    std::string line;
    line.reserve(indent.size() + key.size() + 2);
    line.append(indent);
    line.append(key);
    line.append(": ");
    return line;
}
}  // namespace

TEST(FactoryPatchesTest, ResourcesAreCompletePatchTexts) {
    // Every key written stands in each resource: nothing falls back to a default.
    for (int i = 0; i < FACTORY_PATCH_COUNT; ++i) {
        const platform::Resource r = platform::productResources().find("TDRN", "Factory" + std::to_string(i));
        ASSERT_TRUE(r) << i;
        NorvelleProgram p = readProgramText(r.text());
        NorvelleProgram again = readProgramText(writeProgramText(p, true));
        for (int g = 0; g < GENE_COUNT; ++g) EXPECT_NEAR(again.genes[g], p.genes[g], 1e-7) << i << " " << g;
        const std::string text(r.text());
        for (int g = 0; g < GENE_COUNT; ++g)
            EXPECT_NE(text.find(keyLine("\t\t", GENE_TABLE[g].name)), std::string::npos) << i;
        for (int q = 0; q < PARAM_COUNT; ++q)
            EXPECT_NE(text.find(keyLine("\t", PARAMETER_TABLE[q].name)), std::string::npos) << i;
    }
}

TEST(FactoryPatchesTest, IndexOutOfRangeFails) {
    EXPECT_THROW(factoryProgram(-1), Exception);
    EXPECT_THROW(factoryProgram(16), Exception);
    EXPECT_EQ(factoryBank().size(), 16u);
}

namespace {
class EmptyStore : public PreferenceBackend {
public:
    void lock() override {}
    void unlock() override {}
    std::string read() override { return {}; }
    void write(std::string_view) override {}
};
}  // namespace

TEST(FactoryPatchesTest, FillTheStartupBankWhenNoneIsStored) {
    EmptyStore store;
    StartupBank bank(store);
    EXPECT_FALSE(bank.loadStartupBank());
    for (int i = 0; i < FACTORY_PATCH_COUNT; ++i) EXPECT_EQ(bank.program(i).getName(), factoryProgram(i).getName());
}
