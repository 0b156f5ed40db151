// What the views of one editor ask of it: redraws of panel regions, and
// the live values that shown texts are filled with.
#pragma once

#include "fomal/TextSubstitution.h"
#include "pixels/IntRect.h"

namespace Fomal {

class EditorServices {
public:
    virtual ~EditorServices() = default;
    // Marks a panel region for redrawing at the next paint.
    virtual void invalidate(const OrlPixels::IntRect& region) = 0;
    virtual SubstitutionContext& substitution() = 0;
};

}  // namespace Fomal
