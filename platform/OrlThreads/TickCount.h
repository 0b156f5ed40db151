// The system's tick count: milliseconds from an arbitrary start, never
// going back and, being 64 bits wide, never wrapping.
#pragma once

#include <cstdint>

namespace OrlThreads {

std::uint64_t tickCount();

// Gives the rest of the time slice to another ready thread.
void yieldThread();

}  // namespace OrlThreads
