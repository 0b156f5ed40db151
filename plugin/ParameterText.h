// What the host shows of the 21 parameters: their names, their unit labels
// and the text of a normalized value. Two switches change the text: `fine`
// gives the long forms with eight decimals that the patch text needs, and
// `detail` adds the panning and gating figures of the interface hints.
#pragma once

#include <string>

namespace ParameterText {

// "ModWheel", "Rotation", ... "Branch12"; empty for an index out of range.
const char* name(int index);
// "%", "degrees", "dB" or empty.
const char* label(int index);
// The value text of a normalized value x.
std::string display(int index, float x, bool fine = false, bool detail = false);

}  // namespace ParameterText
