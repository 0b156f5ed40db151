#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/OfflineRender.h"
#include "cli/Options.h"
#include "patch/NorvelleProgram.h"
#include "platform/OrlAudioFiles/WavReader.h"

using namespace cli;

TEST(RenderCommandTest, NoteListParsesAndRejectsBadItems) {
    std::vector<NoteSpec> n = parseNoteList("60:0:1:100,72:0.5:0.25:1");
    ASSERT_EQ(n.size(), 2u);
    EXPECT_EQ(n[1].note, 72);
    EXPECT_DOUBLE_EQ(n[1].start, 0.5);
    EXPECT_DOUBLE_EQ(n[1].duration, 0.25);
    EXPECT_EQ(n[1].velocity, 1);
    EXPECT_THROW(parseNoteList("60:0:1"), UsageError);
    EXPECT_THROW(parseNoteList("128:0:1:100"), UsageError);
    EXPECT_THROW(parseNoteList("60:-1:1:100"), UsageError);
    EXPECT_THROW(parseNoteList("60:0:0:100"), UsageError);
    EXPECT_THROW(parseNoteList("60:0:1:0"), UsageError);
    EXPECT_THROW(parseNoteList("60:0:1:100,"), UsageError);
}

TEST(RenderCommandTest, NoteEventsComeInTimeOrderWithOffsFirst) {
    std::vector<MidiFileEvent> e = noteEvents(parseNoteList("64:1:1:90,60:0:1:100"));
    ASSERT_EQ(e.size(), 4u);
    EXPECT_EQ(e[0].status, 0x90);
    EXPECT_EQ(e[0].data1, 60);
    EXPECT_EQ(e[1].status, 0x80);  // 60 ends at 1 s, as 64 starts
    EXPECT_EQ(e[2].status, 0x90);
    EXPECT_DOUBLE_EQ(e[3].seconds, 2.0);
}

TEST(RenderCommandTest, RenderThroughThePluginHasTheBlockDelayAndSounds) {
    NorvelleProgram init;
    OfflineRenderSettings s;
    s.tailSeconds = 0.5;
    OrlAudioFiles::AudioData a = renderOffline(init, noteEvents(parseNoteList("60:0:0.5:100")), 0, s);
    EXPECT_EQ(a.channels, 2);
    EXPECT_EQ(a.frameCount(), std::size_t(std::ceil(1.0 * 44100)));
    // The host hears the first engine block 64 samples late.
    for (int i = 0; i < 64; ++i) EXPECT_EQ(a.at(std::size_t(i), 0), 0.0f);
    double energy = 0;
    for (float v : a.samples) {
        ASSERT_TRUE(std::isfinite(v));
        energy += double(v) * v;
    }
    EXPECT_GT(energy, 1.0);
}

TEST(RenderCommandTest, HostBlockSizeDoesNotChangeTheSound) {
    NorvelleProgram init;
    std::vector<MidiFileEvent> events = noteEvents(parseNoteList("60:0:0.2:100,67:0.013:0.15:80,48:0.1:0.1:127"));
    OfflineRenderSettings s;
    s.tailSeconds = 0.2;
    s.block = 64;
    OrlAudioFiles::AudioData reference = renderOffline(init, events, 0, s);
    for (int block : {1, 63, 65, 4096}) {
        s.block = block;
        OrlAudioFiles::AudioData a = renderOffline(init, events, 0, s);
        ASSERT_EQ(a.samples.size(), reference.samples.size()) << block;
        std::size_t differ = 0;
        for (std::size_t i = 0; i < a.samples.size(); ++i) differ += a.samples[i] != reference.samples[i];
        EXPECT_EQ(differ, 0u) << "block " << block;
    }
}

TEST(RenderCommandTest, NoiseSeedMakesRendersReproducible) {
    NorvelleProgram p;
    p.setGene(Gene::a_noise, 0.95f);  // noisy: the seed is heard
    p.touch(false);
    std::vector<MidiFileEvent> events = noteEvents(parseNoteList("60:0:0.2:100"));
    OfflineRenderSettings s;
    s.tailSeconds = 0.1;
    OrlAudioFiles::AudioData a = renderOffline(p, events, 0, s);
    OrlAudioFiles::AudioData b = renderOffline(p, events, 0, s);
    EXPECT_EQ(a.samples, b.samples);
    s.noiseSeed = 2;
    OrlAudioFiles::AudioData c = renderOffline(p, events, 0, s);
    EXPECT_NE(a.samples, c.samples);
}

TEST(RenderCommandTest, CommandWritesAFloatStereoWavFromNotesAndFromAMidiFile) {
    const std::string out = ::testing::TempDir() + "render_command_test.wav";
    ASSERT_EQ(runRender({"--notes", "60:0:0.3:100", "--rate", "48000", "--tail", "0.2", "-o", out}), 0);
    OrlAudioFiles::WavInfo info;
    OrlAudioFiles::AudioData a = OrlAudioFiles::readWavFile(out, &info);
    EXPECT_EQ(info.format, OrlAudioFiles::SampleFormat::Float32);
    EXPECT_EQ(a.sampleRate, 48000u);
    EXPECT_EQ(a.channels, 2);
    EXPECT_EQ(a.frameCount(), std::size_t(std::ceil(0.5 * 48000)));

    // The same notes as a MIDI file: a note at beat 0, off at beat 0.6 (120 bpm: 0.3 s).
    const std::string mid = ::testing::TempDir() + "render_command_test.mid";
    {
        const unsigned char bytes[] = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 0, 100,
                                       'M', 'T', 'r', 'k', 0, 0, 0, 12,
                                       0x00, 0x90, 60, 100, 0x3C, 0x80, 60, 64, 0x00, 0xFF, 0x2F, 0x00};
        std::ofstream f(mid, std::ios::binary);
        f.write(reinterpret_cast<const char*>(bytes), sizeof bytes);
    }
    const std::string out2 = ::testing::TempDir() + "render_command_test2.wav";
    ASSERT_EQ(runRender({"--midi", mid, "--rate", "48000", "--tail", "0.2", "-o", out2}), 0);
    OrlAudioFiles::AudioData b = OrlAudioFiles::readWavFile(out2);
    EXPECT_EQ(b.samples, a.samples);
    std::remove(out.c_str());
    std::remove(out2.c_str());
    std::remove(mid.c_str());
}

TEST(RenderCommandTest, MisuseIsAUsageError) {
    EXPECT_THROW(runRender({"--notes", "60:0:1:100"}), UsageError);
    EXPECT_THROW(runRender({"-o", "x.wav"}), UsageError);
    EXPECT_THROW(runRender({"--notes", "60:0:1:100", "--midi", "a.mid", "-o", "x.wav"}), UsageError);
    EXPECT_THROW(runRender({"--notes", "60:0:1:100", "--block", "0", "-o", "x.wav"}), UsageError);
    EXPECT_THROW(runRender({"--notes", "60:0:1:100", "--rate", "10", "-o", "x.wav"}), UsageError);
}
