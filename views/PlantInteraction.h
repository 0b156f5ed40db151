// What the mouse does on the plant: a press in a branch's sector chooses
// the branch and drags its length, a press on the mod wheel ring drags the
// wheel, a press on the rotation handle turns the plant. Each drag is an
// object the view holds while the button is down, and each that changed
// something ends as one undo step and one gesture of the host's automation.
#pragma once

#include <memory>
#include <string>

#include "fomal/ViewEvents.h"

namespace views {

class PlantView;

class PlantDrag {
public:
    explicit PlantDrag(PlantView& view, int branch = -1) : view_(view), branch_(branch) {}
    virtual ~PlantDrag() = default;
    virtual void begin(const Fomal::MouseEvent& e) = 0;
    virtual void move(const Fomal::MouseEvent& e) = 0;
    virtual void end(const Fomal::MouseEvent& e) = 0;
    // The hint while dragging, its codes filled.
    virtual std::string hint() const = 0;
    int branch() const { return branch_; }

protected:
    PlantView& view_;
    int branch_;
};

// A branch's length; on a cloned plant all branches move as one.
std::unique_ptr<PlantDrag> makeBranchDrag(PlantView& view, int branch);
// The mod wheel, on the same scale as the branches.
std::unique_ptr<PlantDrag> makeWheelDrag(PlantView& view);
// The plant's rotation: the turn of the mouse around the centre.
std::unique_ptr<PlantDrag> makeRotationDrag(PlantView& view);

// The note name of a pitch class, 0 for C.
const char* plantNoteName(int pitchClass);

}  // namespace views
