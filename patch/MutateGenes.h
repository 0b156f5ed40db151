// One branch's genes: the genome moved along the branch's deviation row by an
// amount that grows with the square of the effective branch length, shaped by
// Atonality on the pitch-bearing genes, and folded back into 0 to 1 by
// reflection. Runs at note-on on the audio thread: no allocation, no lock.
#pragma once

#include <cstdint>

#include "patch/GeneTable.h"

// Folds v into 0 to 1 by reflection at both ends: with y = |v - 1| the result
// is |y - 1 - 2 floor(y / 2)|. 1.2 gives 0.8, -0.3 gives 0.3.
float reflectIntoUnit(float v);

// genes: at least the 36 mutable genes of the genome; deviationRow: the
// branch's 36 deviations; length: the effective branch length; atonality: the
// Atonality parameter; implementation: the record's. Writes the 36 mutated
// genes to result (which may not overlap genes).
void mutateGenes(const float* genes, const float* deviationRow, float length, float atonality,
                 int32_t implementation, float* result);
