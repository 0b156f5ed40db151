// The multi-voice filter loops take their voices in chunks: a chunk fills up
// to `most` registers of `perRegister` voices each, and the lanes past the
// last voice go to a spare job that computes silence. run(registers, lanes)
// gets the chunk's register count and its voices in lane order.
#pragma once

#include <algorithm>

namespace engine {

template <int perRegister, int most, class Job, class Run>
void inLaneChunks(const Job* jobs, int count, const Job& spare, Run run) {
    while (count > 0) {
        const int registers = std::min((count + perRegister - 1) / perRegister, most);
        const Job* lanes[perRegister * most];
        int n = 0;
        for (; n < perRegister * registers && n < count; ++n) lanes[n] = &jobs[n];
        for (; n < perRegister * registers; ++n) lanes[n] = &spare;
        run(registers, lanes);
        jobs += perRegister * registers;
        count -= perRegister * registers;
    }
}

// kernel<R>(lanes) for the register count given, any count from 1 to R.
template <int R, class Kernel>
void withRegisters(int registers, Kernel kernel) {
    if (registers == R)
        kernel.template operator()<R>();
    else if constexpr (R > 1)
        withRegisters<R - 1>(registers, kernel);
}

}  // namespace engine
