#include "engine/Voice.h"

#include <algorithm>
#include <cmath>

#include "engine/Denormal.h"
#include "engine/EnvelopeClock.h"
#include "engine/EnvelopeCurves.h"
#include "engine/FrameSize.h"
#include "engine/FrequencyModulation.h"
#include "engine/Lfo.h"
#include "engine/NoiseFilters.h"
#include "engine/NoiseTable.h"
#include "engine/OscillatorA.h"
#include "engine/OscillatorB.h"
#include "engine/Pan.h"
#include "engine/Pitch.h"
#include "engine/SampleAndHold.h"
#include "engine/SmoothedValue.h"
#include "engine/StateVariableFilter.h"
#include "engine/SubOscillator.h"
#include "engine/WaveShape.h"
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

bool Voice::beginBlock(const VoiceBlock& b, float& factor) {
    if (!active && startAt < 0) {
        lastAmp = 0.0f;
        lastFreq = 0.001f;
        return false;
    }
    factor = holdRelease ? 1.0f : b.releaseCoef;
    if (active && b.program && rates_) updateBlock(b);
    return true;
}

bool Voice::frameDue(const VoiceBlock& b, float& factor) {
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
    return active;
}

void Voice::endBlock(const VoiceBlock& b) {
    // The LFO runs on for every voice that sounds or waits to, once a block.
    if (decoder) lfoPhase = engine::advanceLfo(lfoPhase, params_.lfoStep);
    // Active or with a start pending at the block start: not a silent block.
    if (b.silent) *b.silent = false;
}

void Voice::render(const VoiceBlock& b) {
    float factor = 1.0f;
    if (!beginBlock(b, factor)) return;
    for (int frame = 0; frame < FRAMES_PER_BLOCK; ++frame)
        if (frameDue(b, factor)) renderFrame(b, frame, factor);
    endBlock(b);
}

bool Voice::renderAll(Voice* const* voices, int count, const VoiceBlock& b) {
    bool any = false;
    for (; count > 0; voices += MAX_TOGETHER, count -= MAX_TOGETHER)
        any |= renderGroup(voices, std::min(count, MAX_TOGETHER), b);
    return any;
}

