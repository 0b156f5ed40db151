#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "platform/OrlAudioFiles/AudioFileException.h"
#include "platform/OrlAudioFiles/WavReader.h"
#include "platform/OrlAudioFiles/WavWriter.h"

using namespace OrlAudioFiles;

namespace {

// Builds WAV bytes chunk by chunk, so each test can break one thing.
struct WavBuilder {
    std::vector<uint8_t> bytes;

    WavBuilder() {
        tag("RIFF");
        u32(0);  // patched by finish()
        tag("WAVE");
    }
    void tag(const char* t) {
        for (int i = 0; i < 4; ++i) bytes.push_back(uint8_t(t[i]));
    }
    void u16(uint32_t v) {
        bytes.push_back(uint8_t(v));
        bytes.push_back(uint8_t(v >> 8));
    }
    void u32(uint32_t v) {
        u16(v & 0xFFFF);
        u16(v >> 16);
    }
    void format(uint16_t tagValue, int channels, uint32_t rate, int blockAlign, int bits, uint32_t size = 16) {
        tag("fmt ");
        u32(size);
        u16(tagValue);
        u16(uint32_t(channels));
        u32(rate);
        u32(rate * uint32_t(blockAlign));
        u16(uint32_t(blockAlign));
        u16(uint32_t(bits));
        for (uint32_t i = 16; i < size; ++i) bytes.push_back(0);
    }
    void chunk(const char* t, const std::vector<uint8_t>& body) {
        tag(t);
        u32(uint32_t(body.size()));
        bytes.insert(bytes.end(), body.begin(), body.end());
        if (body.size() & 1) bytes.push_back(0);
    }
    std::vector<uint8_t> finish() {
        uint32_t size = uint32_t(bytes.size() - 8);
        std::memcpy(&bytes[4], &size, 4);
        return bytes;
    }
};

std::string readFailure(const std::vector<uint8_t>& bytes) {
    try {
        readWav(bytes.data(), bytes.size());
    } catch (const OrlAudioFiles::Exception& e) {
        return e.what();
    }
    return "no failure";
}

AudioData ramp(int channels, std::size_t frames) {
    AudioData a;
    a.sampleRate = 48000;
    a.channels = channels;
    for (std::size_t i = 0; i < frames * std::size_t(channels); ++i)
        a.samples.push_back(float(std::sin(double(i) * 0.37)) * 0.9f);
    return a;
}

}  // namespace

TEST(AudioFilesTest, FloatFormatsRoundTripExactly) {
    AudioData a = ramp(2, 101);
    a.samples[3] = 1.75f;  // floats are not clipped
    for (SampleFormat f : {SampleFormat::Float32, SampleFormat::Float64}) {
        std::vector<uint8_t> bytes = writeWav(a, f);
        WavInfo info;
        AudioData b = readWav(bytes.data(), bytes.size(), &info);
        EXPECT_EQ(info.format, f);
        EXPECT_EQ(b.sampleRate, 48000u);
        EXPECT_EQ(b.channels, 2);
        ASSERT_EQ(b.samples.size(), a.samples.size());
        for (std::size_t i = 0; i < a.samples.size(); ++i) EXPECT_EQ(b.samples[i], a.samples[i]) << i;
    }
}

TEST(AudioFilesTest, IntegerFormatsRoundTripWithinOneStep) {
    AudioData a = ramp(3, 57);
    struct Case {
        SampleFormat format;
        int bits;
        double step;
    } cases[] = {{SampleFormat::Int8, 8, 1.0 / 128},
                 {SampleFormat::Int16, 16, 1.0 / 32768},
                 {SampleFormat::Int24, 24, 1.0 / 8388608},
                 {SampleFormat::Int32, 32, 1.0 / 2147483648.0}};
    for (const Case& c : cases) {
        std::vector<uint8_t> bytes = writeWav(a, c.format);
        WavInfo info;
        AudioData b = readWav(bytes.data(), bytes.size(), &info);
        EXPECT_EQ(info.bitsPerSample, c.bits);
        EXPECT_EQ(info.format, c.format);
        EXPECT_EQ(b.channels, 3);
        ASSERT_EQ(b.samples.size(), a.samples.size());
        for (std::size_t i = 0; i < a.samples.size(); ++i)
            EXPECT_NEAR(b.samples[i], a.samples[i], c.step * 0.5 + 1e-7) << c.bits << " bits, sample " << i;
    }
}

