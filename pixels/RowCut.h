// Cutting a requested strip against a horizontal range: the part left of
// the range, the part inside and the part right of it, as column counts.
#pragma once

#include <algorithm>
#include <cstdint>

#include "pixels/IntRect.h"

namespace OrlPixels {

struct RowCut {
    int before = 0;  // columns left of the range
    int inside = 0;  // columns in the range
    int after = 0;   // columns right of it

    // Strip x .. x+length of a row, against the columns of `r` (rows are not looked at).
    static RowCut of(const IntRect& r, int x, int length) {
        RowCut c;
        const std::int64_t l = std::clamp<std::int64_t>(std::int64_t(r.left) - x, 0, length);
        const std::int64_t e = std::clamp<std::int64_t>(r.right() - x, l, length);
        c.before = int(l);
        c.inside = int(e - l);
        c.after = int(length - e);
        return c;
    }
};

}  // namespace OrlPixels
