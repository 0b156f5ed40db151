#include "fomal/ClickView.h"

#include "fomal/ClickMask.h"

namespace Fomal {

ClickView::ClickView(const ViewBuild& build)
    : View(build),
      action_(readString(build.keys.get("action"))),
      params_(build.keys.get("params")),
      actions_(build.keys.get("actions")) {
    // Masks are checked now, so that a wrong word stops the layout.
    for (const std::string& entry : parseArray(actions_)) {
        const Array parts = parseArray(entry);
        if (!parts.empty()) parseClickMask(readString(parts[0]));
    }
}

}  // namespace Fomal
