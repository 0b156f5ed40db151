// The interactive plant of the main panel (layout type `plant`). It grows
// the plant of every frame from the patch with PlantRenderer, smooths what
// the patch says at its timer rate, sways with the notes, droops while the
// host has suspended the plug-in and revives after, lets a planted seed
// fall while the old plant withers, and draws over the plant the glows of
// the notes, the chosen seed, the guides of the branch under the mouse, the
// mod wheel ring and the rotation handle. The mouse chooses and drags
// branches, the ring and the handle (PlantInteraction).
//
// It answers the actions `plant` (a seed of the chosen branch falls and the
// patch is planted from it; "planted" is fired when it lands) and
// `showRotationHandle` (true or false).
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "fomal/View.h"
#include "pixels/Image.h"
#include "pixels/Pen.h"
#include "views/PlantGeometry.h"
#include "views/PlantInteraction.h"
#include "views/PlantMotion.h"
#include "views/PlantPainter.h"
#include "views/PlantRenderer.h"
#include "views/PlantSettings.h"
#include "views/ProgramHost.h"

namespace views {

// The keys of the overlay and the mouse.
struct PlantOverlaySettings {
    float fineTranslation = 0.001f;   // value per pixel with shift
    float modWheelAdjust = 0.0f;      // pixels added to the ring's radius
    float modWheelOpeningSweep = 0.0f;  // degrees of gap at both sides
    std::optional<OrlPixels::Pen> modWheelPen, hoverWheelPen;
    float rotationHandleSize = 4.0f;
    std::optional<OrlPixels::Pen> rotationHandlePen, hoverHandlePen;
    std::optional<Fomal::PointF> rotationHandlePosition;
    bool rotationHandleAlwaysVisible = false;
    std::optional<OrlPixels::Pen> hoverGuidesPen;
    float hoverSeedSize = 4.0f;
    OrlPixels::Pixel hoverSeedColor = 0xC0704020u;
    OrlPixels::Pixel saturationColor = 0xFFE02020u;
    OrlPixels::ImageRef seedImage;
    Fomal::PointF seedOffset{0.0f, 0.0f};
    std::string hint, modWheelHint, rotationHandleHint;
    float inset0 = 0.0f, inset1 = 0.0f;  // selectorInset: inner and outer gap
};

class PlantView : public Fomal::View, public PlantRenderer {
public:
    // Pixels of the ring's and the handle's hit bands beyond their lines.
    static constexpr double RING_TOLERANCE = 3.0;
    static constexpr double HANDLE_TOLERANCE = 2.0;
    // The velocity of the note a chosen branch sounds while held.
    static constexpr int PREVIEW_VELOCITY = 100;

    explicit PlantView(const Fomal::ViewBuild& build);
    ~PlantView() override;

    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool takesMouse() const override { return true; }
    bool hitsAt(int x, int y) const override;
    bool mouseDown(const Fomal::MouseEvent& e) override;
    void mouseMove(const Fomal::MouseEvent& e) override;
    void hover(const Fomal::MouseEvent& e) override;
    void hoverEnds() override;
    void mouseUp(const Fomal::MouseEvent& e) override;
    void idle(std::int64_t now) override;
    void refreshState() override;
    std::string valueText() const override { return currentHint(); }
    bool answersAction(std::string_view action) const override;
    bool canPerformOwn(std::string_view action, std::string_view params) override;
    void performOwn(std::string_view action, std::string_view params) override;

    // The state, for the drags, the overlay and the tests.
    const PlantMotion& motion() const { return motion_; }
    PlantMotion& motion() { return motion_; }
    const PlantOverlaySettings& overlay() const { return overlay_; }
    const PlantShapeSettings& shape() const { return shape_; }
    const PlantGeometry& geometry() const { return canvas_; }
    double centerX() const { return cx_; }
    double centerY() const { return cy_; }
    // radius - inset0 - (inset1 + coreSize): the pixels of a branch's range.
    double range() const;
    // Pixels from the centre of a value 0 to 1 on the branch scale.
    double distanceOf(double value) const;
    // The value 0 to 1 of a distance, not clamped.
    double valueOf(double distance) const;
    double ringRadius() const;
    // The point `distance` pixels out along branch i as it is shown.
    Fomal::PointF branchPoint(int branch, double distance) const;
    // The branch whose sector holds the panel point.
    int branchAt(double x, double y) const;
    // The rotation handle's centre.
    Fomal::PointF handlePoint() const;
    bool ringShown() const;
    bool handleShown() const;

    // The hover of a panel point (not while suspended): flags, branch and
    // hint as a move there would leave them.
    void hoverAt(int x, int y);
    void clearHover();
    bool overPlant() const { return overPlant_; }
    bool overWheel() const { return overWheel_; }
    bool overHandle() const { return overHandle_; }
    int hoverBranch() const { return hoverBranch_; }
    // The hint the plant shows now: the drag's, or that of what the mouse is over.
    std::string currentHint() const;

    // The program behind the panel, or null where the host has none.
    ProgramHost* program() const { return program_; }
    // Sends a trigger to the layouts that hold the plant.
    void sendTrigger(std::string_view name);
    // Brings the plant up to the patch and the sound now.
    void update();

private:
    // Grows the frame of the state now; drawing paints the frame grown last.
    void grow();
    // The state changed outside the timer: the next drawing grows anew, and
    // the whole view is drawn.
    void changed();

    void drawOverlay(OrlPixels::Surface& surface);
    void drawGlows(OrlPixels::Surface& surface);
    void drawSeed(OrlPixels::Surface& surface);
    void drawHover(OrlPixels::Surface& surface);
    void drawRingAndHandle(OrlPixels::Surface& surface);

    PlantShapeSettings shape_;
    PlantOverlaySettings overlay_;
    PlantMotion motion_;
    PlantCoverageTable table_;
    PlantGeometry canvas_;
    ProgramHost* program_ = nullptr;
    double cx_ = 0.0, cy_ = 0.0;
    bool overPlant_ = false, overWheel_ = false, overHandle_ = false;
    int hoverBranch_ = -1;
    bool handleRequested_ = false;  // showRotationHandle
    std::unique_ptr<PlantDrag> drag_;
    int previewNote_ = -1;
    bool shownSuspended_ = false;
    bool grown_ = false;
    int selectedShown_ = -1;
};

}  // namespace views
