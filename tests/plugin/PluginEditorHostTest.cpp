// The editor over the plug-in: a slider's drag is one step of the undo
// history and one gesture for the host's automation; undo and redo bring
// back the value and what the panel shows.
#include "plugin/PluginEditorHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "fomal/PopupMenu.h"
#include "notation/Escape.h"
#include "patch/FactoryPatches.h"
#include "patch/ProgramText.h"
#include "fomal/SliderView.h"
#include "plugin/PluginCore.h"
#include "tests/plugin/BlockTestEngine.h"

namespace {

// What the host heard: automation and gesture calls, by opcode.
struct HostLog {
    std::vector<int> opcodes;
    std::vector<float> automated;
};
HostLog* hostLog = nullptr;

VstIntPtr VST_CALL loggingHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float opt) {
    if (opcode == audioMasterVersion) return 2400;
    if (hostLog != nullptr && (opcode == audioMasterAutomate || opcode == audioMasterBeginEdit || opcode == audioMasterEndEdit)) {
        hostLog->opcodes.push_back(opcode);
        if (opcode == audioMasterAutomate) hostLog->automated.push_back(opt);
    }
    return 0;
}

// A slit from (0, 10) to (200, 10) for the volume.
constexpr const char* LAYOUT =
    "views: { { type: \"slider\", label: \"Volume\", bounds: { 0, 0, 200, 20 }, capWidth: 10, capHeight: 16,"
    "           capColor: 0xFFFFFFFF, hint: \"Volume ^X\" } }";

struct Fixture {
    HostLog log;
    std::unique_ptr<PluginCore> plugin;
    int limit = 100;
    std::unique_ptr<PluginEditorHost> host;
    Fomal::VirtualClock clock;
    std::unique_ptr<Fomal::EditorCore> editor;

    Fixture() {
        hostLog = &log;
        plugin = std::make_unique<PluginCore>(&loggingHost, std::make_unique<BlockTestEngine>());
        plugin->resume();
        host = std::make_unique<PluginEditorHost>(*plugin, limit);
        editor = std::make_unique<Fomal::EditorCore>(*host, clock);
        editor->openLayoutText(LAYOUT);
    }
    ~Fixture() { hostLog = nullptr; }

    float volume() { return plugin->getParameter(8); }
    Fomal::SliderView& slider() { return static_cast<Fomal::SliderView&>(*editor->root()->findView("Volume")); }
    void drag(int from, int to) {
        editor->mouseDown({from, 10, Fomal::LEFT_BIT});
        for (int x = from; x != to; x += to > from ? 5 : -5) editor->mouseMove({x, 10, Fomal::LEFT_BIT});
        editor->mouseMove({to, 10, Fomal::LEFT_BIT});
        editor->mouseUp({to, 10, Fomal::LEFT_BIT});
    }
};

}  // namespace

TEST(PluginEditorHostTest, ADragIsOneUndoStepAndOneGesture) {
    Fixture f;
    ASSERT_FLOAT_EQ(f.volume(), 0.5f);
    f.drag(100, 150);
    EXPECT_FLOAT_EQ(f.volume(), 0.75f);
    EXPECT_EQ(f.host->history().position(), 1u);
    EXPECT_EQ(f.host->undoLabel(), "Change Volume");
    // The host heard one gesture around its automation.
    ASSERT_GE(f.log.opcodes.size(), 3u);
    EXPECT_EQ(f.log.opcodes.front(), audioMasterBeginEdit);
    EXPECT_EQ(f.log.opcodes.back(), audioMasterEndEdit);
    EXPECT_FLOAT_EQ(f.log.automated.back(), 0.75f);

    // A second drag of the same control is a step of its own.
    f.drag(150, 50);
    EXPECT_FLOAT_EQ(f.volume(), 0.25f);
    EXPECT_EQ(f.host->history().position(), 2u);
}

