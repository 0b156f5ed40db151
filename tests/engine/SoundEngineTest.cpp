// The engine around the voices: events by status, note bookkeeping for the
// plant, the visual decay, allocation with real voices, program changes and
// the reset of init.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "engine/SoundEngine.h"
#include "patch/FactoryPatches.h"
#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"
#include "tests/engine/WideLoops.h"

namespace {

TimedEvent ev(int32_t time, int status, int d1, int d2) {
    TimedEvent e;
    e.time = time;
    e.status = static_cast<uint8_t>(status);
    e.data1 = static_cast<uint8_t>(d1);
    e.data2 = static_cast<uint8_t>(d2);
    return e;
}

struct Rig {
    Rig() { engine.init(44100.0f, 1); }
    void block(std::vector<TimedEvent> events = {}) {
        engine.render(program, config, static_cast<int>(events.size()), events.data(), left, right,
                      silent);
    }
    VisualState visual() const {
        VisualState v;
        engine.copyVisualState(v);
        return v;
    }
    int activeVoices() const {
        int n = 0;
        for (int i = 0; i < VoiceManager::VOICE_COUNT; ++i) n += engine.voice(i).active;
        return n;
    }
    SoundEngine engine;
    NorvelleProgram program;
    MidiConfigRecord config;
    float left[64];
    float right[64];
    bool silent = false;
};

}  // namespace

TEST(SoundEngine, EmptyBlockIsSilent) {
    Rig r;
    r.block();
    EXPECT_TRUE(r.silent);
    for (float s : r.left) EXPECT_EQ(s, 0.0f);
    EXPECT_EQ(r.visual().lastBranch, -1);
    EXPECT_EQ(r.visual().noteCount, 0u);
}

TEST(SoundEngine, NoteOnStartsAVoiceAndFlashesItsBranch) {
    Rig r;
    r.block({ev(10, 0x90, 64, 100)});
    EXPECT_FALSE(r.silent);
    EXPECT_EQ(r.activeVoices(), 1);
    const VisualState v = r.visual();
    EXPECT_EQ(v.noteCount, 1u);
    EXPECT_EQ(v.lastBranch, 4);
    // The flash decays once per block, from the next block on.
    EXPECT_EQ(v.flash[4], 1.0f);
    r.block();
    EXPECT_LT(r.visual().flash[4], 1.0f);
    EXPECT_GT(r.visual().flash[4], 0.9f);
    EXPECT_EQ(r.visual().lastBranch, 4);
}

TEST(SoundEngine, FlashDecaysToZeroBelowOnePercent) {
    Rig r;
    r.block({ev(0, 0x90, 60, 100)});
    int blocks = 0;
    while (r.visual().flash[0] != 0.0f && blocks < 10000) {
        r.block();
        ++blocks;
    }
    // exp(-1 / (r / 256)) per block falls below 0.01 after ln(100) * r / 256 blocks:
    // a quarter-second time constant, gone after 1.15 s.
    EXPECT_NEAR(blocks, 793.3, 1.5);
}

TEST(SoundEngine, HighestNoteOfOneSampleWinsTheDisplay) {
    Rig r;
    r.block({ev(5, 0x90, 62, 100), ev(5, 0x90, 67, 100), ev(5, 0x90, 64, 100)});
    VisualState v = r.visual();
    EXPECT_EQ(v.lastBranch, 7);
    // 64 came at the same time but lower: it doesn't count on the display.
    EXPECT_EQ(v.noteCount, 2u);
    EXPECT_EQ(v.flash[4], 0.0f);
    EXPECT_EQ(v.flash[2], 1.0f);

    Rig s;
    s.block({ev(5, 0x90, 67, 100), ev(9, 0x90, 62, 100)});
    v = s.visual();
    EXPECT_EQ(v.lastBranch, 2);  // later wins over higher
    EXPECT_EQ(v.noteCount, 2u);
}

