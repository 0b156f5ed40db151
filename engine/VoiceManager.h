// The MIDI side of the engine: which of the twenty voices plays which note.
// It keeps eight slots free, so that twelve voices sound at once and a new
// note always finds a voice that is nearly silent. Per MIDI channel it tracks
// held notes, controllers, pitch bend, program and the lowest held note.
#pragma once

#include <cstdint>

class Voice;

class VoiceManager {
public:
    static constexpr int VOICE_COUNT = 20;
    static constexpr int RESERVE = 8;
    static constexpr int CHANNEL_COUNT = 16;
    static constexpr uint8_t NO_NOTE = 128;

    enum SlotState : uint8_t { Free = 0, Released = 1, Sustained = 2, Held = 3 };

    struct VoiceSlot {
        uint8_t state = Free;
        uint8_t channel = 0;
        uint8_t note = 0;
        // The age of the slot's last change.
        uint32_t stamp = 0;
        Voice* voice = nullptr;
    };

    struct ChannelState {
        // For each note, the number of slots holding it.
        uint8_t held[128] = {};
        // Last value of each controller.
        uint8_t controllers[128] = {};
        // -8192 to 8191.
        int16_t pitchBend = 0;
        uint8_t program = 0;
        // NO_NOTE when none is held.
        uint8_t lowestNote = NO_NOTE;
    };

    VoiceManager();
    virtual ~VoiceManager() = default;
    VoiceManager(const VoiceManager&) = delete;
    VoiceManager& operator=(const VoiceManager&) = delete;

    virtual void noteOff(int32_t time, int channel, int note, int velocity);
    virtual void noteOn(int32_t time, int channel, int note, int velocity);
    virtual void controller(int32_t time, int channel, int number, int value);
    // value: -8192 to 8191.
    virtual void pitchBend(int32_t time, int channel, int value);
    virtual void programChange(int32_t time, int channel, int program);

    const VoiceSlot& slot(int i) const { return slots_[i]; }
    const ChannelState& channel(int c) const { return channels_[c]; }
    // Slots in each state, by SlotState.
    int slotsInState(int state) const { return stateCounts_[state]; }
    uint32_t age() const { return age_; }
    // The lowest held note of a channel, recomputed when needed.
    int lowestNote(int channel);

protected:
    // Gives slot i its voice; every slot needs one before the first event.
    void attachVoice(int i, Voice* voice) { slots_[i].voice = voice; }
    // Back to the state of a new manager; voices stay attached.
    void resetSlots();

private:
    // Is slot a a better choice than slot b for a new note?
    bool better(int a, int b);
    void setState(VoiceSlot& s, uint8_t state);
    // The slot stops holding its note.
    void dropHeld(const VoiceSlot& s);
    void recomputeLowest();
    // Release of one slot as by a note-off (not for sustained pedal slots).
    void releaseSlot(VoiceSlot& s, int32_t time, int velocity);

    VoiceSlot slots_[VOICE_COUNT];
    ChannelState channels_[CHANNEL_COUNT];
    int stateCounts_[4] = {VOICE_COUNT, 0, 0, 0};
    uint32_t age_ = 0;
    bool lowestStale_ = false;
};
