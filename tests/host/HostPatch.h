// The patch the host tests play: a factory patch made fully deterministic
// (no noise in either oscillator, no chorus walk), so that two instances with
// different noise seeds sound the same to the bit.
#pragma once

#include <cstdint>
#include <vector>

#include "patch/Chunk.h"
#include "patch/FactoryPatches.h"
#include "patch/GeneTable.h"

namespace testhost {

inline NorvelleProgram quietFactoryProgram(int index = 4) {
    NorvelleProgram p = factoryProgram(index);
    p.genes[findGene("a_noise")] = 0.0f;
    p.genes[findGene("b_noise")] = 0.0f;
    p.genes[findGene("fx_chors")] = 0.0f;
    p.computeBranchDeviations();
    return p;
}

inline std::vector<uint8_t> programChunk(const NorvelleProgram& p) {
    std::vector<NorvelleProgram> slots(1, p);
    std::vector<uint8_t> bytes;
    writeChunk(bytes, true, slots, 0, MidiConfigRecord{});
    return bytes;
}

}  // namespace testhost
