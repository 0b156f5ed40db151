// The settings that shape the plant, read from a `plant` or `staticPlant`
// layout object, and the main panel's own plant.
//
// PlantSettings are the renderer's layout constants. PlantShapeSettings are
// the plant view's keys that enter the geometry: the twists that follow
// Atonality, the sway amounts that follow the notes and the droop of a
// decayed plant. Each key is read in the order listed here with the
// notation's readers, so a bad key fails with that reader's message
// ("Invalid number: ...", "Undefined symbol: ...", "Expected ')'",
// "Unexpected end of string"), and the first bad key in this order is the
// one reported. An absent key keeps its default, and `$` stands for it.
#pragma once

#include <cstdint>
#include <string_view>

#include "notation/Notation.h"
#include "notation/NotationReaders.h"

namespace views {

struct PlantSettings {
    double gamma = 2.0;                // coverage table of the line painter
    int coreSize = 10;                 // radius of the round core, pixels
    float baseHue = 0.25f;             // hue of the plant, 0 to 1
    float hueVariation = 0.25f;        // standard deviation of a line's hue
    float minRootAlpha = 1.0f;         // start alpha of the shortest branch
    float maxRootAlpha = 1.0f;         // start alpha of the longest branch
    float minBranchLength = 0.1f;      // steps of the shortest branch
    float maxBranchLength = 50.0f;     // steps of the longest branch
    float twigAlpha = 1.0f;            // twig's start alpha / parent's alpha at the fork
    float twigSegmentSize = 3.0f;      // first segment of a line, pixels
    float twigThreshold = 0.5f;        // segments not longer than this end a line
    float twigNonlinearity = 1.0f;     // growth of the twist with the step number
    int twigMaxGenerations = 3;        // highest twig generation that may fork
    float twigScale = 0.5f;            // twig length / what remains of the parent
    float twigScaleDistribution = 0.0f;  // standard deviation of that ratio
    int twigMask = 0;                  // a fork is tried where (twigMask & step) == 0
    int twistMask = 0;                 // a new direction where (twistMask & step) == 0
    float plantZoom = 1.0f;            // scale of all lengths
    float alpha = 1.0f;                // overall line alpha
    float saturation = 1.0f;           // colour saturation
    float alphaDrop = 1.0f;            // alpha factor per step along a line
};

struct PlantShapeSettings {
    float rootMinTwist = 2.0f;   // degrees, at Atonality 0
    float rootMaxTwist = 8.0f;   // degrees, at Atonality 1
    float twigMinTwist = 5.0f;
    float twigMaxTwist = 10.0f;
    float swayMinAmount = 0.0f;  // degrees, no note
    float swayMaxAmount = 5.0f;  // degrees, full note level
    float decayMax = 10.0f;      // drop in degrees per step at full decay
};

PlantSettings readPlantSettings(const notation::Object& keys);
PlantShapeSettings readPlantShapeSettings(const notation::Object& keys);

// The plant of the main panel as a layout object: its type, label and bounds
// in the panel and every key of the plant view with the panel's values.
// The main layout and `inspect --plant` read the same text.
std::string_view mainPanelPlantLayout();

}  // namespace views
