// Slot allocation with voices whose priority the test sets: the five-step
// comparison, the reserve of eight free slots, note-off, the pedal and the
// channel-mode controllers.
#include <gtest/gtest.h>

#include <vector>

#include "engine/Voice.h"
#include "engine/VoiceManager.h"

namespace {

struct Call {
    char what;  // 's' start, 'r' release, 'k' kill, 'c' controller
    int32_t time;
    int a;
    int b;
};

class ScriptedVoice : public Voice {
public:
    void start(int32_t time, int channel, int note, int velocity) override {
        calls.push_back({'s', time, note, velocity});
        (void)channel;
        level = 3;  // a start is pending
    }
    void release(int32_t time, int velocity) override { calls.push_back({'r', time, velocity, 0}); }
    void kill() override { calls.push_back({'k', 0, 0, 0}); }
    void controller(int32_t time, int number, int value) override {
        calls.push_back({'c', time, number, value});
    }
    int priority() const override { return level; }

    int count(char what) const {
        int n = 0;
        for (const auto& c : calls) n += c.what == what;
        return n;
    }

    int level = 0;
    std::vector<Call> calls;
};

class TestManager : public VoiceManager {
public:
    TestManager() {
        for (int i = 0; i < VOICE_COUNT; ++i) attachVoice(i, &voices[i]);
    }
    int slotOf(int channel, int note, int state) const {
        for (int i = 0; i < VOICE_COUNT; ++i)
            if (slot(i).state == state && slot(i).channel == channel && slot(i).note == note) return i;
        return -1;
    }
    ScriptedVoice voices[VOICE_COUNT];
};

}  // namespace

TEST(VoiceManager, FirstNotesTakeSlotsInOrder) {
    TestManager m;
    m.noteOn(0, 0, 60, 100);
    m.voices[0].level = 3;
    m.noteOn(0, 0, 64, 100);
    EXPECT_EQ(m.slot(0).note, 60);
    EXPECT_EQ(m.slot(1).note, 64);
    EXPECT_EQ(m.slot(1).state, VoiceManager::Held);
    EXPECT_EQ(m.voices[1].calls.at(0).a, 64);
    EXPECT_EQ(m.slotsInState(VoiceManager::Free), 18);
    EXPECT_EQ(m.age(), 2u);
}

TEST(VoiceManager, ThirteenthHeldNoteKillsTheOldestButNotTheBass) {
    TestManager m;
    for (int k = 0; k < 12; ++k) {
        m.noteOn(0, 0, 60 + k, 100);
        m.voices[k].level = 2;  // sounding
    }
    EXPECT_EQ(m.slotsInState(VoiceManager::Free), 8);
    for (auto& v : m.voices) EXPECT_EQ(v.count('k'), 0);

    m.noteOn(0, 0, 72, 100);
    // The new note takes the first free slot; the reserve then kills the
    // oldest held note that is not the lowest: 61, not 60.
    EXPECT_EQ(m.slot(12).note, 72);
    EXPECT_EQ(m.voices[1].count('k'), 1);
    EXPECT_EQ(m.slot(1).state, VoiceManager::Free);
    EXPECT_EQ(m.channel(0).held[61], 0);
    EXPECT_EQ(m.slotsInState(VoiceManager::Free), 8);
    EXPECT_EQ(m.slotsInState(VoiceManager::Held), 12);
    int kills = 0;
    for (auto& v : m.voices) kills += v.count('k');
    EXPECT_EQ(kills, 1);
    EXPECT_EQ(m.lowestNote(0), 60);
}

TEST(VoiceManager, QuieterVoiceGoesBeforeOlderOne) {
    TestManager m;
    for (int k = 0; k < 12; ++k) {
        m.noteOn(0, 0, 60 + k, 100);
        m.voices[k].level = 2;
    }
    m.voices[7].level = 1;  // below -60 dB
    m.noteOn(0, 0, 80, 100);
    EXPECT_EQ(m.voices[7].count('k'), 1);
    EXPECT_EQ(m.voices[1].count('k'), 0);
}