bool Voice::renderGroup(Voice* const* v, int count, const VoiceBlock& b) {
    using namespace engine;
    float factor[MAX_TOGETHER];
    bool began[MAX_TOGETHER];
    bool any = false;
    for (int k = 0; k < count; ++k) {
        factor[k] = 1.0f;
        any |= began[k] = v[k]->beginBlock(b, factor[k]);
    }
    if (!any) return false;
    FrameWork work[MAX_TOGETHER];
    NoiseJob noiseJobs[MAX_TOGETHER];
    FilterVoice filters[MAX_TOGETHER];
    for (int frame = 0; frame < FRAMES_PER_BLOCK; ++frame) {
        bool due[MAX_TOGETHER], shared[MAX_TOGETHER];
        int sharing[MAX_TOGETHER];
        int n = 0;
        for (int k = 0; k < count; ++k) {
            due[k] = began[k] && v[k]->frameDue(b, factor[k]);
            shared[k] = due[k] && v[k]->decoder && v[k]->rates_ && b.decoders;
            if (shared[k]) sharing[n++] = k;
        }
        // The sources one by one, the noise colourings and the filters side
        // by side, then the outputs in voice order, as the buses always add
        // them.
        for (int j = 0; j < n; ++j) v[sharing[j]]->frameSourceStart(b, factor[sharing[j]], work[sharing[j]]);
        int noisy = 0;
        for (int j = 0; j < n; ++j) {
            Voice& voice = *v[sharing[j]];
            FrameWork& w = work[sharing[j]];
            if (w.bQuiet && w.aQuiet)
                voice.frameNoise(w);  // zeros only
            else
                voice.noiseJob(w, noiseJobs[noisy++]);
        }
        if (noisy == 1) {
            // One voice alone is quicker without the lanes.
            for (int j = 0; j < n; ++j)
                if (!work[sharing[j]].bQuiet || !work[sharing[j]].aQuiet) v[sharing[j]]->frameNoise(work[sharing[j]]);
        } else if (noisy > 1) {
            filterNoisesTogether(noiseJobs, noisy);
        }
        // The wave shapes four voices at a time, each oscillator's once its
        // frequency is known.
        WaveShape spare;
        WaveShape* shapes[4];
        // Lanes past the last voice repeat it and go to the spare.
        auto lane = [&](int j, int q, WaveShape FrameWork::*shape) {
            const int k = sharing[std::min(j + q, n - 1)];
            shapes[q] = j + q < n ? &(work[k].*shape) : &spare;
            return k;
        };
        for (int j = 0; j < n; j += 4) {
            const int k0 = lane(j, 0, &FrameWork::shapeB), k1 = lane(j, 1, &FrameWork::shapeB);
            const int k2 = lane(j, 2, &FrameWork::shapeB), k3 = lane(j, 3, &FrameWork::shapeB);
            const float form[4] = {v[k0]->bForm, v[k1]->bForm, v[k2]->bForm, v[k3]->bForm};
            const float freq[4] = {work[k0].fB, work[k1].fB, work[k2].fB, work[k3].fB};
            WaveShape::makeFour(form, freq, shapes);
        }
        for (int j = 0; j < n; ++j) v[sharing[j]]->frameSourceB(work[sharing[j]]);
        for (int j = 0; j < n; j += 4) {
            const int k0 = lane(j, 0, &FrameWork::shapeA), k1 = lane(j, 1, &FrameWork::shapeA);
            const int k2 = lane(j, 2, &FrameWork::shapeA), k3 = lane(j, 3, &FrameWork::shapeA);
            const float form[4] = {v[k0]->aForm, v[k1]->aForm, v[k2]->aForm, v[k3]->aForm};
            const float freq[4] = {v[k0]->meanStep, v[k1]->meanStep, v[k2]->meanStep, v[k3]->meanStep};
            WaveShape::makeFour(form, freq, shapes);
        }
        VoiceAJob oscillators[MAX_TOGETHER];
        for (int j = 0; j < n; ++j) v[sharing[j]]->oscillatorAJob(work[sharing[j]], oscillators[j]);
        renderVoicesA(oscillators, n);
        for (int j = 0; j < n; ++j) v[sharing[j]]->frameSourceAEnd();
        if (n == 1) {
            v[sharing[0]]->frameFilter(work[sharing[0]]);
        } else if (n > 1) {
            for (int j = 0; j < n; ++j) v[sharing[j]]->filterVoice(work[sharing[j]], filters[j]);
            renderFilterVoices(filters, n);
        }
        for (int k = 0; k < count; ++k) {
            if (shared[k])
                v[k]->frameOutput(b, frame, work[k]);
            else if (due[k])
                v[k]->renderFrame(b, frame, factor[k]);
        }
    }
    for (int k = 0; k < count; ++k)
        if (began[k]) v[k]->endBlock(b);
    return true;
}

void Voice::filterVoice(FrameWork& work, engine::FilterVoice& job) {
    job.low = filterLow;
    job.band = filterBand;
    job.f1 = work.f1;
    job.f2 = work.f2;
    job.logDamp = params_.filterDamp;
    job.in = work.mix;
    job.out = work.out;
}

void Voice::updateBlock(const VoiceBlock& b) {
    const float target = effectiveLength(*b.program, branch);
    if (b.newSeed)
        branchAmount = target;
    else
        adaptiveSmooth(branchAmount, target, rates_->slewSlow, rates_->slewFast);
    if (!b.decoders) return;
    decoder = &b.decoders[branch];
    decoder->update(*b.program, branchAmount, b.atonality, b.effectBi, rates_->sampleRate);
    params_ = decoder->params();
    const engine::BranchParams& p = params_;

    pan = engine::dropTinyBits(pan);
    aForm = engine::dropTinyBits(aForm);
    bForm = engine::dropTinyBits(bForm);
    aGain = engine::dropTinyBits(aGain);
    bGain = engine::dropTinyBits(bGain);
    subAmount = engine::dropTinyBits(subAmount);
    volSus = engine::dropTinyBits(volSus);
    const float panGoal = engine::panTarget(branch, b.rotation, b.effectBi, branchAmount);
    if (b.newSeed) {
        // A new sound: take the decoded values at once.
        pan = panGoal;
        aForm = p.aForm;
        bForm = p.bForm;
        aGain = p.aGain;
        bGain = p.bGain;
        subAmount = p.subAmount;
        volSus = p.volSus;
    } else {
        pan += (panGoal - pan) * rates_->panSmooth;
    }
    controlValues(b);
}

