// The application script over a patch: what the panel's buttons and menus
// run, the two levels of script frames, and the natives they call.
#include "views/ApplicationScripts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <set>
#include <sstream>

#include "fomal/Clipboard.h"
#include "fomal/ScriptFrames.h"
#include "fomal/ScriptRandom.h"
#include "patch/FactoryPatches.h"
#include "patch/ProgramText.h"
#include "tests/views/ScriptTestHost.h"
#include "views/LivingViews.h"

namespace {

// An empty panel with a button and a click view that run script functions.
constexpr const char* PANEL =
    "views: { { type: \"click\", label: \"field\", bounds: { 0, 0, 384, 512 } } }";

struct App {
    viewtest::ScriptTestHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};
    std::vector<std::string> alerts;

    explicit App(std::string_view layout = PANEL) {
        core.onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
        EXPECT_TRUE(core.openText(views::applicationScripts(host, core), layout));
    }
    std::string run(std::string_view script) { return core.scripts().evaluate(*core.root(), script); }
    std::string name() const {
        const std::u16string n = host.current.getName();
        return std::string(n.begin(), n.end());
    }
};

// Preferences go to a folder of the test's own.
class ApplicationScriptsTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = std::filesystem::temp_directory_path() /
               ("tendrane-app-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
        setenv("XDG_CONFIG_HOME", dir_.c_str(), 1);
        Fomal::ScriptRandom::process() = Fomal::ScriptRandom(11, 22);
        Fomal::Clipboard::setSystem(nullptr);
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

private:
    std::filesystem::path dir_;
};

}  // namespace

TEST_F(ApplicationScriptsTest, TheScriptLoadsTheLibraryTheWordsAndTheConstants) {
    App app;
    EXPECT_EQ(app.run("{ ::dictionary.n }"), "3082");
    EXPECT_EQ(app.run("{ ::const.undoHistory }"), "100");
    EXPECT_EQ(app.run("{ ::const.randomGeneVariance }"), "0.25");
    EXPECT_EQ(app.run("{ quicksort !== void && deepen !== void }"), "true");
    EXPECT_EQ(app.run("{ platform.os # ' ' # build.version # ' ' # build.number }"), "linux 1.0.0 140");
    EXPECT_EQ(app.run("{ load }"), "<xload>");
    EXPECT_EQ(app.run("{ random }"), "<xrandom>");
    // Outside debug mode print and assert do nothing.
    EXPECT_EQ(app.run("{ print }"), ">::void");
    EXPECT_EQ(app.run("{ assert(false); 'passed' }"), "passed");
    EXPECT_EQ(app.run("{ coalesce(readPrefs('lastAutoUpdate'), 0) }"), "0");
}

TEST_F(ApplicationScriptsTest, AMissingResourceFailsWithItsMessage) {
    App app;
    EXPECT_EQ(app.run("{ try(> load('nothing.quol'), > $0) }"), "Could not load text resource");
}

TEST_F(ApplicationScriptsTest, TheEditorsShareTheRootAndKeepTheirOwnGlobals) {
    auto first = std::make_unique<App>();
    App second;
    // Defined by the application script: shared.
    first->run("{ ::currentModal = 'dna' }");
    EXPECT_EQ(second.run("{ ::currentModal }"), "dna");
    // New in one editor: its own.
    first->run("{ ::mine = 'first' }");
    EXPECT_EQ(second.run("{ exists(@::mine) }"), "false");
    // The natives of an editor reach that editor.
    second.host.current.setName(u"Second");
    first->host.current.setName(u"First");
    EXPECT_EQ(second.run("{ readProgram(@p); p.name }"), "Second");
    EXPECT_EQ(first->run("{ readProgram(@p); p.name }"), "First");
    // The root lives while an editor does, and goes with the last.
    first.reset();
    EXPECT_TRUE(Fomal::SharedScriptRoot::exists());
    EXPECT_EQ(second.run("{ ::currentModal }"), "dna");
}

TEST_F(ApplicationScriptsTest, TheRootIsBuiltAgainAfterTheLastEditorClosed) {
    {
        App app;
        app.run("{ ::currentModal = 'about' }");
    }
    EXPECT_FALSE(Fomal::SharedScriptRoot::exists());
    App again;
    EXPECT_EQ(again.run("{ ::currentModal }"), "");
}

TEST_F(ApplicationScriptsTest, UserBusyIsReachedByItsNativeNameAfterARebinding) {
    App app;
    EXPECT_EQ(app.run("{ ::userBusy = > true; <userBusy>() }"), "false");
    EXPECT_EQ(app.run("{ userBusy() }"), "true");
}

