// Whether the loops with 256-bit registers run here: the processor is checked
// once, at run time. They give the same sound as the four-lane loops, bit for
// bit; only the speed differs.
#pragma once

namespace engine::wide {

// True when this processor and its system run the eight-lane loops.
bool runsHere();

// True when the eight-lane loops are used: they run here and are allowed.
bool available();

// Allowed by default. Tests turn them off to hear the four-lane loops, which
// are otherwise never used on a processor with wide registers.
void allow(bool allowed);

}  // namespace engine::wide
