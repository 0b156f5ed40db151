// The two abstract row generators. A Raster yields premultiplied pixels, a
// Mask coverage bytes. render() produces exactly `length` elements of row y
// from column x as spans, and must answer any coordinates: outside its
// bounds it gives one solid span of 0.
#pragma once

#include "pixels/IntRect.h"
#include "pixels/Span.h"

namespace OrlPixels {

class Raster {
public:
    typedef Pixel Element;
    virtual void calcBounds(IntRect& out) = 0;
    virtual void render(int x, int y, int length, SpanOutput& out) = 0;
    virtual ~Raster() = default;
};

class Mask {
public:
    typedef Coverage Element;
    virtual void calcBounds(IntRect& out) = 0;
    virtual void render(int x, int y, int length, MaskSpanOutput& out) = 0;
    virtual ~Mask() = default;
};

// The generator type for an element type.
template <class T>
struct GeneratorOf;
template <>
struct GeneratorOf<Pixel> {
    typedef Raster Type;
};
template <>
struct GeneratorOf<Coverage> {
    typedef Mask Type;
};

}  // namespace OrlPixels
