// The directions in which the twelve branches of a patch grow: for each
// branch a row of 36 unit Gaussian deviations, one per mutable gene, drawn
// from a generator seeded by the patch's seed (the same seed for every
// branch of a cloned patch, seed + k otherwise). Old implementations draw
// from the legacy step and have their rows remapped, so that they keep their
// directions on the genes that existed then.
#pragma once

#include <cstdint>

#include "patch/GeneTable.h"
#include "patch/ParameterTable.h"

class NorvelleProgram;

using DeviationRow = float[MUTABLE_GENE_COUNT];

// Fills one branch's row as an implementation draws it from seedK.
void computeDeviationRow(uint32_t seedK, int32_t implementation, DeviationRow& row);

// Fills all twelve rows.
void computeBranchDeviations(uint32_t seed, int32_t implementation, bool cloned,
                             float (&rows)[BRANCH_COUNT][MUTABLE_GENE_COUNT]);

// Fills record.branchDeviations from its implementation, seed and cloned.
void computeBranchDeviations(NorvelleProgram& record);
