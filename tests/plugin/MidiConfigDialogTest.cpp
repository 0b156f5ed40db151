// The MIDI configuration dialog over the plug-in: each control changes the
// configuration the running instance hears and the host's chunk keeps;
// Cancel puts back what was there when the dialog opened; Reset brings the
// defaults; files saved and loaded through the panel's file dialogs come
// back byte for byte, and one that does not read leaves the configuration
// and alerts; Make Default is what a new instance starts with.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "fomal/FileDialogView.h"
#include "fomal/MidiConfigDialog.h"
#include "patch/MidiConfigDefaults.h"
#include "patch/MidiConfigText.h"
#include "patch/Preferences.h"
#include "plugin/PluginCore.h"
#include "plugin/PluginEditorHost.h"
#include "tests/plugin/BlockTestEngine.h"

namespace fs = std::filesystem;

namespace {

VstIntPtr VST_CALL quietHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

std::string fileText(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// Preferences of the test's own, under its folder: the dialogs' folder and
// the default it writes are not seen by tests running beside it.
struct OwnPreferences {
    std::string saved;
    bool had = false;
    explicit OwnPreferences(const fs::path& dir) {
        if (const char* was = std::getenv("XDG_CONFIG_HOME")) {
            saved = was;
            had = true;
        }
        fs::create_directories(dir);
        setenv("XDG_CONFIG_HOME", dir.c_str(), 1);
    }
    ~OwnPreferences() {
        if (had) setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
        else unsetenv("XDG_CONFIG_HOME");
    }
};

struct Panel {
    fs::path dir;
    std::unique_ptr<OwnPreferences> preferences;
    std::unique_ptr<PluginCore> plugin;
    int limit = 100;
    std::unique_ptr<PluginEditorHost> host;
    Fomal::VirtualClock clock;
    std::unique_ptr<Fomal::EditorCore> editor;
    std::vector<std::string> alerts;

    Panel() {
        dir = fs::temp_directory_path() /
              ("tendrane-midiconfig-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
        fs::create_directories(dir);
        preferences = std::make_unique<OwnPreferences>(dir.string() + "-config");
        plugin = std::make_unique<PluginCore>(&quietHost, std::make_unique<BlockTestEngine>());
        plugin->resume();
        host = std::make_unique<PluginEditorHost>(*plugin, limit);
        editor = std::make_unique<Fomal::EditorCore>(*host, clock);
        editor->onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
        editor->openLayoutText("views: { }");
        // The file dialogs open in the test's folder.
        Preferences::write("currentMidiConfigDir", dir.string());
    }
    ~Panel() {
        editor.reset();
        host.reset();
        plugin.reset();
        preferences.reset();
        fs::remove_all(dir);
        fs::remove_all(dir.string() + "-config");
    }

    MidiConfigRecord config() {
        MidiConfigRecord* current = plugin->midiConfig().acquire();
        MidiConfigRecord copy = *current;
        plugin->midiConfig().release(current);
        return copy;
    }
    Fomal::MidiConfigDialog& open() {
        editor->actions().perform(*editor->root(), "midiConfig", "", true);
        Fomal::MidiConfigDialog* d = dialog();
        if (d == nullptr) throw std::runtime_error("no dialog");
        return *d;
    }
    Fomal::MidiConfigDialog* dialog() {
        return editor->overlay().empty() ? nullptr
                                         : dynamic_cast<Fomal::MidiConfigDialog*>(editor->overlay().back().get());
    }
    Fomal::FileDialogView* files() {
        return editor->overlay().empty() ? nullptr : dynamic_cast<Fomal::FileDialogView*>(editor->overlay().back().get());
    }
    bool choose(std::string_view title) { return editor->choose(title); }
    // The MIDI configuration text of the bank chunk the host would store.
    std::string chunk() {
        void* data = nullptr;
        const VstInt32 size = plugin->getChunk(&data, false);
        return std::string(static_cast<const char*>(data), std::size_t(size));
    }
};

}  // namespace

TEST(MidiConfigDialogTest, TheMenuActionOpensTheDialogShowingTheConfiguration) {
    Panel p;
    Fomal::MidiConfigDialog& d = p.open();
    EXPECT_EQ(d.shownValue(Fomal::MidiConfigDialog::inputChannel), "none");
    EXPECT_EQ(d.shownValue(Fomal::MidiConfigDialog::outputChannel), "1");
    EXPECT_EQ(d.shownValue(Fomal::MidiConfigDialog::pitchWheel), "12");
    EXPECT_EQ(d.shownValue(Fomal::MidiConfigDialog::velocityCurve), "standard");
    EXPECT_EQ(d.note(), "(There are 0 MIDI controllers reassigned in this configuration.)");
    EXPECT_EQ(d.openedText(), writeMidiConfig(MidiConfigRecord(), false));
}

TEST(MidiConfigDialogTest, EachControlChangesTheRunningConfigurationAndTheChunk) {
    Panel p;
    p.open();
    ASSERT_TRUE(p.choose("Input channel:"));  // none, then 1
    EXPECT_EQ(p.config().inputMidiChannel, 0);
    ASSERT_TRUE(p.choose("Input channel: <"));
    EXPECT_EQ(p.config().inputMidiChannel, -1);
    ASSERT_TRUE(p.choose("Input channel: <"));  // round from none to 16
    EXPECT_EQ(p.config().inputMidiChannel, 15);
    ASSERT_TRUE(p.choose("Input channel: 3"));
    EXPECT_EQ(p.config().inputMidiChannel, 2);

    ASSERT_TRUE(p.choose("Output channel: none"));
    EXPECT_EQ(p.config().outputMidiChannel, -1);
    ASSERT_TRUE(p.choose("Output channel: >"));
    EXPECT_EQ(p.config().outputMidiChannel, 0);

    ASSERT_TRUE(p.choose("Pitch wheel:"));  // 12 comes round to 0
    EXPECT_EQ(p.config().pitchWheelRange, 0);
    ASSERT_TRUE(p.choose("Pitch wheel: 7"));
    EXPECT_EQ(p.config().pitchWheelRange, 7);
    EXPECT_FALSE(p.choose("Pitch wheel: 13"));
    EXPECT_EQ(p.config().pitchWheelRange, 7);

    ASSERT_TRUE(p.choose("Velocity curve:"));
    EXPECT_EQ(p.config().velocityCurve, MidiConfigRecord::Hard);
    ASSERT_TRUE(p.choose("Velocity curve: soft"));
    EXPECT_EQ(p.config().velocityCurve, MidiConfigRecord::Soft);

    ASSERT_TRUE(p.choose("Enable MIDI program changes"));
    EXPECT_TRUE(p.config().supportMidiProgramChange);
    // The access key's mark may stand in the title.
    ASSERT_TRUE(p.choose("Select &branches with MIDI notes"));
    EXPECT_FALSE(p.config().autoSelect);

    const std::string text = writeMidiConfig(p.config(), false);
    EXPECT_NE(text.find("\tMIDIReceiveChannel: 3\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\tVelocityCurve: \"soft\"\n"), std::string::npos) << text;
    // The host's chunk carries the changed text.
    EXPECT_NE(p.chunk().find(text), std::string::npos);
    // Return keeps the changes and closes the dialog.
    p.editor->keyDown({"return", 0, 0});
    EXPECT_EQ(p.dialog(), nullptr);
    EXPECT_EQ(writeMidiConfig(p.config(), false), text);
}

TEST(MidiConfigDialogTest, TheNoteCountsTheReassignedControllers) {
    Panel p;
    Fomal::MidiConfigDialog& d = p.open();
    p.host->assignController(0, 5);
    p.host->assignController(3, -1);
    EXPECT_EQ(d.note(), "(There are 2 MIDI controllers reassigned in this configuration.)");
}

TEST(MidiConfigDialogTest, CancelAndEscapePutBackTheConfigurationAsItWasWhenOpened) {
    Panel p;
    p.host->assignController(4, 20);
    const std::string before = writeMidiConfig(p.config(), false);
    p.open();
    ASSERT_TRUE(p.choose("Pitch wheel: 2"));
    ASSERT_TRUE(p.choose("Enable MIDI program changes"));
    p.host->assignController(1, 30);  // learnt meanwhile
    ASSERT_NE(writeMidiConfig(p.config(), false), before);
    ASSERT_TRUE(p.choose("Cancel"));
    EXPECT_EQ(p.dialog(), nullptr);
    EXPECT_EQ(writeMidiConfig(p.config(), false), before);

    p.open();
    ASSERT_TRUE(p.choose("Velocity curve: hard"));
    p.editor->keyDown({"escape", 0, 0});
    EXPECT_EQ(p.dialog(), nullptr);
    EXPECT_EQ(writeMidiConfig(p.config(), false), before);
    EXPECT_TRUE(p.alerts.empty());
}

TEST(MidiConfigDialogTest, ResetBringsEveryValueAndControllerToTheDefaults) {
    Panel p;
    p.host->assignController(0, 5);
    p.open();
    ASSERT_TRUE(p.choose("Input channel: 9"));
    ASSERT_TRUE(p.choose("Select branches with MIDI notes"));
    ASSERT_TRUE(p.choose("Reset"));
    EXPECT_EQ(writeMidiConfig(p.config(), false), writeMidiConfig(MidiConfigRecord(), false));
    EXPECT_EQ(p.dialog()->note(), "(There are 0 MIDI controllers reassigned in this configuration.)");
    // Reset is a change like the others: OK keeps it.
    ASSERT_TRUE(p.choose("OK"));
    EXPECT_EQ(p.config().inputMidiChannel, -1);
}

TEST(MidiConfigDialogTest, SaveThenLoadThroughTheFileDialogsGivesTheSameTextByteForByte) {
    Panel p;
    p.host->assignController(8, 11);
    p.open();
    ASSERT_TRUE(p.choose("Output channel: 4"));
    ASSERT_TRUE(p.choose("Velocity curve: hard"));
    const std::string saved = writeMidiConfig(p.config(), false);

    ASSERT_TRUE(p.choose("Save..."));
    Fomal::FileDialogView* save = p.files();
    ASSERT_NE(save, nullptr);
    EXPECT_EQ(save->fileName(), "MIDI Config.qbmc");
    EXPECT_EQ(save->folder().utf8(), OrlFiles::Path::parse(p.dir.string()).utf8());
    ASSERT_TRUE(p.choose("Save"));
    ASSERT_TRUE(p.alerts.empty()) << p.alerts[0];
    const fs::path file = p.dir / "MIDI Config.qbmc";
    const std::string written = fileText(file);
    // The file names itself.
    EXPECT_EQ(written.rfind("TendraneMIDIConfig: {\n\tPath: ", 0), 0u) << written;
    EXPECT_EQ(readMidiConfig(u"", written).outputMidiChannel, 3);
    // Back under the MIDI dialog, which still shows the configuration.
    ASSERT_NE(p.dialog(), nullptr);

    ASSERT_TRUE(p.choose("Reset"));
    ASSERT_TRUE(p.choose("Load..."));
    Fomal::FileDialogView* load = p.files();
    ASSERT_NE(load, nullptr);
    EXPECT_EQ(load->entryNames(), (std::vector<std::string>{"..", "MIDI Config.qbmc"}));
    ASSERT_TRUE(p.choose("MIDI Config.qbmc"));
    ASSERT_TRUE(p.choose("MIDI Config.qbmc"));
    ASSERT_TRUE(p.alerts.empty()) << p.alerts[0];
    EXPECT_EQ(writeMidiConfig(p.config(), false), saved);
    EXPECT_EQ(p.dialog()->shownValue(Fomal::MidiConfigDialog::outputChannel), "4");

    // Saved again over itself: the very bytes of the first save.
    ASSERT_TRUE(p.choose("Save..."));
    ASSERT_TRUE(p.choose("Save"));
    ASSERT_TRUE(p.choose("Replace"));
    ASSERT_TRUE(p.alerts.empty()) << p.alerts[0];
    EXPECT_EQ(fileText(file), written);
    EXPECT_EQ(Preferences::read("currentMidiConfigDir").value_or(""), OrlFiles::Path::parse(p.dir.string()).utf8());
}

TEST(MidiConfigDialogTest, AFileThatDoesNotReadAlertsAndLeavesTheConfiguration) {
    Panel p;
    std::ofstream(p.dir / "Broken.qbmc", std::ios::binary) << "TendraneMIDIConfig: {\n\tPitchWheelRange: 3\n\tVelocityCurve: 'hard\n}\n";
    p.open();
    ASSERT_TRUE(p.choose("Pitch wheel: 5"));
    const std::string before = writeMidiConfig(p.config(), false);
    ASSERT_TRUE(p.choose("Load..."));
    ASSERT_TRUE(p.choose("Broken.qbmc"));
    ASSERT_TRUE(p.choose("Broken.qbmc"));
    ASSERT_EQ(p.alerts.size(), 1u);
    EXPECT_EQ(p.alerts[0].rfind("Tendrane: The operation could not be performed due to the following error:", 0), 0u)
        << p.alerts[0];
    EXPECT_EQ(writeMidiConfig(p.config(), false), before);
    // The alert closes onto the dialog.
    ASSERT_TRUE(p.choose("OK"));
    ASSERT_NE(p.dialog(), nullptr);
}

TEST(MidiConfigDialogTest, MakeDefaultIsWhatANewInstanceWithoutAChunkStartsWith) {
    Panel p;
    p.host->assignController(2, 44);
    p.open();
    ASSERT_TRUE(p.choose("Input channel: 10"));
    ASSERT_TRUE(p.choose("Enable MIDI program changes"));
    ASSERT_TRUE(p.choose("Make Default"));
    ASSERT_EQ(p.alerts.size(), 1u);
    EXPECT_EQ(p.alerts[0], "Tendrane: The current MIDI configuration has been made default.");
    const std::string text = writeMidiConfig(p.config(), false);
    EXPECT_EQ(Preferences::read(DEFAULT_MIDI_CONFIG_KEY).value_or(""), text);
    ASSERT_TRUE(p.choose("OK"));  // the alert
    ASSERT_TRUE(p.choose("OK"));  // the dialog
    EXPECT_EQ(p.dialog(), nullptr);

    PluginCore fresh(&quietHost, std::make_unique<BlockTestEngine>());
    fresh.lateConstruction();
    MidiConfigRecord* started = fresh.midiConfig().acquire();
    const std::string startedText = writeMidiConfig(*started, false);
    fresh.midiConfig().release(started);
    EXPECT_EQ(startedText, text);
}
