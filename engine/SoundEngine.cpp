#include "engine/SoundEngine.h"

#include <cmath>
#include <cstring>

#include "engine/NoiseTable.h"
#include "patch/MidiConfigRecord.h"
#include "patch/NorvelleProgram.h"

SoundEngine::SoundEngine() {
    // Shared tables are built here, never first on the audio thread.
    engine::NoiseTable::instance();
    engine::ChorusReverb::primes();
    for (int k = 0; k < VisualState::BRANCHES; ++k) decoders_[k].setBranch(k);
    for (int i = 0; i < VOICE_COUNT; ++i) {
        voices_[i].setRates(&rates_);
        attachVoice(i, &voices_[i]);
    }
    init(44100.0f, 0);
}

void SoundEngine::init(float sampleRate, uint32_t seed) {
    rates_ = EngineRates::forSampleRate(sampleRate);
    levelDecay_ = std::exp(-1.0f / (rates_.sampleRate / 64.0f));
    flashDecay_ = std::exp(-1.0f / (rates_.sampleRate / 256.0f));
    visual_ = VisualState{};
    visualsLit_ = false;
    releaseFor_ = outGainFor_ = gateFor_ = gateReleaseFor_ = -1.0f;
    resetSlots();
    for (int i = 0; i < VOICE_COUNT; ++i)
        voices_[i].clear(seed - 1802235117u + static_cast<uint32_t>(i));
    std::memset(busLeft_, 0, sizeof busLeft_);
    std::memset(busRight_, 0, sizeof busRight_);
    std::memset(busSend_, 0, sizeof busSend_);
    busesClear_ = true;
    voicesIdle_ = false;
    output_.init(sampleRate);
    reverb_.seed(seed);
    if (reverb_.hasSize()) reverb_.resize(sampleRate, (reverb_.size() - 0.1f) / 4.9f, true);
    seedKnown_ = false;
    outGain_ = 0.0f;
    rotationSteps_ = 0;
    shownTime_ = -1;
    shownNote_ = -1;
}

void SoundEngine::copyVisualState(VisualState& target) const { target = visual_; }

void SoundEngine::noteOn(int32_t time, int channel, int note, int velocity) {
    if (time > shownTime_ || (time == shownTime_ && note > shownNote_)) {
        shownTime_ = time;
        shownNote_ = note;
        visual_.noteCount += 1;
        const int branch = (note - rotationSteps_ + 12) % 12;
        visual_.lastBranch = branch;
        visual_.flash[branch] = 1.0f;
        visualsLit_ = true;
    }
    voicesIdle_ = false;
    VoiceManager::noteOn(time, channel, note, velocity);
}

void SoundEngine::decayVisuals() {
    // All at 0 they stay there.
    if (!visualsLit_) return;
    const float a = levelDecay_;
    const float b = flashDecay_;
    bool lit = false;
    for (int k = 0; k < VisualState::BRANCHES; ++k) {
        visual_.levelLow[k] *= a;
        if (std::fabs(visual_.levelLow[k]) < 1e-10f) visual_.levelLow[k] = 0.0f;
        visual_.levelHigh[k] *= a;
        if (std::fabs(visual_.levelHigh[k]) < 1e-10f) visual_.levelHigh[k] = 0.0f;
        visual_.flash[k] *= b;
        if (std::fabs(visual_.flash[k]) < 0.01f) visual_.flash[k] = 0.0f;
        lit |= visual_.levelLow[k] != 0.0f || visual_.levelHigh[k] != 0.0f || visual_.flash[k] != 0.0f;
    }
    visualsLit_ = lit;
}

void SoundEngine::releaseTimes(float release) {
    if (release == releaseFor_) return;
    releaseFor_ = release;
    releaseSec_ = 0.05f * std::exp(std::log(400.0f) * release);
    const float frames = rates_.sampleRate * releaseSec_ / 16.0f;
    releaseCoef_ = frames == 0.0f ? 0.0f : std::exp(-std::log(999.99994f) / frames);
}

void SoundEngine::feedEvents(int eventCount, const TimedEvent* events) {
    shownTime_ = -1;
    shownNote_ = -1;
    for (int i = 0; i < eventCount; ++i) {
        const TimedEvent& e = events[i];
        const int channel = e.status & 0x0F;
        switch (e.status & 0xF0) {
        case 0x80:
            noteOff(e.time, channel, e.data1, e.data2);
            break;
        case 0x90:
            if (e.data2 > 0)
                noteOn(e.time, channel, e.data1, e.data2);
            else
                noteOff(e.time, channel, e.data1, e.data2);
            break;
        case 0xB0:
            controller(e.time, channel, e.data1, e.data2);
            break;
        case 0xC0:
            programChange(e.time, channel, e.data1);
            break;
        case 0xE0:
            pitchBend(e.time, channel, ((e.data2 << 7) | e.data1) - 8192);
            break;
        default:
            break;
        }
    }
}

void SoundEngine::displayLevel(const Voice& v) {
    // Below -200 dB the level is 0, and so is the brightness: nothing to raise.
    if (!(v.lastAmp > 1e-10f)) return;
    const float dB = v.lastAmp > 1e-10f ? 8.685889f * std::log(v.lastAmp) : -100000.0f;
    float level = (dB + 40.0f) / 40.0f;
    level = level < 0.0f ? 0.0f : (level > 1.0f ? 1.0f : level);
    float bright = v.lastFreq * rates_.sampleRate * level / 10000.0f;
    bright = bright < 0.0f ? 0.0f : (bright > 1.0f ? 1.0f : bright);
    float& low = visual_.levelLow[v.branch];
    float& high = visual_.levelHigh[v.branch];
    const float dark = level * (1.0f - bright);
    if (dark > low) low = dark;
    if (bright > high) high = bright;
    visualsLit_ = true;
}

