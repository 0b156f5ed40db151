// Reads RIFF WAVE files: one format chunk and one data chunk, integer
// (8, 16, 24, 32 bits) or float (32, 64 bits) samples, also in the
// extensible form. Any other layout fails with an OrlAudioFiles::Exception.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/OrlAudioFiles/AudioData.h"

namespace OrlAudioFiles {

struct WavInfo {
    SampleFormat format = SampleFormat::Int16;
    int bitsPerSample = 16;
};

AudioData readWav(const uint8_t* bytes, std::size_t size, WavInfo* info = nullptr);
AudioData readWavFile(const std::string& path, WavInfo* info = nullptr);

}  // namespace OrlAudioFiles
