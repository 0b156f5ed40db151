// The voices' noise colourings and filters with twice the lanes, for
// processors with 256-bit registers (see WideOscillators.h): eight voices'
// noise filters, or four voices' filter pairs, to a register. The same steps
// on every lane as the four-lane loops, so each voice gets exactly what they
// would give it.
#pragma once

#include "engine/NoiseFilters.h"
#include "engine/StateVariableFilter.h"
#include "engine/WideProcessor.h"

namespace engine::wide {

// The same as engine::filterNoisesTogether and engine::renderFilterVoices;
// call only when available().
void filterNoisesTogether(const NoiseJob* jobs, int count);
void renderFilterVoices(const FilterVoice* voices, int count);

}  // namespace engine::wide