TEST(VoiceManager, ReleasedSlotGoesBeforeHeldOne) {
    TestManager m;
    for (int k = 0; k < 12; ++k) {
        m.noteOn(0, 0, 60 + k, 100);
        m.voices[k].level = 2;
    }
    m.noteOff(0, 0, 70, 0);
    EXPECT_EQ(m.slot(10).state, VoiceManager::Released);
    m.noteOn(0, 0, 80, 100);
    EXPECT_EQ(m.voices[10].count('k'), 1);
    EXPECT_EQ(m.voices[1].count('k'), 0);
}

TEST(VoiceManager, DoubledNoteGoesFirstEvenWhenItIsTheBass) {
    TestManager m;
    for (int k = 0; k < 12; ++k) {
        m.noteOn(0, 0, 60 + k, 100);
        m.voices[k].level = 2;
    }
    // 60 again: its old slot is held twice over, so the reserve takes it.
    m.noteOn(0, 0, 60, 100);
    EXPECT_EQ(m.voices[0].count('k'), 1);
    EXPECT_EQ(m.slot(12).note, 60);
    EXPECT_EQ(m.channel(0).held[60], 1);
}

TEST(VoiceManager, RepeatedNoteReusesTheQuietestSlotEvenInStateOne) {
    TestManager m;
    for (int k = 0; k < 12; ++k) {
        m.noteOn(0, 0, 60 + k, 100);
        m.voices[k].level = 2;
    }
    m.noteOff(0, 0, 65, 0);
    // Every free slot still fades audibly; the released 65 is the quietest.
    for (int i = 12; i < 20; ++i) m.voices[i].level = 2;
    m.voices[5].level = 1;
    m.noteOn(0, 0, 65, 90);
    EXPECT_EQ(m.slot(5).state, VoiceManager::Held);
    EXPECT_EQ(m.slot(5).note, 65);
    ASSERT_EQ(m.voices[5].count('s'), 2);
    EXPECT_EQ(m.voices[5].calls.back().what, 's');
    EXPECT_EQ(m.channel(0).held[65], 1);
}

TEST(VoiceManager, NoteOffReleasesTheOldestHeldSlotOfThatNote) {
    TestManager m;
    m.noteOn(3, 2, 50, 100);
    m.voices[0].level = 3;
    m.noteOn(9, 2, 50, 100);
    EXPECT_EQ(m.channel(2).held[50], 2);
    m.noteOff(20, 2, 50, 33);
    EXPECT_EQ(m.slot(0).state, VoiceManager::Released);
    EXPECT_EQ(m.slot(1).state, VoiceManager::Held);
    ASSERT_EQ(m.voices[0].count('r'), 1);
    EXPECT_EQ(m.voices[0].calls.back().time, 20);
    EXPECT_EQ(m.slot(0).stamp, 2u);
    EXPECT_EQ(m.age(), 3u);
    // Other channel, other note: nothing.
    m.noteOff(20, 3, 50, 0);
    m.noteOff(20, 2, 51, 0);
    EXPECT_EQ(m.age(), 3u);
}

TEST(VoiceManager, SustainPedalHoldsReleasedNotesUntilItComesUp) {
    TestManager m;
    m.controller(0, 0, 64, 127);
    m.noteOn(0, 0, 60, 100);
    m.noteOff(10, 0, 60, 0);
    EXPECT_EQ(m.slot(0).state, VoiceManager::Sustained);
    EXPECT_EQ(m.voices[0].count('r'), 0);
    // A pedal value above zero only stores.
    m.controller(12, 0, 64, 100);
    EXPECT_EQ(m.slot(0).state, VoiceManager::Sustained);
    const uint32_t age = m.age();
    m.controller(30, 0, 64, 0);
    EXPECT_EQ(m.slot(0).state, VoiceManager::Released);
    ASSERT_EQ(m.voices[0].count('r'), 1);
    EXPECT_EQ(m.voices[0].calls.back().what, 'c');
    EXPECT_EQ(m.age(), age + 1);
    // The pedal of another channel does nothing to channel 0.
    TestManager n;
    n.controller(0, 1, 64, 127);
    n.noteOn(0, 0, 60, 100);
    n.noteOff(0, 0, 60, 0);
    EXPECT_EQ(n.slot(0).state, VoiceManager::Released);
}

