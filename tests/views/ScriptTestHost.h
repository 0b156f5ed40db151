// A patch behind a panel for tests of the application script: the record,
// an undo history of whole records, the preview slot and the selection,
// over the still host's controls.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "fomal/StillHost.h"
#include "views/ProgramHost.h"

namespace viewtest {

class ScriptTestHost : public Fomal::StillHost, public views::ProgramHost {
public:
    NorvelleProgram current;
    std::vector<std::pair<std::string, NorvelleProgram>> undoSteps, redoSteps;
    bool previewing = false;
    NorvelleProgram previewed;
    std::vector<std::string> notes;  // "down 60 100", "up 60 ..."
    int selected = -1;

    NorvelleProgram program() const override { return current; }
    void writeProgram(const NorvelleProgram& record) override { current = record; }
    void saveUndo(std::string_view label) override {
        undoSteps.emplace_back(std::string(label), current);
        redoSteps.clear();
    }
    void setParameter(int index, float value) override { current.setParam(index, value); }
    float parameter(int index) const override { return current.param(index); }
    void preview(const NorvelleProgram* record) override {
        previewing = record != nullptr;
        if (record != nullptr) previewed = *record;
    }
    int selectedBranch() const override { return selected; }
    void selectBranch(int branch) override { selected = branch; }

    bool canUndo() const override { return !undoSteps.empty(); }
    bool canRedo() const override { return !redoSteps.empty(); }
    void undo() override { step(undoSteps, redoSteps); }
    void redo() override { step(redoSteps, undoSteps); }
    std::string undoLabel() const override { return undoSteps.empty() ? "" : " " + undoSteps.back().first; }
    void previewNote(bool down, int note, int velocity) override {
        notes.push_back(std::string(down ? "down " : "up ") + std::to_string(note) + " " + std::to_string(velocity));
    }

private:
    void step(std::vector<std::pair<std::string, NorvelleProgram>>& from,
              std::vector<std::pair<std::string, NorvelleProgram>>& to) {
        if (from.empty()) return;
        to.emplace_back(from.back().first, current);
        current = from.back().second;
        from.pop_back();
    }
};

}  // namespace viewtest
