// One of the twenty voices. The VoiceManager tells it to start, release or be
// killed, with times in samples from the start of the block; the voice acts
// on them in its own 16-sample frames, so a note starts on a 16-sample grid.
// A start that falls on a voice still sounding waits until a 2 ms fade is
// done.
#pragma once

#include <cstdint>
#include <limits>

#include "engine/BranchDecoder.h"
#include "engine/EngineRates.h"
#include "engine/NoiseFilters.h"
#include "engine/OscillatorA.h"
#include "engine/StateVariableFilter.h"
#include "engine/VoiceOutputGains.h"
#include "engine/WaveShape.h"

class NorvelleProgram;
struct MidiConfigRecord;

// What the engine hands every voice for one 64-sample block.
struct VoiceBlock {
    const NorvelleProgram* program = nullptr;
    const MidiConfigRecord* midiConfig = nullptr;
    // The program's seed differs from the one of the block before.
    bool newSeed = false;
    float tuningOct = 0.0f;
    float atonality = 0.5f;   // smoothed
    float releaseCoef = 0.0f;
    float effectBi = 0.0f;
    float rotation = 0.0f;
    int rotationSteps = 0;
    float* left = nullptr;    // 64 samples each
    float* right = nullptr;
    float* send = nullptr;
    bool* silent = nullptr;
    bool* sendSilent = nullptr;
    // The twelve decoders, by branch. Without them (a voice tested for its
    // timing alone) a voice keeps its timing and gains but makes no sound.
    engine::BranchDecoder* decoders = nullptr;
    // The pitch bend of each of the 16 MIDI channels (-8192 to 8191) for the
    // block; none: no bend.
    const int16_t* pitchBends = nullptr;
};

class Voice {
public:
    static constexpr int FRAME = 16;
    static constexpr int FRAMES_PER_BLOCK = 4;

    explicit Voice(const EngineRates* rates = nullptr) : rates_(rates) {}
    virtual ~Voice() = default;

    // A note waits to start at time (samples from the block start); a
    // pending release at or after that time is cancelled.
    virtual void start(int32_t time, int channel, int note, int velocity);
    // The release comes due in the frame after the one time falls in.
    virtual void release(int32_t time, int velocity);
    // Fades out in 20 ms and drops anything pending.
    virtual void kill();
    virtual void controller(int32_t time, int number, int value);
    virtual void pitchBend(int32_t time, int value);
    virtual void programChange(int32_t time, int program);
    // 3 start pending; 2 audible; 1 fading below -60 dB; 0 silent.
    virtual int priority() const;

    // One 64-sample block into the buses of the block.
    void render(const VoiceBlock& block);
    // Any number of voices' blocks at once, in that order: the sources one
    // by one, the noise colourings and filters of all that sound side by
    // side in the lanes of a few registers, the outputs in voice order. The
    // same sound as rendering each alone, one after the other. False when
    // no voice sounded or waited to start: the block left them as they were.
    static bool renderAll(Voice* const* voices, int count, const VoiceBlock& block);
    static constexpr int MAX_TOGETHER = 20;

    // The state of a voice that has never sounded; random seeds its noise.
    void clear(uint32_t random);
    void setRates(const EngineRates* rates) { rates_ = rates; }

