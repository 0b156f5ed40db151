#include "plugin/PluginEditorHost.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "patch/GeneTable.h"
#include "patch/MidiConfigDefaults.h"
#include "patch/MidiConfigText.h"
#include "patch/PatchFiles.h"
#include "patch/ParameterTable.h"
#include "patch/Preferences.h"
#include "plugin/ParameterText.h"
#include "plugin/PluginCore.h"
#include "platform/Exceptions.h"
#include "platform/OrlFiles/File.h"
#include "platform/OrlFiles/Files.h"
#include "platform/OrlFiles/SafeFileWriter.h"
#include "platform/SystemOpen.h"
#include "platform/UserFolders.h"
#include "platform/Utf16.h"

PluginEditorHost::PluginEditorHost(PluginCore& plugin, const int& undoLimit, UndoHistory::Translator translate)
    : plugin_(plugin),
      history_(*this, undoLimit, std::move(translate)),
      browser_(platform::defaultPatchFolder()),
      historyProgram_(plugin.currentProgram()) {
    history_.onChanged = [this] { ++revision_; };
}

int PluginEditorHost::parameterIndex(std::string_view name) { return findParameter(name); }

std::string PluginEditorHost::patchName() const {
    char name[kVstMaxProgNameLen + 1] = {};
    plugin_.getProgramName(name);
    return name;
}

bool PluginEditorHost::hasControl(std::string_view label) const {
    return parameterIndex(label) >= 0 || panelControls_.find(label) != panelControls_.end();
}

double PluginEditorHost::controlValue(std::string_view label) const {
    const int i = parameterIndex(label);
    if (i >= 0) return double(plugin_.getParameter(i));
    const auto it = panelControls_.find(label);
    return it != panelControls_.end() ? it->second : 0.0;
}

std::string PluginEditorHost::controlText(std::string_view label) const {
    const int i = parameterIndex(label);
    if (i >= 0) return ParameterText::display(i, plugin_.getParameter(i));
    const auto it = panelControls_.find(label);
    return it != panelControls_.end() ? std::to_string(int(std::lround(it->second * 100.0))) : std::string();
}

void PluginEditorHost::beginEdit(std::string_view label) {
    const int i = parameterIndex(label);
    if (i < 0) return;
    editing_ = std::string(label);
    editSaved_ = false;
    // A gesture may move several parameters at once (a cloned plant's
    // branches): each has its own begin and end for the host.
    if (gestures_.insert(i).second) plugin_.beginEdit(i);
}

void PluginEditorHost::changeControl(std::string_view label, double value) {
    const int i = parameterIndex(label);
    if (i < 0) {
        // The panel's own controls: no step of the patch's history, nothing
        // for the host.
        const auto it = panelControls_.find(label);
        if (it != panelControls_.end() && it->second != value) {
            it->second = std::fmin(std::fmax(value, 0.0), 1.0);
            ++revision_;
        }
        return;
    }
    const float v = std::fmin(std::fmax(float(value), 0.0f), 1.0f);
    if (v == plugin_.getParameter(i)) return;
    // The state before the first change of a drag stands for the whole
    // drag; a change outside a drag merges with one just before it.
    const std::string step = "Change " + std::string(label);
    if (editing_ == label) {
        if (!editSaved_) history_.saveUndo(step, false);
        editSaved_ = true;
    } else {
        history_.saveUndo(step, true);
    }
    plugin_.setParameterAutomated(i, v);
    ++revision_;
}

void PluginEditorHost::endEdit(std::string_view label) {
    const int i = parameterIndex(label);
    if (i < 0) return;
    if (editing_ == label) {
        editing_.clear();
        editSaved_ = false;
    }
    if (gestures_.erase(i) != 0) plugin_.endEdit(i);
}

namespace {

constexpr const char* GENE_EDIT_STEP = "Gene Modifications";

bool validGene(int gene) { return gene >= 0 && gene < GENE_COUNT; }

}  // namespace

