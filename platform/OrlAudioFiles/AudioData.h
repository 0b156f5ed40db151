// Sampled sound in memory: interleaved 32-bit float frames and their rate.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OrlAudioFiles {

// How samples are stored in a file.
enum class SampleFormat {
    Int8,     // unsigned, offset 128
    Int16,
    Int24,
    Int32,
    Float32,
    Float64,
};

struct AudioData {
    uint32_t sampleRate = 44100;
    int channels = 2;
    std::vector<float> samples;  // interleaved, frameCount() * channels values

    std::size_t frameCount() const { return channels > 0 ? samples.size() / std::size_t(channels) : 0; }
    float at(std::size_t frame, int channel) const { return samples[frame * std::size_t(channels) + std::size_t(channel)]; }
};

}  // namespace OrlAudioFiles
