// Small drawing steps that several views share: a filled box and a line of
// text in a font.
#pragma once

#include <string_view>

#include "fomal/NotationNames.h"
#include "pixels/Font.h"
#include "pixels/Image.h"
#include "pixels/Pixel.h"
#include "pixels/Surface.h"

namespace Fomal {

// Fills a rectangle (panel coordinates, fractions antialiased) with a
// premultiplied colour in the given compositing mode.
void fillBox(OrlPixels::Surface& surface, const RectF& box, OrlPixels::Pixel color, int mode = 0);

// An image drawn with its centre at (cx, cy), scaled by `scale` (a plain
// image is sampled through the scaling; another is drawn at its size).
void drawImageCentred(OrlPixels::Surface& surface, OrlPixels::Image& image, double cx, double cy, double scale);

// A colour word of the layouts as an opaque pixel: the words of colours
// that have no alpha byte (0xFFFFFF) mean the colour itself.
inline OrlPixels::Pixel opaqueColor(std::uint32_t word) { return word | 0xFF000000u; }

}  // namespace Fomal
