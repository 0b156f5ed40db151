// A ring of fixed power-of-two capacity shared by any number of writers and
// readers without a lock. Four free-running 32-bit indices: a reader or writer
// first reserves its places, copies, then commits in the order of
// reservation. Free space is capacity + readCommit - writeReserve; available
// data is writeCommit - readReserve.
#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

#include "platform/Exceptions.h"

template <typename T, uint32_t CAPACITY>
class EventRing {
    static_assert(CAPACITY > 0 && (CAPACITY & (CAPACITY - 1)) == 0, "capacity is a power of two");

public:
    static constexpr uint32_t capacity() { return CAPACITY; }

    // Adds one item; throws Kvx::xCircularFIFOOverrun when the ring is full.
    void write(const T& item) {
        uint32_t w = writeReserve_.load(std::memory_order_acquire);
        for (;;) {
            const uint32_t readCommit = readCommit_.load(std::memory_order_acquire);
            if (CAPACITY + readCommit - w == 0) throw Kvx::xCircularFIFOOverrun();
            if (writeReserve_.compare_exchange_weak(w, w + 1, std::memory_order_acq_rel)) break;
            std::this_thread::yield();
        }
        items_[w & (CAPACITY - 1)] = item;
        commit(writeCommit_, w, w + 1);
    }

    // Takes up to max items into target; returns how many were taken.
    uint32_t read(T* target, uint32_t max) {
        if (max == 0) return 0;
        uint32_t r = readReserve_.load(std::memory_order_acquire);
        uint32_t n = 0;
        for (;;) {
            const uint32_t available = writeCommit_.load(std::memory_order_acquire) - r;
            n = available < max ? available : max;
            if (n == 0) return 0;
            if (readReserve_.compare_exchange_weak(r, r + n, std::memory_order_acq_rel)) break;
            std::this_thread::yield();
        }
        for (uint32_t k = 0; k < n; ++k) target[k] = items_[(r + k) & (CAPACITY - 1)];
        commit(readCommit_, r, r + n);
        return n;
    }

    // Drops everything written so far by advancing the read indices.
    void discard() {
        uint32_t r = readReserve_.load(std::memory_order_acquire);
        uint32_t end = 0;
        for (;;) {
            end = writeCommit_.load(std::memory_order_acquire);
            if (end == r) return;
            if (readReserve_.compare_exchange_weak(r, end, std::memory_order_acq_rel)) break;
            std::this_thread::yield();
        }
        commit(readCommit_, r, end);
    }

    uint32_t available() const {
        return writeCommit_.load(std::memory_order_acquire) - readReserve_.load(std::memory_order_acquire);
    }
    uint32_t freeSpace() const {
        return CAPACITY + readCommit_.load(std::memory_order_acquire) -
               writeReserve_.load(std::memory_order_acquire);
    }

private:
    // Commits follow the order of reservation: wait for the ones before.
    static void commit(std::atomic<uint32_t>& index, uint32_t from, uint32_t to) {
        uint32_t expected = from;
        while (!index.compare_exchange_weak(expected, to, std::memory_order_acq_rel)) {
            expected = from;
            std::this_thread::yield();
        }
    }

    T items_[CAPACITY] = {};
    std::atomic<uint32_t> readReserve_{0};
    std::atomic<uint32_t> readCommit_{0};
    std::atomic<uint32_t> writeReserve_{0};
    std::atomic<uint32_t> writeCommit_{0};
};