void Voice::controlValues(const VoiceBlock& b) {
    const engine::BranchParams& p = params_;
    const float lfo = engine::lfoValue(lfoPhase);
    tremoloGain_ = engine::tremoloGain(lfo, p.tremolo);
    const float wheelRange = b.midiConfig ? float(b.midiConfig->pitchWheelRange) : 0.0f;
    const int bend = b.pitchBends ? b.pitchBends[keyChannel & 15] : 0;
    const float recordPitch = b.program ? b.program->pitch : 0.0f;
    pitch_ = engine::voicePitch(recordPitch, b.tuningOct, wheelRange, bend, p.vibrato, lfo, keyPitch);
    keyFollow_ = engine::keyFollowFactor(pitch_, p.keyFollow);
    outputGains_ = engine::voiceOutputGains(pan, p.dryGain, p.sendGain);
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

    if (b.decoders && b.program && rates_) {
        decoder = &b.decoders[branch];
        decoder->update(*b.program, branchAmount, b.atonality, b.effectBi, rates_->sampleRate);
        params_ = decoder->params();
        modVelocity = engine::bias(w, params_.modVelBias);
    }

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
    if (decoder) {
        // The smoothed copies and the pan start at their targets; the output
        // gains start at 0, so the note opens through the gain ramp.
        const engine::BranchParams& p = params_;
        pan = engine::panTarget(branch, b.rotation, b.effectBi, branchAmount);
        aForm = p.aForm;
        bForm = p.bForm;
        aGain = p.aGain;
        bGain = p.bGain;
        subAmount = p.subAmount;
        volSus = p.volSus;
        controlValues(b);
    }
}

void Voice::renderFrame(const VoiceBlock& b, int frame, float factor) {
    if (!decoder || !rates_) {
        // No sound without a decoder; the gains still move.
        if (!engine::stepReleaseGain(releaseGain, factor, fadeRate)) active = false;
        return;
    }
    FrameWork work;
    frameSource(b, factor, work);
    frameFilter(work);
    frameOutput(b, frame, work);
}

void Voice::frameSource(const VoiceBlock& b, float factor, FrameWork& work) {
    frameSourceStart(b, factor, work);
    frameNoise(work);
    frameSourceEnd(work);
}

void Voice::frameSourceStart(const VoiceBlock&, float factor, FrameWork& work) {
    using namespace engine;
    const BranchParams& p = params_;
    const EngineRates& rates = *rates_;

    // Envelope clock, release and smoothing.
    const EnvelopeCurveChoice curves = stepEnvelopeClock(envState, envPos, susRamp, loopScale, p);
    if (envelopeEnds(envState, volSus)) active = false;
    if (!stepReleaseGain(releaseGain, factor, fadeRate)) active = false;
    followValue(aForm, p.aForm, rates.valueSmooth);
    followValue(bForm, p.bForm, rates.valueSmooth);
    followValue(aGain, p.aGain, rates.valueSmooth);
    followValue(bGain, p.bGain, rates.valueSmooth);
    followValue(subAmount, p.subAmount, rates.valueSmooth);
    followValue(volSus, p.volSus, rates.valueSmooth);
    work.amp = envelopeAmp(envPos, curves.vol, loopScale, susRamp, volSus, velGain, releaseGain, tremoloGain_);
    stepModHold(modHold, modHoldAcc, p.modHoldRate, loopScale, envPos, curves.mod, modVelocity);

    // Frequencies of this frame.
    const float fA = std::min((p.aFreq + p.aFreqMod * modHold) * pitch_, rates.maxFreq);
    const float fB = std::min((p.bFreq + p.bFreqMod * modHold) * pitch_, rates.maxFreq);
    const float fc = (p.filterFreq + p.filterFreqMod * modHold) * keyFollow_;
    work.fA = fA;
    work.fB = fB;
    filterFrequencies(fc, p.filterSep, work.f1, work.f2);

    const NoiseTable& table = NoiseTable::instance();
    table.read(random, work.rawB);
    table.read(random, work.rawA);
    // Without noise and with the filters at rest, the filters would only
    // compute zeros: skip them (the reads above keep random on its course).
    work.bQuiet = p.bNoise == 0.0f && noise[0] == 0.0f && noise[1] == 0.0f;
    work.aQuiet = p.aNoiseGain == 0.0f && noise[2] == 0.0f;
}

