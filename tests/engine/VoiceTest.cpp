// A voice's own timing: starts and releases come due on 16-sample frames, a
// start on a sounding voice waits for a short fade, and kills fade in 20 ms.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "engine/BranchDecoder.h"
#include "engine/EngineRates.h"
#include "engine/Voice.h"
#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"

namespace {

// Logs the frames in which it sounds, and the note it sounds (from its pitch).
class LoggingVoice : public Voice {
public:
    using Voice::Voice;
    struct Frame {
        int block;
        int frame;
        int note;
    };
    void renderFrame(const VoiceBlock& b, int frame, float factor) override {
        log.push_back({block, frame, static_cast<int>(std::lround(60.0 + 12.0 * std::log2(keyPitch)))});
        Voice::renderFrame(b, frame, factor);
    }
    int firstFrameOf(int note) const {
        for (const auto& f : log)
            if (f.note == note) return f.block * 4 + f.frame;
        return -1;
    }
    int block = 0;
    std::vector<Frame> log;
};

struct Fixture {
    Fixture() : rates(EngineRates::forSampleRate(44100.0f)), voice(&rates) {
        voice.clear(1);
        block.program = &program;
        block.midiConfig = &config;
        block.releaseCoef = 0.9f;
        block.silent = &silent;
    }
    void render() {
        silent = true;
        voice.render(block);
        ++voice.block;
    }
    EngineRates rates;
    LoggingVoice voice;
    NorvelleProgram program;
    MidiConfigRecord config;
    VoiceBlock block;
    bool silent = true;
};

}  // namespace

TEST(Voice, StartComesDueInTheFrameItsTimeFallsIn) {
    for (int time : {0, 5, 15, 16, 40, 63}) {
        Fixture f;
        f.voice.start(time, 0, 60, 100);
        EXPECT_EQ(f.voice.priority(), 3);
        f.render();
        EXPECT_EQ(f.voice.firstFrameOf(60), time / 16) << "time " << time;
        EXPECT_TRUE(f.voice.active);
        EXPECT_EQ(f.voice.startAt, -1);
        EXPECT_FALSE(f.silent);
    }
}

TEST(Voice, IdleVoiceIsSilentAndCheap) {
    Fixture f;
    f.voice.lastAmp = 0.5f;
    f.render();
    EXPECT_TRUE(f.silent);
    EXPECT_EQ(f.voice.lastAmp, 0.0f);
    EXPECT_FLOAT_EQ(f.voice.lastFreq, 0.001f);
    EXPECT_TRUE(f.voice.log.empty());
    EXPECT_EQ(f.voice.priority(), 0);
}

TEST(Voice, ReleaseComesDueTheFrameAfterItsTime) {
    Fixture f;
    f.voice.start(0, 0, 60, 127);
    f.render();
    ASSERT_FLOAT_EQ(f.voice.releaseGain, 1.0f);
    f.voice.release(5, 64);
    EXPECT_EQ(f.voice.releaseAt, 21);
    f.render();
    // Due in frame 1: frames 1, 2 and 3 take the release factor.
    EXPECT_FALSE(f.voice.holdRelease);
    EXPECT_NEAR(f.voice.releaseGain, 0.9f * 0.9f * 0.9f, 1e-6f);
    EXPECT_EQ(f.voice.releaseAt, -1);
}

TEST(Voice, StartCancelsAReleaseThatIsNotEarlier) {
    Fixture f;
    f.voice.start(0, 0, 60, 100);
    f.render();
    f.voice.release(10, 64);  // due at 26
    f.voice.start(26, 0, 62, 100);
    EXPECT_EQ(f.voice.releaseAt, -1);
    f.voice.release(10, 64);
    f.voice.start(27, 0, 62, 100);
    EXPECT_EQ(f.voice.releaseAt, 26);
}

TEST(Voice, VelocityGainSpansFortyDecibels) {
    Fixture f;
    f.program.setParam(Param::VelSens, 1.0f);
    f.voice.start(0, 0, 60, 127);
    f.render();
    EXPECT_NEAR(f.voice.velGain, 1.0f, 1e-6f);
    f.voice.kill();
    for (int i = 0; i < 20; ++i) f.render();
    f.voice.start(0, 0, 60, 0);
    f.render();
    EXPECT_NEAR(f.voice.velGain, 0.01f, 1e-6f);
    EXPECT_EQ(f.voice.priority(), 2);
}