TEST(PluginEditorHostTest, UndoAndRedoBringBackTheValueAndTheDisplay) {
    Fixture f;
    f.editor->paint();
    f.drag(100, 150);
    f.editor->paint();
    EXPECT_EQ(f.editor->pixels()[10 * 384 + 150], 0xFFFFFFFFu);

    ASSERT_TRUE(f.host->canUndo());
    f.editor->actions().perform(*f.editor->root(), "undo", "", false);
    EXPECT_FLOAT_EQ(f.volume(), 0.5f);
    EXPECT_TRUE(f.host->canRedo());
    f.editor->idle();
    f.editor->paint();
    EXPECT_EQ(f.editor->pixels()[10 * 384 + 100], 0xFFFFFFFFu);
    EXPECT_NE(f.editor->pixels()[10 * 384 + 150], 0xFFFFFFFFu);

    f.editor->actions().perform(*f.editor->root(), "redo", "", false);
    EXPECT_FLOAT_EQ(f.volume(), 0.75f);
    f.editor->idle();
    f.editor->paint();
    EXPECT_EQ(f.editor->pixels()[10 * 384 + 150], 0xFFFFFFFFu);
}

TEST(PluginEditorHostTest, AClickThatChangesNothingLeavesNoStep) {
    Fixture f;
    f.editor->mouseDown({100, 10, Fomal::LEFT_BIT});
    f.editor->mouseUp({100, 10, Fomal::LEFT_BIT});
    EXPECT_FALSE(f.host->canUndo());
}

TEST(PluginEditorHostTest, TheHintShowsTheParametersDisplayText) {
    Fixture f;
    f.editor->mouseDown({100, 10, Fomal::LEFT_BIT});
    f.editor->mouseMove({150, 10, Fomal::LEFT_BIT});
    EXPECT_EQ(f.editor->hint().text(), "Volume " + f.host->controlText("Volume"));
    EXPECT_FALSE(f.host->controlText("Volume").empty());
    f.editor->mouseUp({150, 10, Fomal::LEFT_BIT});
}

TEST(PluginEditorHostTest, AutomationFromTheHostMovesTheSlider) {
    Fixture f;
    f.editor->paint();
    f.plugin->setParameter(8, 0.25f);
    f.editor->idle();
    f.editor->paint();
    EXPECT_EQ(f.editor->pixels()[10 * 384 + 50], 0xFFFFFFFFu);
    // Not a step of the editor's history.
    EXPECT_FALSE(f.host->canUndo());
}

TEST(PluginEditorHostTest, LearningTakesTheNextControllerMoved) {
    Fixture f;
    constexpr int TUNING = 2;
    EXPECT_EQ(f.host->controllerOf(TUNING), 17);  // the default
    f.host->learnController(TUNING);
    EXPECT_EQ(f.host->controllerOf(TUNING), -1);
    EXPECT_EQ(f.host->learningFunction(), TUNING);
    // Controller 33 moved on the keyboard.
    VstMidiEvent cc{};
    cc.type = kVstMidiType;
    cc.byteSize = sizeof cc;
    cc.midiData[0] = char(0xB0);
    cc.midiData[1] = 33;
    cc.midiData[2] = 90;
    VstEvents events{};
    events.numEvents = 1;
    events.events[0] = reinterpret_cast<VstEvent*>(&cc);
    f.plugin->processEvents(&events);
    EXPECT_EQ(f.host->controllerOf(TUNING), 33);
    EXPECT_EQ(f.host->learningFunction(), -1);

    f.host->assignController(TUNING, 7);  // the volume's controller: the volume loses it
    EXPECT_EQ(f.host->controllerOf(TUNING), 7);
    EXPECT_EQ(f.host->controllerOf(8), -1);
}

TEST(PluginEditorHostTest, AnotherProgramStartsANewHistory) {
    Fixture f;
    f.drag(100, 150);
    ASSERT_TRUE(f.host->canUndo());
    f.plugin->setProgram(3);
    f.editor->idle();
    // Undoing now would copy the first program's state over the third.
    EXPECT_FALSE(f.host->canUndo());
    EXPECT_FLOAT_EQ(f.volume(), 0.5f);
}

TEST(PluginEditorHostTest, WithoutAPatchListTheArrowsAreGrey) {
    Fixture f;
    EXPECT_FALSE(f.editor->actions().canPerform(*f.editor->root(), "next", ""));
    EXPECT_FALSE(f.editor->actions().canPerform(*f.editor->root(), "previous", ""));
}

