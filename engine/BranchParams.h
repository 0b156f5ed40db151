// The decoded sound of one branch: 39 ready-made coefficients that the voice
// loops read without further arithmetic. BranchDecoder fills them from the 36
// mutated genes of the branch, the record's global parameters and the sample
// rate. All values are 32-bit floats; "per frame" means per 16 samples,
// "per block" per 64 samples.
#pragma once

#include <cstddef>

namespace engine {

struct BranchParams {
    // Envelope (rates are envelope position per 16-sample frame).
    float atkRate = 0.0f;      // rise of the loop envelope per frame
    float dcyRate = 0.0f;      // fall of the loop envelope per frame
    float loopDecay = 1.0f;    // multiplier of the loop height per loop; 1 = never ends
    float volAtkBias = 0.0f;   // bias constant of the volume attack shape
    float volDcyBias = 0.0f;   // bias constant of the volume decay shape
    float modAtkBias = 0.0f;   // bias constant of the modulation attack shape
    float modDcyBias = 0.0f;   // bias constant of the modulation decay shape
    float volSus = 0.0f;       // sustain level of the volume, 0 = none
    float modHoldRate = 1.0f;  // modulation sample-and-hold accumulator step per frame; 1 = no hold
    float modVelBias = 0.0f;   // how velocity biases the modulation

    // LFO.
    float lfoStep = 0.0f;  // LFO phase per 64-sample block
    float vibrato = 0.0f;  // LFO depth on pitch, in octaves
    float tremolo = 0.0f;  // LFO depth on level

    // Oscillators.
    float aForm = 0.0f;       // waveform morph of oscillator A, 0 to 1
    float bForm = 0.0f;       // waveform morph of oscillator B, 0 to 1
    float aNoiseCoef = 0.0f;  // one-pole coefficient of oscillator A's coloured noise
    float aNoiseGain = 0.0f;  // noise level of oscillator A
    float aGain = 0.0f;       // tone level of oscillator A
    float aFreq = 0.0f;       // oscillator A frequency, cycles per sample
    float aFreqMod = 0.0f;    // rise of aFreq at full modulation
    float bFreq = 0.0f;       // oscillator B frequency, cycles per sample
    float bFreqMod = 0.0f;    // rise of bFreq at full modulation
    float bNoise = 0.0f;      // noise share of oscillator B
    float bTone = 1.0f;       // tone share of oscillator B
    float bGain = 0.0f;       // level of oscillator B
    float subAmount = 0.0f;   // sub-oscillator amount
    float bHoldRate = 1.0f;   // oscillator B sample-and-hold step per sample; 1 = no hold
    float fmDepth = 0.0f;     // FM index without modulation
    float fmDepthMod = 0.0f;  // change of the FM index at full modulation

    // Filter.
    float filterFreq = 0.0f;     // cut-off, cycles per sample
    float filterFreqMod = 0.0f;  // rise of the cut-off at full modulation
    float filterSep = 1.0f;      // frequency ratio of the second filter
    float filterDamp = 0.0f;     // natural logarithm of the damping
    float keyFollow = 0.0f;      // key-follow exponent

    // Output and reverb.
    float dryGain = 0.0f;       // voice level into the dry bus
    float sendGain = 0.0f;      // voice level into the reverb send
    float reverbLen = 0.0f;     // reverb time, seconds
    float reverbDamp = 0.0f;    // reverb damping corner in Hz; 0 = no damping
    float reverbChorus = 0.0f;  // reverb chorus amount
};

// Every field by its name, in declaration order: for printing and for tests
// that walk the whole record.
struct BranchParamsField {
    const char* name;
    float BranchParams::*member;
};

inline constexpr BranchParamsField kBranchParamsFields[] = {
    {"atkRate", &BranchParams::atkRate},
    {"dcyRate", &BranchParams::dcyRate},
    {"loopDecay", &BranchParams::loopDecay},
    {"volAtkBias", &BranchParams::volAtkBias},
    {"volDcyBias", &BranchParams::volDcyBias},
    {"modAtkBias", &BranchParams::modAtkBias},
    {"modDcyBias", &BranchParams::modDcyBias},
    {"volSus", &BranchParams::volSus},
    {"modHoldRate", &BranchParams::modHoldRate},
    {"modVelBias", &BranchParams::modVelBias},
    {"lfoStep", &BranchParams::lfoStep},
    {"vibrato", &BranchParams::vibrato},
    {"tremolo", &BranchParams::tremolo},
    {"aForm", &BranchParams::aForm},
    {"bForm", &BranchParams::bForm},
    {"aNoiseCoef", &BranchParams::aNoiseCoef},
    {"aNoiseGain", &BranchParams::aNoiseGain},
    {"aGain", &BranchParams::aGain},
    {"aFreq", &BranchParams::aFreq},
    {"aFreqMod", &BranchParams::aFreqMod},
    {"bFreq", &BranchParams::bFreq},
    {"bFreqMod", &BranchParams::bFreqMod},
    {"bNoise", &BranchParams::bNoise},
    {"bTone", &BranchParams::bTone},
    {"bGain", &BranchParams::bGain},
    {"subAmount", &BranchParams::subAmount},
    {"bHoldRate", &BranchParams::bHoldRate},
    {"fmDepth", &BranchParams::fmDepth},
    {"fmDepthMod", &BranchParams::fmDepthMod},
    {"filterFreq", &BranchParams::filterFreq},
    {"filterFreqMod", &BranchParams::filterFreqMod},
    {"filterSep", &BranchParams::filterSep},
    {"filterDamp", &BranchParams::filterDamp},
    {"keyFollow", &BranchParams::keyFollow},
    {"dryGain", &BranchParams::dryGain},
    {"sendGain", &BranchParams::sendGain},
    {"reverbLen", &BranchParams::reverbLen},
    {"reverbDamp", &BranchParams::reverbDamp},
    {"reverbChorus", &BranchParams::reverbChorus},
};

inline constexpr std::size_t kBranchParamsFieldCount = sizeof(kBranchParamsFields) / sizeof(kBranchParamsFields[0]);
static_assert(kBranchParamsFieldCount == 39, "a branch decodes into 39 coefficients");
static_assert(sizeof(BranchParams) == 39 * sizeof(float), "BranchParams holds only its 39 floats");

}  // namespace engine
