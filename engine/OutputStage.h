// The stage shared by all voices after the reverb: level with a ramp, DC
// blocker, cubic soft clipper and a meter of the error the clipper adds.
#pragma once

namespace engine {

class OutputStage {
public:
    void init(float sampleRate);

    // 64 samples of both buses in place. silent in: the buses hold nothing;
    // out: they still hold nothing (untouched). gain is the output gain.
    void process(float* left, float* right, bool& silent, float gain, float level = 1.0f);

    float meter() const { return meter_; }
    float lastGain() const { return lastGain_; }
    float meterState() const { return meterState_; }
    float dcLeft() const { return dcLeft_; }
    float dcRight() const { return dcRight_; }

    static constexpr float preGain = 0.73271161f;
    static constexpr float postGain = 0.99f;

private:
    float meterDecay_ = 0.0f;
    float meterGain_ = 0.0f;
    float dcCoef_ = 0.0f;
    float meterState_ = 0.0f;
    float dcLeft_ = 0.0f;
    float dcRight_ = 0.0f;
    float lastGain_ = 0.0f;
    float meter_ = 0.0f;
};

}  // namespace engine