TEST(AudioFilesTest, IntegerWriterClipsAndReadsKnownValues) {
    AudioData a;
    a.channels = 1;
    a.samples = {2.0f, -2.0f, 0.5f, -1.0f};
    std::vector<uint8_t> bytes = writeWav(a, SampleFormat::Int16);
    // 44-byte header, then little-endian 16-bit samples.
    ASSERT_EQ(bytes.size(), 44u + 8u);
    EXPECT_EQ(bytes[44] | (bytes[45] << 8), 32767);
    EXPECT_EQ(bytes[46] | (bytes[47] << 8), 0x8000);
    EXPECT_EQ(bytes[48] | (bytes[49] << 8), 16384);
    AudioData b = readWav(bytes.data(), bytes.size());
    EXPECT_FLOAT_EQ(b.samples[0], 32767.0f / 32768.0f);
    EXPECT_FLOAT_EQ(b.samples[1], -1.0f);
    EXPECT_FLOAT_EQ(b.samples[2], 0.5f);
}

TEST(AudioFilesTest, ExtensibleHeaderIsRead) {
    WavBuilder w;
    w.format(0xFFFE, 1, 44100, 4, 32, 40);
    // sub-format tag 3 (float) at offset 24 of the format body
    std::size_t body = 12 + 8;
    w.bytes[body + 24] = 3;
    float v = -0.25f;
    std::vector<uint8_t> d(4);
    std::memcpy(d.data(), &v, 4);
    w.chunk("data", d);
    std::vector<uint8_t> bytes = w.finish();
    AudioData a = readWav(bytes.data(), bytes.size());
    ASSERT_EQ(a.samples.size(), 1u);
    EXPECT_EQ(a.samples[0], -0.25f);
}

TEST(AudioFilesTest, UnknownChunksAndOddPaddingAreSkipped) {
    WavBuilder w;
    w.chunk("LIST", {1, 2, 3});  // odd length, padded
    w.format(1, 1, 8000, 2, 16);
    w.chunk("data", {0x00, 0x40, 0x00, 0xC0});
    std::vector<uint8_t> bytes = w.finish();
    AudioData a = readWav(bytes.data(), bytes.size());
    EXPECT_EQ(a.sampleRate, 8000u);
    ASSERT_EQ(a.samples.size(), 2u);
    EXPECT_EQ(a.samples[0], 0.5f);
    EXPECT_EQ(a.samples[1], -0.5f);
}

TEST(AudioFilesTest, NotRiffWave) {
    EXPECT_EQ(readFailure({}), "Invalid WAV file (not valid RIFF WAVE format)");
    WavBuilder w;
    w.bytes[8] = 'X';
    EXPECT_EQ(readFailure(w.finish()), "Invalid WAV file (not valid RIFF WAVE format)");
}

TEST(AudioFilesTest, TwoFormatChunks) {
    WavBuilder w;
    w.format(1, 1, 8000, 2, 16);
    w.format(1, 1, 8000, 2, 16);
    w.chunk("data", {0, 0});
    EXPECT_EQ(readFailure(w.finish()), "Invalid WAV file (found more than one format chunk)");
}

TEST(AudioFilesTest, TwoDataChunks) {
    WavBuilder w;
    w.format(1, 1, 8000, 2, 16);
    w.chunk("data", {0, 0});
    w.chunk("data", {0, 0});
    EXPECT_EQ(readFailure(w.finish()), "Invalid WAV file (found more than one data chunk)");
}

TEST(AudioFilesTest, ChunkLongerThanFile) {
    WavBuilder w;
    w.format(1, 1, 8000, 2, 16);
    w.tag("data");
    w.u32(1000);
    w.u16(0);
    EXPECT_EQ(readFailure(w.finish()), "Invalid WAV file (encountered an invalid chunk size)");
}

