#include "fomal/LayoutView.h"

#include "fomal/ViewFactory.h"
#include "platform/Exceptions.h"
#include "platform/Resources.h"

namespace Fomal {

std::string layoutText(std::string_view name) {
    const platform::Resource r = platform::productResources().find("FOMAL", name);
    if (!r) throw Exception("Could not obtain layout : " + std::string(name));
    return std::string(r.text());
}

LayoutView::LayoutView(const ViewBuild& build) : View(build) {
    buildChildren(build.keys);
}

Object withNestedLayout(const Object& keys) {
    if (!keys.has("layout")) return keys;
    // The nested layout's own keys (bounds, label, hidden, triggers, views),
    // under those of the view object that names it.
    Object merged = parseObject(layoutText(readString(keys.get("layout"))));
    for (const auto& [key, raw] : keys.entries())
        if (key != "layout") merged.set(key, raw);
    return merged;
}

void LayoutView::buildChildren(const Object& layout) {
    for (const std::string& raw : parseArray(layout.get("views"))) {
        const Object keys = parseObject(raw);
        addChild(makeView(ViewBuild{keys, rect(), editor()}));
    }
}

std::unique_ptr<View> buildLayout(std::string_view text, const RectF& panel, EditorServices& editor) {
    const Object keys = withNestedLayout(parseObject(text));
    return std::make_unique<LayoutView>(ViewBuild{keys, panel, editor});
}

}  // namespace Fomal
