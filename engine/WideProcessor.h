// Whether the loops with 256-bit registers run here: the processor is checked
// once, at run time. They give the same sound as the four-lane loops, bit for
// bit; only the speed differs.
#pragma once

#include <atomic>

// Whether this build has loops written for 256-bit registers at all: only
// for the processors that may have them.
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__))
#define TENDRANE_WIDE_LOOPS 1
#else
#define TENDRANE_WIDE_LOOPS 0
#endif

namespace engine::wide {

// True when this processor and its system run the eight-lane loops.
bool runsHere();

// True when the eight-lane loops are used: they run here and are allowed.
bool available();

// Allowed by default. Tests turn them off to hear the four-lane loops, which
// are otherwise never used on a processor with wide registers.
void allow(bool allowed);

namespace detail {
// The width laneWidth gives, set again whenever a test allows or forces one.
extern std::atomic<int> chosenWidth;
}  // namespace detail

// The lanes the loops take now: 8 where the eight-lane loops are used, else
// 4, or 1 (one value at a time) when tests ask for it. All give the same
// sound, bit for bit. Asked by every voice in every frame, so it is one load.
inline int laneWidth() { return detail::chosenWidth.load(std::memory_order_relaxed); }

// Tests choose the width: 1, 4 or 8 (8 only where it runs; else 4); 0 goes
// back to the widest allowed.
void forceLanes(int width);

}  // namespace engine::wide
