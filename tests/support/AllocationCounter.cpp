#include "AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t tAllocations = 0;
thread_local bool tArmed = false;

void* allocate(std::size_t size) {
    if (tArmed) ++tAllocations;
    if (size == 0) size = 1;
    if (void* p = std::malloc(size)) return p;
    throw std::bad_alloc();
}

void* allocateAligned(std::size_t size, std::align_val_t align) {
    if (tArmed) ++tAllocations;
    std::size_t a = static_cast<std::size_t>(align);
    std::size_t rounded = (size + a - 1) / a * a;
    if (rounded == 0) rounded = a;
    if (void* p = std::aligned_alloc(a, rounded)) return p;
    throw std::bad_alloc();
}

}  // namespace

namespace testsupport {

AllocationCounter::AllocationCounter() : start_(tAllocations), outerArmed_(tArmed) { tArmed = true; }
AllocationCounter::~AllocationCounter() { tArmed = outerArmed_; }
std::size_t AllocationCounter::count() const { return tAllocations - start_; }

}  // namespace testsupport

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try { return allocate(size); } catch (...) { return nullptr; }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try { return allocate(size); } catch (...) { return nullptr; }
}
void* operator new(std::size_t size, std::align_val_t a) { return allocateAligned(size, a); }
void* operator new[](std::size_t size, std::align_val_t a) { return allocateAligned(size, a); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
