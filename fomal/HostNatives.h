// The natives that the program adds to the shared script root: text
// resources by name, the process's random numbers, the object notation,
// the query of the update check, and the build and platform variables.
// `load`, `print` and `random` are rebound to `<xload>`, `<xprint>` and
// `<xrandom>`.
#pragma once

#include <string>
#include <string_view>

#include "quol/Frame.h"

namespace Fomal {

// Registers the natives and sets the variables in a root frame that
// already has the standard natives.
void installHostNatives(Quol::Frame& root);

// The text of a script resource by its file name ("stdlib.quol",
// "globals.txt"); fails with "Could not load text resource".
std::string_view scriptResource(std::string_view name);

}  // namespace Fomal
