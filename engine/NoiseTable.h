// The shared noise source: 1028 deterministic values with zero mean, the same
// in every voice and every run. Voices differ only in where they read.
#pragma once

#include <cstdint>
#include <cstring>

namespace engine {

class NoiseTable {
public:
    static constexpr int SIZE = 1028;

    // Built on first use; no heap memory.
    static const NoiseTable& instance();

    const float* values() const { return values_; }

    // Advances random once and reads four runs of four values, at the
    // positions (j * random) >> 22 for j = 1 to 4: 16 samples of noise.
    void read(uint32_t& random, float* out16) const {
        const uint32_t x = random * 0x569CF9F3u - 0x06DC3E2Fu;
        random = (x << 1) | (x >> 31);
        for (uint32_t j = 1; j <= 4; ++j) {
            const uint32_t start = (j * random) >> 22;
            std::memcpy(out16 + (j - 1) * 4, values_ + start, 4 * sizeof(float));
        }
    }

private:
    NoiseTable();
    float values_[SIZE];
};

}  // namespace engine
