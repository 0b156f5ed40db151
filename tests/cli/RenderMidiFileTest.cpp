#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/MidiFile.h"
#include "platform/Exceptions.h"

using cli::MidiFileContents;
using cli::readMidiFile;

namespace {

struct Smf {
    std::vector<uint8_t> bytes;
    void u16(uint32_t v) {
        bytes.push_back(uint8_t(v >> 8));
        bytes.push_back(uint8_t(v));
    }
    void u32(uint32_t v) {
        u16(v >> 16);
        u16(v & 0xFFFF);
    }
    void tag(const char* t) {
        for (int i = 0; i < 4; ++i) bytes.push_back(uint8_t(t[i]));
    }
    Smf(int format, int tracks, uint16_t division) {
        tag("MThd");
        u32(6);
        u16(uint32_t(format));
        u16(uint32_t(tracks));
        u16(division);
    }
    void track(const std::vector<uint8_t>& body) {
        tag("MTrk");
        u32(uint32_t(body.size()));
        bytes.insert(bytes.end(), body.begin(), body.end());
    }
    MidiFileContents read() const { return readMidiFile(bytes.data(), bytes.size()); }
};

std::string failure(const Smf& s) {
    try {
        s.read();
    } catch (const FormatException& e) {
        return e.what();
    }
    return "no failure";
}

}  // namespace

TEST(RenderMidiFileTest, FormatZeroWithRunningStatus) {
    Smf s(0, 1, 480);
    // note on 60, then (running status) note on 64 after one beat, then both
    // off with velocity-0 note-ons after another beat.
    s.track({0x00, 0x90, 60, 100,
             0x83, 0x60, 64, 90,
             0x83, 0x60, 60, 0,
             0x00, 64, 0,
             0x00, 0xFF, 0x2F, 0x00});
    MidiFileContents c = s.read();
    EXPECT_EQ(c.format, 0);
    EXPECT_EQ(c.trackCount, 1);
    ASSERT_EQ(c.events.size(), 4u);
    EXPECT_DOUBLE_EQ(c.events[0].seconds, 0.0);
    EXPECT_DOUBLE_EQ(c.events[1].seconds, 0.5);  // 480 ticks at 120 beats a minute
    EXPECT_EQ(c.events[1].status, 0x90);
    EXPECT_EQ(c.events[1].data1, 64);
    EXPECT_EQ(c.events[1].data2, 90);
    EXPECT_DOUBLE_EQ(c.events[3].seconds, 1.0);
    EXPECT_EQ(c.events[3].data2, 0);
    EXPECT_DOUBLE_EQ(c.lengthSeconds, 1.0);
}

TEST(RenderMidiFileTest, TempoChangesInTheFirstTrackTimeTheOthers) {
    Smf s(1, 2, 96);
    // Track 0: tempo 1 s a beat from the start, 0.25 s a beat from tick 192.
    s.track({0x00, 0xFF, 0x51, 0x03, 0x0F, 0x42, 0x40,
             0x81, 0x40, 0xFF, 0x51, 0x03, 0x03, 0xD0, 0x90,
             0x00, 0xFF, 0x2F, 0x00});
    // Track 1: notes at tick 96, 192 and 288.
    s.track({0x60, 0x91, 48, 64,
             0x60, 0x81, 48, 0,
             0x60, 0xC1, 5,
             0x00, 0xFF, 0x2F, 0x00});
    MidiFileContents c = s.read();
    EXPECT_EQ(c.format, 1);
    EXPECT_EQ(c.trackCount, 2);
    ASSERT_EQ(c.events.size(), 3u);
    EXPECT_DOUBLE_EQ(c.events[0].seconds, 1.0);
    EXPECT_DOUBLE_EQ(c.events[1].seconds, 2.0);
    EXPECT_DOUBLE_EQ(c.events[2].seconds, 2.25);
    EXPECT_EQ(c.events[2].status, 0xC1);
    EXPECT_EQ(c.events[2].data1, 5);
    EXPECT_EQ(c.events[2].data2, 0);
}

TEST(RenderMidiFileTest, SimultaneousEventsKeepTrackOrder) {
    Smf s(1, 2, 96);
    s.track({0x00, 0x90, 60, 1, 0x00, 0xFF, 0x2F, 0x00});
    s.track({0x00, 0x90, 61, 1, 0x00, 0xFF, 0x2F, 0x00});
    MidiFileContents c = s.read();
    ASSERT_EQ(c.events.size(), 2u);
    EXPECT_EQ(c.events[0].data1, 60);
    EXPECT_EQ(c.events[1].data1, 61);
}

TEST(RenderMidiFileTest, SysexAndMetaEventsAreSkipped) {
    Smf s(0, 1, 96);
    s.track({0x00, 0xF0, 0x03, 0x7E, 0x7F, 0xF7,
             0x00, 0xFF, 0x03, 0x04, 'n', 'a', 'm', 'e',
             0x00, 0xB0, 64, 127,
             0x00, 0xE0, 0x00, 0x40});
    MidiFileContents c = s.read();
    ASSERT_EQ(c.events.size(), 2u);
    EXPECT_EQ(c.events[0].status, 0xB0);
    EXPECT_EQ(c.events[1].status, 0xE0);
    EXPECT_EQ(c.events[1].data2, 0x40);
}

TEST(RenderMidiFileTest, FrameBasedDivision) {
    Smf s(0, 1, uint16_t((uint8_t(-25) << 8) | 40));  // 25 frames of 40 ticks
    s.track({0x87, 0x68, 0x90, 60, 100});             // 1000 ticks = 1 s
    MidiFileContents c = s.read();
    ASSERT_EQ(c.events.size(), 1u);
    EXPECT_DOUBLE_EQ(c.events[0].seconds, 1.0);
}

TEST(RenderMidiFileTest, Failures) {
    std::vector<uint8_t> none{'M', 'T', 'h', 'x'};
    EXPECT_THROW(readMidiFile(none.data(), none.size()), FormatException);
    Smf format2(2, 1, 96);
    format2.track({0x00, 0xFF, 0x2F, 0x00});
    EXPECT_EQ(failure(format2), "Invalid MIDI file (only formats 0 and 1 are played)");
    Smf noStatus(0, 1, 96);
    noStatus.track({0x00, 60, 100});
    EXPECT_EQ(failure(noStatus), "Invalid MIDI file (data byte without a status)");
    Smf cut(0, 1, 96);
    cut.track({0x00, 0x90, 60});
    EXPECT_EQ(failure(cut), "Invalid MIDI file (track ends inside an event)");
    Smf runningAfterMeta(0, 1, 96);  // a meta event ends running status
    runningAfterMeta.track({0x00, 0x90, 60, 1, 0x00, 0xFF, 0x01, 0x00, 0x00, 61, 1});
    EXPECT_EQ(failure(runningAfterMeta), "Invalid MIDI file (data byte without a status)");
    Smf longChunk(0, 1, 96);
    longChunk.tag("MTrk");
    longChunk.u32(100);
    EXPECT_EQ(failure(longChunk), "Invalid MIDI file (chunk longer than the file)");
}
