#include "patch/ChangeStamp.h"

#include <atomic>

namespace {
std::atomic<uint32_t> changeStampCounter{0};
}

uint32_t nextChangeStamp() { return changeStampCounter.fetch_add(1, std::memory_order_acq_rel) + 1u; }
