// Chooses the lane width of the engine's loops for the life of a test scope:
// one value at a time, four or eight lanes. The eight-lane loops exist only
// on processors with wide registers.
#pragma once

#include <vector>

#include "engine/WideProcessor.h"

namespace testsupport {

class WideLoops {
public:
    explicit WideLoops(int width) { engine::wide::forceLanes(width); }
    ~WideLoops() { engine::wide::forceLanes(0); }
    WideLoops(const WideLoops&) = delete;
    WideLoops& operator=(const WideLoops&) = delete;

    // The widths to test on this processor: four lanes first, then one, and
    // eight where they run.
    static std::vector<int> ways() {
        std::vector<int> w{4, 1};
        if (engine::wide::runsHere()) w.push_back(8);
        return w;
    }
};

}  // namespace testsupport
