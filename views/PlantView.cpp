#include "views/PlantView.h"

#include <algorithm>
#include <cmath>

#include "fomal/EditorHost.h"
#include "fomal/EditorServices.h"
#include "fomal/LayoutValues.h"
#include "fomal/ScriptRandom.h"
#include "patch/ParameterTable.h"
#include "patch/PlantBranch.h"
#include "patch/ProcessGenerator.h"

namespace views {

namespace {

constexpr double DEGREE = 0.017453292519943295;

void readFloat(const Fomal::Object& keys, std::string_view key, float& value) {
    if (const std::string* raw = keys.find(key)) value = Fomal::tamed(Fomal::readNumber(*raw, value));
}

std::optional<OrlPixels::Pen> readPenIfGiven(const Fomal::Object& keys, std::string_view key) {
    if (const std::string* raw = keys.find(key)) return Fomal::readPen(*raw, 1.0);
    return std::nullopt;
}

std::string readText(const Fomal::Object& keys, std::string_view key, std::string_view dflt) {
    if (const std::string* raw = keys.find(key)) return Fomal::readString(*raw);
    return std::string(dflt);
}

PlantOverlaySettings readOverlay(const Fomal::Object& k) {
    PlantOverlaySettings o;
    readFloat(k, "fineTranslation", o.fineTranslation);
    readFloat(k, "modWheelAdjust", o.modWheelAdjust);
    readFloat(k, "modWheelOpeningSweep", o.modWheelOpeningSweep);
    o.modWheelPen = readPenIfGiven(k, "modWheelPen");
    o.hoverWheelPen = readPenIfGiven(k, "hoverWheelPen");
    readFloat(k, "rotationHandleSize", o.rotationHandleSize);
    o.rotationHandlePen = readPenIfGiven(k, "rotationHandlePen");
    o.hoverHandlePen = readPenIfGiven(k, "hoverHandlePen");
    if (const std::string* raw = k.find("rotationHandlePosition"))
        o.rotationHandlePosition = Fomal::tamed(Fomal::readPoint(*raw));
    if (const std::string* raw = k.find("rotationHandleAlwaysVisible")) o.rotationHandleAlwaysVisible = Fomal::readBool(*raw);
    o.hoverGuidesPen = readPenIfGiven(k, "hoverGuidesPen");
    readFloat(k, "hoverSeedSize", o.hoverSeedSize);
    if (const std::string* raw = k.find("hoverSeedColor")) o.hoverSeedColor = Fomal::readColor(*raw);
    if (const std::string* raw = k.find("saturationColor")) o.saturationColor = Fomal::readColor(*raw);
    o.seedImage = Fomal::readImageIfGiven(k, "seedImage");
    if (const std::string* raw = k.find("seedOffset")) o.seedOffset = Fomal::tamed(Fomal::readPoint(*raw));
    o.hint = readText(k, "hint", "");
    o.modWheelHint = readText(k, "modWheelHint", "");
    o.rotationHandleHint = readText(k, "rotationHandleHint", "");
    if (const std::string* raw = k.find("selectorInset")) {
        const Fomal::PointF inset = Fomal::tamed(Fomal::readPoint(*raw));
        o.inset0 = inset.x;
        o.inset1 = inset.y;
    }
    return o;
}

// The steps a rotation moves the notes over the branches.
int rotationSteps(float rotation) { return static_cast<int>(((std::lround(12.0f * rotation) % 12) + 12) % 12); }

}  // namespace

PlantView::PlantView(const Fomal::ViewBuild& build)
    : View(build),
      PlantRenderer(readPlantSettings(build.keys)),
      shape_(readPlantShapeSettings(build.keys)),
      overlay_(readOverlay(build.keys)),
      motion_(readPlantMotionSettings(build.keys, settings), settings),
      table_(settings.gamma) {
    const OrlPixels::IntRect r = pixelRect();
    const std::int64_t left = r.left, top = r.top;
    cx_ = static_cast<double>((left + r.right()) / 2);
    cy_ = static_cast<double>((top + r.bottom()) / 2);
    radius = std::max(0, std::min(r.width, r.height) / 2);
    program_ = dynamic_cast<ProgramHost*>(&editor().host());
    update();
    askForTicks(motion_.settings().updateFreq);
}

PlantView::~PlantView() = default;

// ---------------------------------------------------------------------------
// Geometry of the view.

double PlantView::range() const { return radius - overlay_.inset0 - (overlay_.inset1 + settings.coreSize); }

double PlantView::distanceOf(double value) const { return range() * value + settings.coreSize + overlay_.inset0; }

double PlantView::valueOf(double distance) const {
    const double r = range();
    return r > 0.0 ? (distance - (settings.coreSize + overlay_.inset0)) / r : 0.0;
}

double PlantView::ringRadius() const { return std::max(0.0, distanceOf(motion_.modWheel) + overlay_.modWheelAdjust); }

Fomal::PointF PlantView::branchPoint(int branch, double distance) const {
    // Branches grow against their direction vector (the way the renderer
    // starts them at the core).
    const double angle = ((branch * 360.0 / 12.0) - 90.0 + motion_.rotationShown) * DEGREE;
    return {static_cast<float>(cx_ - std::cos(angle) * distance), static_cast<float>(cy_ - std::sin(angle) * distance)};
}

int PlantView::branchAt(double x, double y) const {
    // The nearest branch direction: the sector between two borders.
    const double degrees = std::atan2(cy_ - y, cx_ - x) / DEGREE;  // the direction's vector is against the point
    const double steps = (degrees + 90.0 - motion_.rotationShown) / 30.0;
    if (!std::isfinite(steps)) return 0;
    const long i = std::lround(steps);
    return static_cast<int>(((i % 12) + 12) % 12);
}

Fomal::PointF PlantView::handlePoint() const {
    const double turn = (motion_.rotationShown + 90.0) * DEGREE;
    const double c = std::cos(turn), s = std::sin(turn);
    double px = ringRadius(), py = 0.0;
    if (overlay_.rotationHandlePosition) {
        px = overlay_.rotationHandlePosition->x;
        py = overlay_.rotationHandlePosition->y;
    }
    return {static_cast<float>(cx_ + px * c - py * s), static_cast<float>(cy_ + px * s + py * c)};
}

bool PlantView::ringShown() const { return overPlant_ || motion_.modWheel > 0.0; }

bool PlantView::handleShown() const {
    return overPlant_ || overlay_.rotationHandleAlwaysVisible || handleRequested_ ||
           (!overlay_.rotationHandlePosition && motion_.modWheel > 0.0);
}

bool PlantView::hitsAt(int x, int y) const {
    if (motion_.suspended) return false;
    const double dx = x - cx_, dy = y - cy_;
    const double d2 = dx * dx + dy * dy;
    // The seed's own button lies under the core.
    const double core = settings.coreSize;
    return d2 < double(radius) * radius && d2 >= core * core;
}

// ---------------------------------------------------------------------------
// Hover and hints.

void PlantView::clearHover() {
    if (overPlant_ || overWheel_ || overHandle_ || hoverBranch_ >= 0) changed();
    overPlant_ = overWheel_ = overHandle_ = false;
    hoverBranch_ = -1;
}

void PlantView::hover(const Fomal::MouseEvent& e) { hoverAt(e.x, e.y); }

void PlantView::hoverEnds() { clearHover(); }

void PlantView::hoverAt(int x, int y) {
    const int before = hoverBranch_;
    const bool wasOver = overPlant_, wasWheel = overWheel_, wasHandle = overHandle_;
    overPlant_ = overWheel_ = overHandle_ = false;
    hoverBranch_ = -1;
    if (motion_.suspended) {
        if (wasOver || before >= 0) changed();
        return;
    }
    const double dx = x - cx_, dy = y - cy_;
    const double d2 = dx * dx + dy * dy;
    const double core = settings.coreSize;
    const Fomal::PointF handle = handlePoint();
    const double hx = x - handle.x, hy = y - handle.y;
    if (d2 >= double(radius) * radius) {
        // nothing
    } else if (std::fabs(std::sqrt(d2) - ringRadius()) <= RING_TOLERANCE) {
        overWheel_ = overPlant_ = true;
    } else if (std::sqrt(hx * hx + hy * hy) <= overlay_.rotationHandleSize + HANDLE_TOLERANCE) {
        overHandle_ = overPlant_ = true;
    } else if (d2 < core * core) {
        // the seed's button
    } else {
        overPlant_ = true;
        hoverBranch_ = branchAt(x, y);
    }
    if (before != hoverBranch_ || wasOver != overPlant_ || wasWheel != overWheel_ || wasHandle != overHandle_)
        changed();
}

std::string PlantView::currentHint() const {
    if (drag_) return drag_->hint();
    if (motion_.suspended) return {};
    if (overWheel_) return overlay_.modWheelHint;
    if (overHandle_) return overlay_.rotationHandleHint;
    if (overPlant_) return overlay_.hint;
    return {};
}

// ---------------------------------------------------------------------------
// Mouse.

bool PlantView::mouseDown(const Fomal::MouseEvent& e) {
    if (motion_.suspended) return false;
    update();
    hoverAt(e.x, e.y);
    if (!overPlant_) return false;
    if (overWheel_) {
        drag_ = makeWheelDrag(*this);
    } else if (overHandle_) {
        drag_ = makeRotationDrag(*this);
    } else if (hoverBranch_ >= 0) {
        // While a seed falls the branches take no input.
        if (motion_.plantingBranch >= 0) return true;
        const int branch = hoverBranch_;
        if (program_ != nullptr) {
            program_->selectBranch(branch);
            previewNote_ = 60 + (branch + rotationSteps(program_->parameter(Param::Rotation))) % 12;
            editor().host().previewNote(true, previewNote_, PREVIEW_VELOCITY);
        }
        drag_ = makeBranchDrag(*this, branch);
    }
    if (drag_) drag_->begin(e);
    changed();
    return true;
}

void PlantView::mouseMove(const Fomal::MouseEvent& e) {
    if (!drag_) return;
    drag_->move(e);
    update();
    changed();
}

void PlantView::mouseUp(const Fomal::MouseEvent& e) {
    if (previewNote_ >= 0) {
        editor().host().previewNote(false, previewNote_, 0);
        previewNote_ = -1;
    }
    if (drag_) {
        // The drag is gone before its triggers run.
        std::unique_ptr<PlantDrag> finished = std::move(drag_);
        update();
        finished->end(e);
    }
    // What the mouse is over after the release, the next move tells.
    clearHover();
    changed();
}

// ---------------------------------------------------------------------------
// Timer, patch and actions.

void PlantView::update() {
    const bool suspendedNow = editor().host().suspended();
    if (program_ != nullptr)
        motion_.follow(program_->program(), suspendedNow);
    else
        motion_.suspended = suspendedNow;
    VisualState state;
    if (program_ != nullptr && program_->visualState(state)) motion_.hear(state);
    if (motion_.suspended && (overPlant_ || hoverBranch_ >= 0)) clearHover();
}

void PlantView::idle(std::int64_t) {
    update();
    if (motion_.tick()) {
        update();
        sendTrigger("planted");
    }
    // Suspended and fully decayed, the plant stands still: nothing to draw.
    const bool still = motion_.suspended && (motion_.decay >= 1.0f) && shownSuspended_ && grown_;
    shownSuspended_ = motion_.suspended && motion_.decay >= 1.0f;
    if (still) return;
    // The plant is grown anew for each frame, and the frame drawn whole.
    grow();
    invalidate();
}

void PlantView::refreshState() {
    // Called after every event of the editor: only a change of what the
    // plant shows draws it at once; the timer draws the rest.
    struct Seen {
        float target[BRANCH_COUNT];
        double modWheel, rotationTarget;
        float atonality;
        std::uint32_t seed;
        bool cloned, suspended;
        int selected, planting;
        bool operator==(const Seen&) const = default;
    };
    auto seen = [this] {
        Seen s{};
        std::copy(std::begin(motion_.target), std::end(motion_.target), std::begin(s.target));
        s.modWheel = motion_.modWheel;
        s.rotationTarget = motion_.rotationTarget;
        s.atonality = motion_.atonalityTarget;
        s.seed = motion_.seed;
        s.cloned = motion_.cloned;
        s.suspended = motion_.suspended;
        s.selected = program_ != nullptr ? program_->selectedBranch() : -1;
        s.planting = motion_.plantingBranch;
        return s;
    };
    const Seen before = seen();
    update();
    const Seen after = seen();
    if (!(after == before) || selectedShown_ != after.selected) changed();
    selectedShown_ = after.selected;
}

void PlantView::changed() {
    grown_ = false;
    invalidate();
}

void PlantView::grow() {
    const PlantFrame frame = motion_.frame(cx_, cy_, shape_);
    motion_.prepare(*this, shape_);
    growBranches(canvas_, frame, shape_);
    grown_ = true;
}

bool PlantView::answersAction(std::string_view action) const {
    return action == "plant" || action == "showRotationHandle";
}

bool PlantView::canPerformOwn(std::string_view action, std::string_view) {
    if (action == "showRotationHandle") return true;
    if (action != "plant" || program_ == nullptr) return false;
    const int branch = program_->selectedBranch();
    return branch >= 0 && branch < BRANCH_COUNT && motion_.plantingBranch < 0 && !motion_.suspended;
}

void PlantView::performOwn(std::string_view action, std::string_view params) {
    if (action == "showRotationHandle") {
        const bool show = params.empty() || Fomal::readBool(params);
        if (show != handleRequested_) changed();
        handleRequested_ = show;
        return;
    }
    if (!canPerformOwn(action, params)) return;
    const int branch = program_->selectedBranch();
    update();
    const double distance = distanceOf(motion_.target[branch]);
    // The new seed comes from the process's one generator, which the
    // scripts' random numbers share.
    Fomal::ScriptRandom& shared = Fomal::ScriptRandom::process();
    ProcessGenerator generator(0);
    generator.setWords(shared.a(), shared.b());
    const NorvelleProgram planted = plantBranch(program_->program(), branch, generator,
                                                [this](std::string_view label) { program_->saveUndo(label); });
    shared = Fomal::ScriptRandom(generator.wordA(), generator.wordB());
    motion_.startPlanting(branch, distance);
    program_->writeProgram(planted);
    program_->selectBranch(-1);
    changed();
}

void PlantView::sendTrigger(std::string_view name) {
    for (View* v = this; v != nullptr; v = v->parent())
        if (v->fireTrigger(name)) return;
}

// ---------------------------------------------------------------------------
// Drawing.

void PlantView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) {
    // The plant keeps within its view.
    OrlPixels::Surface s = surface.clipped(OrlPixels::intersection(clip, pixelRect()));
    if (s.bounds.isEmpty()) return;
    if (!grown_) grow();
    paintPlant(s, canvas_, table_);
    if (!motion_.suspended) drawOverlay(s);
}

}  // namespace views