TEST_F(ApplicationScriptsTest, AProgramGoesToScriptMembersAndBack) {
    App app;
    app.host.current = factoryProgram(5);
    app.run("{ readProgram(@p); p.Volume = 0.25; p.a_mod = 0.75; [p.genes[0]] = 0.125; writeProgram(@p) }");
    NorvelleProgram expected = factoryProgram(5);
    EXPECT_EQ(app.host.current.param(Param::Volume), 0.25f);
    EXPECT_EQ(app.host.current.genes[Gene::a_mod], 0.75f);
    EXPECT_EQ(app.host.current.genes[0], 0.125f);
    EXPECT_EQ(app.host.current.seed, expected.seed);
    EXPECT_EQ(app.name(), "Gutta Vitrea");
    EXPECT_EQ(app.run("{ readProgram(@p); p.genes.n # ' ' # p.implementation }"), "37 10");
    // Every float comes back as it was.
    app.host.current = factoryProgram(9);
    app.run("{ readProgram(@p); writeProgram(@p) }");
    EXPECT_EQ(writeProgramText(app.host.current, false), writeProgramText(factoryProgram(9), false));
}

TEST_F(ApplicationScriptsTest, RandomNamesFitAndNeverRepeatAWord) {
    App app;
    for (int i = 0; i < 300; ++i) {
        const std::string name = app.run("{ createRandomName(8, 20) }");
        ASSERT_GE(name.size(), 8u) << name;
        ASSERT_LE(name.size(), 20u) << name;
        std::istringstream words(name);
        std::set<std::string> seen;
        for (std::string w; words >> w;) {
            ASSERT_TRUE(seen.insert(w).second) << name;
            ASSERT_TRUE(std::isupper(static_cast<unsigned char>(w[0]))) << name;
        }
    }
}

TEST_F(ApplicationScriptsTest, RandomizeMakesANewNamedSeedAsOneUndoStep) {
    App app;
    app.host.current = factoryProgram(3);
    app.host.current.setParam(Param::Atonality, 1.0f);
    app.host.selected = 4;
    app.run("{ ::randomized = 0; perform('trigger', '\"x\"', '/') }");
    app.run("{ randomize() }");
    const NorvelleProgram& r = app.host.current;
    EXPECT_NE(app.name(), "Aurora Tacita");
    EXPECT_GE(app.name().size(), 8u);
    EXPECT_LE(app.name().size(), 20u);
    EXPECT_NE(r.seed, 0u);
    EXPECT_TRUE(r.path.empty());
    EXPECT_TRUE(r.modified);
    EXPECT_FALSE(r.cloned);
    EXPECT_EQ(r.pitch, 0.0f);
    EXPECT_EQ(r.param(Param::Tuning), 0.5f);
    EXPECT_EQ(r.param(Param::ModWheel), 0.0f);
    EXPECT_EQ(r.param(Param::Rotation), 0.0f);
    for (int b = 0; b < BRANCH_COUNT; ++b) EXPECT_EQ(r.param(Param::Branch1 + b), 0.0f);
    for (int g = 0; g < GENE_COUNT; ++g) {
        EXPECT_GE(r.genes[g], 0.0f);
        EXPECT_LE(r.genes[g], 1.0f);
    }
    // a_freq on a whole-octave step; with Atonality 1 a_mod and b_mod keep
    // their random values.
    const float steps = r.genes[Gene::a_freq] * 6.0f;
    EXPECT_NEAR(steps, std::round(steps), 1e-5);
    EXPECT_EQ(app.host.selected, -1);
    ASSERT_EQ(app.host.undoSteps.size(), 1u);
    EXPECT_EQ(app.host.undoSteps[0].first, "Random Seed");
}

TEST_F(ApplicationScriptsTest, AtonalityZeroDrawsTheOscillatorModsToTheMiddle) {
    App app;
    app.host.current.setParam(Param::Atonality, 0.0f);
    app.run("{ readProgram(@p); randomizeProgram(@p); writeProgram(@p) }");
    EXPECT_EQ(app.host.current.genes[Gene::a_mod], 0.5f);
    EXPECT_EQ(app.host.current.genes[Gene::b_mod], 0.5f);
}

TEST_F(ApplicationScriptsTest, TheFirstCloneMovesTheSeedByTheBranchAndLaterOnesKeepIt) {
    App app;
    NorvelleProgram p;
    p.seed = 1000;
    p.setParam(Param::Branch1 + 5, 0.5f);
    p.setParam(Param::ModWheel, 0.5f);
    p.setParam(Param::WheelScale, 1.0f);
    app.host.current = p;
    EXPECT_EQ(app.run("{ clone.enabled() }"), "false");
    app.host.selected = 5;
    EXPECT_EQ(app.run("{ clone.enabled() }"), "true");
    app.run("{ clone() }");
    EXPECT_TRUE(app.host.current.cloned);
    EXPECT_EQ(app.host.current.seed, 1005u);
    for (int b = 0; b < BRANCH_COUNT; ++b) EXPECT_EQ(app.host.current.param(Param::Branch1 + b), 0.75f);
    EXPECT_EQ(app.host.current.param(Param::ModWheel), 0.0f);
    EXPECT_EQ(app.host.selected, -1);
    app.host.selected = 2;
    app.run("{ clone() }");
    EXPECT_EQ(app.host.current.seed, 1005u);
    ASSERT_EQ(app.host.undoSteps.size(), 2u);
    EXPECT_EQ(app.host.undoSteps[1].first, "Clone Branch");
}