int PluginEditorHost::geneCount() const { return GENE_COUNT; }

std::string PluginEditorHost::geneName(int gene) const {
    return validGene(gene) ? std::string(GENE_TABLE[gene].name) : std::string();
}

double PluginEditorHost::geneValue(int gene) const { return validGene(gene) ? currentProgram().genes[gene] : 0.0; }

double PluginEditorHost::geneInitValue(int gene) const {
    static const NorvelleProgram init;
    return validGene(gene) ? init.genes[gene] : 0.0;
}

void PluginEditorHost::beginGeneEdit() {
    geneEditing_ = true;
    geneEditSaved_ = false;
}

void PluginEditorHost::changeGene(int gene, double value) {
    if (!validGene(gene) || !(value == value)) return;
    NorvelleProgram record = currentProgram();
    const float v = std::fmin(std::fmax(float(value), 0.0f), 1.0f);
    if (record.genes[gene] == v) return;
    // The state before the first change of an edit stands for the edit.
    if (!geneEditing_) {
        history_.saveUndo(GENE_EDIT_STEP, true);
    } else if (!geneEditSaved_) {
        history_.saveUndo(GENE_EDIT_STEP, false);
        geneEditSaved_ = true;
    }
    record.setGene(gene, v);
    setCurrentProgram(record);
}

void PluginEditorHost::endGeneEdit() {
    geneEditing_ = false;
    geneEditSaved_ = false;
}

int PluginEditorHost::controllerOf(int function) const {
    if (function < 0 || function >= MidiConfigRecord::FUNCTION_COUNT) return -1;
    VersionedCell<MidiConfigRecord>& cell = plugin_.midiConfig();
    MidiConfigRecord* config = cell.acquire();
    const int controller = config->controllers[function];
    cell.release(config);
    return controller;
}

void PluginEditorHost::assignController(int function, int controller) {
    if (function < 0 || function >= MidiConfigRecord::FUNCTION_COUNT) return;
    VersionedCell<MidiConfigRecord>& cell = plugin_.midiConfig();
    MidiConfigRecord* current = cell.acquire();
    MidiConfigRecord changed = *current;
    cell.release(current);
    // As learning does: the function that had this controller has none.
    if (controller >= 0)
        for (int f = 0; f < MidiConfigRecord::FUNCTION_COUNT; ++f)
            if (f != function && changed.controllers[f] == controller) ::assignController(changed, f, -1);
    ::assignController(changed, function, controller);
    cell.publish(changed);
    ++revision_;
}

void PluginEditorHost::learnController(int function) {
    if (function < 0 || function >= MidiConfigRecord::FUNCTION_COUNT) return;
    assignController(function, -1);
    plugin_.learnTarget().store(function);
}

int PluginEditorHost::learningFunction() const { return plugin_.learnTarget().load(); }

void PluginEditorHost::previewNote(bool down, int note, int velocity) { plugin_.preview(down ? "down" : "up", note, velocity); }

std::uint64_t PluginEditorHost::revision() {
    // The plug-in raises its flag when the host, MIDI or a program change
    // moved what the editor shows; taking it is the editor's poll.
    if (plugin_.guiRefresh().exchange(0) != 0) ++revision_;
    if (plugin_.currentProgram() != historyProgram_) {
        historyProgram_ = plugin_.currentProgram();
        history_.clear();
        editing_.clear();
        ++revision_;
    }
    return revision_;
}

bool PluginEditorHost::jingling() const { return plugin_.hasJingle(); }

bool PluginEditorHost::suspended() const { return !plugin_.resumed(); }

void PluginEditorHost::setParameter(int index, float value) {
    plugin_.setParameterAutomated(index, std::fmin(std::fmax(value, 0.0f), 1.0f));
    ++revision_;
}

float PluginEditorHost::parameter(int index) const { return plugin_.getParameter(index); }

