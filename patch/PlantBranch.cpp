#include "patch/PlantBranch.h"

#include <cmath>

#include "patch/MutateGenes.h"

float plantedTuning(float n) {
    float remainder = std::fmod(n - 0.25f, 0.5f);
    if (remainder < 0.0f) remainder += 0.5f;
    // A tiny negative remainder can round up to the whole modulus, and a
    // remainder just under it can round the sum up to 0.75: both are taken as
    // a remainder of 0, so that Tuning stays below 0.75.
    if (remainder >= 0.5f || 0.25f + remainder >= 0.75f) remainder = 0.0f;
    return 0.25f + remainder;
}

NorvelleProgram plantBranch(const NorvelleProgram& source, int branch, ProcessGenerator& generator,
                            const SaveUndoHook& saveUndo) {
    if (saveUndo) saveUndo("Plant");

    NorvelleProgram planted(source);
    planted.cloned = false;
    planted.implementation = CURRENT_IMPLEMENTATION;

    planted.seed = generator.next();
    if (planted.seed == 0) planted.seed = 1;

    const float length = effectiveLength(source, branch);
    mutateGenes(source.genes, source.branchDeviations[branch], length,
                source.param(Param::Atonality), source.implementation, planted.genes);

    for (int k = 0; k < BRANCH_COUNT; ++k) planted.setParam(Param::Branch1 + k, 0.0f);

    // Oscillator A back on a whole octave (MIN_PITCH to MAX_PITCH).
    const float octave = static_cast<float>(MAX_PITCH - MIN_PITCH) * planted.genes[Gene::a_freq] +
                         static_cast<float>(MIN_PITCH);
    planted.pitch = std::round(octave) - octave;

    planted.setParam(Param::ModWheel, 0.0f);
    planted.setParam(Param::Rotation, 0.0f);

    // The per-note detune the branch had, and the one its note gets now that
    // the rotation is 0.
    const int rotationSteps =
        static_cast<int>(std::round(source.param(Param::Rotation) * 12.0f)) % 12;
    const float sourceDetune =
        noteDetune(source.seed, 60 + branch - rotationSteps, source.param(Param::Atonality));
    const float plantedDetune =
        noteDetune(planted.seed, 60 + branch, planted.param(Param::Atonality));

    const float total = (2.0f * source.param(Param::Tuning) - 1.0f) +
                        (source.pitch - planted.pitch) + sourceDetune - plantedDetune;
    const float n = (total + 1.0f) / 2.0f;
    const float m = plantedTuning(n);
    // Whole octaves of tuning move out of the control into pitch.
    planted.pitch += (2.0f * n - 1.0f) - (2.0f * m - 1.0f);
    planted.setParam(Param::Tuning, m);

    planted.computeBranchDeviations();
    planted.touch(true);
    return planted;
}
