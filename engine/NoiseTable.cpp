#include "engine/NoiseTable.h"

#include <cmath>
#include <cstring>

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

void NoiseTable::read(uint32_t& random, float* out) const {
    const uint32_t x = random * 0x569CF9F3u - 0x06DC3E2Fu;
    random = (x << 1) | (x >> 31);
    for (uint32_t j = 1; j <= 4; ++j) {
        const uint32_t start = (j * random) >> 22;
        std::memcpy(out + (j - 1) * 4, values_ + start, 4 * sizeof(float));
    }
}

}  // namespace engine
