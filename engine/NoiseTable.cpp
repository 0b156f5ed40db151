#include "engine/NoiseTable.h"

#include <cmath>

namespace engine {

NoiseTable::NoiseTable() {
    // The seeded two-word generator, from a fixed start.
    uint32_t a = 0x1247E248u, b = 0xEDB7EDB7u;
    float sum = 0.0f;
    for (int i = 0; i < SIZE; ++i) {
        const uint32_t u = b * 0x323785AFu - 0x35F2CFD7u;
        a = ((a * 0x569CF9F3u - 0x06DC3E2Du) << 1) | (u >> 31);
        b = (u << 1) | (a >> 31);
        values_[i] = float(a) * 4.6565662e-10f - 0.99999f;
        sum += values_[i];
    }
    const float mean = sum * 0.00097276265f;
    for (float& v : values_) {
        v = (v - mean) / (std::fabs(mean) + 1.00001f);
        if (std::fabs(v) < 1e-7f) v = 0.0f;
    }
}

const NoiseTable& NoiseTable::instance() {
    static const NoiseTable table;
    return table;
}

}  // namespace engine