void PluginEditorHost::preview(const NorvelleProgram* record) {
    if (record != nullptr) {
        plugin_.previewSlot().publish(*record);
        plugin_.setPreviewing(true);
    } else {
        plugin_.setPreviewing(false);
    }
    ++revision_;
}

void PluginEditorHost::selectBranch(int branch) {
    if (branch == selectedBranch_) return;
    selectedBranch_ = branch;
    ++revision_;
}

bool PluginEditorHost::visualState(VisualState& state) const {
    VersionedCell<VisualState>& cell = plugin_.visualState();
    VisualState* published = cell.acquire();
    state = *published;
    cell.release(published);
    return true;
}

NorvelleProgram PluginEditorHost::currentProgram() const { return plugin_.currentProgramRecord(); }

void PluginEditorHost::setCurrentProgram(const NorvelleProgram& record) {
    plugin_.replaceCurrentProgram(record);
    ++revision_;
}

Fomal::FileDialogRequest PluginEditorHost::patchDialog(bool save) {
    const NorvelleProgram current = currentProgram();
    Fomal::FileDialogRequest request;
    request.save = save;
    request.title = save ? "Save Patch As" : "Open Patch";
    request.folder = browser_.folderFor(current).utf8();
    if (save) request.fileName = platform::utf16ToUtf8Lossy(patchFileName(current.getName())) + ".tdrn";
    request.filters = {Fomal::FileFilter{std::string(PATCH_FILE_KIND), {"*.tdrn"}}};
    request.extension = "tdrn";
    return request;
}

std::vector<std::string> PluginEditorHost::patchFiles() {
    std::vector<std::string> files;
    for (const OrlFiles::Path& p : browser_.list(browser_.folderFor(currentProgram()))) files.push_back(p.utf8());
    return files;
}

void PluginEditorHost::loadPatch(std::string_view path, std::string_view label, bool chosenInDialog) {
    const OrlFiles::Path file = OrlFiles::Path::parse(path);
    // Read and parsed whole before anything changes.
    const NorvelleProgram record = readPatchFile(file);
    if (chosenInDialog) browser_.chose(file);
    history_.saveUndo(label);
    setCurrentProgram(record);
}

void PluginEditorHost::savePatch(std::string_view path) {
    const OrlFiles::Path file = OrlFiles::Path::parse(path);
    const NorvelleProgram saved = savePatchFile(currentProgram(), file);
    browser_.saved(file);
    setCurrentProgram(saved);
}

// Previous and next step through the patch files of the current patch's
// folder; a patch without a file, or at an end of the list, has nowhere to
// go and the arrows are grey.
bool PluginEditorHost::canStepPatch(int direction) { return browser_.step(currentProgram(), direction).has_value(); }

void PluginEditorHost::stepPatch(int direction) {
    const std::optional<OrlFiles::Path> file = browser_.step(currentProgram(), direction);
    if (!file) return;
    loadPatch(file->utf8(), direction < 0 ? "Previous Patch" : "Next Patch", false);
}

// A file of the patch or documentation folder, or one given whole, opened
// by the program the user has for it.
void PluginEditorHost::launch(std::string_view path, std::string_view relativeTo) {
    OrlFiles::Path file = OrlFiles::Path::parse(path);
    if (relativeTo == "patches") file = browser_.defaultFolder().child(path);
    else if (relativeTo == "documentation") file = platform::documentationFolder().child(path);
    if (!OrlFiles::exists(file)) throw Exception("Could not find " + file.utf8());
    platform::openWithSystem(file.utf8());
}

void PluginEditorHost::openURL(std::string_view url) { platform::openWithSystem(url); }

MidiConfigRecord PluginEditorHost::midiConfig() const {
    VersionedCell<MidiConfigRecord>& cell = plugin_.midiConfig();
    MidiConfigRecord* current = cell.acquire();
    MidiConfigRecord copy = *current;
    cell.release(current);
    return copy;
}

void PluginEditorHost::publishMidiConfig(const MidiConfigRecord& config) {
    plugin_.midiConfig().publish(config);
    ++revision_;
}

