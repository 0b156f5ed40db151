// The lock-free hand-over under load: readers never see a torn or recycled
// record while writers keep publishing, and the ring delivers every item of
// every writer once, in each writer's order.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "engine/EventRing.h"
#include "engine/VersionedCell.h"
#include "platform/Exceptions.h"

namespace {

// A record whose halves must always agree; a reader of a half-built or
// recycled record would see them differ.
struct Pair {
    uint64_t a = 0;
    uint64_t b = ~uint64_t{0};
    uint64_t filler[6] = {};
};

}  // namespace

TEST(VersionedCellStress, ReadersSeeWholeRecordsWhileWritersPublish) {
    VersionedCell<Pair, 3> cell;
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0};
    std::atomic<long> reads{0};

    std::vector<std::thread> readers;
    for (int t = 0; t < 3; ++t) {
        readers.emplace_back([&] {
            uint64_t last = 0;
            do {
                Pair* p = cell.acquire();
                const uint64_t a = p->a;
                bool ok = p->b == ~a;
                for (uint64_t f : p->filler) ok = ok && f == a;
                std::this_thread::yield();  // hold it a while, as a block does
                ok = ok && p->a == a;
                cell.release(p);
                if (!ok) ++torn;
                // One writer: values only grow.
                if (a < last) ++torn;
                last = a;
                ++reads;
            } while (!stop.load());
        });
    }
    std::thread writer([&] {
        // The writes start once a reader is reading: on a busy machine the
        // readers may otherwise be scheduled only after the last write.
        while (reads.load() == 0) std::this_thread::yield();
        for (uint64_t k = 1; k <= 20000; ++k) {
            Pair p;
            p.a = k;
            p.b = ~k;
            for (auto& f : p.filler) f = k;
            cell.publish(p);
        }
        stop.store(true);
    });
    writer.join();
    for (auto& r : readers) r.join();
    EXPECT_EQ(torn.load(), 0);
    EXPECT_GT(reads.load(), 0);
    Pair* p = cell.acquire();
    EXPECT_EQ(p->a, 20000u);
    cell.release(p);
    // Nobody holds anything: one record published, the rest free.
    int published = 0;
    for (int i = 0; i < cell.poolSize(); ++i) {
        EXPECT_TRUE(cell.stateOf(i) == 0 || cell.stateOf(i) == 2);
        published += cell.stateOf(i) == 2;
    }
    EXPECT_EQ(published, 1);
}

TEST(VersionedCellStress, RingDeliversEveryItemOnceInEachWritersOrder) {
    EventRing<uint32_t, 64> ring;
    constexpr int WRITERS = 3;
    constexpr uint32_t PER_WRITER = 30000;
    std::atomic<int> overruns{0};
    std::vector<std::thread> writers;
    for (uint32_t w = 0; w < WRITERS; ++w) {
        writers.emplace_back([&, w] {
            for (uint32_t i = 0; i < PER_WRITER;) {
                try {
                    ring.write((w << 24) | i);
                    ++i;
                } catch (const Kvx::xCircularFIFOOverrun&) {
                    ++overruns;
                    std::this_thread::yield();
                }
            }
        });
    }
    std::vector<uint32_t> next(WRITERS, 0);
    int disorder = 0;
    uint32_t received = 0;
    uint32_t buffer[16];
    while (received < WRITERS * PER_WRITER) {
        const uint32_t n = ring.read(buffer, 16);
        for (uint32_t k = 0; k < n; ++k) {
            const uint32_t w = buffer[k] >> 24;
            const uint32_t i = buffer[k] & 0xFFFFFF;
            if (w >= WRITERS || i != next[w]) ++disorder;
            if (w < WRITERS) next[w] = i + 1;
        }
        received += n;
        if (n == 0) std::this_thread::yield();
    }
    for (auto& t : writers) t.join();
    EXPECT_EQ(disorder, 0);
    EXPECT_EQ(ring.available(), 0u);
    for (uint32_t w = 0; w < WRITERS; ++w) EXPECT_EQ(next[w], PER_WRITER);
}
