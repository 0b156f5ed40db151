// The decoder of one branch: mutates the genome by the branch's length and
// decodes the result into BranchParams. There are twelve, one per branch,
// shared by all the voices on that branch. Recomputing costs dozens of
// transcendental calls, so the decoder keeps the key of its last computation
// and does nothing while the key stays the same.
#pragma once

#include <cstdint>

#include "engine/BranchParams.h"
#include "patch/GeneTable.h"

class NorvelleProgram;

namespace engine {

class BranchDecoder {
public:
    explicit BranchDecoder(int branch = 0) : branch_(branch) {}

    int branch() const { return branch_; }
    // Moves the decoder to another branch (0 to 11); the next update recomputes.
    void setBranch(int branch);

    // Returns false, doing nothing, when the record's changeStamp, amount,
    // atonality, effect and sampleRate all equal those of the last
    // computation (on this branch). Otherwise stores them, mutates the
    // record's genes along its deviation row of this branch by `amount`,
    // decodes them and returns true.
    //   amount:    the effective branch length
    //   atonality: the Atonality parameter, 0 to 1
    //   effect:    the bipolar effect control, 2 * Effect - 1
    // Audio thread: no allocation, no lock, no exception.
    bool update(const NorvelleProgram& record, float amount, float atonality, float effect, float sampleRate);

    const BranchParams& params() const { return params_; }
    // The 36 mutated genes of the last computation.
    const float* genes() const { return genes_; }

private:
    int branch_;
    // The key of the last computation; `computed_` is false until the first.
    bool computed_ = false;
    uint32_t changeStamp_ = 0;
    float amount_ = 0.0f;
    float atonality_ = 0.0f;
    float effect_ = 0.0f;
    float sampleRate_ = 0.0f;

    float genes_[MUTABLE_GENE_COUNT] = {};
    BranchParams params_;
};

}  // namespace engine