TEST(SoundEngine, EventsSeeTheRotationOfTheBlockBefore) {
    Rig r;
    r.program.setParam(Param::Rotation, 2.0f / 12.0f);
    r.block({ev(0, 0x90, 60, 100)});
    EXPECT_EQ(r.visual().lastBranch, 0);  // the rotation was not known yet
    EXPECT_EQ(r.engine.rotationSteps(), 2);
    r.block({ev(0, 0x90, 61, 100)});
    EXPECT_EQ(r.visual().lastBranch, 11);
}

TEST(SoundEngine, RotationOfOneEqualsRotationZero) {
    Rig r;
    r.program.setParam(Param::Rotation, 1.0f);
    r.block();
    EXPECT_EQ(r.engine.rotationSteps(), 0);
    r.program.setParam(Param::Rotation, 0.5f / 12.0f);  // halves go away from zero
    r.block();
    EXPECT_EQ(r.engine.rotationSteps(), 1);
}

TEST(SoundEngine, NotesTwelveApartShareABranchAndDifferInPitch) {
    Rig r;
    r.block({ev(0, 0x90, 48, 100), ev(0, 0x90, 60, 100)});
    const Voice& a = r.engine.voice(0);
    const Voice& b = r.engine.voice(1);
    EXPECT_EQ(a.branch, b.branch);
    EXPECT_FLOAT_EQ(b.keyPitch / a.keyPitch, 2.0f);
    EXPECT_EQ(a.branchAmount, b.branchAmount);
    EXPECT_EQ(a.velGain, b.velGain);
}

TEST(SoundEngine, NoteOnWithVelocityZeroIsANoteOff) {
    Rig r;
    r.block({ev(0, 0x91, 60, 100)});
    EXPECT_EQ(r.engine.slot(0).state, VoiceManager::Held);
    EXPECT_EQ(r.engine.slot(0).channel, 1);
    r.block({ev(0, 0x91, 60, 0)});
    EXPECT_EQ(r.engine.slot(0).state, VoiceManager::Released);
    r.block({ev(0, 0x91, 61, 100), ev(3, 0x81, 61, 0)});
    EXPECT_EQ(r.engine.slot(1).state, VoiceManager::Released);
}

TEST(SoundEngine, PitchBendAndProgramStatusesReachTheChannel) {
    Rig r;
    r.block({ev(0, 0xE2, 0x00, 0x00), ev(0, 0xC2, 9, 0), ev(0, 0xB2, 7, 64), ev(0, 0xF0, 1, 2)});
    EXPECT_EQ(r.engine.channel(2).pitchBend, -8192);
    EXPECT_EQ(r.engine.channel(2).program, 9);
    EXPECT_EQ(r.engine.channel(2).controllers[7], 64);
    r.block({ev(0, 0xE2, 0x7F, 0x7F)});
    EXPECT_EQ(r.engine.channel(2).pitchBend, 8191);
    r.block({ev(0, 0xE2, 0x00, 0x40)});
    EXPECT_EQ(r.engine.channel(2).pitchBend, 0);
}

TEST(SoundEngine, ThirteenNotesHeldTwelveSoundAndTheOldestFadesOut) {
    Rig r;
    for (int k = 0; k < 12; ++k) r.block({ev(0, 0x90, 60 + k, 100)});
    EXPECT_EQ(r.activeVoices(), 12);
    r.block({ev(0, 0x90, 72, 100)});
    // 61 is the oldest of the equally loud voices that isn't the bass.
    const Voice& killed = r.engine.voice(1);
    EXPECT_EQ(r.engine.slot(1).state, VoiceManager::Free);
    EXPECT_TRUE(killed.active);  // still fading
    EXPECT_FLOAT_EQ(killed.fadeRate, r.engine.rates().killRate);
    EXPECT_EQ(r.activeVoices(), 13);
    int blocks = 1;
    while (killed.active && blocks < 100) {
        r.block();
        ++blocks;
    }
    // 20 ms is 13.8 blocks of 64 samples at 44.1 kHz.
    EXPECT_GE(blocks, 13);
    EXPECT_LE(blocks, 15);
    EXPECT_EQ(r.activeVoices(), 12);
    EXPECT_TRUE(r.engine.voice(0).active);  // the bass stays
    EXPECT_EQ(r.engine.slotsInState(VoiceManager::Held), 12);
}

