// The program behind a panel that has no plug-in behind it (a layout
// previewed from a file, tests, benchmarks): a fixed patch name, controls
// kept as plain values, no history, and nowhere for notes or files to go.
#pragma once

#include <map>
#include <string>

#include "fomal/EditorHost.h"

namespace Fomal {

class StillHost : public EditorHost {
public:
    explicit StillHost(std::string patchName = "Init") : patchName_(std::move(patchName)) {}

    std::string patchName() const override { return patchName_; }
    std::string undoLabel() const override { return {}; }
    std::string redoLabel() const override { return {}; }

    // Every label is a control; one never set stands at 0.5.
    bool hasControl(std::string_view) const override { return true; }
    double controlValue(std::string_view label) const override;
    void beginEdit(std::string_view) override { ++gestures_; }
    void endEdit(std::string_view) override {}
    // How many edits have begun: each is one step of the plug-in's history.
    int gestures() const { return gestures_; }
    void changeControl(std::string_view label, double value) override {
        controls_[std::string(label)] = value;
        ++revision_;
    }
    std::uint64_t revision() override { return revision_; }
    // The value with two decimals.
    std::string controlText(std::string_view label) const override;

    bool canUndo() const override { return false; }
    bool canRedo() const override { return false; }
    void undo() override {}
    void redo() override {}

    // The controllers kept here start with none.
    int controllerOf(int function) const override;
    void assignController(int function, int controller) override;
    void learnController(int function) override;
    int learningFunction() const override { return learning_; }
    void stopLearning() override { learning_ = -1; }

    // Without an engine a played note has nowhere to sound.
    void previewNote(bool, int, int) override {}

    // There are no patch files and no system services behind the panel.
    // No patch files: the dialogs open nowhere, the list is empty.
    FileDialogRequest patchDialog(bool save) override;
    std::vector<std::string> patchFiles() override { return {}; }
    void loadPatch(std::string_view, std::string_view, bool) override;
    void savePatch(std::string_view) override;
    bool canStepPatch(int) override { return false; }
    void stepPatch(int) override {}
    void launch(std::string_view, std::string_view) override;
    void openURL(std::string_view) override;

    // The MIDI settings are kept here as plain values; there is no text,
    // no file and no store behind them.
    MidiSettings midiSettings() const override { return midi_; }
    void changeMidiSettings(const MidiSettings& settings) override;
    std::string midiConfigText() const override;
    void setMidiConfigText(std::string_view text) override;
    void resetMidiConfig() override;
    FileDialogRequest midiConfigDialog(bool save) override;
    void loadMidiConfig(std::string_view path) override;
    void saveMidiConfig(std::string_view path) override;
    void makeMidiConfigDefault() override;

private:
    std::string patchName_;
    std::map<std::string, double, std::less<>> controls_;
    std::uint64_t revision_ = 0;
    int gestures_ = 0;
    std::map<int, int> controllers_;
    int learning_ = -1;
    MidiSettings midi_;
};

}  // namespace Fomal
