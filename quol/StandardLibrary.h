// The standard script library: the script resource "stdlib", run in a root
// frame to define its globals (assert, quicksort, deepen, new, ...).
#pragma once

#include "quol/Frame.h"

namespace Quol {

// Runs the library in frame. Fails with "Could not load text resource" when
// the resource is missing from the build.
void loadStandardLibrary(Frame& frame);

// A root frame ready for scripts: the standard natives, then the library.
void prepareStandardRoot(Frame& root);

}  // namespace Quol
