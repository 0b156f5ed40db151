#include "platform/OrlAudioFiles/WavWriter.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>

#include "platform/OrlAudioFiles/AudioFileException.h"

namespace OrlAudioFiles {

namespace {

void put16(std::vector<uint8_t>& out, uint32_t v) {
    out.push_back(uint8_t(v));
    out.push_back(uint8_t(v >> 8));
}
void put32(std::vector<uint8_t>& out, uint32_t v) {
    put16(out, v & 0xFFFFu);
    put16(out, v >> 16);
}
void putTag(std::vector<uint8_t>& out, const char* tag) {
    for (int i = 0; i < 4; ++i) out.push_back(uint8_t(tag[i]));
}

int bitsOf(SampleFormat f) {
    switch (f) {
        case SampleFormat::Int8: return 8;
        case SampleFormat::Int16: return 16;
        case SampleFormat::Int24: return 24;
        case SampleFormat::Int32: return 32;
        case SampleFormat::Float32: return 32;
        case SampleFormat::Float64: return 64;
    }
    return 16;
}

// Round to the nearest step of an integer format and clip to its range.
int64_t quantize(float x, double scale, int64_t lo, int64_t hi) {
    double v = std::nearbyint(double(x) * scale);
    if (!(v >= double(lo))) return std::isnan(v) ? 0 : lo;
    if (v > double(hi)) return hi;
    return int64_t(v);
}

}  // namespace

std::vector<uint8_t> writeWav(const AudioData& audio, SampleFormat format) {
    if (audio.channels <= 0 || audio.channels > 0xFFFF) throw Exception("Cannot write WAV file (invalid channel count)");
    const bool isFloat = format == SampleFormat::Float32 || format == SampleFormat::Float64;
    const int bits = bitsOf(format);
    const uint32_t blockAlign = uint32_t(audio.channels) * uint32_t(bits / 8);
    // A frame must fit the format chunk's 16-bit block align.
    if (blockAlign > 0xFFFF) throw Exception("Cannot write WAV file (too many channels for the sample format)");
    const std::size_t frames = audio.frameCount();
    const uint64_t dataBytes = uint64_t(frames) * blockAlign;
    const uint32_t formatSize = isFloat ? 18 : 16;
    const uint64_t riffSize = 4 + (8 + formatSize) + (isFloat ? 12 : 0) + 8 + dataBytes + (dataBytes & 1);
    if (riffSize > 0xFFFFFFFFull) throw Exception("Cannot write WAV file (too much data)");

    std::vector<uint8_t> out;
    out.reserve(std::size_t(riffSize) + 8);
    putTag(out, "RIFF");
    put32(out, uint32_t(riffSize));
    putTag(out, "WAVE");
    putTag(out, "fmt ");
    put32(out, formatSize);
    put16(out, isFloat ? 3 : 1);
    put16(out, uint32_t(audio.channels));
    put32(out, audio.sampleRate);
    put32(out, audio.sampleRate * blockAlign);
    put16(out, blockAlign);
    put16(out, uint32_t(bits));
    if (isFloat) {
        put16(out, 0);
        putTag(out, "fact");
        put32(out, 4);
        put32(out, uint32_t(frames));
    }
    putTag(out, "data");
    put32(out, uint32_t(dataBytes));
    for (std::size_t i = 0; i < frames * std::size_t(audio.channels); ++i) {
        float x = audio.samples[i];
        switch (format) {
            case SampleFormat::Int8: out.push_back(uint8_t(quantize(x, 128.0, -128, 127) + 128)); break;
            case SampleFormat::Int16: put16(out, uint32_t(quantize(x, 32768.0, -32768, 32767))); break;
            case SampleFormat::Int24: {
                uint32_t v = uint32_t(quantize(x, 8388608.0, -8388608, 8388607));
                out.push_back(uint8_t(v));
                out.push_back(uint8_t(v >> 8));
                out.push_back(uint8_t(v >> 16));
                break;
            }
            case SampleFormat::Int32: put32(out, uint32_t(quantize(x, 2147483648.0, INT32_MIN, INT32_MAX))); break;
            case SampleFormat::Float32: {
                uint32_t u;
                std::memcpy(&u, &x, 4);
                put32(out, u);
                break;
            }
            case SampleFormat::Float64: {
                double d = x;
                uint64_t u;
                std::memcpy(&u, &d, 8);
                put32(out, uint32_t(u));
                put32(out, uint32_t(u >> 32));
                break;
            }
        }
    }
    if (dataBytes & 1) out.push_back(0);
    return out;
}

void writeWavFile(const std::string& path, const AudioData& audio, SampleFormat format) {
    std::vector<uint8_t> bytes = writeWav(audio, format);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) throw Exception("Cannot create file " + path);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    if (!out) throw Exception("Cannot write file " + path);
}

}  // namespace OrlAudioFiles
