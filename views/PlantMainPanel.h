// The plant of the main panel, with the panel's settings and its place in
// the panel, for everything that shows or inspects it outside the editor.
#pragma once

#include "patch/NorvelleProgram.h"
#include "pixels/IntRect.h"
#include "views/PlantGeometry.h"
#include "views/PlantSettings.h"

namespace views {

struct MainPanelPlant {
    OrlPixels::IntRect bounds;  // in panel pixels
    PlantSettings settings;
    PlantShapeSettings shape;
};

// Read from mainPanelPlantLayout().
const MainPanelPlant& mainPanelPlant();

// The main panel's plant of a patch at rest (see restingPlantFrame), its
// points in panel coordinates.
void growMainPanelPlantAtRest(const NorvelleProgram& record, PlantGeometry& canvas);

}  // namespace views
