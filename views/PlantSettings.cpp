#include "views/PlantSettings.h"

namespace views {

namespace {

// Readers that keep the default when the key is absent; a given key is read
// with `$` standing for the default.
void readFloat(const notation::Object& keys, std::string_view key, float& value) {
    if (const std::string* raw = keys.find(key)) value = notation::readNumber(*raw, value);
}

void readInteger(const notation::Object& keys, std::string_view key, int& value) {
    if (const std::string* raw = keys.find(key)) value = notation::readInt(*raw, value);
}

void readDouble(const notation::Object& keys, std::string_view key, double& value) {
    // The notation evaluates its expressions in single precision.
    if (const std::string* raw = keys.find(key)) value = notation::readNumber(*raw, static_cast<float>(value));
}

// The main panel's plant: bounds from the main layout, the renderer's and
// the view's keys with the panel's values.
constexpr std::string_view MAIN_PANEL_PLANT = R"({
    type: "plant", label: "plant", bounds: { 74, 146, 236, 236 },
    coreSize: 11, updateFreq: 30, animateTime: 1.25,
    baseHue: 0.3, hueVariation: 0.07, saturation: 0.8, alpha: 0.6, alphaDrop: 0.8,
    minRootAlpha: 0.8, maxRootAlpha: 40.0, twigAlpha: 0.5,
    twigSegmentSize: 5, twigThreshold: 1.0, twigNonlinearity: 1.0, twigMaxGenerations: 2,
    twigScale: 0.5, twigScaleDistribution: 0.1, twigMask: 2, twistMask: 1, plantZoom: 1.0,
    minBranchLength: 12, maxBranchLength: 50, gamma: 2.0,
    fineTranslation: 0.001, deteriorateTime: 1.0, dropSpeed: 1.0, dropAcceleration: 20.0,
    modWheelAdjust: -6.0, modWheelOpeningSweep: 0,
    modWheelPen: { color: 0xC080A040, stroke: 1.5, dash: 0.0625, gap: 0.0625 },
    hoverWheelPen: { color: 0xF0C0F060, stroke: 2, dash: 0.0625, gap: 0.0625 },
    rotationHandleSize: 4,
    rotationHandlePen: { color: 0xC080A040, stroke: 1.5 }, hoverHandlePen: { color: 0xF0C0F060, stroke: 2 },
    rotationHandlePosition: { 106.0, -28.5 }, rotationHandleAlwaysVisible: false,
    hoverGuidesPen: { color: 0x50304818, stroke: 1 },
    hoverSeedSize: 4, hoverSeedColor: 0xC0704020, saturationColor: 0xFFE02020,
    seedImage: "miniSeed", seedOffset: { 0.5, 0.5 },
    rootMinTwist: 1.0, rootMaxTwist: 5.0, twigMinTwist: 4.0, twigMaxTwist: 10.0,
    swayMinAmount: 0.5, swayMaxAmount: 4.5, swayMinRate: 2.0, swayMaxRate: 50.0,
    decayMax: 15.0, decayTime: 4.0, reviveTime: 20.0,
    decayedSaturation: $ * 0.5, decayedAlphaDrop: $ * 0.75,
    hint: "", modWheelHint: "Mod Wheel", rotationHandleHint: "Rotation",
    selectorInset: { 12, 12 }
})";

}  // namespace

PlantSettings readPlantSettings(const notation::Object& keys) {
    PlantSettings s;
    readDouble(keys, "gamma", s.gamma);
    readInteger(keys, "coreSize", s.coreSize);
    readFloat(keys, "baseHue", s.baseHue);
    readFloat(keys, "hueVariation", s.hueVariation);
    readFloat(keys, "minRootAlpha", s.minRootAlpha);
    readFloat(keys, "maxRootAlpha", s.maxRootAlpha);
    readFloat(keys, "minBranchLength", s.minBranchLength);
    readFloat(keys, "maxBranchLength", s.maxBranchLength);
    readFloat(keys, "twigAlpha", s.twigAlpha);
    readFloat(keys, "twigSegmentSize", s.twigSegmentSize);
    readFloat(keys, "twigThreshold", s.twigThreshold);
    readFloat(keys, "twigNonlinearity", s.twigNonlinearity);
    readInteger(keys, "twigMaxGenerations", s.twigMaxGenerations);
    readFloat(keys, "twigScale", s.twigScale);
    readFloat(keys, "twigScaleDistribution", s.twigScaleDistribution);
    readInteger(keys, "twigMask", s.twigMask);
    readInteger(keys, "twistMask", s.twistMask);
    readFloat(keys, "plantZoom", s.plantZoom);
    readFloat(keys, "alpha", s.alpha);
    readFloat(keys, "saturation", s.saturation);
    readFloat(keys, "alphaDrop", s.alphaDrop);
    return s;
}

PlantShapeSettings readPlantShapeSettings(const notation::Object& keys) {
    PlantShapeSettings s;
    readFloat(keys, "rootMinTwist", s.rootMinTwist);
    readFloat(keys, "rootMaxTwist", s.rootMaxTwist);
    readFloat(keys, "twigMinTwist", s.twigMinTwist);
    readFloat(keys, "twigMaxTwist", s.twigMaxTwist);
    readFloat(keys, "swayMinAmount", s.swayMinAmount);
    readFloat(keys, "swayMaxAmount", s.swayMaxAmount);
    readFloat(keys, "decayMax", s.decayMax);
    return s;
}

std::string_view mainPanelPlantLayout() { return MAIN_PANEL_PLANT; }

}  // namespace views
