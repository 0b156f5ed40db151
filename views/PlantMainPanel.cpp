#include "views/PlantMainPanel.h"

#include <cmath>

#include "notation/Notation.h"
#include "notation/NotationReaders.h"
#include "views/PlantRenderer.h"

namespace views {

namespace {

int pixel(float v) { return static_cast<int>(std::floor(v + 0.5f)); }

MainPanelPlant readMainPanelPlant() {
    const notation::Object keys = notation::parseObject(mainPanelPlantLayout());
    MainPanelPlant plant;
    const notation::RectF panel{0.0f, 0.0f, 384.0f, 512.0f};
    const notation::RectF r = notation::readRect(keys.get("bounds"), panel);
    const int left = pixel(r.left), top = pixel(r.top);
    plant.bounds = OrlPixels::IntRect(left, top, pixel(r.right()) - left, pixel(r.bottom()) - top);
    plant.settings = readPlantSettings(keys);
    plant.shape = readPlantShapeSettings(keys);
    return plant;
}

}  // namespace

const MainPanelPlant& mainPanelPlant() {
    static const MainPanelPlant plant = readMainPanelPlant();
    return plant;
}

void growMainPanelPlantAtRest(const NorvelleProgram& record, PlantGeometry& canvas) {
    const MainPanelPlant& panel = mainPanelPlant();
    PlantRenderer renderer(panel.settings);
    const PlantFrame frame = restingPlantFrame(record, panel.bounds, panel.shape, renderer);
    renderer.growBranches(canvas, frame, panel.shape);
}

}  // namespace views
