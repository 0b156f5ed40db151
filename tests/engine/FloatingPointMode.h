// Switches the processor's flush-to-zero and denormals-are-zero modes for the
// life of the object, so a test can render the same sound both ways.
#pragma once

#include <xmmintrin.h>

namespace testsupport {

class FlushToZero {
public:
    explicit FlushToZero(bool on) : saved_(_mm_getcsr()) {
        const unsigned bits = 0x8040u;  // FTZ | DAZ
        _mm_setcsr(on ? (saved_ | bits) : (saved_ & ~bits));
    }
    ~FlushToZero() { _mm_setcsr(saved_); }
    FlushToZero(const FlushToZero&) = delete;
    FlushToZero& operator=(const FlushToZero&) = delete;

private:
    unsigned saved_;
};

}  // namespace testsupport
