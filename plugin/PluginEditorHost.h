// What an editor in a host reaches through the plug-in: the parameters as
// its controls, the undo history of the program it shows, notes played
// from the panel and the program steps. A drag of a control is one step of
// the history and one gesture of the host's automation.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "fomal/EditorHost.h"
#include "patch/MidiConfigRecord.h"
#include "patch/PatchBrowser.h"
#include "patch/UndoHistory.h"
#include "views/ProgramHost.h"

class PluginCore;

class PluginEditorHost : public Fomal::EditorHost, public views::ProgramHost, private UndoHost {
public:
    // limit is the script constant undoHistory; translate the catalogue.
    PluginEditorHost(PluginCore& plugin, const int& undoLimit, UndoHistory::Translator translate = {});

    std::string patchName() const override;
    std::string undoLabel() const override { return history_.undoLabel(); }
    std::string redoLabel() const override { return history_.redoLabel(); }

    // The controls are the parameters, and the panel's own controls that
    // belong to no patch (the juggler's gravity and bounce).
    bool hasControl(std::string_view label) const override;
    double controlValue(std::string_view label) const override;
    void beginEdit(std::string_view label) override;
    void changeControl(std::string_view label, double value) override;
    void endEdit(std::string_view label) override;
    std::string controlText(std::string_view label) const override;

    // The genes of the current program. The first change of an edit saves
    // the undo step "Gene Modifications"; each change is published to the
    // sound at once. A change outside an edit merges with one just before.
    int geneCount() const override;
    std::string geneName(int gene) const override;
    double geneValue(int gene) const override;
    double geneInitValue(int gene) const override;
    void beginGeneEdit() override;
    void changeGene(int gene, double value) override;
    void endGeneEdit() override;

    bool canUndo() const override { return history_.canUndo(); }
    bool canRedo() const override { return history_.canRedo(); }
    void undo() override { history_.undo(); }
    void redo() override { history_.redo(); }

    // The controllers of the instance's MIDI configuration; a change is
    // heard at once and kept in the host's chunk.
    int controllerOf(int function) const override;
    void assignController(int function, int controller) override;
    void learnController(int function) override;
    int learningFunction() const override;

    void previewNote(bool down, int note, int velocity) override;
    // Takes the plug-in's refresh flag; a program switched by the host or
    // by MIDI starts a new history, for the history is of the program shown.
    std::uint64_t revision() override;

    bool suspended() const override;
    bool jingling() const override;

    // The patch for the scripts.
    NorvelleProgram program() const override { return currentProgram(); }
    void writeProgram(const NorvelleProgram& record) override { setCurrentProgram(record); }
    void saveUndo(std::string_view label) override { history_.saveUndo(label); }
    void setParameter(int index, float value) override;
    float parameter(int index) const override;
    void preview(const NorvelleProgram* record) override;
    int selectedBranch() const override { return selectedBranch_; }
    void selectBranch(int branch) override;
    bool visualState(VisualState& state) const override;

    Fomal::FileDialogRequest patchDialog(bool save) override;
    std::vector<std::string> patchFiles() override;
    void loadPatch(std::string_view path, std::string_view label, bool chosenInDialog) override;
    void savePatch(std::string_view path) override;
    bool canStepPatch(int direction) override;
    void stepPatch(int direction) override;
    void launch(std::string_view path, std::string_view relativeTo) override;
    void openURL(std::string_view url) override;

    // The instance's MIDI configuration, published to the plug-in at once;
    // its files and the default in the preferences.
    Fomal::MidiSettings midiSettings() const override;
    void changeMidiSettings(const Fomal::MidiSettings& settings) override;
    std::string midiConfigText() const override;
    void setMidiConfigText(std::string_view text) override;
    void resetMidiConfig() override;
    Fomal::FileDialogRequest midiConfigDialog(bool save) override;
    void loadMidiConfig(std::string_view path) override;
    void saveMidiConfig(std::string_view path) override;
    void makeMidiConfigDefault() override;
    void stopLearning() override;

    UndoHistory& history() { return history_; }

    // The parameter of a name, or -1.
    static int parameterIndex(std::string_view name);

private:
    NorvelleProgram currentProgram() const override;
    void setCurrentProgram(const NorvelleProgram& record) override;
    MidiConfigRecord midiConfig() const;
    void publishMidiConfig(const MidiConfigRecord& config);

    PluginCore& plugin_;
    UndoHistory history_;
    PatchBrowser browser_;
    // The control being dragged, and whether its first change is saved.
    std::string editing_;
    bool editSaved_ = false;
    // A gene edit is under way, and its first change is saved.
    bool geneEditing_ = false;
    bool geneEditSaved_ = false;
    // The parameters whose gesture the host has heard begin and not end.
    std::set<int> gestures_;
    std::uint64_t revision_ = 0;
    int historyProgram_ = 0;
    int selectedBranch_ = -1;
    std::map<std::string, double, std::less<>> panelControls_ = {{"JugglerGravity", 0.5}, {"JugglerBumperForce", 0.5}};
};
