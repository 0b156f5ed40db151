#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "tests/support/AllocationCounter.h"

using testsupport::AllocationCounter;

TEST(AllocationCounter, CountsThisThreadsAllocations) {
    AllocationCounter counter;
    auto a = std::make_unique<int>(1);
    std::vector<int> v(100);
    EXPECT_EQ(counter.count(), 2u);
}

TEST(AllocationCounter, IgnoresOtherThreads) {
    AllocationCounter counter;
    std::size_t before = counter.count();
    std::thread t([] { auto p = std::make_unique<int>(2); (void)p; });
    std::size_t afterStart = counter.count();  // starting a thread may allocate here
    t.join();
    EXPECT_EQ(counter.count(), afterStart);
    EXPECT_GE(afterStart, before);
}

TEST(AllocationCounter, NoAllocationCountsZero) {
    int local[16] = {};
    AllocationCounter counter;
    for (int& x : local) x += 1;
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_EQ(local[3], 1);
}
