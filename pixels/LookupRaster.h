// A mask's coverage values replaced by the entries of a colour table.
#pragma once

#include "pixels/ColorTable.h"
#include "pixels/Raster.h"

namespace OrlPixels {

class LookupRaster : public Raster {
public:
    LookupRaster(Mask& mask, const ColorTable* table) : mask_(mask), table_(table) {}
    LookupRaster(const LookupRaster&) = delete;
    LookupRaster& operator=(const LookupRaster&) = delete;

    void calcBounds(IntRect& out) override;
    void render(int x, int y, int length, SpanOutput& out) override;

private:
    Mask& mask_;
    const ColorTable* table_;
    SpanScratch<Coverage> scratch_;
};

}  // namespace OrlPixels
