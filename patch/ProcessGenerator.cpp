#include "patch/ProcessGenerator.h"

#include <chrono>

#include "patch/GaussianPair.h"

namespace {

uint32_t tickCountMilliseconds() {
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<uint32_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

}  // namespace

namespace {
// Takes the tick count while the process starts, with the other static
// objects, rather than at the first plant.
[[maybe_unused]] const ProcessGenerator& startedWithTheProcess = ProcessGenerator::instance();
}  // namespace

ProcessGenerator::ProcessGenerator(uint32_t ticks) : state_(SeededGenerator::fromSeed(ticks)) {}

ProcessGenerator& ProcessGenerator::instance() {
    // Made on first use, so that no other static object can see it unmade.
    static ProcessGenerator processGenerator(tickCountMilliseconds());
    return processGenerator;
}

uint32_t ProcessGenerator::next() {
    state_.step();
    return state_.a;
}

float ProcessGenerator::nextGaussian() {
    if (hasSpare_) {
        hasSpare_ = false;
        return spare_;
    }
    const GaussianPair pair = nextGaussianPair(state_);
    spare_ = pair.second;
    hasSpare_ = true;
    return pair.first;
}

void ProcessGenerator::setWords(uint32_t a, uint32_t b) {
    state_.a = a;
    state_.b = b;
    hasSpare_ = false;
}