TEST(AudioFilesTest, FormatChunkTooSmall) {
    WavBuilder w;
    w.chunk("fmt ", {1, 0, 1, 0, 0x40, 0x1F, 0, 0});
    w.chunk("data", {0, 0});
    EXPECT_EQ(readFailure(w.finish()), "Invalid WAV file (format chunk too small)");
    WavBuilder x;  // extensible needs its 40 bytes
    x.format(0xFFFE, 1, 8000, 2, 16, 18);
    x.chunk("data", {0, 0});
    EXPECT_EQ(readFailure(x.finish()), "Invalid WAV file (format chunk too small)");
}

TEST(AudioFilesTest, MissingChunks) {
    WavBuilder w;
    w.chunk("data", {0, 0});
    EXPECT_EQ(readFailure(w.finish()), "Invalid WAV file (missing format chunk)");
    WavBuilder x;
    x.format(1, 1, 8000, 2, 16);
    EXPECT_EQ(readFailure(x.finish()), "Invalid WAV file (missing data chunk)");
}

TEST(AudioFilesTest, InvalidBlockAlign) {
    WavBuilder w;
    w.format(1, 2, 8000, 3, 16);
    w.chunk("data", {0, 0, 0, 0});
    EXPECT_EQ(readFailure(w.finish()), "Invalid WAV file (invalid block align)");
    WavBuilder x;  // no channels
    x.format(1, 0, 8000, 0, 16);
    x.chunk("data", {});
    EXPECT_EQ(readFailure(x.finish()), "Invalid WAV file (invalid block align)");
}

TEST(AudioFilesTest, UnsupportedBitResolution) {
    WavBuilder w;
    w.format(1, 1, 8000, 2, 12);
    w.chunk("data", {0, 0});
    EXPECT_EQ(readFailure(w.finish()), "Invalid WAV file (unsupported bit resolution)");
}

TEST(AudioFilesTest, UnsupportedFormatTag) {
    WavBuilder w;
    w.format(2, 1, 8000, 2, 16);  // ADPCM
    w.chunk("data", {0, 0});
    EXPECT_EQ(readFailure(w.finish()), "Cannot read WAV file (unsupported format tag)");
}

TEST(AudioFilesTest, UnsupportedFloatFormat) {
    WavBuilder w;
    w.format(3, 1, 8000, 2, 16);
    w.chunk("data", {0, 0});
    EXPECT_EQ(readFailure(w.finish()), "Cannot read WAV file (unsupported float format)");
}

TEST(AudioFilesTest, PartialFrameAtTheEndIsDropped) {
    WavBuilder w;
    w.format(1, 2, 8000, 4, 16);
    w.chunk("data", {0, 0x40, 0, 0x40, 0, 0});
    std::vector<uint8_t> bytes = w.finish();
    AudioData a = readWav(bytes.data(), bytes.size());
    EXPECT_EQ(a.frameCount(), 1u);
}

TEST(AudioFilesTest, FileRoundTrip) {
    std::string path = ::testing::TempDir() + "audiofiles_roundtrip.wav";
    AudioData a = ramp(2, 64);
    writeWavFile(path, a, SampleFormat::Float32);
    AudioData b = readWavFile(path);
    EXPECT_EQ(b.samples, a.samples);
    std::remove(path.c_str());
}

TEST(AudioFilesTest, WriterRefusesAFrameTooWideForItsFormat) {
    // 16383 float channels make a 65532-byte frame, the widest a WAV header
    // can declare; one more channel no longer fits.
    AudioData fits = ramp(16383, 1);
    std::vector<uint8_t> bytes = writeWav(fits, SampleFormat::Float32);
    EXPECT_EQ(readWav(bytes.data(), bytes.size()).channels, 16383);
    AudioData tooWide = ramp(16384, 1);
    try {
        writeWav(tooWide, SampleFormat::Float32);
        FAIL() << "a 65536-byte frame was written";
    } catch (const OrlAudioFiles::Exception& e) {
        EXPECT_STREQ(e.what(), "Cannot write WAV file (too many channels for the sample format)");
    }
    // As 8-bit samples the same frame is 16384 bytes and fits.
    EXPECT_NO_THROW(writeWav(tooWide, SampleFormat::Int8));
}