TEST_F(ApplicationScriptsTest, CopyAndPasteGoThroughTheClipboard) {
    App app;
    app.host.current = factoryProgram(7);
    app.run("{ copy() }");
    EXPECT_EQ(*Fomal::Clipboard::system().read(), writeProgramText(factoryProgram(7), false));
    app.host.current = factoryProgram(2);
    EXPECT_EQ(app.run("{ paste.enabled() }"), "true");
    app.run("{ paste() }");
    EXPECT_EQ(writeProgramText(app.host.current, false), writeProgramText(factoryProgram(7), false));
    EXPECT_EQ(app.host.undoSteps.back().first, "Paste");
    // Text that is no patch does nothing.
    Fomal::Clipboard::system().write("a shopping list");
    EXPECT_EQ(app.run("{ paste.enabled() }"), "false");
    app.run("{ paste() }");
    EXPECT_EQ(app.host.undoSteps.size(), 1u);
}

TEST_F(ApplicationScriptsTest, UndoAndRedoAskFirstAndClearTheSelection) {
    App app;
    EXPECT_EQ(app.run("{ undo.enabled() }"), "false");
    app.run("{ undo() }");
    app.host.current = factoryProgram(1);
    app.run("{ saveUndo('Paste') }");
    app.host.current = factoryProgram(2);
    app.host.selected = 3;
    EXPECT_EQ(app.run("{ undo.enabled() # redo.enabled() }"), "truefalse");
    app.run("{ undo() }");
    const std::u16string first = factoryProgram(1).getName();
    EXPECT_EQ(app.name(), std::string(first.begin(), first.end()));
    EXPECT_EQ(app.host.selected, -1);
    EXPECT_EQ(app.run("{ redo.enabled() }"), "true");
}

TEST_F(ApplicationScriptsTest, TheSeedAuditionSoundsARandomSeedAndAClickKeepsIt) {
    App app(
        "views: { { type: \"button\", label: \"seed\", bounds: { 180, 252, 25, 25 }, image: \"seed\","
        "  actions: { { \"click\", \">plant\" }, { \"down+windows+control\", \">randomize.down\" },"
        "             { \"release+windows+control\", \">randomize.release\" },"
        "             { \"click+windows+control\", \">randomize.click\" } } } }");
    app.host.current = factoryProgram(3);
    app.core.mouseDown({192, 264, Fomal::LEFT_BIT | Fomal::CONTROL_BIT});
    EXPECT_TRUE(app.host.previewing);
    ASSERT_EQ(app.host.notes.size(), 1u);
    EXPECT_EQ(app.host.notes[0], "down 60 100");
    const std::uint32_t seed = app.host.previewed.seed;
    EXPECT_NE(seed, factoryProgram(3).seed);
    EXPECT_EQ(app.host.current.seed, factoryProgram(3).seed);  // not yet kept
    app.core.mouseUp({192, 264, Fomal::LEFT_BIT | Fomal::CONTROL_BIT});
    EXPECT_EQ(app.host.current.seed, seed);
    EXPECT_EQ(app.host.undoSteps.back().first, "Random Seed");
    // The preview ends by a delayed action.
    EXPECT_TRUE(app.host.previewing);
    app.clock.advance(1);
    app.core.idle();
    EXPECT_FALSE(app.host.previewing);
    EXPECT_TRUE(app.alerts.empty()) << app.alerts.front();
}

TEST_F(ApplicationScriptsTest, BounceReflectsIntoTheRange) {
    App app;
    EXPECT_EQ(app.run("{ bounce(0.25, 0, 1) }"), "0.25");
    EXPECT_EQ(app.run("{ bounce(1.25, 0, 1) }"), "0.75");
    EXPECT_EQ(app.run("{ bounce(-0.25, 0, 1) }"), "0.25");
    EXPECT_EQ(app.run("{ lerp(2, 4, 0.25) }"), "2.5");
    EXPECT_EQ(app.run("{ x = 0.9; converge(@x, 0.5); x }"), "0.7");
    EXPECT_EQ(app.run("{ reescape('\"abc\"') }"), "'abc'");
}

