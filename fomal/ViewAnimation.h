// The transition of the `animate` action: a view's offset, zoom, alpha and
// rotation run from their far values to rest ("in") or from rest to the
// far values ("out"), on a timer of the view at `updateFreq` frames a
// second. Each tick moves t by the timer's interval over the duration;
// t = 0 is the far end for both types.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "fomal/AnimationCurve.h"

namespace Fomal {

struct AnimationRequest {
    bool in = true;
    bool reset = false;
    double timeMs = 0;
    double updateFreq = 20;
    AnimationEnds ends;
    std::string finallyAction;
    std::string finallyParams;
};

// The parameters of `animate`. A `type` other than "in" or "out" fails with
// "Invalid / missing animation type: " and the value.
AnimationRequest readAnimationRequest(std::string_view params);

class ViewAnimation {
public:
    // Starts a transition at `now`. With a transition already running and
    // no `reset`, t goes on from where it stands; otherwise it starts at
    // the beginning of its type: 0 for "in", 1 for "out".
    void start(const AnimationRequest& request, std::int64_t now);
    bool running() const { return running_; }
    // Plays the ticks due by `now`; true when the transition has just ended.
    bool advance(std::int64_t now);
    // The time of the next tick, for a running transition.
    std::int64_t nextTick() const { return std::int64_t(std::ceil(nextTick_)); }
    double t() const { return t_; }
    AnimationPose pose() const { return animationPose(request_.ends, t_); }
    const AnimationRequest& request() const { return request_; }
    // A view that stood still after an "out" returns to rest.
    void clear() { *this = ViewAnimation(); }

private:
    AnimationRequest request_;
    double t_ = 1;
    bool running_ = false;
    double interval_ = 50;
    double nextTick_ = 0;  // ms, kept in fractions so that 30 a second stays 30
};

}  // namespace Fomal