TEST(SoundEngine, StartOnAFadingVoiceComesAFewFramesLate) {
    Rig r;
    for (int k = 0; k < 12; ++k) r.block({ev(0, 0x90, 60 + k, 100)});
    // Eight more notes in one block: each takes an unused slot and the reserve
    // kills one of the old ones, so every free slot now holds a fading voice.
    std::vector<TimedEvent> eight;
    for (int k = 0; k < 8; ++k) eight.push_back(ev(0, 0x90, 80 + k, 100));
    r.block(eight);
    // The next note can only go to a voice that is still fading.
    r.block({ev(0, 0x90, 90, 100)});
    int slot = -1;
    for (int i = 0; i < VoiceManager::VOICE_COUNT; ++i)
        if (r.engine.slot(i).note == 90 && r.engine.slot(i).state == VoiceManager::Held) slot = i;
    ASSERT_GE(slot, 0);
    const Voice& v = r.engine.voice(slot);
    EXPECT_TRUE(v.active);
    EXPECT_GE(v.startAt, 0);  // waiting
    EXPECT_EQ(v.priority(), 3);
    r.block();
    EXPECT_EQ(v.startAt, -1);
    EXPECT_TRUE(v.active);
    EXPECT_FLOAT_EQ(v.releaseGain, 1.0f);
}

TEST(SoundEngine, AllTwentyVoicesPendingInOneBlockStartWithoutAQueue) {
    Rig r;
    std::vector<TimedEvent> events;
    for (int k = 0; k < 20; ++k) events.push_back(ev(k * 3, 0x90, 40 + k, 100));
    r.block(events);
    // Every one of the twenty voices took one of the notes as its pending
    // start in this block, each voice on its own.
    std::vector<bool> taken(20, false);
    for (int i = 0; i < VoiceManager::VOICE_COUNT; ++i) {
        const int k = r.engine.voice(i).pendingNote - 40;
        ASSERT_GE(k, 0);
        ASSERT_LT(k, 20);
        EXPECT_FALSE(taken[k]);
        taken[k] = true;
    }
    // Twelve survive the reserve: the bass 40 and the latest eleven.
    EXPECT_EQ(r.engine.slotsInState(VoiceManager::Held), 12);
    EXPECT_EQ(r.engine.slotsInState(VoiceManager::Free), 8);
    int started = 0;
    for (int i = 0; i < VoiceManager::VOICE_COUNT; ++i) {
        const Voice& v = r.engine.voice(i);
        EXPECT_EQ(v.startAt, -1);
        if (r.engine.slot(i).state == VoiceManager::Held) {
            EXPECT_TRUE(v.active);
            const int note = r.engine.slot(i).note;
            EXPECT_TRUE(note == 40 || note >= 49) << note;
            EXPECT_FLOAT_EQ(v.keyPitch, std::exp2((note - 60) / 12.0f));
            ++started;
        } else {
            EXPECT_FALSE(v.active);  // killed before it started
        }
    }
    EXPECT_EQ(started, 12);
    EXPECT_EQ(r.visual().noteCount, 20u);
    EXPECT_EQ(r.visual().lastBranch, 59 % 12);
}

