// The sixteen factory patches: text resources of type TDRN named "Factory0"
// to "Factory15", each a patch text. They fill the bank of the first
// instance in a process when no startup bank is stored.
#pragma once

#include <vector>

#include "patch/NorvelleProgram.h"

constexpr int FACTORY_PATCH_COUNT = 16;

// Factory patch index (0 to 15) as a record. Throws ::Exception for an index
// out of range or a missing resource, and the patch text's own failures.
NorvelleProgram factoryProgram(int index);

// All sixteen, in order.
std::vector<NorvelleProgram> factoryBank();
