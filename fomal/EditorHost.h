// What the editor asks of the program around it: the values its controls
// are bound to, the undo history, notes played from the panel, and the
// patch and file operations that the actions name. The plug-in answers for
// a host's editor; the headless panel and the tests answer with their own.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fomal/FileDialog.h"

namespace Fomal {

// What the MIDI configuration dialog shows and edits of the instance's
// MIDI configuration.
struct MidiSettings {
    int inputChannel = -1;   // 0 to 15, -1 for none (every channel)
    int outputChannel = 0;   // 0 to 15, -1 for none
    int pitchWheelRange = 12;  // semitones, 0 to 12
    int velocityCurve = 1;   // 0 soft, 1 standard, 2 hard
    bool programChanges = false;
    bool selectWithNotes = true;
    // How many controllers differ from the defaults; only shown.
    int reassignedControllers = 0;

    bool operator==(const MidiSettings&) const = default;
};

class EditorHost {
public:
    virtual ~EditorHost() = default;

    // The name of the patch the editor shows (^N), and the labels of the
    // steps undo and redo would take, through the catalogue (^U, ^R);
    // empty when there is none.
    virtual std::string patchName() const = 0;
    virtual std::string undoLabel() const = 0;
    virtual std::string redoLabel() const = 0;

    // Controls are bound by label to a value from 0 to 1: a parameter of
    // the patch, or a value that a script keeps.
    virtual bool hasControl(std::string_view label) const = 0;
    virtual double controlValue(std::string_view label) const = 0;
    // A change made by the user. The host keeps the state before it for
    // undo; the changes between beginEdit and endEdit of the same control
    // (one drag) are one step, and the host's automation hears them as one
    // gesture.
    virtual void beginEdit(std::string_view label) = 0;
    virtual void changeControl(std::string_view label, double value) = 0;
    virtual void endEdit(std::string_view label) = 0;
    // The value as the user reads it (a hint's ^X).
    virtual std::string controlText(std::string_view label) const = 0;

    virtual bool canUndo() const = 0;
    virtual bool canRedo() const = 0;
    virtual void undo() = 0;
    virtual void redo() = 0;

    // The genome of the patch, for the DNA view: how many genes, each
    // one's name, value (0 to 1) and Init value. A host without a patch
    // has no genes.
    virtual int geneCount() const { return 0; }
    virtual std::string geneName(int /*gene*/) const { return {}; }
    virtual double geneValue(int /*gene*/) const { return 0.0; }
    virtual double geneInitValue(int /*gene*/) const { return 0.0; }
    // A change of genes made by the user, heard at once. The changes
    // between beginGeneEdit and endGeneEdit (one drag) are one undo step,
    // "Gene Modifications".
    virtual void beginGeneEdit() {}
    virtual void changeGene(int /*gene*/, double /*value*/) {}
    virtual void endGeneEdit() {}

    // The MIDI controllers of the functions, numbered as in the MIDI
    // configuration (ModWheel, Rotation, ... TriggerH): the controller
    // number that drives a function, -1 for none; assigning one takes it
    // from the function it drove. Learning clears the function's controller
    // and waits for the next controller moved.
    virtual int controllerOf(int function) const = 0;
    virtual void assignController(int function, int controller) = 0;
    virtual void learnController(int function) = 0;
    // The function waiting to learn, -1 for none.
    virtual int learningFunction() const = 0;

    // A note played from the panel (MIDI note number, velocity 1 to 127).
    virtual void previewNote(bool down, int note, int velocity) = 0;

    // A number that changes whenever something the editor shows may have
    // changed outside it (automation, a program change, undo): the editor
    // polls it at every idle tick and brings its states up to date.
    virtual std::uint64_t revision() = 0;
    // The host has suspended the plug-in: no sound is made.
    virtual bool suspended() const { return false; }
    // The plug-in plays its jingle (the program "Jingle Balls"): the
    // panel shows the juggler meanwhile.
    virtual bool jingling() const { return false; }

    // The patch and file operations of the actions; each may refuse with
    // an exception that the action reports.
    //
    // The open (save false) or save dialog for patches: its folder, the
    // name a save proposes and the file types.
    virtual FileDialogRequest patchDialog(bool save) = 0;
    // The patch files of the patch folder (UTF-8 paths), for the patch menu.
    virtual std::vector<std::string> patchFiles() = 0;
    // Loads a patch file as one undo step under label; a file chosen in a
    // dialog also makes its folder the dialogs' folder. A file that does
    // not read leaves the patch as it was.
    virtual void loadPatch(std::string_view path, std::string_view label, bool chosenInDialog) = 0;
    // Saves the patch as that file, which names it.
    virtual void savePatch(std::string_view path) = 0;
    // The previous (-1) or next (+1) patch file of the patch's folder.
    virtual bool canStepPatch(int direction) = 0;
    virtual void stepPatch(int direction) = 0;
    virtual void launch(std::string_view path, std::string_view relativeTo) = 0;
    virtual void openURL(std::string_view url) = 0;

    // The instance's MIDI configuration. Every change is heard at once and
    // kept in the host's chunk. A change of the settings leaves the
    // controllers as they are.
    virtual MidiSettings midiSettings() const = 0;
    virtual void changeMidiSettings(const MidiSettings& settings) = 0;
    // The whole configuration as its text, without a path; a text that
    // does not read throws and leaves the configuration as it was.
    virtual std::string midiConfigText() const = 0;
    virtual void setMidiConfigText(std::string_view text) = 0;
    // Every value, the controllers too, back to the defaults.
    virtual void resetMidiConfig() = 0;
    // The open (save false) or save dialog for MIDI configuration files.
    virtual FileDialogRequest midiConfigDialog(bool save) = 0;
    // A file that does not read leaves the configuration as it was; a file
    // chosen makes its folder the dialogs' folder.
    virtual void loadMidiConfig(std::string_view path) = 0;
    virtual void saveMidiConfig(std::string_view path) = 0;
    // What new instances without a chunk of their own start with.
    virtual void makeMidiConfigDefault() = 0;
    virtual void stopLearning() = 0;
};

}  // namespace Fomal