    // Fields.
    // The decoder of the voice's branch, from its note start on.
    engine::BranchDecoder* decoder = nullptr;
    bool active = false;
    uint32_t lastStamp = 0;
    int branch = 0;
    uint8_t keyChannel = 0;
    int32_t startAt = -1;
    uint8_t pendingChannel = 0;
    uint8_t pendingNote = 0;
    uint8_t pendingVelocity = 0;
    int32_t releaseAt = -1;
    float branchAmount = 0.0f;
    float keyPitch = 1.0f;
    float phases[3] = {};           // oscillator A, oscillator B, sub-oscillator
    float filterLow[2] = {};
    float filterBand[2] = {};
    float noise[3] = {};
    float loopScale = 1.0f;
    float velGain = 0.0f;
    float releaseGain = 0.0f;
    float fadeRate = 0.0f;
    float modVelocity = 0.0f;
    float lfoPhase = 0.0f;
    uint8_t envState = 0;
    float envPos = 0.0f;
    float susRamp = 0.0f;
    float modHold = 0.0f;
    float modHoldAcc = 0.0f;
    float bHold = 0.0f;
    float bHoldAcc = 1.0f;
    bool holdRelease = true;
    float gainLeft = 0.0f;
    float gainRight = 0.0f;
    float gainSend = 0.0f;
    float meanStep = 0.0f;
    uint32_t random = 0;
    float lastAmp = 0.0f;
    float lastFreq = 0.001f;
    // Smoothed copies: pan and six decoded values.
    float pan = 0.0f;
    float aForm = 0.0f;
    float bForm = 0.0f;
    float aGain = 0.0f;
    float bGain = 0.0f;
    float subAmount = 0.0f;
    float volSus = 0.0f;

protected:
    // Per block while sounding: smoothing, decoding and the control values.
    void updateBlock(const VoiceBlock& block);
    // LFO, tremolo, pitch, key follow and output gains, from the decoded
    // values and the smoothed pan.
    void controlValues(const VoiceBlock& block);
    // The parts of render: the block start (false: nothing to do), the
    // timing of a frame (true: the frame sounds), the block end.
    bool beginBlock(const VoiceBlock& block, float& factor);
    bool frameDue(const VoiceBlock& block, float& factor);
    void endBlock(const VoiceBlock& block);

    // A sounding frame in three steps: everything before the filters, the
    // filters, everything after.
    struct FrameWork {
        alignas(16) float mix[16];
        alignas(16) float out[16];
        alignas(16) float rawB[16];  // raw noise of B and A
        alignas(16) float rawA[16];
        alignas(16) float bn[16];  // filtered noise of B and A
        alignas(16) float an[16];
        alignas(16) float osc[16];   // oscillator B with its noise and hold
        alignas(16) float step[16];  // oscillator A's phase steps
        engine::WaveShape shapeB, shapeA;
        float f1 = 0, f2 = 0;
        float amp = 0, fA = 0, fB = 0;
        bool bQuiet = false, aQuiet = false;
    };
    // The source in three steps: envelopes, frequencies and raw noise; the
    // noise filters; the oscillators and the mix.
    void frameSource(const VoiceBlock& block, float factor, FrameWork& work);
    void frameSourceStart(const VoiceBlock& block, float factor, FrameWork& work);
    void frameNoise(FrameWork& work);
    void noiseJob(FrameWork& work, engine::NoiseJob& job);
    void frameSourceEnd(FrameWork& work);
    // frameSourceEnd in two steps, each with its wave shape already made:
    // oscillator B to the phase steps of A; oscillator A and the mix.
    void frameSourceB(FrameWork& work);
    void frameSourceA(FrameWork& work);
    // frameSourceA in parts, so that several voices' oscillators A run
    // together: the job, then the mean step's decay after the oscillator.
    void oscillatorAJob(FrameWork& work, engine::VoiceAJob& job);
    void frameSourceAEnd();
    void frameFilter(FrameWork& work);
    void filterVoice(FrameWork& work, engine::FilterVoice& job);
    // Up to MAX_TOGETHER voices, frame by frame.
    static bool renderGroup(Voice* const* voices, int count, const VoiceBlock& block);
    void frameOutput(const VoiceBlock& block, int frame, FrameWork& work);

    // The note start, in the frame where it falls.
    void startNote(const VoiceBlock& block);
    // One sounding frame; factor is the release factor of the frame.
    virtual void renderFrame(const VoiceBlock& block, int frame, float factor);

    const EngineRates* rates_;

    // Control values of the current block.
    float tremoloGain_ = 1.0f;
    float pitch_ = 1.0f;
    float keyFollow_ = 1.0f;
    engine::VoiceOutputGains outputGains_;
    // B's noise filter coefficient and the frequency it is for (none yet).
    float noiseCoefFor_ = std::numeric_limits<float>::quiet_NaN();
    float noiseCoef_ = 0.0f;
    // The decoded values of the voice's last update: a decoder shared with
    // another voice may have moved on since.
    engine::BranchParams params_;
};
