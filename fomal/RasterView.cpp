#include "fomal/RasterView.h"

#include "fomal/LayoutValues.h"
#include "pixels/ClippedRaster.h"
#include "pixels/OffsetRaster.h"
#include "pixels/Opacity.h"
#include "pixels/SolidRaster.h"

namespace Fomal {

RasterView::RasterView(const ViewBuild& build) : View(build) {
    image_ = readImage(build.keys.get("image"));
    if (build.keys.has("opacity")) opacity_ = OrlPixels::opacityFromPercent(tamed(readNumber(build.keys.get("opacity"), 100.0f)));
    mode_ = OrlPixels::drawModeFromText(readString(build.keys.get("mode")).c_str());
}

void RasterView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const OrlPixels::IntRect r = pixelRect();
    if (opacity_ >= 1.0 && mode_ == OrlPixels::NORMAL_MODE) {
        image_->draw(surface, r.left, r.top);
        return;
    }
    OrlPixels::Raster* raster = image_->asRaster();
    if (raster == nullptr) {
        image_->draw(surface, r.left, r.top);
        return;
    }
    OrlPixels::OffsetRaster moved(*raster, r.left, r.top);
    OrlPixels::drawWithOpacity(surface, moved, opacity_, mode_);
}

}  // namespace Fomal
