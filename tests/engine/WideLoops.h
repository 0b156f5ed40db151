// Chooses the four-lane or the eight-lane loops for the life of a test
// scope. The eight-lane ones exist only on processors with wide registers.
#pragma once

#include <vector>

#include "engine/WideProcessor.h"

namespace testsupport {

class WideLoops {
public:
    explicit WideLoops(bool wide) { engine::wide::allow(wide); }
    ~WideLoops() { engine::wide::allow(true); }
    WideLoops(const WideLoops&) = delete;
    WideLoops& operator=(const WideLoops&) = delete;

    // The ways to test on this processor: four lanes, and eight where they run.
    static std::vector<bool> ways() {
        std::vector<bool> w{false};
        if (engine::wide::runsHere()) w.push_back(true);
        return w;
    }
};

}  // namespace testsupport