TEST(VoiceManager, ResetAllControllersWithPedalDownBringsThePedalUp) {
    TestManager m;
    m.controller(0, 0, 64, 127);
    m.controller(0, 0, 1, 90);
    m.noteOn(0, 0, 60, 100);
    m.noteOff(0, 0, 60, 0);
    ASSERT_EQ(m.slot(0).state, VoiceManager::Sustained);
    m.controller(5, 0, 121, 0);
    EXPECT_EQ(m.slot(0).state, VoiceManager::Released);
    EXPECT_EQ(m.voices[0].count('r'), 1);
    EXPECT_EQ(m.channel(0).controllers[64], 0);
    EXPECT_EQ(m.channel(0).controllers[1], 0);
}

TEST(VoiceManager, ControllerOneTwentyTwoIsAllNotesOffAndOneTwentyThreeDoesNothing) {
    TestManager m;
    m.noteOn(0, 0, 60, 100);
    m.voices[0].level = 2;
    m.noteOn(0, 0, 62, 100);
    m.voices[1].level = 2;
    m.noteOn(0, 1, 64, 100);
    m.controller(0, 0, 123, 0);
    EXPECT_EQ(m.slotsInState(VoiceManager::Held), 3);
    for (auto& v : m.voices) EXPECT_EQ(v.count('r'), 0);

    m.controller(7, 0, 122, 0);
    EXPECT_EQ(m.slot(0).state, VoiceManager::Released);
    EXPECT_EQ(m.slot(1).state, VoiceManager::Released);
    EXPECT_EQ(m.slot(2).state, VoiceManager::Held);  // channel 1
    EXPECT_EQ(m.voices[0].count('r'), 1);
}

TEST(VoiceManager, AllNotesOffWithPedalDownSustains) {
    TestManager m;
    m.controller(0, 0, 64, 127);
    m.noteOn(0, 0, 60, 100);
    m.controller(0, 0, 122, 0);
    EXPECT_EQ(m.slot(0).state, VoiceManager::Sustained);
    EXPECT_EQ(m.voices[0].count('r'), 0);
}

TEST(VoiceManager, AllSoundOffKillsEverySlotOfTheChannel) {
    TestManager m;
    m.noteOn(0, 0, 60, 100);
    m.voices[0].level = 2;
    m.noteOn(0, 0, 40, 100);
    m.voices[1].level = 2;
    m.noteOn(0, 5, 62, 100);
    m.controller(0, 0, 120, 0);
    EXPECT_EQ(m.voices[0].count('k'), 1);
    EXPECT_EQ(m.voices[1].count('k'), 1);
    EXPECT_EQ(m.voices[2].count('k'), 0);
    EXPECT_EQ(m.slotsInState(VoiceManager::Free), 19);
    EXPECT_EQ(m.channel(0).held[60], 0);
    EXPECT_EQ(m.lowestNote(0), VoiceManager::NO_NOTE);
    EXPECT_EQ(m.lowestNote(5), 62);
}

TEST(VoiceManager, ControllersPitchBendAndProgramAreStoredAndPassedToTheChannelsVoices) {
    TestManager m;
    m.noteOn(0, 4, 60, 100);
    m.controller(3, 4, 7, 99);
    m.controller(3, 2, 7, 11);
    m.pitchBend(3, 4, -8192);
    m.programChange(3, 4, 17);
    EXPECT_EQ(m.channel(4).controllers[7], 99);
    EXPECT_EQ(m.channel(2).controllers[7], 11);
    EXPECT_EQ(m.channel(4).pitchBend, -8192);
    EXPECT_EQ(m.channel(4).program, 17);
    ASSERT_EQ(m.voices[0].count('c'), 1);
    EXPECT_EQ(m.voices[0].calls.back().a, 7);
    EXPECT_EQ(m.voices[0].calls.back().b, 99);
}

TEST(VoiceManager, LowestNoteFollowsHeldNotes) {
    TestManager m;
    m.noteOn(0, 0, 50, 100);
    m.voices[0].level = 2;
    m.noteOn(0, 0, 45, 100);
    m.voices[1].level = 2;
    EXPECT_EQ(m.lowestNote(0), 45);
    m.controller(0, 0, 120, 0);
    EXPECT_EQ(m.lowestNote(0), VoiceManager::NO_NOTE);
}
