// NorvelleProgram: the whole sound of the synthesizer in one plain value: a
// seed, a genome of 37 genes and 21 global parameters, twelve of which are the
// branch lengths. Every stored or travelling form of a patch is a form of this
// record, and the audio thread reads it while the interface may rename it or
// change single parameters.
//
// The record carries its own implementation number and is never upgraded in
// place: the code that interprets it branches on that number.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "patch/GeneTable.h"
#include "patch/ParameterTable.h"
#include "patch/SeededGenerator.h"
#include "patch/SharedStringCell.h"

constexpr int32_t CURRENT_IMPLEMENTATION = 10;
constexpr int MIN_PITCH = -3;  // octaves
constexpr int MAX_PITCH = 3;   // octaves
constexpr int PROGRAM_SLOT_COUNT = 16;

class NorvelleProgram {
public:
    // Fields, in their order.

    // A value of the process-wide change-stamp counter; equal stamps mean the
    // same state. Written with an atomic exchange.
    std::atomic<uint32_t> changeStamp{0};
    // The generation of the sound algorithms the patch was made for,
    // 0 to CURRENT_IMPLEMENTATION.
    int32_t implementation = CURRENT_IMPLEMENTATION;
    // Display name; use setName/getName.
    SharedStringCell name;
    // The 16-bit text of the file the patch was loaded from or saved to;
    // empty when the patch has no file.
    std::u16string path;
    // The patch differs from its file.
    bool modified = false;
    // Normalized global parameters, 0 to 1, by Param index. Each word is
    // written with an atomic exchange; readers may see a mixture of old and
    // new values.
    std::atomic<float> params[PARAM_COUNT];
    // Seed of the branch mutations; 0 is not a valid seed.
    uint32_t seed = 1;
    // Pitch offset in octaves, on no control: keeps the oscillators where
    // they were after a plant.
    float pitch = 0.0f;
    // All twelve branches share one seed.
    bool cloned = false;
    // The genome, by Gene index, each 0 to 1.
    float genes[GENE_COUNT];
    // For each branch, the unit Gaussian deviation of genes 0 to 35. Derived
    // from implementation, seed and cloned; never stored in any format.
    float branchDeviations[BRANCH_COUNT][MUTABLE_GENE_COUNT];

    // Every new record is in the Init state.
    NorvelleProgram();
    // Copies every field, branchDeviations included, the name and path by
    // value. The copy keeps the source's changeStamp.
    NorvelleProgram(const NorvelleProgram& other);
    NorvelleProgram& operator=(const NorvelleProgram& other);

    // The Init state: implementation CURRENT_IMPLEMENTATION, name "Init", no
    // path, not modified, not cloned, seed 1, pitch 0, all genes 0.5, the
    // parameters at their Init values, deviations computed, a fresh stamp.
    void init();

    // Takes a fresh changeStamp; sets modified when told to.
    void touch(bool setModified);

    // Stores a gene. When the value equals the stored one nothing happens and
    // the answer is false; otherwise a fresh stamp, modified, and true.
    bool setGene(int index, float value);

    void setName(std::u16string_view text) { name.write(text); }
    std::u16string getName() const { return name.read(); }

    float param(int index) const { return params[index].load(); }
    // One atomic exchange; takes no stamp.
    void setParam(int index, float value) { params[index].exchange(value); }

    uint32_t stamp() const { return changeStamp.load(); }

    // Refills branchDeviations from implementation, seed and cloned. Needed
    // whenever one of those changes, and before the record goes to the audio
    // side.
    void computeBranchDeviations();
};

// L + (1 - L) * (ModWheel * WheelScale), with L the Branch parameter of the
// branch (0 to 11): the mod wheel grows every branch towards full length.
float effectiveLength(const NorvelleProgram& record, int branch);

// The per-note detune in octaves, within +-0.05, that Atonality above its
// middle puts on each note of the octave. note is the MIDI note less the
// rotation in steps.
float noteDetune(uint32_t seed, int note, float atonality);
