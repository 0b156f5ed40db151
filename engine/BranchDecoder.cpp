#include "engine/BranchDecoder.h"

#include "engine/GeneDecoding.h"
#include "patch/MutateGenes.h"
#include "patch/NorvelleProgram.h"

namespace engine {

void BranchDecoder::setBranch(int branch) {
    if (branch != branch_) {
        branch_ = branch;
        computed_ = false;
    }
}

bool BranchDecoder::update(const NorvelleProgram& record, float amount, float atonality, float effect,
                           float sampleRate) {
    const uint32_t stamp = record.stamp();
    if (computed_ && stamp == changeStamp_ && amount == amount_ && atonality == atonality_ &&
        effect == effect_ && sampleRate == sampleRate_)
        return false;
    computed_ = true;
    changeStamp_ = stamp;
    amount_ = amount;
    atonality_ = atonality;
    effect_ = effect;
    sampleRate_ = sampleRate;

    // The only reading of `implementation` on the sound's side is inside the
    // mutation; the decoding that follows is the same for every patch.
    mutateGenes(record.genes, record.branchDeviations[branch_], amount, atonality, record.implementation, genes_);
    params_ = decodeGenes(genes_, record.genes[Gene::fx_size], effect, sampleRate);
    return true;
}

}  // namespace engine
