// Counts heap allocations made by the current thread while a counter is
// alive. Every test program replaces the global operator new with a counting
// one, so a test can prove that a piece of code allocates nothing:
//
//   testsupport::AllocationCounter counter;
//   core.renderBlock(...);
//   EXPECT_EQ(counter.count(), 0u);
#pragma once

#include <cstddef>

namespace testsupport {

class AllocationCounter {
public:
    AllocationCounter();
    ~AllocationCounter();
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;

    // Allocations by this thread since the counter was made.
    std::size_t count() const;

private:
    std::size_t start_;
    bool outerArmed_;
};

}  // namespace testsupport
