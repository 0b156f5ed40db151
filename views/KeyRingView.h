// The ring of twelve keys around the bulb: a keyboard of one octave laid
// around the plant. The keys stand still, key k at k * 30 + 90 degrees
// (clockwise with y growing downwards, so key 0 is at the bottom), which is
// where branch k points when the plant is not turned; key k plays the note
// 60 + k, and the engine gives that note to the branch the rotation has
// brought beside it. Pressing within the ring, between `innerRadius` and
// `outerRadius` from the view's centre, plays the key under the mouse
// through the editor host while the button is held; sliding along the ring
// moves the note to the key the mouse reaches, and leaving the ring ends
// it. The key that sounds is lit: frame k of `film` (one frame a key, each
// as large as the view) is drawn over the ring. The middle of the ring and
// the space around it are not the ring's: presses there reach what lies
// beneath (the plant).
#pragma once

#include <optional>

#include "fomal/View.h"
#include "pixels/Film.h"

namespace views {

class KeyRingView : public Fomal::View {
public:
    static constexpr int KEY_COUNT = 12;
    // The note of key 0: the middle of the keyboard.
    static constexpr int FIRST_NOTE = 60;

    explicit KeyRingView(const Fomal::ViewBuild& build);

    bool takesMouse() const override { return true; }
    bool hitsAt(int x, int y) const override { return keyAt(x, y) >= 0; }
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const Fomal::MouseEvent& e) override;
    void mouseMove(const Fomal::MouseEvent& e) override;
    void mouseUp(const Fomal::MouseEvent& e) override;

    // The key under a panel pixel, 0 to 11, or -1 off the ring.
    int keyAt(int x, int y) const;
    // The key sounding now, -1 for none.
    int soundingKey() const { return sounding_; }
    double innerRadius() const { return innerRadius_; }
    double outerRadius() const { return outerRadius_; }

private:
    // Ends the sounding note, if any, and starts the one of `key` (-1: none).
    void sound(int key);
    int velocity() const;

    std::optional<OrlPixels::Film> film_;
    double innerRadius_ = 117;
    double outerRadius_ = 142;
    int sounding_ = -1;
    bool held_ = false;
};

}  // namespace views
