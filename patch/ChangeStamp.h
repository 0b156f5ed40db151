// The process-wide change-stamp counter. Every change to any record takes a
// fresh value from it; two records with equal stamps hold the same state.
// Shared by all plug-in instances of the process.
#pragma once

#include <cstdint>

// Atomically increments the counter and returns the new value.
uint32_t nextChangeStamp();
