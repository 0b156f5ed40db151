#include "fomal/ViewFactory.h"

#include "fomal/ButtonView.h"
#include "fomal/CaptionView.h"
#include "fomal/ClickView.h"
#include "fomal/GradientView.h"
#include "fomal/LayoutView.h"
#include "fomal/RasterView.h"
#include "fomal/RectangleView.h"
#include "fomal/SliderView.h"
#include "platform/Exceptions.h"

namespace Fomal {

namespace {

template <class T>
std::unique_ptr<View> make(const ViewBuild& build) {
    return std::make_unique<T>(build);
}

constexpr ViewType TYPES[] = {
    {"fomal", make<LayoutView>},       {"click", make<ClickView>},   {"rectangle", make<RectangleView>},
    {"gradient", make<GradientView>},  {"raster", make<RasterView>}, {"caption", make<CaptionView>},
    {"button", make<PushButtonView>},  {"switch", make<SwitchView>}, {"slider", make<StraightSliderView>},
    {"arcSlider", make<ArcSliderView>},
};

}  // namespace

const ViewType* viewTypes(std::size_t& count) {
    count = std::size(TYPES);
    return TYPES;
}

std::unique_ptr<View> makeView(const ViewBuild& build) {
    const std::string type = readString(build.keys.get("type", "\"fomal\""));
    for (const ViewType& t : TYPES) {
        if (t.name != type) continue;
        if (type == "fomal" && build.keys.has("layout")) {
            const Object merged = withNestedLayout(build.keys);
            return t.make(ViewBuild{merged, build.parentRect, build.editor});
        }
        return t.make(build);
    }
    throw Exception("Unknown view type : " + type);
}

}  // namespace Fomal
