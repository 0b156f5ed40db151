// The panel's look, in one place.
//
// Palette: a dark, organic panel of moss-tinted charcoal (PANEL_TOP to
// PANEL_BOTTOM), veins a shade lighter; glass and pearl for the controls;
// one accent, the young green of the plant itself (its hue 0.25 gives
// 0x80FF00 at full value), used for what is lit or chosen; warm off-white
// for symbols on dark ground, near-black for symbols on light ground.
//
// Light: one soft light from the top left. Raised things are lighter at
// their top left edge and throw their shade to the bottom right; sockets
// cut into the panel are shaded at their top left rim and catch light at
// their bottom right rim. Glass has a soft highlight in its upper left.
#pragma once

#include "Picture.h"

namespace artwork {

inline const Pixel PANEL_TOP = rgba(0x2A, 0x31, 0x27);
inline const Pixel PANEL_BOTTOM = rgba(0x13, 0x17, 0x12);
inline const Pixel VEIN = rgba(0x5E, 0x6E, 0x4A, 0x30);
inline const Pixel SOCKET = rgba(0x08, 0x0A, 0x07);
inline const Pixel RIM_SHADE = rgba(0x00, 0x00, 0x00, 0xA0);
inline const Pixel RIM_LIGHT = rgba(0xB8, 0xC8, 0xA0, 0x50);
inline const Pixel ACCENT = rgba(0x8C, 0xE0, 0x2C);
inline const Pixel ACCENT_DEEP = rgba(0x3C, 0x7A, 0x10);
inline const Pixel SYMBOL_LIGHT = rgba(0xE6, 0xE8, 0xDC);
inline const Pixel SYMBOL_DIM = rgba(0x6A, 0x70, 0x64);
inline const Pixel SYMBOL_DARK = rgba(0x16, 0x1A, 0x14);
inline const Pixel PEARL = rgba(0xF4, 0xF2, 0xEA);
inline const Pixel PEARL_SHADE = rgba(0x9A, 0x9C, 0x92);
inline const Pixel HIGHLIGHT = rgba(0xFF, 0xFF, 0xFF, 0x70);
inline const Pixel CLEAR = 0;

}  // namespace artwork
