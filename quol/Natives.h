// The built-in functions every script root frame carries.
#pragma once

#include "quol/Frame.h"

namespace Quol {

// Registers the standard natives in frame (as a rule a root frame), each with
// its callable variable "<name>".
void installStandardNatives(Frame& frame);

// Argument i of a native call, read with the fallback of a plain read (a
// missing one fails with "Undefined: $i"), and an optional one that reads as
// void when it was not given.
Value argument(Frame& arguments, std::size_t i);
Value optionalArgument(Frame& arguments, std::size_t i);

}  // namespace Quol
