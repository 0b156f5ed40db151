#include "fomal/TextSubstitution.h"

#include <gtest/gtest.h>

using namespace Fomal;

namespace {

class FakeEditor : public SubstitutionContext {
public:
    std::string patchName() const override { return "Glass Harmonium"; }
    std::string undoLabel() const override { return undo; }
    std::string redoLabel() const override { return redo; }
    std::string evaluate(std::string_view script) override {
        scripts.emplace_back(script);
        return result;
    }
    std::string undo, redo, result = "^V";
    std::vector<std::string> scripts;
};

}  // namespace

TEST(TextSubstitutionTest, PlatformTagsKeepThisPlatformsText) {
    FakeEditor e;
    EXPECT_EQ(substituteText("Plant Chosen Seed ([windows]control[/windows][mac]command[/mac]-click: New Random Seed)", e),
              "Plant Chosen Seed (control-click: New Random Seed)");
    EXPECT_EQ(substituteText("[mac]only there[/mac]", e), "");
}

TEST(TextSubstitutionTest, AScriptBlockIsReplacedByItsResultWhichMayHoldCaretCodes) {
    FakeEditor e;
    EXPECT_EQ(substituteText("v[quol]{ bake(); }[/quol]!", e), "v1.0.0!");
    ASSERT_EQ(e.scripts.size(), 1u);
    EXPECT_EQ(e.scripts[0], "{ bake(); }");
}

TEST(TextSubstitutionTest, CaretCodesOfTheSubstitution) {
    FakeEditor e;
    EXPECT_EQ(substituteText("v^V (^B)", e), "v1.0.0 (140)");
    EXPECT_EQ(substituteText("^N", e), "Glass Harmonium");
    EXPECT_EQ(substituteText("100^^", e), "100^");
    EXPECT_EQ(substituteText("Undo^U", e), "Undo");
    e.undo = "Change Wheel";
    e.redo = "Change VelSens";
    EXPECT_EQ(substituteText("Undo^U", e), "Undo Change Mod Wheel");
    EXPECT_EQ(substituteText("Redo^R", e), "Redo Change Velocity Sensitivity");
}

TEST(TextSubstitutionTest, AnUnknownCodeOrBracketStaysAsItIs) {
    FakeEditor e;
    EXPECT_EQ(substituteText("^Q and ^X and ^", e), "^Q and ^X and ^");
    EXPECT_EQ(substituteText("[b]bold[/b] [windows]open", e), "[b]bold[/b] [windows]open");
}

TEST(TextSubstitutionTest, TheCatalogueComesFirst) {
    FakeEditor e;
    const MessageCatalogue c = MessageCatalogue::parse("\"Hint\" = \"[windows]Win[/windows] ^V\"\n");
    EXPECT_EQ(substituteText("Hint", e, c), "Win 1.0.0");
}
