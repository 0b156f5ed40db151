#include "patch/NorvelleProgram.h"

#include <algorithm>

#include "patch/BranchDeviations.h"
#include "patch/ChangeStamp.h"

NorvelleProgram::NorvelleProgram() { init(); }

NorvelleProgram::NorvelleProgram(const NorvelleProgram& other)
    : changeStamp(other.changeStamp.load()),
      implementation(other.implementation),
      name(other.name),
      path(other.path),
      modified(other.modified),
      seed(other.seed),
      pitch(other.pitch),
      cloned(other.cloned) {
    for (int i = 0; i < PARAM_COUNT; ++i) params[i].store(other.params[i].load());
    std::copy(std::begin(other.genes), std::end(other.genes), std::begin(genes));
    std::copy(&other.branchDeviations[0][0],
              &other.branchDeviations[0][0] + BRANCH_COUNT * MUTABLE_GENE_COUNT,
              &branchDeviations[0][0]);
}

NorvelleProgram& NorvelleProgram::operator=(const NorvelleProgram& other) {
    if (this == &other) return *this;
    implementation = other.implementation;
    name = other.name;
    path = other.path;
    modified = other.modified;
    for (int i = 0; i < PARAM_COUNT; ++i) params[i].exchange(other.params[i].load());
    seed = other.seed;
    pitch = other.pitch;
    cloned = other.cloned;
    std::copy(std::begin(other.genes), std::end(other.genes), std::begin(genes));
    std::copy(&other.branchDeviations[0][0],
              &other.branchDeviations[0][0] + BRANCH_COUNT * MUTABLE_GENE_COUNT,
              &branchDeviations[0][0]);
    changeStamp.exchange(other.changeStamp.load());
    return *this;
}

void NorvelleProgram::init() {
    implementation = CURRENT_IMPLEMENTATION;
    name.write(u"Init");
    path.clear();
    modified = false;
    cloned = false;
    seed = 1;
    pitch = 0.0f;
    std::fill(std::begin(genes), std::end(genes), 0.5f);
    for (int i = 0; i < PARAM_COUNT; ++i) params[i].exchange(PARAMETER_TABLE[i].initValue);
    computeBranchDeviations();
    changeStamp.exchange(nextChangeStamp());
}

void NorvelleProgram::touch(bool setModified) {
    changeStamp.exchange(nextChangeStamp());
    if (setModified) modified = true;
}

bool NorvelleProgram::setGene(int index, float value) {
    if (genes[index] == value) return false;
    genes[index] = value;
    touch(true);
    return true;
}

void NorvelleProgram::computeBranchDeviations() { ::computeBranchDeviations(*this); }

float effectiveLength(const NorvelleProgram& record, int branch) {
    const float length = record.param(Param::Branch1 + branch);
    const float wheel = record.param(Param::ModWheel) * record.param(Param::WheelScale);
    return length + (1.0f - length) * wheel;
}

float noteDetune(uint32_t seed, int note, float atonality) {
    const uint32_t h = (seed << 7) + static_cast<uint32_t>(note) + 0x10C39AA1u;
    SeededGenerator generator{h, ~h};
    generator.step();
    const float spread = std::max(2.0f * atonality - 1.0f, 0.0f);
    // 2.3283064e-11 is 0.1 / 2^32: the range is +-0.05 octave.
    return (static_cast<float>(generator.a) * 2.3283064e-11f - 0.05f) * (spread * spread);
}
