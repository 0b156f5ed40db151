// The mapping from genes to the sound's coefficients. A gene is a unitless
// number from 0 to 1; each one has its own curve (cubic, fourth power, dead
// zone, sticky octave...) into the coefficients that the voice loops read.
#pragma once

#include "engine/BranchParams.h"

namespace engine {

// Decodes the 36 (mutated) genes of one branch.
//   genes:      36 values, in the order of the gene table, each 0 to 1
//   fxSize:     the fx_size gene, straight from the record (it never mutates)
//   effect:     the bipolar effect control, 2 * Effect - 1, in -1 to 1
//   sampleRate: in Hz, above 0
// Any genes in 0 to 1 and any rate above 0 give finite values. All the
// arithmetic is 32-bit float, evaluated in the written order.
BranchParams decodeGenes(const float* genes, float fxSize, float effect, float sampleRate);

// 1 / sqrt of the mean power of oscillator waveform `form` (0 to 1), which
// brings every waveform of the morph to about the same loudness.
float formLevel(float form);

}  // namespace engine
