#include "platform/OrlAudioFiles/WavReader.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "platform/OrlAudioFiles/AudioFileException.h"

namespace OrlAudioFiles {

namespace {

constexpr uint16_t kTagPcm = 1;
constexpr uint16_t kTagFloat = 3;
constexpr uint16_t kTagExtensible = 0xFFFE;

uint16_t le16(const uint8_t* p) { return uint16_t(p[0] | (p[1] << 8)); }
uint32_t le32(const uint8_t* p) {
    return uint32_t(p[0]) | (uint32_t(p[1]) << 8) | (uint32_t(p[2]) << 16) | (uint32_t(p[3]) << 24);
}

[[noreturn]] void fail(const char* message) { throw Exception(message); }

struct Format {
    uint16_t tag = 0;
    int channels = 0;
    uint32_t sampleRate = 0;
    int blockAlign = 0;
    int bits = 0;
};

Format parseFormat(const uint8_t* p, uint32_t size) {
    if (size < 16) fail("Invalid WAV file (format chunk too small)");
    Format f;
    f.tag = le16(p);
    f.channels = le16(p + 2);
    f.sampleRate = le32(p + 4);
    f.blockAlign = le16(p + 12);
    f.bits = le16(p + 14);
    if (f.tag == kTagExtensible) {
        // cbSize, valid bits, channel mask, then the sub-format whose first
        // two bytes are the real tag.
        if (size < 40) fail("Invalid WAV file (format chunk too small)");
        f.tag = le16(p + 24);
    }
    return f;
}

float sampleAt(const uint8_t* p, const Format& f, bool isFloat) {
    if (isFloat) {
        if (f.bits == 32) {
            uint32_t u = le32(p);
            float v;
            std::memcpy(&v, &u, 4);
            return v;
        }
        uint64_t u = uint64_t(le32(p)) | (uint64_t(le32(p + 4)) << 32);
        double v;
        std::memcpy(&v, &u, 8);
        return float(v);
    }
    switch (f.bits) {
        case 8: return float(int(p[0]) - 128) * (1.0f / 128.0f);
        case 16: return float(int16_t(le16(p))) * (1.0f / 32768.0f);
        case 24: {
            int32_t v = int32_t((uint32_t(p[0]) << 8) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 24)) >> 8;
            return float(v) * (1.0f / 8388608.0f);
        }
        default: return float(double(int32_t(le32(p))) * (1.0 / 2147483648.0));
    }
}

}  // namespace

AudioData readWav(const uint8_t* bytes, std::size_t size, WavInfo* info) {
    if (size < 12 || std::memcmp(bytes, "RIFF", 4) != 0 || std::memcmp(bytes + 8, "WAVE", 4) != 0)
        fail("Invalid WAV file (not valid RIFF WAVE format)");

    // The RIFF size may be short or long in files from careless writers; the
    // chunks themselves are what counts, up to the end of the bytes we have.
    std::size_t pos = 12;
    bool haveFormat = false, haveData = false;
    Format format;
    const uint8_t* data = nullptr;
    uint32_t dataSize = 0;
    while (pos + 8 <= size) {
        const uint8_t* header = bytes + pos;
        uint32_t chunkSize = le32(header + 4);
        pos += 8;
        if (chunkSize > size - pos) fail("Invalid WAV file (encountered an invalid chunk size)");
        if (std::memcmp(header, "fmt ", 4) == 0) {
            if (haveFormat) fail("Invalid WAV file (found more than one format chunk)");
            format = parseFormat(bytes + pos, chunkSize);
            haveFormat = true;
        } else if (std::memcmp(header, "data", 4) == 0) {
            if (haveData) fail("Invalid WAV file (found more than one data chunk)");
            data = bytes + pos;
            dataSize = chunkSize;
            haveData = true;
        }
        // Chunks are padded to an even length; the pad byte of the last chunk
        // may be missing.
        pos += chunkSize;
        if (chunkSize & 1u) ++pos;
    }
    if (!haveFormat) fail("Invalid WAV file (missing format chunk)");
    if (!haveData) fail("Invalid WAV file (missing data chunk)");

    bool isFloat;
    if (format.tag == kTagPcm) {
        if (format.bits != 8 && format.bits != 16 && format.bits != 24 && format.bits != 32)
            fail("Invalid WAV file (unsupported bit resolution)");
        isFloat = false;
    } else if (format.tag == kTagFloat) {
        if (format.bits != 32 && format.bits != 64) fail("Cannot read WAV file (unsupported float format)");
        isFloat = true;
    } else {
        fail("Cannot read WAV file (unsupported format tag)");
    }
    if (format.channels <= 0 || format.blockAlign != format.channels * (format.bits / 8))
        fail("Invalid WAV file (invalid block align)");

    AudioData audio;
    audio.sampleRate = format.sampleRate;
    audio.channels = format.channels;
    std::size_t frames = dataSize / std::size_t(format.blockAlign);
    std::size_t bytesPerSample = std::size_t(format.bits / 8);
    audio.samples.resize(frames * std::size_t(format.channels));
    for (std::size_t i = 0; i < audio.samples.size(); ++i)
        audio.samples[i] = sampleAt(data + i * bytesPerSample, format, isFloat);
    if (info) {
        info->bitsPerSample = format.bits;
        if (isFloat)
            info->format = format.bits == 32 ? SampleFormat::Float32 : SampleFormat::Float64;
        else
            info->format = format.bits == 8    ? SampleFormat::Int8
                           : format.bits == 16 ? SampleFormat::Int16
                           : format.bits == 24 ? SampleFormat::Int24
                                               : SampleFormat::Int32;
    }
    return audio;
}

AudioData readWavFile(const std::string& path, WavInfo* info) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Exception("Cannot open file " + path);
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return readWav(bytes.data(), bytes.size(), info);
}

}  // namespace OrlAudioFiles
