#include "engine/RenderSelfTest.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>

#include "engine/SoundEngine.h"
#include "patch/GeneTable.h"
#include "patch/MidiConfigRecord.h"
#include "patch/ParameterTable.h"
#include "patch/SeededGenerator.h"
#include "platform/Exceptions.h"
#include "platform/OrlAudioFiles/WavReader.h"
#include "platform/OrlAudioFiles/WavWriter.h"

namespace engine {

namespace {

class Draws {
public:
    explicit Draws(uint32_t seed) : g_(SeededGenerator::fromSeed(seed)) {}
    uint32_t next() {
        g_.step();
        return g_.a;
    }
    float uniform() { return float(next()) * 2.3283064e-10f; }  // 0 to 1
    uint32_t below(uint32_t n) { return next() % n; }

private:
    SeededGenerator g_;
};

TimedEvent midi(int status, int d1, int d2) {
    TimedEvent e;
    e.time = 0;
    e.status = uint8_t(status);
    e.data1 = uint8_t(d1);
    e.data2 = uint8_t(d2);
    return e;
}

}  // namespace

SelfTestMaterial selfTestMaterial(const SelfTestSpec& spec) {
    Draws d(spec.seed);
    SelfTestMaterial m;
    NorvelleProgram& p = m.program;
    p.seed = d.next() | 1u;
    for (int g = 0; g < GENE_COUNT; ++g) p.genes[g] = d.uniform();
    for (int b = 0; b < BRANCH_COUNT; ++b) p.setParam(Param::Branch1 + b, d.uniform());
    p.setParam(Param::Release, d.uniform() * 0.6f);
    p.setParam(Param::Effect, d.uniform());
    p.setParam(Param::Rotation, d.uniform());
    p.setParam(Param::Atonality, d.uniform());
    p.computeBranchDeviations();
    p.touch(false);

    const double rate = spec.sampleRate;
    const int count = std::max(1, int(spec.time * spec.density + 0.5));
    auto at = [&](double seconds) { return int64_t(std::floor(seconds * rate)); };
    for (int i = 0; i < count; ++i) {
        const double start = d.uniform() * spec.time * 0.85;
        const double length = 0.02 + d.uniform() * spec.time * 0.5;
        const int note = 24 + int(d.below(84));
        const int velocity = 1 + int(d.below(127));
        m.events.push_back({at(start), midi(0x90, note, velocity)});
        m.events.push_back({at(start + length), midi(0x80, note, 64)});
        // Now and then a pitch bend or the sustain pedal.
        const uint32_t extra = d.below(8);
        const double when = d.uniform() * spec.time;
        if (extra == 0) {
            const int bend = int(d.below(16384));
            m.events.push_back({at(when), midi(0xE0, bend & 0x7F, bend >> 7)});
        } else if (extra == 1) {
            m.events.push_back({at(when), midi(0xB0, 64, 127)});
            m.events.push_back({at(when + d.uniform() * 0.5), midi(0xB0, 64, 0)});
        }
    }
    std::stable_sort(m.events.begin(), m.events.end(),
                     [](const SelfTestEvent& a, const SelfTestEvent& b) { return a.sample < b.sample; });
    return m;
}

OrlAudioFiles::AudioData renderSelfTest(const SelfTestSpec& spec) {
    SelfTestMaterial m = selfTestMaterial(spec);
    auto engine = std::make_unique<SoundEngine>();
    engine->init(spec.sampleRate, spec.seed);
    MidiConfigRecord config;

    const int64_t frames = int64_t(std::ceil(spec.time * double(spec.sampleRate)));
    const int64_t blocks = (frames + SoundEngine::BLOCK - 1) / SoundEngine::BLOCK;
    OrlAudioFiles::AudioData audio;
    audio.sampleRate = uint32_t(std::lround(spec.sampleRate));
    audio.channels = 2;
    audio.samples.resize(std::size_t(frames) * 2);
    std::vector<TimedEvent> events;
    std::size_t next = 0;
    float left[SoundEngine::BLOCK], right[SoundEngine::BLOCK];
    for (int64_t b = 0; b < blocks; ++b) {
        const int64_t start = b * SoundEngine::BLOCK;
        events.clear();
        while (next < m.events.size() && m.events[next].sample < start + SoundEngine::BLOCK) {
            TimedEvent e = m.events[next].event;
            e.time = int32_t(std::max<int64_t>(m.events[next].sample - start, 0));
            events.push_back(e);
            ++next;
        }
        bool silent = false;
        engine->render(m.program, config, int(events.size()), events.data(), left, right, silent);
        for (int i = 0; i < SoundEngine::BLOCK; ++i) {
            if (silent && (left[i] != 0.0f || right[i] != 0.0f))
                throw Exception("outputIsSilent == true with non-silent data");
            const int64_t f = start + i;
            if (f >= frames) break;
            audio.samples[std::size_t(f) * 2] = left[i];
            audio.samples[std::size_t(f) * 2 + 1] = right[i];
        }
    }
    return audio;
}

void compareWithFile(const OrlAudioFiles::AudioData& rendered, const SelfTestSpec& spec) {
    const OrlAudioFiles::AudioData stored = OrlAudioFiles::readWavFile(spec.file);
    auto mismatch = [&](std::size_t offset) {
        return Exception("Audio data mismatch at offset " + std::to_string(offset) + ", file " + spec.file);
    };
    const std::size_t frames = std::min(stored.frameCount(), rendered.frameCount());
    if (stored.channels != rendered.channels) throw mismatch(0);
    for (std::size_t f = 0; f < frames; ++f)
        for (int c = 0; c < rendered.channels; ++c) {
            const float a = rendered.at(f, c), b = stored.at(f, c);
            if (!(std::fabs(a - b) <= spec.tolerance)) throw mismatch(f);
        }
    if (stored.frameCount() != rendered.frameCount()) throw mismatch(frames);
}

SelfTestOutcome createTest(const SelfTestSpec& spec) {
    const OrlAudioFiles::AudioData audio = renderSelfTest(spec);
    if (!std::ifstream(spec.file, std::ios::binary).good()) {
        OrlAudioFiles::writeWavFile(spec.file, audio, OrlAudioFiles::SampleFormat::Float32);
        return SelfTestOutcome::Created;
    }
    compareWithFile(audio, spec);
    return SelfTestOutcome::Matched;
}

double randomNoiseDensity(int index) {
    const double tenths = double(index) / 10.0;
    return tenths * tenths + 1.0;
}

std::string randomNoiseFileName(int index) {
    char name[32];
    std::snprintf(name, sizeof name, "noise%03d.wav", index);
    return name;
}

SelfTestSpec randomNoiseSpec(const std::string& dir, int index, double seconds, uint32_t firstSeed) {
    SelfTestSpec s;
    s.seed = firstSeed + uint32_t(index);
    s.time = seconds;
    s.sampleRate = kRandomNoiseRate;
    s.density = randomNoiseDensity(index);
    const bool separated = dir.empty() || dir.back() == '/' || dir.back() == '\\';
    s.file = dir + (separated ? "" : "/") + randomNoiseFileName(index);
    return s;
}

std::vector<std::string> generateRandomNoises(const std::string& dir, int count, double seconds,
                                              const RandomNoiseProgress& progress, uint32_t firstSeed) {
    std::vector<std::string> written;
    for (int i = 0; i < count; ++i) {
        const SelfTestSpec s = randomNoiseSpec(dir, i, seconds, firstSeed);
        if (progress) progress(i, count, s);
        OrlAudioFiles::writeWavFile(s.file, renderSelfTest(s), OrlAudioFiles::SampleFormat::Float32);
        written.push_back(s.file);
    }
    return written;
}

}  // namespace engine
