// A momentary button, and the switch that shows the checked state of its
// action. Its picture is an `image` or a `film` whose frames are up and
// down (a switch's film may add checked up and checked down); an `icon`
// and a `title` stand on it. Grey when its action cannot be performed
// (`disabledImage`, `disabledFilm`, `disabledIcon`); `downOffset` moves
// the icon and title while pressed; `clickRect` narrows the area that
// takes the mouse.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "fomal/ClickActions.h"
#include "fomal/View.h"
#include "pixels/Film.h"
#include "pixels/FontSpecification.h"
#include "pixels/TextLayout.h"

namespace Fomal {

class ButtonView : public View {
public:
    ButtonView(const ViewBuild& build, bool isSwitch);

    bool takesMouse() const override { return true; }
    bool hitsAt(int x, int y) const override;
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const MouseEvent& e) override;
    void mouseMove(const MouseEvent& e) override;
    void mouseUp(const MouseEvent& e) override;
    void refreshState() override;

    bool enabled() const { return enabled_; }
    bool checked() const { return checked_; }
    bool pressed() const { return pressed_; }

private:
    // The action that decides the enabled and checked states: the click
    // entry, else the first.
    const ClickAction* mainAction() const;
    std::vector<ClickAction> liveActions() const;
    void setPressed(bool pressed);

    bool switch_;
    std::vector<ClickAction> actions_;
    OrlPixels::ImageRef image_, disabledImage_, icon_, disabledIcon_;
    std::optional<OrlPixels::Film> film_, disabledFilm_;
    PointF buttonOffset_{0, 0};
    std::optional<PointF> iconOffset_;
    PointF downOffset_{1, 1};
    std::optional<RectF> clickRect_;  // panel coordinates
    std::string title_;
    std::optional<OrlPixels::FontSpecification> font_;
    OrlPixels::EllipsisSide ellipsis_ = OrlPixels::EllipsisSide::none;
    bool enabled_ = true;
    bool checked_ = false;
    bool pressed_ = false;
    bool tracking_ = false;
};

class SwitchView : public ButtonView {
public:
    explicit SwitchView(const ViewBuild& build) : ButtonView(build, true) {}
};

class PushButtonView : public ButtonView {
public:
    explicit PushButtonView(const ViewBuild& build) : ButtonView(build, false) {}
};

}  // namespace Fomal
