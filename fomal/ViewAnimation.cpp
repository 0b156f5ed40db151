#include "fomal/ViewAnimation.h"

#include <algorithm>
#include <cmath>

#include "fomal/NotationNames.h"
#include "platform/Exceptions.h"

namespace Fomal {

namespace {

double number(const Object& keys, const char* key, double dflt) {
    return keys.has(key) ? double(readNumber(keys.get(key), float(dflt))) : dflt;
}

}  // namespace

AnimationRequest readAnimationRequest(std::string_view params) {
    const Object keys = parseObject(params);
    AnimationRequest r;
    const std::string type = readString(keys.get("type"));
    if (type == "in")
        r.in = true;
    else if (type == "out")
        r.in = false;
    else
        throw Exception("Invalid / missing animation type: " + type);
    if (keys.has("reset")) r.reset = readBool(keys.get("reset"));
    // Kept in whole milliseconds.
    r.timeMs = std::floor(number(keys, "time", 0) * 1000 + 0.5);
    r.updateFreq = number(keys, "updateFreq", 20);
    if (keys.has("offsetStart")) {
        const PointF p = readPoint(keys.get("offsetStart"));
        r.ends.offsetStartX = p.x;
        r.ends.offsetStartY = p.y;
    }
    r.ends.offsetCurve = number(keys, "offsetCurve", 0.5);
    r.ends.zoomStart = number(keys, "zoomStart", 1.0);
    r.ends.zoomCurve = number(keys, "zoomCurve", 0.5);
    r.ends.alphaStart = number(keys, "alphaStart", 1.0);
    r.ends.alphaCurve = number(keys, "alphaCurve", 0.5);
    r.ends.rotationStartDegrees = number(keys, "rotationStart", 0.0);
    r.ends.rotationCurve = number(keys, "rotationCurve", 0.5);
    r.finallyAction = readString(keys.get("finally"));
    r.finallyParams = keys.get("params");
    return r;
}

void ViewAnimation::start(const AnimationRequest& request, std::int64_t now) {
    const bool goOn = running_ && !request.reset;
    request_ = request;
    if (!goOn) t_ = request.in ? 0.0 : 1.0;
    // A rate of nothing or less still ticks, once a second at the slowest.
    const double freq = request.updateFreq >= 1 ? std::min(request.updateFreq, 1000.0) : 1.0;
    interval_ = 1000.0 / freq;
    nextTick_ = double(now) + interval_;
    running_ = true;
}

bool ViewAnimation::advance(std::int64_t now) {
    if (!running_) return false;
    while (double(now) >= nextTick_) {
        const double step = request_.timeMs > 0 ? interval_ / request_.timeMs : 1.0;
        t_ = request_.in ? std::min(1.0, t_ + step) : std::max(0.0, t_ - step);
        nextTick_ += interval_;
        if ((request_.in && t_ >= 1.0) || (!request_.in && t_ <= 0.0)) {
            running_ = false;
            return true;
        }
    }
    return false;
}

}  // namespace Fomal
