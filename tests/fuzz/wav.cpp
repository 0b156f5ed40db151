// WAV reader: any bytes either read or fail with the reader's own exception;
// what reads must write and read back to the same samples.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/OrlAudioFiles/AudioFileException.h"
#include "platform/OrlAudioFiles/WavReader.h"
#include "platform/OrlAudioFiles/WavWriter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    OrlAudioFiles::AudioData audio;
    try {
        audio = OrlAudioFiles::readWav(data, size);
    } catch (const OrlAudioFiles::Exception&) {
        return 0;
    }
    if (audio.channels <= 0 || audio.samples.size() % std::size_t(audio.channels) != 0) std::abort();
    std::vector<uint8_t> again;
    try {
        again = OrlAudioFiles::writeWav(audio, OrlAudioFiles::SampleFormat::Float32);
    } catch (const OrlAudioFiles::Exception&) {
        // More channels than a float frame can declare: the writer refuses.
        if (uint32_t(audio.channels) * 4u <= 0xFFFFu) std::abort();
        return 0;
    }
    OrlAudioFiles::AudioData back = OrlAudioFiles::readWav(again.data(), again.size());
    if (back.samples.size() != audio.samples.size() || back.sampleRate != audio.sampleRate) std::abort();
    if (!audio.samples.empty() &&
        std::memcmp(back.samples.data(), audio.samples.data(), audio.samples.size() * sizeof(float)) != 0)
        std::abort();
    return 0;
}
