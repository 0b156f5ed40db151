// What the interface's scripts reach of the patch an editor shows: the
// whole record, single parameters as automation, the undo history, the
// preview slot and the branch the user has selected.
#pragma once

#include <string_view>

#include "engine/VisualState.h"
#include "patch/NorvelleProgram.h"

namespace views {

class ProgramHost {
public:
    virtual ~ProgramHost() = default;

    virtual NorvelleProgram program() const = 0;
    // The record becomes the current patch; the host and the views follow.
    virtual void writeProgram(const NorvelleProgram& record) = 0;
    // Records the current patch in the undo history under label.
    virtual void saveUndo(std::string_view label) = 0;
    // One parameter (0 to 1) changed by the user, as the host's automation.
    virtual void setParameter(int index, float value) = 0;
    virtual float parameter(int index) const = 0;
    // Notes sound from record, not from the current patch, until the
    // preview ends (null).
    virtual void preview(const NorvelleProgram* record) = 0;
    // The branch 0 to 11 the user has selected, -1 for none.
    virtual int selectedBranch() const = 0;
    virtual void selectBranch(int branch) = 0;
    // What the sound shows on the plant now: per-branch flash and levels.
    // False (and `state` untouched) where no sound runs behind the panel.
    virtual bool visualState(VisualState& /*state*/) const { return false; }
};

}  // namespace views