void SoundEngine::render(const NorvelleProgram& program, const MidiConfigRecord& midiConfig,
                         int eventCount, const TimedEvent* events, float* left, float* right,
                         bool& silentFlag) {
    decayVisuals();
    feedEvents(eventCount, events);

    silentFlag = true;
    sendSilent_ = true;
    if (!busesClear_) {
        std::memset(busLeft_, 0, sizeof busLeft_);
        std::memset(busRight_, 0, sizeof busRight_);
        std::memset(busSend_, 0, sizeof busSend_);
    }

    const bool newSeed = !seedKnown_ || program.seed != seenSeed_;
    if (newSeed) {
        seenSeed_ = program.seed;
        seedKnown_ = true;
        tuning_ = program.param(Param::Tuning);
        atonality_ = program.param(Param::Atonality);
        volume_ = program.param(Param::Volume);
        effect_ = program.param(Param::Effect);
    } else {
        adaptiveSmooth(tuning_, program.param(Param::Tuning), rates_.slewSlow, 1.0f);
        adaptiveSmooth(atonality_, program.param(Param::Atonality), rates_.slewSlow, rates_.slewFast);
        adaptiveSmooth(volume_, program.param(Param::Volume), rates_.slewSlow, rates_.slewFast);
        adaptiveSmooth(effect_, program.param(Param::Effect), rates_.slewSlow, rates_.slewFast);
    }

    const float tuningOct = 2.0f * tuning_ - 1.0f;
    const float effectBi = 2.0f * effect_ - 1.0f;
    releaseTimes(program.param(Param::Release));
    const float releaseSec = releaseSec_;
    const float releaseCoef = releaseCoef_;
    if (volume_ != outGainFor_) {
        outGainFor_ = volume_;
        outGain_ = volume_ < 1e-5f ? 0.0f : 10.0f * std::pow(volume_, 3.321928094887362f);
    }
    const float rotation = program.param(Param::Rotation);
    rotationSteps_ = static_cast<int>(((std::lround(12.0f * rotation) % 12) + 12) % 12);

    VoiceBlock block;
    block.program = &program;
    block.midiConfig = &midiConfig;
    block.newSeed = newSeed;
    block.tuningOct = tuningOct;
    block.atonality = atonality_;
    block.releaseCoef = releaseCoef;
    block.effectBi = effectBi;
    block.rotation = rotation;
    block.rotationSteps = rotationSteps_;
    block.left = busLeft_;
    block.right = busRight_;
    block.send = busSend_;
    block.silent = &silentFlag;
    block.sendSilent = &sendSilent_;
    block.decoders = decoders_;
    int16_t pitchBends[16];
    for (int c = 0; c < 16; ++c) pitchBends[c] = channel(c).pitchBend;
    block.pitchBends = pitchBends;
    // All voices at once: their noise colourings and filters share the lanes
    // of a few registers.
    // Idle voices would only be told again that they are idle.
    if (!voicesIdle_) {
        Voice* all[VOICE_COUNT];
        for (int i = 0; i < VOICE_COUNT; ++i) all[i] = &voices_[i];
        voicesIdle_ = !Voice::renderAll(all, VOICE_COUNT, block);
        for (int k = 0; k < VOICE_COUNT; ++k) displayLevel(voices_[k]);
    }

    reverbBlock(program, releaseSec, silentFlag);
    output_.process(busLeft_, busRight_, silentFlag, outGain_ * 0.2f);
    const float clip = 2.0f * output_.meter();
    visual_.clip = clip < 0.0f ? 0.0f : (clip > 1.0f ? 1.0f : clip);
    std::memcpy(left, busLeft_, sizeof busLeft_);
    std::memcpy(right, busRight_, sizeof busRight_);
    // Still silent: no voice, no tail and no output stage wrote a bus.
    busesClear_ = silentFlag;
}

void SoundEngine::reverbBlock(const NorvelleProgram& program, float releaseSec, bool& silentFlag) {
    const float wetIn = (!silentFlag && !sendSilent_) ? 1.0f : 0.0f;
    float T = 1.0f, D = 0.0f, C = 1.0f;
    const int branch = visual_.lastBranch;
    if (branch >= 0) {
        engine::BranchDecoder& d = decoders_[branch];
        d.update(program, effectiveLength(program, branch), atonality_, 2.0f * effect_ - 1.0f, rates_.sampleRate);
        T = d.params().reverbLen;
        D = d.params().reverbDamp;
        C = d.params().reverbChorus;
    }
    // Gating: with nothing held or sustained, a short release shortens the tail.
    if (slotsInState(Held) == 0 && slotsInState(Sustained) == 0 && releaseSec < 0.25f) {
        if (T != gateFor_ || releaseSec != gateReleaseFor_) {
            gateFor_ = T;
            gateReleaseFor_ = releaseSec;
            gated_ = 0.2f * std::exp(std::log(T / 0.2f) * releaseSec / 0.25f);
        }
        T = gated_;
    }
    reverb_.resize(rates_.sampleRate, program.genes[Gene::fx_size]);
    if (reverb_.asleep(wetIn)) {
        // Its silence isn't added: the level stays 0.
        reverb_.rest(T);
        return;
    }
    reverb_.process(busSend_, wetLeft_, wetRight_, wetIn, T, D, C);
    if (reverb_.level() != 0.0f) {
        for (int i = 0; i < BLOCK; ++i) {
            busLeft_[i] += wetLeft_[i];
            busRight_[i] += wetRight_[i];
        }
        silentFlag = false;
    }
}
