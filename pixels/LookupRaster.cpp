#include "pixels/LookupRaster.h"

namespace OrlPixels {

void LookupRaster::calcBounds(IntRect& out) {
    if (table_->entries[0] != 0)
        out = INFINITE_RECT;
    else
        mask_.calcBounds(out);
}

void LookupRaster::render(int x, int y, int length, SpanOutput& out) {
    if (length <= 0) return;
    MaskSpanOutput m = scratch_.output();
    mask_.render(x, y, length, m);
    const Pixel* entries = table_->entries;
    for (int i = 0; i < length;) {
        const MaskSpan s = scratch_.table[i];
        const int n = s.length();
        if (s.solid()) {
            const Pixel v = entries[*s.data];
            out.putSolid(n, v, isOpaquePixel(v));
        } else {
            Pixel* p = out.beginRaw();
            const Coverage* d = s.data;
            for (int k = 0; k < n; ++k) p[k] = entries[d[k]];
            out.putRaw(n, p, table_->opaque);
        }
        i += n;
    }
}

}  // namespace OrlPixels
