// The random numbers of the interface's scripts: one generator for the whole
// process, two 32-bit words stepped by linear recurrences. Both multipliers
// are even, so each recurrence alone would lose its lowest bit for good and
// its state would run into a fixed point within 32 steps; each word's
// lowest bit is therefore filled with the top bit (as 0 or 1) of the other
// side. `xrandom`, `randomInt` and `gaussian` all draw from it.
#pragma once

#include <cstdint>

namespace Fomal {

class ScriptRandom {
public:
    ScriptRandom(std::uint32_t a, std::uint32_t b) : a_(a), b_(b) {}

    // Steps both words and gives the new first word.
    std::uint32_t nextWord() {
        const std::uint32_t a = a_ * 0xAD39F3E6u + 0xF24783A6u;
        const std::uint32_t b = b_ * 0x646F0B5Eu + 0x941A6052u;
        const std::uint32_t mixed = b_ * 0x323785AFu + 0xCA0D3029u;
        a_ = a | (mixed >> 31);
        b_ = b | (a_ >> 31);
        return a_;
    }

    // Uniform in 0 ... x.
    double uniform(double x) { return x * 2.3283064e-10 * double(nextWord()); }

    // A normal deviate in single precision, by the polar method.
    float gaussian(float mean, float deviation);

    std::uint32_t a() const { return a_; }
    std::uint32_t b() const { return b_; }

    // The generator of this process. Its words start from the time and
    // place of the process's first use; `tendrane panel` and the tests
    // seed it for repeatable runs.
    static ScriptRandom& process();

private:
    std::uint32_t a_, b_;
};

}  // namespace Fomal