TEST_F(ApplicationScriptsTest, AutoUpdateTogglesThroughItsPreference) {
    App app;
    EXPECT_EQ(app.run("{ autoUpdate.checked() }"), "true");
    app.run("{ autoUpdate() }");
    EXPECT_EQ(app.run("{ autoUpdate.checked() # ' ' # readPrefs('lastAutoUpdate') }"), "false off");
    // Off: a check does nothing and arms nothing.
    app.run("{ autoUpdate.check() }");
    EXPECT_EQ(app.run("{ ::autoUpdate.response }"), "unfetched");
    app.run("{ autoUpdate() }");
    EXPECT_EQ(app.run("{ autoUpdate.checked() }"), "true");
}

TEST_F(ApplicationScriptsTest, AnUpdateResponseForThisBuildOffersTheUpdate) {
    App app;
    app.run(R"({ autoUpdate.offer('Tendrane1: { linux: { x64: "{ build: 141, message: \"New!\", url: \"https://example.org/\" }" } }') })");
    ASSERT_EQ(app.alerts.size(), 1u);
    EXPECT_EQ(app.alerts[0], "Tendrane: New!");
    EXPECT_TRUE(app.core.choose("No"));
    // The same build: nothing; another platform's entry: nothing.
    app.run(R"({ autoUpdate.offer('Tendrane1: { linux: { x64: "{ build: 140 }" } }') })");
    app.run(R"({ autoUpdate.offer('Tendrane1: { windows: { x64: "{ build: 150 }" } }') })");
    EXPECT_EQ(app.alerts.size(), 1u);
    // Urgent words always show; without words or url the default text.
    app.run(R"({ autoUpdate.offer('Tendrane1: { linux: { x64: "{ build: 1, urgent: \"Stop!\" }" } }') })");
    ASSERT_EQ(app.alerts.size(), 2u);
    EXPECT_EQ(app.alerts[1], "Tendrane: Stop!");
    EXPECT_TRUE(app.core.choose("OK"));
    app.run(R"({ autoUpdate.offer('Tendrane1: { linux: { x64: "{ build: 200 }" } }') })");
    ASSERT_EQ(app.alerts.size(), 3u);
    EXPECT_EQ(app.alerts[2], "Tendrane: An update of the Tendrane is available.");
}

TEST_F(ApplicationScriptsTest, ModalsOpenOneAtATime) {
    App app;
    app.run("{ ::opened = void }");
    // "about" exists once the about page lands; a layout of the tests
    // stands in here through a failure-free name: "suspend".
    app.run("{ modal('\"suspend\"') }");
    EXPECT_EQ(app.run("{ ::currentModal # modal.checked('\"suspend\"') }"), "suspendtrue");
    EXPECT_NE(app.core.root()->findView("suspend"), nullptr);
    app.run("{ closeModal() }");
    EXPECT_EQ(app.run("{ ::currentModal }"), "");
    EXPECT_EQ(app.core.root()->findView("suspend"), nullptr);
}

TEST_F(ApplicationScriptsTest, TheTutorialKeepsItsPlaceAndKnowsWhenItWasFinished) {
    views::registerLivingViews();
    {
        App app;
        app.run("{ showModal('tutorial') }");
        ASSERT_NE(app.core.root()->findView("tutorialBubble"), nullptr);
        EXPECT_EQ(app.run("{ ::tutorial.page # ' ' # ::tutorial.running }"), "0 true");
        app.run("{ tutorial.next(); tutorial.next(); tutorial.goto(5) }");
        EXPECT_EQ(app.run("{ readPrefs('lastTutorialPage') }"), "5");
        EXPECT_EQ(app.run("{ coalesce(readPrefs('completedTutorial'), 'no') }"), "no");
        // Moving on by itself only from the page that asked.
        app.run("{ tutorial.proceed(1, 2) }");
        EXPECT_EQ(app.run("{ ::tutorial.page }"), "5");
        app.run("{ tutorial.proceed(5, 6) }");
        EXPECT_EQ(app.run("{ ::tutorial.page }"), "6");
        EXPECT_EQ(app.run("{ tutorial.prev.enabled() # ' ' # tutorial.next.enabled() }"), "true true");
    }
    // A new start opens where the last one was left.
    App again;
    again.run("{ showModal('tutorial') }");
    EXPECT_EQ(again.run("{ ::tutorial.page }"), "6");
    // The last page finishes it; there is no page after it.
    again.run("{ tutorial.goto(21) }");
    EXPECT_EQ(again.run("{ readPrefs('completedTutorial') }"), "true");
    EXPECT_EQ(again.run("{ tutorial.next.enabled() }"), "false");
    again.run("{ tutorial.next() }");
    EXPECT_EQ(again.run("{ ::tutorial.page }"), "21");
}
