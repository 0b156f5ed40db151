// The keys of the DNA view (layout type `dna`), read from its layout object.
// Every key is optional: an absent key takes the panel's value, which is
// also what `$` stands for in a given key, except in `scrollStart` (where
// `$` is the scroll range, `autoScroll`) and `rotationStart` (where it is
// the start phase, `helixPhase`).
#pragma once

#include "fomal/NotationNames.h"
#include "pixels/FontSpecification.h"
#include "pixels/Pen.h"
#include "pixels/TextLayout.h"

namespace views {

struct DnaSettings {
    double gamma = 0.707;                 // weight of the molecule's line coverage
    Fomal::PointF helixOffset{160, 40};   // centre of the first rung, in the view
    double helixWidth = 92.0;             // width of a rung
    double helixHeight = 16.0;            // between rungs
    double helixTwist = 0.9;              // radians per rung
    double helixTurn = 20.0;              // depth of the twist in pixels
    double helixPhase = 1.0;              // start phase, radians
    int railsExtra = 2;                   // rungs beyond the genes, for the rails' ends
    double moleculeMinSize = 5.0;         // ball radius far
    double moleculeMaxSize = 5.5;         // ball radius near
    OrlPixels::Pen railsPen, tiersPen, moleculesPen, focusPen, dividersPen, boxPen, arrowPen;
    OrlPixels::Pixel moleculesFill1 = 0x80008000u, moleculesFill2 = 0x80806000u;
    OrlPixels::Pixel focusFill = 0xF0F0F0F0u;
    Fomal::PointF labelsOffset{65, 15};   // x: the labels' alignment point; y: baseline in the gene's row
    OrlPixels::TextAlign labelsAlign = OrlPixels::TextAlign::center;
    OrlPixels::FontSpecification labelsFont, focusFont;
    Fomal::PointF dividersOffset{20, 20}; // x: the dividers' left; y: below the top of a group's last row
    double dividersWidth = 95.0;
    OrlPixels::Pixel boxFill = 0xF0F0F0F0u;
    Fomal::PointF boxExpand{2, 0};        // the focused label's box beyond its text
    double arrowMargin = 15.0;            // the bands at the top and bottom that scroll
    Fomal::PointF arrowDimensions{6, 8};  // an arrow's height and half its width
    double updateFreq = 30.0;             // frames a second
    double autoScroll = 252.0;            // scroll range in pixels
    double scrollStart = -756.0;          // scroll at the opening
    double rotationStart = 1.5;           // phase offset at the opening
    double scrollTime = 0.75;             // seconds
    double rotationTime = 1.5;            // seconds
    double fineRatio = 10.0;              // percent of the drag's speed with shift
};

// The keys of `keys`, the panel's values for those that are absent. A key
// that does not read fails with the reader's message.
DnaSettings readDnaSettings(const Fomal::Object& keys);

// The DNA view's keys with the panel's values, as a layout writes them.
const char* dnaPanelKeys();

}  // namespace views
