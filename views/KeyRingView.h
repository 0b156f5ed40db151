// The ring of twelve keys around the bulb: a keyboard of one octave laid
// around the plant. The keys stand still, key k at k * 30 + 90 degrees
// (clockwise with y growing downwards, so key 0 is at the bottom), which is
// where branch k points when the plant is not turned; key k plays the note
// 60 + k, and the engine gives that note to the branch the rotation has
// brought beside it. Pressing within the ring, between `innerRadius` and
// `outerRadius` from the view's centre, plays the key under the mouse
// through the editor host while the button is held; sliding along the ring
// moves the note to the key the mouse reaches, and leaving the ring ends
// it. A key is lit while it sounds, played here or from the keyboard: frame
// k of `film` (one frame a key, each as large as the view) is drawn over
// the ring. What the keyboard plays the view hears from the sound, whose
// branches it looks at a few times a second. The middle of the ring and
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
    // How often the view looks at what sounds, a second.
    static constexpr double LISTEN_RATE = 30;
    // A branch whose display level (levelLow + levelHigh) is at least this
    // sounds: about 32 dB below full.
    static constexpr float SOUNDING_LEVEL = 0.2f;

    explicit KeyRingView(const Fomal::ViewBuild& build);
    // A ring that goes while a key is held ends its note.
    ~KeyRingView() override;

    bool takesMouse() const override { return true; }
    bool hitsAt(int x, int y) const override { return keyAt(x, y) >= 0; }
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    bool mouseDown(const Fomal::MouseEvent& e) override;
    void mouseMove(const Fomal::MouseEvent& e) override;
    void mouseUp(const Fomal::MouseEvent& e) override;
    void idle(std::int64_t now) override;

    // The key under a panel pixel, 0 to 11, or -1 off the ring.
    int keyAt(int x, int y) const;
    // The key played with the mouse now, -1 for none.
    int soundingKey() const { return sounding_; }
    // The keys lit now, key k as bit k: the mouse's key and the keys whose
    // notes the sound plays.
    unsigned litKeys() const { return heard_ | (sounding_ >= 0 ? 1u << sounding_ : 0u); }
    double innerRadius() const { return innerRadius_; }
    double outerRadius() const { return outerRadius_; }

private:
    // Ends the sounding note, if any, and starts the one of `key` (-1: none).
    void sound(int key);
    int velocity() const;
    // The keys of the branches that sound now.
    unsigned keysHeard() const;

    std::optional<OrlPixels::Film> film_;
    double innerRadius_ = 117;
    double outerRadius_ = 142;
    int sounding_ = -1;
    bool held_ = false;
    unsigned heard_ = 0;
};

}  // namespace views
