// A value shared between threads without a lock: a small pool of records,
// one of which is current. Readers hold a record by counting themselves into
// its state word; a writer builds the next value in a free record and swaps it
// in. A record replaced while read stays alive until its last reader leaves.
//
// State of a record: 0 free, 1 being written (or retired and being cleared),
// 2 published with no reader, 2 + n with n readers.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <thread>
#include <utility>

template <typename T, int POOL = 4>
class VersionedCell {
    static_assert(POOL >= 3, "one current, one being written, one still read");

public:
    VersionedCell() : VersionedCell(T{}) {}

    explicit VersionedCell(const T& initial) {
        for (auto& s : state_) s.store(0, std::memory_order_relaxed);
        new (slot(0)) T(initial);
        state_[0].store(2, std::memory_order_release);
        current_.store(0, std::memory_order_release);
        lastWritten_.store(0, std::memory_order_release);
    }

    ~VersionedCell() {
        for (int i = 0; i < POOL; ++i) {
            if (state_[i].load(std::memory_order_acquire) >= 2) slot(i)->~T();
        }
    }

    VersionedCell(const VersionedCell&) = delete;
    VersionedCell& operator=(const VersionedCell&) = delete;

    // Holds the current record until release. Never returns null.
    T* acquire() {
        for (;;) {
            const int i = current_.load(std::memory_order_acquire);
            uint32_t c = state_[i].load(std::memory_order_acquire);
            if (c >= 2 && state_[i].compare_exchange_strong(c, c + 1, std::memory_order_acq_rel))
                return slot(i);
            std::this_thread::yield();
        }
    }

    void release(T* record) { leave(indexOf(record)); }

    // Makes a copy of value the current record.
    void publish(const T& value) {
        const int i = claim();
        lastWritten_.store(i, std::memory_order_release);
        new (slot(i)) T(value);
        state_[i].store(2, std::memory_order_release);
        const int old = current_.exchange(i, std::memory_order_acq_rel);
        leave(old);
    }

    // The number of records in the pool (for tests and diagnostics).
    static constexpr int poolSize() { return POOL; }
    // The state word of record i (for tests and diagnostics).
    uint32_t stateOf(int i) const { return state_[i].load(std::memory_order_acquire); }

private:
    T* slot(int i) { return std::launder(reinterpret_cast<T*>(storage_[i].bytes)); }

    int indexOf(const T* record) const {
        for (int i = 0; i < POOL; ++i)
            if (reinterpret_cast<const unsigned char*>(record) == storage_[i].bytes) return i;
        return -1;
    }

    int claim() {
        int i = lastWritten_.load(std::memory_order_acquire) + 2;
        if (i >= POOL) i -= POOL;
        for (;;) {
            for (int tried = 0; tried < POOL; ++tried) {
                uint32_t expected = 0;
                if (state_[i].compare_exchange_strong(expected, 1, std::memory_order_acq_rel))
                    return i;
                if (++i == POOL) i = 0;
            }
            std::this_thread::yield();
        }
    }

    // One reader (or the cell's own hold on a current record) leaves record i.
    void leave(int i) {
        if (i < 0) return;
        if (state_[i].fetch_sub(1, std::memory_order_acq_rel) - 1 == 1) {
            slot(i)->~T();
            state_[i].exchange(0, std::memory_order_acq_rel);
        }
    }

    struct alignas(alignof(T) > 16 ? alignof(T) : 16) Storage {
        unsigned char bytes[sizeof(T)];
    };

    Storage storage_[POOL];
    std::atomic<uint32_t> state_[POOL];
    std::atomic<int> current_{0};
    std::atomic<int> lastWritten_{0};
};
