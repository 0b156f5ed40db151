// The lock-free record cell: states of its records through acquire, publish
// and release, and the life of a record replaced while read.
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "engine/VersionedCell.h"

namespace {

// Counts live instances, so the tests see when a record is destroyed.
struct Tracked {
    static inline std::atomic<int> alive{0};
    explicit Tracked(int v = 0) : value(v) { ++alive; }
    Tracked(const Tracked& o) : value(o.value) { ++alive; }
    ~Tracked() { --alive; }
    int value;
};

}  // namespace

TEST(VersionedCell, StartsWithOnePublishedRecord) {
    VersionedCell<int> cell(5);
    EXPECT_EQ(cell.stateOf(0), 2u);
    for (int i = 1; i < cell.poolSize(); ++i) EXPECT_EQ(cell.stateOf(i), 0u);
    int* r = cell.acquire();
    EXPECT_EQ(*r, 5);
    EXPECT_EQ(cell.stateOf(0), 3u);
    cell.release(r);
    EXPECT_EQ(cell.stateOf(0), 2u);
}

TEST(VersionedCell, PublishReplacesTheCurrentRecordAndRetiresTheOld) {
    {
        VersionedCell<Tracked> cell(Tracked(1));
        EXPECT_EQ(Tracked::alive, 1);
        cell.publish(Tracked(2));
        EXPECT_EQ(Tracked::alive, 1);  // the old one had no reader
        Tracked* r = cell.acquire();
        EXPECT_EQ(r->value, 2);
        cell.release(r);
    }
    EXPECT_EQ(Tracked::alive, 0);
}

TEST(VersionedCell, RecordReadDuringPublishLivesUntilItsReaderLeaves) {
    VersionedCell<Tracked> cell(Tracked(1));
    Tracked* held = cell.acquire();
    Tracked* second = cell.acquire();
    EXPECT_EQ(cell.stateOf(0), 4u);
    cell.publish(Tracked(2));
    // Retired with two readers: one above one per reader.
    EXPECT_EQ(cell.stateOf(0), 3u);
    EXPECT_EQ(held->value, 1);
    EXPECT_EQ(Tracked::alive, 2);
    Tracked* now = cell.acquire();
    EXPECT_EQ(now->value, 2);
    cell.release(now);
    cell.release(second);
    EXPECT_EQ(cell.stateOf(0), 2u);
    EXPECT_EQ(Tracked::alive, 2);
    cell.release(held);
    EXPECT_EQ(cell.stateOf(0), 0u);
    EXPECT_EQ(Tracked::alive, 1);
}

TEST(VersionedCell, PublishWritesTwoPastTheLastWrittenRecord) {
    VersionedCell<int, 4> cell(0);
    cell.publish(1);
    // Last written 0: the search starts at 2.
    EXPECT_EQ(cell.stateOf(2), 2u);
    cell.publish(2);
    // Last written 2: the search starts at 4, wrapped to 0.
    EXPECT_EQ(cell.stateOf(0), 2u);
    EXPECT_EQ(cell.stateOf(2), 0u);
    int* r = cell.acquire();
    EXPECT_EQ(*r, 2);
    cell.release(r);
}

TEST(VersionedCell, PublishSkipsRecordsStillRead) {
    VersionedCell<int, 3> cell(0);
    int* a = cell.acquire();  // record 0
    cell.publish(1);          // into 2
    int* b = cell.acquire();  // record 2
    cell.publish(2);          // 2 + 2 wraps to 1; 0 is still read
    EXPECT_EQ(cell.stateOf(1), 2u);
    int* c = cell.acquire();
    EXPECT_EQ(*c, 2);
    EXPECT_EQ(*a, 0);
    EXPECT_EQ(*b, 1);
    cell.release(a);
    cell.release(b);
    cell.release(c);
    EXPECT_EQ(cell.stateOf(0), 0u);
    EXPECT_EQ(cell.stateOf(2), 0u);
    EXPECT_EQ(cell.stateOf(1), 2u);
}

TEST(VersionedCell, HoldsValuesThatOwnMemory) {
    VersionedCell<std::string> cell(std::string(100, 'a'));
    std::string* r = cell.acquire();
    cell.publish(std::string(200, 'b'));
    EXPECT_EQ(r->size(), 100u);
    cell.release(r);
    r = cell.acquire();
    EXPECT_EQ(r->size(), 200u);
    cell.release(r);
}
