// The process-wide generator: one per process, shared by every plug-in
// instance, serving plant and the script's random numbers. At process start
// a is the tick count in milliseconds and b its complement. It keeps a spare
// Gaussian value from the last pair it drew. It takes no lock: it belongs to
// the interface threads.
#pragma once

#include <cstdint>

#include "patch/SeededGenerator.h"

class ProcessGenerator {
public:
    // Seeded from a tick count: a = ticks, b = NOT ticks, no spare value.
    explicit ProcessGenerator(uint32_t ticks);

    // The one generator of the process.
    static ProcessGenerator& instance();

    // One step; the new a.
    uint32_t next();

    // A unit Gaussian deviate: the spare one when there is one, else the first
    // of a fresh pair, whose second becomes the spare.
    float nextGaussian();

    // The state, for tests and for reproducible runs. Setting it clears the
    // spare value.
    uint32_t wordA() const { return state_.a; }
    uint32_t wordB() const { return state_.b; }
    void setWords(uint32_t a, uint32_t b);

    bool hasSpareGaussian() const { return hasSpare_; }

private:
    SeededGenerator state_;
    bool hasSpare_ = false;
    float spare_ = 0.0f;
};
