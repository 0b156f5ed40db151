// Voices render in frames of 16 samples, four samples at a time.
#pragma once

namespace engine {

inline constexpr int kFrameSamples = 16;

}  // namespace engine
