#include "views/PlantMotion.h"

#include <algorithm>
#include <cmath>

#include "notation/NotationReaders.h"
#include "patch/ParameterTable.h"

namespace views {

namespace {

constexpr float TWO_PI_F = 6.2831855f;
constexpr float LENGTH_SETTLED = 1e-05f;
constexpr double ANGLE_SETTLED = 0.001;
constexpr float BEND_LIMIT = 7.5f;

void readFloat(const notation::Object& keys, std::string_view key, float& value) {
    if (const std::string* raw = keys.find(key)) value = notation::readNumber(*raw, value);
}

// Moves `value` by q of the way to `target`; equal once closer than `settled`.
template <class T>
void approach(T& value, T target, float q, T settled) {
    const T difference = target - value;
    if (std::fabs(difference) < settled)
        value = target;
    else
        value += difference * static_cast<T>(q);
}

}  // namespace

PlantMotionSettings readPlantMotionSettings(const notation::Object& keys, const PlantSettings& normal) {
    PlantMotionSettings m;
    float freq = static_cast<float>(m.updateFreq);
    readFloat(keys, "updateFreq", freq);
    m.updateFreq = freq > 0.0f && freq <= 1000.0f ? freq : 20.0;
    m.tickMs = std::max(1, static_cast<int>(1000.0 / m.updateFreq));
    readFloat(keys, "animateTime", m.animateTime);
    readFloat(keys, "deteriorateTime", m.deteriorateTime);
    readFloat(keys, "dropSpeed", m.dropSpeed);
    readFloat(keys, "dropAcceleration", m.dropAcceleration);
    readFloat(keys, "swayMinRate", m.swayMinRate);
    readFloat(keys, "swayMaxRate", m.swayMaxRate);
    float decayTime = 0.5f, reviveTime = 0.5f;
    readFloat(keys, "decayTime", decayTime);
    readFloat(keys, "reviveTime", reviveTime);
    // Each time is kept as the change of one tick.
    const float tick = static_cast<float>(m.tickMs);
    m.decayRate = decayTime > 0.0f ? tick / (decayTime * 1000.0f) : 1.0f;
    m.reviveRate = reviveTime > 0.0f ? tick / (reviveTime * 1000.0f) : 1.0f;
    m.decayedSaturation = normal.saturation;
    m.decayedAlphaDrop = normal.alphaDrop;
    readFloat(keys, "decayedSaturation", m.decayedSaturation);
    readFloat(keys, "decayedAlphaDrop", m.decayedAlphaDrop);
    return m;
}

double shortWayRound(double wanted, double last) {
    if (!std::isfinite(wanted) || !std::isfinite(last)) return wanted;
    return wanted + 360.0 * std::round((last - wanted) / 360.0);
}

PlantMotion::PlantMotion(const PlantMotionSettings& motion, const PlantSettings& normal)
    : alpha(normal.alpha), saturation(normal.saturation), alphaDrop(normal.alphaDrop), motion_(motion), normal_(normal) {
    const float f = static_cast<float>(motion_.tickMs) / (motion_.animateTime * 1000.0f);
    const float limited = f < 0.5f ? f : 0.5f;  // also where f is no number
    q_ = 1.0f - std::exp(-TWO_PI_F * limited);
}

void PlantMotion::follow(const NorvelleProgram& record, bool suspendedNow) {
    suspended = suspendedNow;
    if (plantingBranch >= 0) return;
    if (followed && (record.seed != seed || record.cloned != cloned)) {
        // A clone of branch i keeps that branch: its seed moved by i.
        const bool cloneOf = record.cloned && !cloned;
        for (int i = 0; i < BRANCH_COUNT; ++i)
            if (!(cloneOf && record.seed == seed + static_cast<std::uint32_t>(i))) shown[i] = PLANTING_START_VALUE;
        decay = 0.0f;
    }
    seed = record.seed;
    cloned = record.cloned;
    const float wheel = record.param(Param::ModWheel) * record.param(Param::WheelScale);
    for (int i = 0; i < BRANCH_COUNT; ++i) {
        const float b = record.param(Param::Branch1 + i);
        target[i] = b + (1.0f - b) * wheel;
    }
    modWheel = record.param(Param::ModWheel);
    atonalityTarget = record.param(Param::Atonality);
    const double degrees = static_cast<double>(record.param(Param::Rotation)) * 360.0;
    if (!followed) {
        // The editor opens on the plant as it stands.
        rotationTarget = rotationShown = degrees;
        atonalityShown = atonalityTarget;
        std::copy(std::begin(target), std::end(target), std::begin(shown));
        followed = true;
        return;
    }
    rotationTarget = shortWayRound(degrees, rotationTarget);
}

void PlantMotion::hear(const VisualState& state) {
    for (int i = 0; i < BRANCH_COUNT; ++i) {
        glow[i] = std::clamp(state.flash[i], 0.0f, 1.0f);
        heardLevel_[i] = std::clamp(state.levelLow[i] + state.levelHigh[i], 0.0f, 1.0f);
        heardRate_[i] = std::clamp(state.levelHigh[i], 0.0f, 1.0f);
        // A note lifts at once; the tick lets a released one fade.
        level[i] = std::max(level[i], heardLevel_[i]);
        rate[i] = std::max(rate[i], heardRate_[i]);
    }
}

void PlantMotion::startPlanting(int branch, double distance) {
    plantingBranch = branch;
    dropDistance = distance;
    dropVelocity = motion_.dropSpeed;
    // The old plant withers from its largest segments to its tips.
    growthLimit = normal_.twigSegmentSize;
}

bool PlantMotion::tick() {
    const float dt = static_cast<float>(motion_.tickMs);
    bool landed = false;
    if (plantingBranch < 0) {
        for (int i = 0; i < BRANCH_COUNT; ++i) {
            if (!suspended) {
                const float speed = motion_.swayMinRate + (motion_.swayMaxRate - motion_.swayMinRate) * rate[i];
                phase[i] = std::fmod(phase[i] + speed * dt / 1000.0f, TWO_PI_F);
                if (!(phase[i] >= 0.0f)) phase[i] = phase[i] < 0.0f ? phase[i] + TWO_PI_F : 0.0f;
            }
            approach(shown[i], target[i], q_, LENGTH_SETTLED);
        }
        for (int i = 0; i < BRANCH_COUNT; ++i) {
            if (heardLevel_[i] < level[i]) approach(level[i], heardLevel_[i], q_, LENGTH_SETTLED);
            if (heardRate_[i] < rate[i]) approach(rate[i], heardRate_[i], q_, LENGTH_SETTLED);
        }
        if (rotationShown == rotationTarget) {
            const double wrapped = rotationShown - 360.0 * std::floor(rotationShown / 360.0);
            rotationShown = rotationTarget = wrapped >= 0.0 && wrapped < 360.0 ? wrapped : 0.0;
        } else {
            approach(rotationShown, rotationTarget, q_, ANGLE_SETTLED);
        }
        const float bend = static_cast<float>((rotationShown - rotationTarget) * 0.05);
        const float bendTarget = std::clamp(bend * std::fabs(bend), -BEND_LIMIT, BEND_LIMIT);
        approach(rotationOffset, bendTarget, q_, static_cast<float>(ANGLE_SETTLED));
        approach(atonalityShown, atonalityTarget, q_, static_cast<float>(ANGLE_SETTLED));
    } else {
        const double left = dropDistance - dropVelocity;
        dropVelocity += dt / 1000.0 * motion_.dropAcceleration;
        const float g = std::max(0.0f, growthLimit - dt / (motion_.deteriorateTime * 1000.0f / 3.0f));
        const float a = std::min(std::max(g * 0.5f - 0.5f, 0.0f), normal_.alpha);
        if (left > 0.0) {
            dropDistance = left;
            alpha = a;
            growthLimit = g;
        } else {
            dropDistance = 0.0;
            alpha = normal_.alpha;
            plantingBranch = -1;
            growthLimit = 10000.0f;
            landed = true;
        }
    }
    decay = std::clamp(decay + (suspended ? motion_.decayRate : -motion_.reviveRate), 0.0f, 1.0f);
    const float c = decay * decay * decay;
    alphaDrop = normal_.alphaDrop + (motion_.decayedAlphaDrop - normal_.alphaDrop) * c;
    saturation = normal_.saturation + (motion_.decayedSaturation - normal_.saturation) * c;
    return landed;
}

PlantFrame PlantMotion::frame(double centerX, double centerY, const PlantShapeSettings& shape) const {
    PlantFrame f;
    f.centerX = centerX;
    f.centerY = centerY;
    f.rotation = rotationShown;
    std::copy(std::begin(shown), std::end(shown), std::begin(f.shown));
    std::copy(std::begin(level), std::end(level), std::begin(f.level));
    std::copy(std::begin(phase), std::end(phase), std::begin(f.phase));
    f.decay = decay;
    f.rootTwist = plantTwist(shape.rootMinTwist, shape.rootMaxTwist, atonalityShown);
    f.cloned = cloned;
    return f;
}

void PlantMotion::prepare(PlantRenderer& renderer, const PlantShapeSettings& shape) const {
    renderer.seed = seed;
    renderer.growthLimit = growthLimit;
    renderer.rotationOffset = rotationOffset;
    renderer.twigTwist = plantTwist(shape.twigMinTwist, shape.twigMaxTwist, atonalityShown);
    renderer.settings.alpha = alpha;
    renderer.settings.saturation = saturation;
    renderer.settings.alphaDrop = alphaDrop;
}

}  // namespace views
