// The key ring's film: one frame a key, the key of branch k lit where
// branch k points when the plant is not turned (k * 30 + 90 degrees, with
// y growing downwards); the view turns a frame with the plant.
#include <cmath>

#include "Images.h"
#include "Palette.h"

namespace artwork {

Picture drawKeyRingFilm(int scale) {
    constexpr double C = 150, INNER = 117, OUTER = 142;
    std::vector<Picture> frames;
    for (int k = 0; k < 12; ++k) {
        Picture f(300, 300, scale);
        const double middle = k * 30.0 + 90.0;
        f.radial(sector(C, C, INNER - 4, OUTER + 4, middle - 17, 34), C, C, OUTER + 6, OUTER + 6,
                 {{0.0, 0}, {0.78, 0}, {0.89, faded(ACCENT, 0.35)}, {1.0, 0}});
        const Polygon key = sector(C, C, INNER + 2, OUTER - 2, middle - 13, 26);
        f.radial(key, C, C, OUTER, OUTER,
                 {{0.0, rgba(0xB8, 0xF0, 0x70)}, {0.84, rgba(0xA8, 0xEC, 0x50)}, {1.0, rgba(0x4C, 0x96, 0x1C)}});
        f.stroke(key, pen(rgba(0xE8, 0xFF, 0xC8, 0xA0), 1.0));
        frames.push_back(std::move(f));
    }
    return filmOf(frames);
}

}  // namespace artwork