TEST(SoundEngine, ProgramChangeDoesNotStopNotesAndNewSeedJumps) {
    Rig r;
    r.block({ev(0, 0x90, 62, 100)});
    const Voice& v = r.engine.voice(0);
    ASSERT_TRUE(v.active);
    EXPECT_EQ(v.branchAmount, 0.0f);

    // Same seed, longer branch: the amount glides.
    r.program.setParam(Param::Branch1 + 2, 0.8f);
    r.block();
    EXPECT_GT(v.branchAmount, 0.0f);
    EXPECT_LT(v.branchAmount, 0.8f);

    // Another record (new seed) and a MIDI program change: the note goes on
    // and jumps to the new record's length.
    NorvelleProgram other;
    other.seed = 99;
    other.setParam(Param::Branch1 + 2, 0.3f);
    r.engine.render(other, r.config, 1, std::vector<TimedEvent>{ev(0, 0xC0, 5, 0)}.data(), r.left,
                    r.right, r.silent);
    EXPECT_TRUE(v.active);
    EXPECT_EQ(r.engine.slot(0).state, VoiceManager::Held);
    EXPECT_FLOAT_EQ(v.branchAmount, 0.3f);
    EXPECT_FALSE(r.silent);
}

TEST(SoundEngine, InitStopsAllVoicesAndClearsTheDisplay) {
    Rig r;
    r.block({ev(0, 0x90, 60, 100), ev(0, 0x90, 64, 100)});
    ASSERT_EQ(r.activeVoices(), 2);
    r.engine.init(48000.0f, 7);
    EXPECT_EQ(r.activeVoices(), 0);
    EXPECT_EQ(r.engine.slotsInState(VoiceManager::Free), 20);
    const VisualState v = r.visual();
    EXPECT_EQ(v.noteCount, 0u);
    EXPECT_EQ(v.lastBranch, -1);
    EXPECT_EQ(v.flash[0], 0.0f);
    EXPECT_EQ(r.engine.voice(3).random, 7u - 1802235117u + 3u);
    EXPECT_FLOAT_EQ(r.engine.rates().killRate, 16.0f / (0.02f * 48000.0f));
    r.block();
    EXPECT_TRUE(r.silent);
}

TEST(SoundEngine, VolumeCurveGivesZeroDecibelsAtHalf) {
    Rig r;
    r.block();
    EXPECT_NEAR(r.engine.outGain(), 1.0f, 1e-5f);
    r.program.setParam(Param::Volume, 0.0f);
    r.engine.init(44100.0f, 1);
    r.block();
    EXPECT_EQ(r.engine.outGain(), 0.0f);
}

TEST(SoundEngine, EveryLaneWidthSoundsTheSame) {
    // Every factory patch, chords that overlap, come and go and steal voices.
    const std::vector<int> widths = testsupport::WideLoops::ways();
    for (int patch = 0; patch < 16; ++patch) {
        std::vector<std::vector<float>> heard(widths.size());
        for (std::size_t way = 0; way < widths.size(); ++way) {
            testsupport::WideLoops loops(widths[way]);
            auto r = std::make_unique<Rig>();
            r->program = factoryProgram(patch);
            for (int block = 0; block < 700; ++block) {
                std::vector<TimedEvent> events;
                if (block % 40 == 0)
                    for (int k = 0; k < 7; ++k) events.push_back(ev(3 * k, 0x90, 36 + 5 * k + block / 40, 90 + k));
                if (block % 40 == 25)
                    for (int k = 0; k < 7; ++k) events.push_back(ev(k, 0x80, 36 + 5 * k + block / 40, 0));
                r->block(events);
                heard[way].insert(heard[way].end(), r->left, r->left + 64);
                heard[way].insert(heard[way].end(), r->right, r->right + 64);
            }
        }
        std::size_t sounding = 0;
        for (std::size_t i = 0; i < heard[0].size(); ++i)
            if (heard[0][i] != 0.0f) ++sounding;
        EXPECT_GT(sounding, heard[0].size() / 4) << "patch " << patch;
        for (std::size_t way = 1; way < widths.size(); ++way) {
            ASSERT_EQ(heard[0].size(), heard[way].size());
            for (std::size_t i = 0; i < heard[0].size(); ++i)
                ASSERT_EQ(heard[0][i], heard[way][i]) << "patch " << patch << ", " << widths[way] << " lanes, sample " << i;
        }
    }
}

