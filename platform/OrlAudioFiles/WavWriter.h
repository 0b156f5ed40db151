// Writes RIFF WAVE files. Integer formats are rounded and clipped to their
// range (plain PCM tag); float formats store the samples as they are (float
// tag, with the fact chunk that such files carry).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/OrlAudioFiles/AudioData.h"

namespace OrlAudioFiles {

std::vector<uint8_t> writeWav(const AudioData& audio, SampleFormat format);
void writeWavFile(const std::string& path, const AudioData& audio, SampleFormat format);

}  // namespace OrlAudioFiles