Fomal::MidiSettings PluginEditorHost::midiSettings() const {
    const MidiConfigRecord config = midiConfig();
    Fomal::MidiSettings s;
    s.inputChannel = config.inputMidiChannel;
    s.outputChannel = config.outputMidiChannel;
    s.pitchWheelRange = config.pitchWheelRange;
    s.velocityCurve = config.velocityCurve;
    s.programChanges = config.supportMidiProgramChange;
    s.selectWithNotes = config.autoSelect;
    s.reassignedControllers = reassignedControllerCount(config);
    return s;
}

void PluginEditorHost::changeMidiSettings(const Fomal::MidiSettings& s) {
    MidiConfigRecord config = midiConfig();
    config.inputMidiChannel = std::clamp(s.inputChannel, -1, 15);
    config.outputMidiChannel = std::clamp(s.outputChannel, -1, 15);
    config.pitchWheelRange = std::clamp(s.pitchWheelRange, 0, 12);
    config.velocityCurve = std::clamp(s.velocityCurve, 0, 2);
    config.supportMidiProgramChange = s.programChanges;
    config.autoSelect = s.selectWithNotes;
    publishMidiConfig(config);
}

std::string PluginEditorHost::midiConfigText() const { return writeMidiConfig(midiConfig(), false); }

void PluginEditorHost::setMidiConfigText(std::string_view text) {
    // Read whole before anything changes.
    publishMidiConfig(readMidiConfig(u"", text));
}

void PluginEditorHost::resetMidiConfig() { publishMidiConfig(MidiConfigRecord()); }

namespace {

constexpr const char* MIDI_CONFIG_FOLDER_KEY = "currentMidiConfigDir";

void rememberMidiConfigFolder(const OrlFiles::Path& file) {
    try {
        Preferences::write(MIDI_CONFIG_FOLDER_KEY, file.parent().utf8());
    } catch (const std::exception&) {
        // The folder is a convenience: a store that can't be written loses it.
    }
}

}  // namespace

Fomal::FileDialogRequest PluginEditorHost::midiConfigDialog(bool save) {
    Fomal::FileDialogRequest request;
    request.save = save;
    request.title = "Tendrane MIDI Config";
    try {
        if (const std::optional<std::string> folder = Preferences::read(MIDI_CONFIG_FOLDER_KEY)) request.folder = *folder;
    } catch (const std::exception&) {
        // Preferences that can't be read: the dialog opens where it likes.
    }
    if (save) {
        const std::u16string source = midiConfig().sourcePath;
        request.fileName = source.empty() ? "MIDI Config.qbmc"
                                          : platform::utf16ToUtf8Lossy(OrlFiles::Path::parse(source).name());
    }
    request.filters = {Fomal::FileFilter{"Quillbrook MIDI Config", {"*.qbmc"}}};
    request.extension = "qbmc";
    return request;
}

void PluginEditorHost::loadMidiConfig(std::string_view path) {
    const OrlFiles::Path file = OrlFiles::Path::parse(path);
    const std::string text = OrlFiles::readWholeFile(file);
    publishMidiConfig(readMidiConfig(file.text(), text));
    rememberMidiConfigFolder(file);
}

void PluginEditorHost::saveMidiConfig(std::string_view path) {
    const OrlFiles::Path file = OrlFiles::Path::parse(path);
    MidiConfigRecord config = midiConfig();
    config.sourcePath = file.text();
    const std::string text = writeMidiConfig(config, true);
    OrlFiles::SafeFileWriter writer(file);
    writer.write(text);
    writer.commit();
    config.sourceText = text;
    publishMidiConfig(config);
    rememberMidiConfigFolder(file);
}

void PluginEditorHost::makeMidiConfigDefault() { ::makeMidiConfigDefault(midiConfig()); }

void PluginEditorHost::stopLearning() { plugin_.learnTarget().store(-1); }