// Silence keeps the values of the block before where their inputs stay the
// same: a change made during silence must still be heard from its block on.
TEST(SoundEngine, ReleaseAndVolumeChangedDuringSilenceAreHeard) {
    // One engine sits silent with other settings first; the other has the
    // final ones from the start. From the note on they must sound the same.
    Rig moved, still;
    moved.program.setParam(Param::Release, 0.1f);
    moved.program.setParam(Param::Volume, 0.3f);
    for (int b = 0; b < 50; ++b) moved.block();
    moved.program.setParam(Param::Release, 0.6f);
    moved.program.setParam(Param::Volume, 0.5f);
    // The volume glides: let it arrive before the note.
    for (int b = 0; b < 400; ++b) moved.block();
    still.program.setParam(Param::Release, 0.6f);
    for (int b = 0; b < 450; ++b) still.block();
    ASSERT_EQ(moved.engine.outGain(), still.engine.outGain());
    std::size_t sounding = 0;
    for (int b = 0; b < 300; ++b) {
        std::vector<TimedEvent> events;
        if (b == 0) events = {ev(0, 0x90, 60, 100)};
        if (b == 20) events = {ev(5, 0x80, 60, 0)};
        moved.block(events);
        still.block(events);
        for (int i = 0; i < 64; ++i) {
            ASSERT_EQ(moved.left[i], still.left[i]) << "block " << b << " sample " << i;
            ASSERT_EQ(moved.right[i], still.right[i]) << "block " << b << " sample " << i;
            sounding += moved.left[i] != 0.0f;
        }
    }
    EXPECT_GT(sounding, 64u * 20u);
}

TEST(SoundEngine, DisplayGoesDarkInSilenceAndLightsAgainWithTheNextNote) {
    Rig r;
    r.block({ev(0, 0x90, 62, 100)});
    for (int b = 0; b < 20; ++b) r.block();
    EXPECT_GT(r.visual().levelLow[2] + r.visual().levelHigh[2], 0.0f);
    r.block({ev(0, 0x80, 62, 0)});
    // Decayed to nothing: every flash and level 0.
    for (int b = 0; b < 20000; ++b) r.block();
    const VisualState dark = r.visual();
    for (int k = 0; k < VisualState::BRANCHES; ++k) {
        EXPECT_EQ(dark.flash[k], 0.0f);
        EXPECT_EQ(dark.levelLow[k], 0.0f);
        EXPECT_EQ(dark.levelHigh[k], 0.0f);
    }
    r.block({ev(0, 0x90, 65, 100)});
    for (int b = 0; b < 20; ++b) r.block();
    const VisualState lit = r.visual();
    EXPECT_GT(lit.flash[5], 0.5f);
    EXPECT_LT(lit.flash[5], 1.0f);  // decaying
    EXPECT_GT(lit.levelLow[5] + lit.levelHigh[5], 0.0f);
}

// With the release short and nothing held, the reverb's tail is shortened;
// a release moved while only the tail rings is followed by the tail.
TEST(SoundEngine, GatedTailFollowsTheReleaseDuringSilence) {
    Rig a, b;
    for (Rig* r : {&a, &b}) {
        r->program.setParam(Param::Release, 0.05f);
        r->block({ev(0, 0x90, 60, 110)});
        for (int k = 0; k < 10; ++k) r->block();
        r->block({ev(0, 0x80, 60, 0)});
        // The voice dies; the tail rings on.
        for (int k = 0; k < 120; ++k) r->block();
        ASSERT_EQ(r->activeVoices(), 0);
    }
    for (int i = 0; i < 64; ++i) ASSERT_EQ(a.left[i], b.left[i]);
    ASSERT_TRUE(a.engine.reverb().level() > 0.0f);
    b.program.setParam(Param::Release, 0.1f);
    bool differs = false;
    for (int k = 0; k < 20; ++k) {
        a.block();
        b.block();
        for (int i = 0; i < 64; ++i) differs |= a.left[i] != b.left[i];
    }
    EXPECT_TRUE(differs);
}
