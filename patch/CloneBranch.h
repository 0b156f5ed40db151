// Clone: every branch takes the direction of one branch. A record that isn't
// cloned yet moves its seed to the seed that row `branch` had, so that all
// rows computed from it now equal that row; the branch lengths all become the
// chosen branch's effective length, and the mod wheel goes back to 0.
#pragma once

#include "patch/NorvelleProgram.h"
#include "patch/PlantBranch.h"

// Returns false and changes nothing when branch is outside 0 to 11 (nothing
// selected). Calls saveUndo("Clone Branch") first when given.
bool cloneBranch(NorvelleProgram& record, int branch, const SaveUndoHook& saveUndo = {});
