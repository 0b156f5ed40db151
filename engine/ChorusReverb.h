// A twelve-line feedback network with four random-walk delay modulators and
// six diffusing sections behind it, all in one shared delay ring. It takes
// the voices' send bus and returns a stereo wet signal. The room size comes
// from one gene that never mutates: a new size means a new ring, the only
// allocation on the audio path.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

namespace engine {

class ChorusReverb {
public:
    static constexpr int LINES = 12;
    static constexpr int DIFFUSERS = 6;
    static constexpr int BLOCK = 64;

    // The generator words; the engine seeds them at init.
    void seed(uint32_t seed);

    // Builds the ring for size = 4.9 fxSize + 0.1 seconds when that differs
    // from the current size or rate (or always when force). Clears the tail.
    // When the memory can't be had the reverb is silent until the next size.
    void resize(float sampleRate, float fxSize, bool force = false);
    bool hasSize() const { return size_ != 0.0f; }
    float size() const { return size_; }

    // One block. wetIn 1 when the send holds sound, else 0; T reverb time in
    // seconds, D damping corner in Hz (0 none), C chorus amount.
    void process(const float* in, float* outLeft, float* outRight, float wetIn, float T, float D, float C);

    // Whether a block with this wetIn finds the reverb asleep: no tail and
    // nothing coming in.
    bool asleep(float wetIn) const { return !(std::max(level_, wetIn) > 1e-5f); }
    // What process does to a reverb asleep, without writing its silence:
    // the gains follow T at once and the tail stays ended.
    void rest(float T);

    // The tail's energy tracker: 0 once the tail has ended.
    float level() const { return level_; }
    std::size_t capacity() const { return capacity_; }
    int lineDelay(int k) const { return lineDelay_[k]; }
    int diffDelay(int k) const { return diffDelay_[k]; }
    float gainNow(int k) const { return gainNow_[k]; }
    float gainTarget(int k) const { return gainTarget_[k]; }

    // Every recursive state, for tests that look for denormals.
    template <class F>
    void forEachState(F&& f) const {
        for (int k = 0; k < LINES; ++k) {
            f(lineOut_[k]);
            f(lineDamp_[k]);
        }
        for (int k = 0; k < 4; ++k) {
            f(walk1_[k]);
            f(walk2_[k]);
        }
        for (std::size_t i = 0; i < capacity_; ++i) f(buffer_[i]);
    }

    static const int* primes();  // the first 33 primes from 3 on

private:
    void setGains();
    void clearStates();

    float sampleRate_ = 44100.0f;
    float size_ = 0.0f;
    std::unique_ptr<float[]> buffer_;
    std::size_t capacity_ = 0;
    uint32_t writePos_ = 0;
    int lineDelay_[LINES] = {};
    int diffDelay_[DIFFUSERS] = {};
    alignas(16) int lineOffset_[LINES] = {};
    alignas(16) uint32_t lineBase_[LINES] = {};  // lineOffset + lineDelay
    int diffPos_[DIFFUSERS + 1] = {};
    // Whether four samples can be taken at once: no read or write of one of
    // them meets another's in the ring (see resize).
    bool inFours_ = false;
    alignas(16) float gainTarget_[20] = {};  // 12 lines, 1 unused, 6 diffusers
    alignas(16) float gainNow_[20] = {};
    float smoothCoef_ = 0.0f;
    float antiDenormal_ = 1e-11f;
    alignas(16) float lineOut_[LINES] = {};
    alignas(16) float lineDamp_[LINES] = {};
    alignas(16) float walk1_[4] = {};
    alignas(16) float walk2_[4] = {};
    uint32_t random1_ = 0;
    uint32_t random2_ = 0;
    float level_ = 0.0f;
    float length_ = 0.0f;
    float lengthTrim_ = 0.5f;
};

}  // namespace engine
