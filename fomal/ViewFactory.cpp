#include "fomal/ViewFactory.h"

#include <algorithm>
#include <vector>

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

std::vector<ViewType>& addedTypes() {
    static std::vector<ViewType> added;
    return added;
}

}  // namespace

void addViewTypes(const ViewType* types, std::size_t count) {
    std::vector<ViewType>& added = addedTypes();
    for (std::size_t i = 0; i < count; ++i) {
        auto same = std::find_if(added.begin(), added.end(), [&](const ViewType& t) { return t.name == types[i].name; });
        if (same != added.end())
            *same = types[i];
        else
            added.push_back(types[i]);
    }
}

const ViewType* viewTypes(std::size_t& count) {
    count = std::size(TYPES);
    return TYPES;
}

std::unique_ptr<View> makeView(const ViewBuild& build) {
    const std::string type = readString(build.keys.get("type", "\"fomal\""));
    const ViewType* found = nullptr;
    for (const ViewType& t : TYPES)
        if (t.name == type) found = &t;
    for (const ViewType& t : addedTypes())
        if (t.name == type) found = &t;
    if (found != nullptr) {
        const ViewType& t = *found;
        if (type == "fomal" && build.keys.has("layout")) {
            const Object merged = withNestedLayout(build.keys);
            return t.make(ViewBuild{merged, build.parentRect, build.editor});
        }
        return t.make(build);
    }
    throw Exception("Unknown view type : " + type);
}

}  // namespace Fomal
