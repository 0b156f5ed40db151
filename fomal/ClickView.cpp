#include "fomal/ClickView.h"

namespace Fomal {

ClickView::ClickView(const ViewBuild& build) : View(build), actions_(readClickActions(build.keys)) {}

bool ClickView::mouseDown(const MouseEvent& e) {
    performClickActions(*this, actions_, pressBits(e));
    // The release is tracked whatever the press did, while the view stands.
    return !retired();
}

void ClickView::mouseUp(const MouseEvent& e) {
    performClickActions(*this, actions_, releaseBits(e, pixelRect().contains(e.x, e.y)));
}

}  // namespace Fomal
