// Small drawing steps that several views share: a filled box and a line of
// text in a font.
#pragma once

#include <string_view>

#include "fomal/NotationNames.h"
#include "pixels/Font.h"
#include "pixels/Image.h"
#include "pixels/IntRect.h"
#include "pixels/Pixel.h"
#include "pixels/Surface.h"

namespace Fomal {

// Fills a rectangle (panel coordinates, fractions antialiased) with a
// premultiplied colour in the given compositing mode.
void fillBox(OrlPixels::Surface& surface, const RectF& box, OrlPixels::Pixel color, int mode = 0);

// A pixel rectangle as the drawing steps take it.
inline RectF rectOf(const OrlPixels::IntRect& r) { return RectF{float(r.left), float(r.top), float(r.width), float(r.height)}; }

// The colours of the boxes the panel draws for alerts, menus and dialogs:
// the panel dimmed behind a modal box, its face, edge and ink, its buttons
// up and pressed, and its fields.
constexpr OrlPixels::Pixel DIALOG_FACE = 0xFFF2F1ECu;
constexpr OrlPixels::Pixel DIALOG_EDGE = 0xFF6E6A60u;
constexpr OrlPixels::Pixel DIALOG_INK = 0xFF1E1E1Eu;
constexpr OrlPixels::Pixel DIALOG_DIMMING = 0x70000000u;
constexpr OrlPixels::Pixel DIALOG_BUTTON = 0xFFE2DFD6u;
constexpr OrlPixels::Pixel DIALOG_BUTTON_PRESSED = 0xFFC4C0B4u;
constexpr OrlPixels::Pixel DIALOG_FIELD = 0xFFFFFFFFu;

// A one-pixel frame along the inside of a pixel rectangle.
void frameBox(OrlPixels::Surface& surface, const OrlPixels::IntRect& box, OrlPixels::Pixel color = DIALOG_EDGE);

// An image drawn with its centre at (cx, cy), scaled by `scale` (a plain
// image is sampled through the scaling; another is drawn at its size).
void drawImageCentred(OrlPixels::Surface& surface, OrlPixels::Image& image, double cx, double cy, double scale);

// A colour word of the layouts as an opaque pixel: the words of colours
// that have no alpha byte (0xFFFFFF) mean the colour itself.
inline OrlPixels::Pixel opaqueColor(std::uint32_t word) { return word | 0xFF000000u; }

}  // namespace Fomal
