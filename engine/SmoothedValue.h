// The six decoded values a voice smooths per frame (forms, gains, sub amount,
// sustain), so that growing branches change the sound without steps.
#pragma once

namespace engine {

inline void followValue(float& copy, float decoded, float coef) {
    copy += (decoded - copy) * coef;
}

}  // namespace engine