// ---------------------------------------------------------------------------
// Patch files from the panel: the patch menu, loading as one undo step,
// the arrows, saving and a file that does not read.

namespace {

constexpr const char* BROWSING_LAYOUT =
    "views: { { type: \"click\", label: \"patches\", bounds: { 0, 0, 100, 20 },"
    "           actions: { { \"\", \"popup\", { items: { { \"&Browse Patches...\", \"open\" }, \"-\", <programList> } } } } } }";

struct Browsing {
    std::filesystem::path dir;
    std::unique_ptr<PluginCore> plugin;
    int limit = 100;
    std::unique_ptr<PluginEditorHost> host;
    Fomal::VirtualClock clock;
    std::unique_ptr<Fomal::EditorCore> editor;
    std::vector<std::string> alerts;

    Browsing() {
        dir = std::filesystem::temp_directory_path() /
              ("tendrane-browsing-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
        std::filesystem::create_directories(dir / "set");
        std::filesystem::create_directories(dir / "empty");
        for (int i : {1, 2, 3}) {
            NorvelleProgram p = factoryProgram(i);
            std::ofstream(dir / "set" / ("Patch " + std::to_string(i) + ".tdrn"), std::ios::binary)
                << writeProgramText(p, true);
        }
        std::ofstream(dir / "set" / "Zz Broken.tdrn") << "TendranePatch: { Version: 99 }";
        plugin = std::make_unique<PluginCore>(&loggingHost, std::make_unique<BlockTestEngine>());
        plugin->resume();
        host = std::make_unique<PluginEditorHost>(*plugin, limit);
        editor = std::make_unique<Fomal::EditorCore>(*host, clock);
        editor->onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
        editor->openLayoutText(BROWSING_LAYOUT);
    }
    ~Browsing() { std::filesystem::remove_all(dir); }

    std::string file(const std::string& name) const { return (dir / "set" / name).string(); }
    std::string name() { return host->patchName(); }
    bool perform(std::string_view action, std::string_view params = "") {
        editor->actions().perform(*editor->root(), action, params, true);
        editor->idle();
        return alerts.empty();
    }
    const std::vector<Fomal::PopupItem>& openPatchMenu() {
        editor->mouseDown({10, 10, Fomal::LEFT_BIT});
        editor->mouseUp({10, 10, Fomal::LEFT_BIT});
        return static_cast<Fomal::PopupMenu&>(*editor->overlay().back()).items();
    }
};

}  // namespace

TEST(PluginEditorHostTest, LoadingAFileIsOneUndoStepNamedAfterTheFile) {
    Browsing b;
    const std::string before = b.name();
    ASSERT_TRUE(b.perform("load", notation::escape(b.file("Patch 2.tdrn"))));
    EXPECT_EQ(b.name(), "Patch 2");
    EXPECT_EQ(b.plugin->currentProgramRecord().seed, factoryProgram(2).seed);
    EXPECT_EQ(b.host->undoLabel(), "Load Patch");
    ASSERT_TRUE(b.perform("undo"));
    EXPECT_EQ(b.name(), before);
}

TEST(PluginEditorHostTest, AFileThatDoesNotReadLeavesThePatchAndAlerts) {
    Browsing b;
    const std::string before = b.name();
    const std::uint32_t seed = b.plugin->currentProgramRecord().seed;
    EXPECT_FALSE(b.perform("load", notation::escape(b.file("Zz Broken.tdrn"))));
    ASSERT_EQ(b.alerts.size(), 1u);
    EXPECT_EQ(b.alerts[0].rfind("Tendrane: The operation could not be performed due to the following error:", 0), 0u)
        << b.alerts[0];
    EXPECT_EQ(b.name(), before);
    EXPECT_EQ(b.plugin->currentProgramRecord().seed, seed);
    EXPECT_FALSE(b.host->canUndo());
}

TEST(PluginEditorHostTest, ThePatchMenuListsTheFolderOrSaysThereIsNothing) {
    Browsing b;
    ASSERT_TRUE(b.perform("load", notation::escape(b.file("Patch 1.tdrn"))));
    const std::vector<Fomal::PopupItem>& items = b.openPatchMenu();
    ASSERT_EQ(items.size(), 6u);
    EXPECT_EQ(items[2].title, "Patch 1");
    EXPECT_EQ(items[2].action, "load");
    EXPECT_EQ(notation::unescape(items[2].params), b.file("Patch 1.tdrn"));
    EXPECT_EQ(items[5].title, "Zz Broken");
    // Choosing an entry loads it.
    ASSERT_TRUE(static_cast<Fomal::PopupMenu&>(*b.editor->overlay().back()).choose("Patch 3"));
    EXPECT_EQ(b.name(), "Patch 3");

    // A patch whose folder holds no patch files.
    NorvelleProgram lonely = factoryProgram(4);
    lonely.path = OrlFiles::Path::parse((b.dir / "empty" / "Gone.tdrn").string()).text();
    b.plugin->replaceCurrentProgram(lonely);
    b.editor->closeMenus();
    const std::vector<Fomal::PopupItem>& none = b.openPatchMenu();
    ASSERT_EQ(none.size(), 3u);
    EXPECT_EQ(none[2].title, "No programs in chosen folder, select \"Browse Patches...\"");
    EXPECT_FALSE(none[2].enabled);
}

TEST(PluginEditorHostTest, TheArrowsStepThroughTheFolderAndStopAtTheEnds) {
    Browsing b;
    // Without a file there is nowhere to step.
    EXPECT_FALSE(b.editor->actions().canPerform(*b.editor->root(), "next", ""));
    ASSERT_TRUE(b.perform("load", notation::escape(b.file("Patch 1.tdrn"))));
    EXPECT_FALSE(b.editor->actions().canPerform(*b.editor->root(), "previous", ""));
    ASSERT_TRUE(b.editor->actions().canPerform(*b.editor->root(), "next", ""));
    ASSERT_TRUE(b.perform("next"));
    EXPECT_EQ(b.name(), "Patch 2");
    EXPECT_EQ(b.host->undoLabel(), "Next Patch");
    ASSERT_TRUE(b.perform("next"));
    EXPECT_EQ(b.name(), "Patch 3");
    ASSERT_TRUE(b.perform("previous"));
    EXPECT_EQ(b.name(), "Patch 2");
    // The last file does not read: the step fails and the patch stays.
    ASSERT_TRUE(b.perform("next"));
    EXPECT_FALSE(b.perform("next"));
    EXPECT_EQ(b.name(), "Patch 3");
}

TEST(PluginEditorHostTest, SavingWritesTheFileAndNamesThePatch) {
    Browsing b;
    ASSERT_TRUE(b.perform("load", notation::escape(b.file("Patch 1.tdrn"))));
    b.plugin->setParameter(8, 0.25f);
    b.host->savePatch(b.file("My Sound.tdrn"));
    EXPECT_EQ(b.name(), "My Sound");
    EXPECT_FALSE(b.plugin->currentProgramRecord().modified);
    std::ifstream in(b.file("My Sound.tdrn"), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("\r\n"), std::string::npos);
    EXPECT_EQ(writeProgramText(readProgramText(text), true), writeProgramText(b.plugin->currentProgramRecord(), true));
    // The saved file is in the list at once.
    b.editor->closeMenus();
    EXPECT_EQ(b.openPatchMenu().size(), 7u);
}

// Web pages and documents go to the desktop's opener: here a stand-in that
// notes what it was given.
TEST(PluginEditorHostTest, PagesAndFilesGoToTheSystemsOpener) {
    Browsing b;
    const std::filesystem::path bin = b.dir / "bin", said = b.dir / "opened.txt";
    std::filesystem::create_directories(bin);
    std::ofstream(bin / "xdg-open") << "#!/bin/sh\nprintf '%s' \"$1\" > '" << said.string() << ".tmp' && mv '"
                                    << said.string() << ".tmp' '" << said.string() << "'\n";
    std::filesystem::permissions(bin / "xdg-open", std::filesystem::perms::owner_all);
    const char* oldPath = std::getenv("PATH");
    const std::string path = oldPath != nullptr ? oldPath : "";
    setenv("PATH", (bin.string() + ":" + path).c_str(), 1);

    b.host->openURL("https://tendrane.invalid/update?v=3");
    for (int i = 0; i < 200 && !std::filesystem::exists(said); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::ifstream in(said);
    const std::string heard((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(heard, "https://tendrane.invalid/update?v=3");

    // A document that is not there is an error, and so is a desktop
    // without an opener.
    EXPECT_THROW(b.host->launch((b.dir / "Missing Guide.pdf").string(), ""), std::exception);
    setenv("PATH", "/nonexistent", 1);
    EXPECT_THROW(b.host->openURL("https://tendrane.invalid/"), std::exception);
    setenv("PATH", path.c_str(), 1);
}

// The program "Jingle Balls" plays the jingle, and the panel shows the
// juggler while it plays.
TEST(PluginEditorHostTest, TheJuggleComesOutWithTheJingleAndGoesWithIt) {
    HostLog log;
    hostLog = &log;
    auto plugin = std::make_unique<PluginCore>(&loggingHost, std::make_unique<BlockTestEngine>());
    plugin->resume();
    int limit = 100;
    PluginEditorHost host(*plugin, limit);
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(host, clock);
    editor.openLayoutText(
        "triggers: { { when: \"openJuggler\", action: \"{ ::juggler = 'out' }\" },"
        "            { when: \"closeJuggler\", action: \"{ ::juggler = 'gone' }\" } }\n"
        "views: { }");
    editor.scripts().evaluate(*editor.root(), "{ ::juggler = 'never' }");
    auto juggler = [&] { return editor.scripts().evaluate(*editor.root(), "{ ::juggler }"); };
    editor.idle();
    EXPECT_EQ(juggler(), "never");
    char name[] = "Jingle Balls";
    plugin->setProgramName(name);
    ASSERT_TRUE(plugin->hasJingle());
    editor.idle();
    EXPECT_EQ(juggler(), "out");
    char other[] = "Radix Gravis";
    plugin->setProgramName(other);
    editor.idle();
    EXPECT_EQ(juggler(), "gone");
    hostLog = nullptr;
}

// The juggler's gravity and bounce are the panel's own: they move without
// a step of the patch's history or a word to the host.
TEST(PluginEditorHostTest, TheJugglersControlsBelongToThePanel) {
    Fixture f;
    ASSERT_TRUE(f.host->hasControl("JugglerGravity"));
    EXPECT_DOUBLE_EQ(f.host->controlValue("JugglerGravity"), 0.5);
    f.host->beginEdit("JugglerGravity");
    f.host->changeControl("JugglerGravity", 0.8);
    f.host->endEdit("JugglerGravity");
    EXPECT_DOUBLE_EQ(f.host->controlValue("JugglerGravity"), 0.8);
    EXPECT_FALSE(f.host->canUndo());
    EXPECT_TRUE(f.log.opcodes.empty());
    EXPECT_FALSE(f.host->hasControl("NoSuchControl"));
}

// One gesture over several parameters (a cloned plant's branches): the host
// hears each begin and each end.
TEST(PluginEditorHostTest, AGestureOverSeveralParametersEndsEachOfThem) {
    Fixture f;
    for (const char* branch : {"Branch1", "Branch2", "Branch3"}) f.host->beginEdit(branch);
    for (const char* branch : {"Branch1", "Branch2", "Branch3"}) f.host->endEdit(branch);
    const long begins = std::count(f.log.opcodes.begin(), f.log.opcodes.end(), int(audioMasterBeginEdit));
    const long ends = std::count(f.log.opcodes.begin(), f.log.opcodes.end(), int(audioMasterEndEdit));
    EXPECT_EQ(begins, 3);
    EXPECT_EQ(ends, 3);
    // An end without a begin says nothing.
    f.host->endEdit("Branch4");
    EXPECT_EQ(std::count(f.log.opcodes.begin(), f.log.opcodes.end(), int(audioMasterEndEdit)), 3);
}
