#include "engine/Voice.h"

#include <algorithm>
#include <cmath>

#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"

void Voice::clear(uint32_t seed) {
    const EngineRates* rates = rates_;
    *this = Voice(rates);
    random = seed;
}

void Voice::start(int32_t time, int channel, int note, int velocity) {
    pendingChannel = static_cast<uint8_t>(channel);
    pendingNote = static_cast<uint8_t>(note);
    pendingVelocity = static_cast<uint8_t>(velocity);
    startAt = time;
    if (time <= releaseAt) releaseAt = -1;
}

void Voice::release(int32_t time, int /*velocity*/) { releaseAt = time + FRAME; }

void Voice::kill() {
    if (rates_) fadeRate = std::max(rates_->killRate, fadeRate);
    startAt = -1;
    releaseAt = -1;
}

// Controllers, pitch bend and program changes reach the voice, which has no
// use for them: the engine reads the channel's state where it needs it.
void Voice::controller(int32_t, int, int) {}
void Voice::pitchBend(int32_t, int) {}
void Voice::programChange(int32_t, int) {}

int Voice::priority() const {
    if (startAt >= 0) return 3;
    const float level = active ? releaseGain * velGain * (loopScale + (1.0f - loopScale) * volSus) : 0.0f;
    if (level >= 0.001f) return 2;
    if (level != 0.0f) return 1;
    return 0;
}

void Voice::render(const VoiceBlock& b) {
    if (!active && startAt < 0) {
        lastAmp = 0.0f;
        lastFreq = 0.001f;
        return;
    }
    float factor = holdRelease ? 1.0f : b.releaseCoef;

    if (active && b.program && rates_) {
        const float target = effectiveLength(*b.program, branch);
        if (b.newSeed)
            branchAmount = target;
        else
            adaptiveSmooth(branchAmount, target, rates_->slewSlow, rates_->slewFast);
    }

    for (int frame = 0; frame < FRAMES_PER_BLOCK; ++frame) {
        if (startAt >= 0) {
            if (startAt - FRAME < 0) {
                if (active) {
                    // The voice must fade before the new note: try again next frame.
                    if (releaseAt >= 0) releaseAt += FRAME;
                    if (rates_) fadeRate = std::max(rates_->stealRate, fadeRate);
                } else {
                    startAt = -1;
                    startNote(b);
                }
            } else {
                startAt -= FRAME;
            }
        }
        if (releaseAt >= 0) {
            if (releaseAt - FRAME < 0) {
                releaseAt = -1;
                holdRelease = false;
                factor = b.releaseCoef;
            } else {
                releaseAt -= FRAME;
            }
        }
        if (!active) continue;
        renderFrame(b, frame, factor);
    }
    // Active or with a start pending at the block start: not a silent block.
    if (b.silent) *b.silent = false;
}

void Voice::startNote(const VoiceBlock& b) {
    branch = (pendingNote - b.rotationSteps + 12) % 12;
    if (b.program) branchAmount = effectiveLength(*b.program, branch);
    keyChannel = pendingChannel;
    const int detuneNote = pendingNote - b.rotationSteps;
    const float detune = b.program ? noteDetune(b.program->seed, detuneNote, b.atonality) : 0.0f;
    keyPitch = std::exp2(static_cast<float>(pendingNote - 60) / 12.0f + detune);

    float v = static_cast<float>(pendingVelocity) / 127.0f;
    const int curve = b.midiConfig ? b.midiConfig->velocityCurve : MidiConfigRecord::Standard;
    if (curve == MidiConfigRecord::Hard)
        v = v * v;
    else if (curve == MidiConfigRecord::Soft)
        v = std::sqrt(v);
    const float velSens = b.program ? b.program->param(Param::VelSens) : 0.5f;
    const float w = (v - 1.0f) * velSens + 1.0f;
    velGain = std::exp((40.0f * w - 40.0f) * 0.115129255f);

    releaseGain = 1.0f;
    fadeRate = 0.0f;
    holdRelease = true;
    loopScale = 1.0f;
    envState = 1;
    envPos = susRamp = modHoldAcc = 0.0f;
    modHold = 0.0f;
    bHoldAcc = 1.0f;
    bHold = 0.0f;
    meanStep = 0.0f;
    for (float& p : phases) p = 0.0f;
    for (int k = 0; k < 2; ++k) filterLow[k] = filterBand[k] = 0.0f;
    for (float& n : noise) n = 0.0f;
    gainLeft = gainRight = gainSend = 0.0f;
    active = true;
}

void Voice::renderFrame(const VoiceBlock&, int, float factor) {
    // Release and fade: an exponential release with a linear fall on top,
    // through which kills and steals act.
    const float g = factor * releaseGain - fadeRate;
    if (g < 1e-5f) {
        active = false;
        releaseGain = 0.0f;
    } else {
        releaseGain = g;
    }
}
