// Plant: the mutated genes of one branch become the genome of a new seed.
// The new record keeps the pitch that the branch had: oscillator A goes back
// to a whole octave, and whatever detune the branch carried moves into the
// Tuning control (within half an octave) and the pitch offset.
#pragma once

#include <functional>
#include <string_view>

#include "patch/NorvelleProgram.h"
#include "patch/ProcessGenerator.h"

// Saves the undo state under a label before a change ("Plant",
// "Clone Branch"). Supplied by the owner of the undo history.
using SaveUndoHook = std::function<void(std::string_view label)>;

// Makes the record planted from branch (0 to 11) of source, stepping the
// generator once for the new seed. Calls saveUndo("Plant") first when given.
// The caller makes the result the current record.
NorvelleProgram plantBranch(const NorvelleProgram& source, int branch, ProcessGenerator& generator,
                            const SaveUndoHook& saveUndo = {});

// The Tuning value that a total offset N (in Tuning units, 0.5 being no
// detune) leaves on the control: 0.25 + ((N - 0.25) mod 0.5), with a positive
// remainder, so always at least 0.25 and below 0.75.
float plantedTuning(float n);