void Voice::noiseJob(FrameWork& work, engine::NoiseJob& job) {
    job.bState1 = &noise[0];
    job.bState2 = &noise[1];
    job.bRaw = work.rawB;
    job.fB = work.fB;
    if (!work.bQuiet && work.fB != noiseCoefFor_) {
        // B's frequency often holds from frame to frame: keep its filter's k.
        noiseCoefFor_ = work.fB;
        noiseCoef_ = engine::noiseCoefficient(work.fB);
    }
    job.bCoef = noiseCoef_;
    job.bNoise = params_.bNoise;
    job.aState = &noise[2];
    job.aRaw = work.rawA;
    job.aGain = params_.aNoiseGain;
    job.aCoef = params_.aNoiseCoef;
    job.bOut = work.bn;
    job.aOut = work.an;
    job.bQuiet = work.bQuiet;
    job.aQuiet = work.aQuiet;
}

void Voice::frameNoise(FrameWork& work) {
    using namespace engine;
    const BranchParams& p = params_;
    float* bn = work.bn;
    float* an = work.an;
    if (!work.bQuiet && !work.aQuiet) {
        filterNoises(noise[0], noise[1], work.rawB, work.fB, p.bNoise, noise[2], work.rawA, p.aNoiseGain,
                     p.aNoiseCoef, bn, an);
    } else {
        if (work.bQuiet)
            std::fill(bn, bn + kFrameSamples, 0.0f);
        else
            filterBNoise(noise[0], noise[1], work.rawB, work.fB, p.bNoise, bn);
        if (work.aQuiet)
            std::fill(an, an + kFrameSamples, 0.0f);
        else
            filterANoise(noise[2], work.rawA, p.aNoiseGain, p.aNoiseCoef, an);
    }
}

void Voice::frameSourceEnd(FrameWork& work) {
    work.shapeB = engine::WaveShape::make(bForm, work.fB);
    frameSourceB(work);
    work.shapeA = engine::WaveShape::make(aForm, meanStep);
    frameSourceA(work);
}

void Voice::frameSourceB(FrameWork& work) {
    using namespace engine;
    const BranchParams& p = params_;
    const EngineRates& rates = *rates_;
    const float fA = work.fA, fB = work.fB;
    const float* bn = work.bn;
    float* osc = work.osc;

    // Oscillator B, locked to the sub-oscillator, with its noise and hold.
    phases[1] = bPhaseFromSubPhase(phases[2]);
    renderVoiceB(phases[1], phases[2], fB, work.shapeB, subAmount, p.bTone, bn, osc);
    phases[2] = advanceSubPhase(phases[2], fB);
    sampleAndHold(osc, bHold, bHoldAcc, p.bHoldRate);

    // FM into oscillator A.
    fmSteps(osc, limitedFmDepth(p.fmDepth, p.fmDepthMod, modHold, fA, rates.maxFreq), fA, work.step);
    meanStep = addMeanStep(meanStep, work.step, rates.stepSmooth);
}

void Voice::frameSourceA(FrameWork& work) {
    engine::VoiceAJob job;
    oscillatorAJob(work, job);
    engine::renderVoicesA(&job, 1);
    frameSourceAEnd();
}

void Voice::oscillatorAJob(FrameWork& work, engine::VoiceAJob& job) {
    job.phase = &phases[0];
    job.step = work.step;
    job.meanStep = meanStep;
    job.shape = &work.shapeA;
    job.aGain = aGain;
    job.b = work.osc;
    job.bGain = bGain;
    job.noise = work.an;
    job.out = work.mix;
}

void Voice::frameSourceAEnd() { meanStep *= 1.0f - rates_->stepSmooth; }

void Voice::frameFilter(FrameWork& work) {
    using namespace engine;
    renderFilterPair(filterLow, filterBand, filterCoefficients(work.f1, params_.filterDamp),
                     filterCoefficients(work.f2, params_.filterDamp), work.mix, work.out);
}

void Voice::frameOutput(const VoiceBlock& b, int frame, FrameWork& work) {
    using namespace engine;
    const int at = frame * kFrameSamples;
    addFrameToBuses(work.out, outputGains_, work.amp, rates_->gainStep, gainLeft, gainRight, gainSend, b.left + at,
                    b.right + at, b.send + at);
    if (b.sendSilent && std::fabs(gainSend) >= 1e-8f) *b.sendSilent = false;
    lastAmp = work.amp;
    lastFreq = work.fA;
}
