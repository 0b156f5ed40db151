// The jingle as an event source: timing from the sample rate, the room limit,
// and the note it holds back.
#include <gtest/gtest.h>

#include <vector>

#include "plugin/Jingle.h"

TEST(Jingle, FirstNotesFollowTheTempo) {
    Jingle j(1000.0f);  // an eighth note is 200 samples
    TimedEvent out[16];
    const int n = j.generate(900, 2, 16, out);
    // On at 0, off at 340 (0.85 of a quarter), on at 400, off at 740, on at 800.
    ASSERT_EQ(n, 5);
    EXPECT_EQ(out[0].status, 0x92);
    EXPECT_EQ(out[0].data1, 76);
    EXPECT_EQ(out[0].data2, Jingle::VELOCITY);
    EXPECT_EQ(out[0].time, 0);
    EXPECT_EQ(out[1].status, 0x82);
    EXPECT_EQ(out[1].time, 340);
    EXPECT_EQ(out[2].time, 400);
    EXPECT_EQ(out[3].time, 740);
    EXPECT_EQ(out[4].time, 800);
    // Times of a later call start from that call.
    // The third note is a half: off at 800 + 680.
    const int m = j.generate(600, 2, 16, out);
    ASSERT_EQ(m, 1);
    EXPECT_EQ(out[0].status, 0x82);
    EXPECT_EQ(out[0].time, 800 + 680 - 900);
}

TEST(Jingle, WhatDoesNotFitComesAtTheStartOfTheNextCall) {
    Jingle j(1000.0f);
    TimedEvent out[4];
    EXPECT_EQ(j.generate(500, 0, 1, out), 1);  // the note-off at 340 doesn't fit
    EXPECT_EQ(out[0].time, 0);
    EXPECT_EQ(j.generate(100, 0, 0, out), 0);
    ASSERT_EQ(j.generate(100, 0, 4, out), 2);
    EXPECT_EQ(out[0].status, 0x80);
    EXPECT_EQ(out[0].time, 0);
    EXPECT_EQ(out[1].status, 0x90);
    EXPECT_EQ(out[1].time, 0);  // was due at 400, the call began at 600
}

TEST(Jingle, HandsOverTheNoteItHolds) {
    Jingle j(1000.0f);
    TimedEvent out[4];
    EXPECT_EQ(j.takeQueued(out, 4), 0);
    ASSERT_EQ(j.generate(10, 9, 4, out), 1);
    ASSERT_EQ(j.takeQueued(out, 4), 1);
    EXPECT_EQ(out[0].status, 0x89);
    EXPECT_EQ(out[0].data1, 76);
    EXPECT_EQ(out[0].time, 0);
    EXPECT_EQ(j.takeQueued(out, 4), 0);
    // The held note-off is gone from the tune too.
    ASSERT_EQ(j.generate(600, 9, 4, out), 1);
    EXPECT_EQ(out[0].status, 0x99);
}

TEST(Jingle, TimingFollowsTheSampleRate) {
    Jingle j(1000.0f);
    j.setTiming(2000.0f);
    TimedEvent out[8];
    ASSERT_EQ(j.generate(1000, 0, 8, out), 3);
    EXPECT_EQ(out[1].time, 680);
    EXPECT_EQ(out[2].time, 800);
}
