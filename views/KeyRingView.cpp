#include "views/KeyRingView.h"

#include <cmath>

#include "fomal/EditorCore.h"
#include "fomal/EditorHost.h"
#include "fomal/LayoutValues.h"
#include "views/ProgramHost.h"

namespace views {

namespace {

constexpr double DEGREES = 3.14159265358979323846 / 180.0;
constexpr int DEFAULT_VELOCITY = 100;

}  // namespace

KeyRingView::KeyRingView(const Fomal::ViewBuild& build) : View(build) {
    const Fomal::Object& k = build.keys;
    const OrlPixels::IntRect r = pixelRect();
    if (k.has("film")) film_.emplace(Fomal::readImage(k.get("film")), r.width, r.height);
    innerRadius_ = Fomal::tamed(Fomal::readNumber(k.get("innerRadius"), float(innerRadius_)));
    outerRadius_ = Fomal::tamed(Fomal::readNumber(k.get("outerRadius"), float(outerRadius_)));
    heard_ = keysHeard();
    askForTicks(LISTEN_RATE);
}

KeyRingView::~KeyRingView() {
    if (sounding_ < 0) return;
    try {
        editor().host().previewNote(false, FIRST_NOTE + sounding_, 0);
    } catch (...) {
        // The note had nowhere to go.
    }
}

unsigned KeyRingView::keysHeard() const {
    const auto* program = dynamic_cast<const ProgramHost*>(&editor().host());
    VisualState state;
    if (program == nullptr || !program->visualState(state)) return 0;
    // The sound gives note n to branch n - steps: branch b sounds the key
    // of b + steps.
    const long steps = std::lround(12.0f * program->parameter(Param::Rotation)) % KEY_COUNT;
    unsigned keys = 0;
    for (int b = 0; b < VisualState::BRANCHES; ++b)
        if (state.levelLow[b] + state.levelHigh[b] >= SOUNDING_LEVEL)
            keys |= 1u << ((b + steps + 2 * KEY_COUNT) % KEY_COUNT);
    return keys;
}

void KeyRingView::idle(std::int64_t) {
    const unsigned heard = keysHeard();
    if (heard == heard_) return;
    heard_ = heard;
    invalidate();
}

int KeyRingView::keyAt(int x, int y) const {
    const Fomal::RectF& r = rect();
    const double dx = x + 0.5 - (r.left + r.width / 2.0);
    const double dy = y + 0.5 - (r.top + r.height / 2.0);
    const double d = std::hypot(dx, dy);
    if (!(d >= innerRadius_ && d <= outerRadius_)) return -1;
    // Key k is centred at k * 30 + 90 degrees; the borders lie half way.
    const double degrees = std::atan2(dy, dx) / DEGREES;
    const int step = int(std::floor((degrees - 90.0) / 30.0 + 0.5));
    return ((step % KEY_COUNT) + KEY_COUNT) % KEY_COUNT;
}

int KeyRingView::velocity() const {
    if (const auto* core = dynamic_cast<const Fomal::EditorCore*>(&editor()))
        return core->constants().mouseClickVelocity;
    return DEFAULT_VELOCITY;
}

void KeyRingView::sound(int key) {
    if (key == sounding_) return;
    Fomal::EditorHost& host = editor().host();
    const int was = sounding_;
    // The state changes first: a host that refuses a note leaves no key lit.
    sounding_ = -1;
    invalidate();
    if (was >= 0) host.previewNote(false, FIRST_NOTE + was, 0);
    if (key >= 0) {
        host.previewNote(true, FIRST_NOTE + key, velocity());
        sounding_ = key;
    }
}

bool KeyRingView::mouseDown(const Fomal::MouseEvent& e) {
    const int key = keyAt(e.x, e.y);
    if (key < 0) return false;
    held_ = true;
    sound(key);
    return true;
}

void KeyRingView::mouseMove(const Fomal::MouseEvent& e) {
    if (held_) sound(keyAt(e.x, e.y));
}

void KeyRingView::mouseUp(const Fomal::MouseEvent&) {
    if (!held_) return;
    held_ = false;
    sound(-1);
}

void KeyRingView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const unsigned lit = litKeys();
    if (lit == 0 || !film_) return;
    const OrlPixels::IntRect r = pixelRect();
    for (int k = 0; k < KEY_COUNT; ++k)
        if ((lit & (1u << k)) != 0) film_->drawFrame(surface, k, r.left, r.top);
}

}  // namespace views
