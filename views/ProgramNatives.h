// The natives through which the application script handles patches. A
// patch in script members at a reference r: every parameter by name
// (r.Branch1, r.ModWheel...), r.name, r.path, r.modified, r.seed, r.pitch,
// r.cloned, r.implementation, every gene value by name (r.a_mod...), and
// r.genes.n with r.genes.0 ... references to the gene members in order.
#pragma once

#include <functional>

#include "quol/Frame.h"
#include "views/ProgramHost.h"

namespace views {

// In the shared root: createProgram, marshalProgram, unmarshalProgram,
// isMarshaledProgram, readPrefs and writePrefs.
void installProgramNatives(Quol::Frame& root);

// In one editor's frame: readProgram, writeProgram, setParam, getParam,
// preview, saveUndo, userBusy, getSelectedBranch and selectBranch.
void installGuiProgramNatives(Quol::Frame& gui, ProgramHost& host, std::function<bool()> userBusy);

// The members at reference, and the record they describe; fails with the
// script's "Undefined: " for a missing member.
void storeProgram(Quol::Frame& frame, const Quol::Value& reference, const NorvelleProgram& record);
NorvelleProgram loadProgram(Quol::Frame& frame, const Quol::Value& reference);

}  // namespace views