TEST(Voice, KeyPitchFollowsTheRealKey) {
    Fixture f;
    f.program.setParam(Param::Atonality, 0.5f);  // no detune
    f.block.rotationSteps = 5;
    f.voice.start(0, 3, 72, 100);
    f.render();
    EXPECT_FLOAT_EQ(f.voice.keyPitch, 2.0f);
    EXPECT_EQ(f.voice.branch, (72 - 5 + 12) % 12);
    EXPECT_EQ(f.voice.keyChannel, 3);
}

TEST(Voice, KillFadesInTwentyMilliseconds) {
    Fixture f;
    f.voice.start(0, 0, 60, 100);
    f.render();
    f.voice.kill();
    EXPECT_EQ(f.voice.startAt, -1);
    EXPECT_EQ(f.voice.releaseAt, -1);
    EXPECT_FLOAT_EQ(f.voice.fadeRate, f.rates.killRate);
    int frames = 0;
    while (f.voice.active && frames < 1000) {
        f.render();
        frames += 4;
    }
    // 20 ms at 44.1 kHz is 55.1 frames of 16 samples.
    EXPECT_GE(frames, 52);
    EXPECT_LE(frames, 60);
    EXPECT_EQ(f.voice.priority(), 0);
}

TEST(Voice, StartOnASoundingVoiceWaitsForATwoMillisecondFade) {
    Fixture f;
    f.voice.start(0, 0, 60, 100);
    f.render();
    f.voice.start(0, 0, 67, 100);
    f.render();
    f.render();
    // 2 ms is 5.5 frames: the new note starts a few frames late.
    const int late = f.voice.firstFrameOf(67) - 4;
    EXPECT_GE(late, 5);
    EXPECT_LE(late, 7);
    EXPECT_TRUE(f.voice.active);
    EXPECT_FLOAT_EQ(f.voice.fadeRate, 0.0f);
    EXPECT_FLOAT_EQ(f.voice.releaseGain, 1.0f);
}

TEST(Voice, LowLevelGivesPriorityOne) {
    Fixture f;
    f.voice.start(0, 0, 60, 100);
    f.render();
    f.voice.releaseGain = 0.0005f;
    EXPECT_EQ(f.voice.priority(), 1);
}

TEST(Voice, VelocityCurvesByName) {
    // Hard squares the velocity, soft takes its root; the curve is numbered
    // as in the MIDI configuration: 0 soft, 1 standard, 2 hard.
    const float v = 64.0f / 127.0f;
    const struct {
        int curve;
        float shaped;
    } cases[] = {{MidiConfigRecord::Soft, std::sqrt(v)}, {MidiConfigRecord::Standard, v}, {MidiConfigRecord::Hard, v * v}};
    for (const auto& c : cases) {
        Fixture f;
        f.program.setParam(Param::VelSens, 1.0f);
        f.config.velocityCurve = c.curve;
        f.voice.start(0, 0, 60, 64);
        f.render();
        EXPECT_NEAR(f.voice.velGain, std::exp((40.0f * c.shaped - 40.0f) * 0.115129255f), 1e-6f) << c.curve;
    }
    EXPECT_EQ(MidiConfigRecord::Soft, 0);
    EXPECT_EQ(MidiConfigRecord::Hard, 2);
}

// The block hands the voice its channels' pitch bends: the bend of the
// note's own channel moves its oscillators, another channel's doesn't.
TEST(Voice, PitchBendOfItsOwnChannelComesWithTheBlock) {
    auto frequencyWith = [](const int16_t* bends) {
        EngineRates rates = EngineRates::forSampleRate(44100.0f);
        NorvelleProgram program;
        MidiConfigRecord config;
        engine::BranchDecoder decoders[12];
        for (int k = 0; k < 12; ++k) decoders[k].setBranch(k);
        alignas(16) float left[64] = {}, right[64] = {}, send[64] = {};
        bool silent = true, sendSilent = true;
        VoiceBlock block;
        block.program = &program;
        block.midiConfig = &config;
        block.releaseCoef = 0.9f;
        block.left = left;
        block.right = right;
        block.send = send;
        block.silent = &silent;
        block.sendSilent = &sendSilent;
        block.decoders = decoders;
        block.pitchBends = bends;
        Voice voice(&rates);
        voice.clear(1);
        voice.start(0, 3, 60, 100);
        for (int b = 0; b < 3; ++b) voice.render(block);
        return voice.lastFreq;
    };
    int16_t none[16] = {};
    int16_t own[16] = {};
    own[3] = 4096;
    int16_t other[16] = {};
    other[5] = 4096;
    const float plain = frequencyWith(nullptr);
    EXPECT_GT(plain, 0.0f);
    EXPECT_EQ(frequencyWith(none), plain);
    EXPECT_EQ(frequencyWith(other), plain);
    EXPECT_GT(frequencyWith(own), plain * 1.01f);
}
