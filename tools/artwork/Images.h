// Every image of the panel, by the name its layouts use.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Picture.h"

namespace artwork {

struct ImageMaker {
    const char* name;
    std::function<Picture(int scale)> draw;
};

// In the order of the contact sheet.
const std::vector<ImageMaker>& allImages();

// Families, one file each.
Picture drawBGOverlay(int scale);
Picture drawDisplay(int scale);
Picture drawDisplayLights(int scale);
Picture drawAboutBoxOverlay(int scale);
Picture drawKnob(int scale, int size, Pixel body, Pixel shade);
Picture drawBottomSlider(int scale);
Picture drawBottomSliderTrack(int scale);
Picture drawSeed(int scale, int size);
Picture drawRoundButtonFilm(int scale, bool disabled);
Picture drawDNAButtonFilm(int scale);
Picture drawMenuIcon(int scale, bool disabled);
Picture drawUndoIcon(int scale, bool redo, bool disabled);
Picture drawArrow(int scale, bool right, bool disabled);
Picture drawDisplayButtonFilm(int scale, bool right);
Picture drawCloseCross(int scale, bool white);
Picture drawNavFilm(int scale, int which, bool disabled);  // 0 previous, 1 next, 2 close
Picture drawHelpButtonFilm(int scale);
Picture drawKeyRingFilm(int scale);
Picture drawCCBackgrounds(int scale, const char* label, int width);
Picture drawMIDILabelCharacters(int scale);

}  // namespace artwork
