// The sound engine: twenty voices behind the VoiceManager, turning one record
// and a run of timed MIDI events into 64 samples of stereo at a time. It
// also keeps what the plant shows: note flashes, levels per branch and the
// last branch played.
#pragma once

#include <cstdint>

#include "engine/BranchDecoder.h"
#include "engine/ChorusReverb.h"
#include "engine/EngineRates.h"
#include "engine/OutputStage.h"
#include "engine/RenderInterface.h"
#include "engine/Voice.h"
#include "engine/VoiceManager.h"

class SoundEngine : public VoiceManager, public RenderInterface {
public:
    SoundEngine();

    void init(float sampleRate, uint32_t seed) override;
    void render(const NorvelleProgram& program, const MidiConfigRecord& midiConfig, int eventCount,
                const TimedEvent* events, float* left, float* right, bool& silentFlag) override;
    void copyVisualState(VisualState& target) const override;

    // Before the common work: the note flash and the last branch played.
    void noteOn(int32_t time, int channel, int note, int velocity) override;

    const EngineRates& rates() const { return rates_; }
    const Voice& voice(int i) const { return voices_[i]; }
    int rotationSteps() const { return rotationSteps_; }
    float outGain() const { return outGain_; }
    const engine::ChorusReverb& reverb() const { return reverb_; }
    const engine::OutputStage& outputStage() const { return output_; }

private:
    void decayVisuals();
    // Release time and its per-frame factor for the block.
    void releaseTimes(float release);
    void feedEvents(int eventCount, const TimedEvent* events);
    void displayLevel(const Voice& v);
    // Reverb settings from the last played branch, the reverb, and its wet
    // signal into the buses.
    void reverbBlock(const NorvelleProgram& program, float releaseSec, bool& silentFlag);

    EngineRates rates_;
    // Per-block factors of the visual decay, from the rate.
    float levelDecay_ = 1.0f;
    float flashDecay_ = 1.0f;
    // Some flash or level is not 0: the decay has work to do.
    bool visualsLit_ = false;
    Voice voices_[VOICE_COUNT];
    engine::BranchDecoder decoders_[VisualState::BRANCHES];
    engine::ChorusReverb reverb_;
    engine::OutputStage output_;
    VisualState visual_;

    alignas(16) float busLeft_[BLOCK];
    alignas(16) float busRight_[BLOCK];
    alignas(16) float busSend_[BLOCK];
    alignas(16) float wetLeft_[BLOCK];
    alignas(16) float wetRight_[BLOCK];
    bool sendSilent_ = true;
    // The three buses hold only zeros: the last block wrote nothing there.
    bool busesClear_ = true;
    // No voice sounded or waited to start in the last block, and no note
    // came since: the voices have nothing to do.
    bool voicesIdle_ = false;

    // The seed of the sound last heard; a different one is a new sound.
    uint32_t seenSeed_ = 0;
    bool seedKnown_ = false;
    // Smoothed controls.
    float tuning_ = 0.5f;
    float atonality_ = 0.5f;
    float volume_ = 0.5f;
    float effect_ = 0.5f;
    float outGain_ = 0.0f;
    int rotationSteps_ = 0;

    // The values of the last block that come from transcendental functions,
    // with what they came from: a block whose inputs are those of the block
    // before takes them as they are. Silence costs little that way, and
    // nothing changes by one bit.
    float releaseFor_ = -1.0f;  // the Release parameter
    float releaseSec_ = 0.0f;
    float releaseCoef_ = 0.0f;
    float outGainFor_ = -1.0f;  // the smoothed volume
    float gateFor_ = -1.0f, gateReleaseFor_ = -1.0f;  // reverb time and release
    float gated_ = 0.0f;

    // The latest note of this block so far: it decides the display.
    int32_t shownTime_ = -1;
    int shownNote_ = -1;
};
