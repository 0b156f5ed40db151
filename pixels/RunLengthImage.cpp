#include "pixels/RunLengthImage.h"

#include <algorithm>

#include "pixels/RunOptimizer.h"

namespace OrlPixels {

template <class T>
void RunTable<T>::append(const BasicSpan<T>& s, std::size_t rowFirstRun) {
    int length = s.length();
    const bool solid = s.solid();
    const std::uint16_t flags = std::uint16_t((solid ? SOLID : 0) | (s.opaque() ? OPAQUE : 0));
    const T* data = s.data;
    while (length > 0) {
        if (runs.size() > rowFirstRun) {
            std::uint16_t& last = runs.back();
            const int lastLength = last & MAX_RUN;
            const bool sameKind = (last & (SOLID | OPAQUE)) == flags && (!solid || pixels.back() == *data);
            if (sameKind && lastLength < MAX_RUN) {
                const int take = std::min(length, MAX_RUN - lastLength);
                last = std::uint16_t(last + take);
                if (!solid) {
                    pixels.insert(pixels.end(), data, data + take);
                    data += take;
                }
                length -= take;
                continue;
            }
        }
        const int take = std::min(length, MAX_RUN);
        runs.push_back(std::uint16_t(flags | take));
        if (solid) {
            pixels.push_back(*data);
        } else {
            pixels.insert(pixels.end(), data, data + take);
            data += take;
        }
        length -= take;
    }
}

template <class T>
void RunTable<T>::build(typename GeneratorOf<T>::Type& source) {
    source.calcBounds(bounds);
    runs.clear();
    pixels.clear();
    rows.clear();
    cursor = Cursor();
    if (bounds.isEmpty()) return;
    BasicRunOptimizer<T> optimizer(source);
    SpanScratch<T> scratch;
    rows.reserve(std::size_t(bounds.height));
    for (std::int64_t y = bounds.top; y < bounds.bottom(); ++y) {
        const std::size_t rowFirstRun = runs.size();
        rows.push_back({std::int32_t(runs.size()), std::int32_t(pixels.size())});
        for (std::int64_t x = bounds.left; x < bounds.right(); x += MAX_SPAN_REQUEST) {
            const int n = int(std::min<std::int64_t>(bounds.right() - x, MAX_SPAN_REQUEST));
            BasicSpanOutput<T> out = scratch.output();
            optimizer.render(int(x), int(y), n, out);
            for (int i = 0; i < n; i += scratch.table[i].length()) append(scratch.table[i], rowFirstRun);
        }
    }
}

template <class T>
void RunTable<T>::render(int x, int y, int length, BasicSpanOutput<T>& out) {
    if (length <= 0) return;
    if (bounds.isEmpty() || y < bounds.top || y >= bounds.bottom()) {
        out.putSolid(length, 0, false);
        return;
    }
    const std::int64_t left = std::max<std::int64_t>(x, bounds.left);
    const std::int64_t right = std::min<std::int64_t>(std::int64_t(x) + length, bounds.right());
    if (left >= right) {
        out.putSolid(length, 0, false);
        return;
    }
    if (left > x) out.putSolid(int(left - x), 0, false);

    int column, run, pixel;
    if (y == cursor.row && left >= cursor.column) {
        column = cursor.column;
        run = cursor.run;
        pixel = cursor.pixel;
    } else {
        const RowStart& r = rows[std::size_t(y - bounds.top)];
        column = bounds.left;
        run = r.run;
        pixel = r.pixel;
    }
    // Skip to the run that holds `left`.
    for (;;) {
        const std::uint16_t bits = runs[std::size_t(run)];
        const int n = bits & MAX_RUN;
        if (column + n > left) break;
        column += n;
        pixel += (bits & SOLID) ? 1 : n;
        ++run;
    }
    std::int64_t at = left;
    for (;;) {
        const std::uint16_t bits = runs[std::size_t(run)];
        const int n = bits & MAX_RUN;
        const std::int64_t end = std::min<std::int64_t>(column + n, right);
        const int visible = int(end - at);
        if (bits & SOLID) {
            const T v = pixels[std::size_t(pixel)];
            out.putSolid(visible, v, isOpaqueValue<T>(v));
        } else {
            out.putRaw(visible, pixels.data() + pixel + (at - column), (bits & OPAQUE) != 0);
        }
        at = end;
        if (at >= right) break;
        column += n;
        pixel += (bits & SOLID) ? 1 : n;
        ++run;
    }
    cursor.row = y;
    cursor.column = column;
    cursor.run = run;
    cursor.pixel = pixel;
    if (right < std::int64_t(x) + length) out.putSolid(int(std::int64_t(x) + length - right), 0, false);
}

template class RunTable<Pixel>;
template class RunTable<Coverage>;

RleRaster::RleRaster(Raster& source, bool opaque) : Image(0, 0, opaque) {
    table_.build(source);
    width = table_.bounds.width;
    height = table_.bounds.height;
}

RleMask::RleMask(Mask& source) : Image(0, 0, false) {
    table_.build(source);
    width = table_.bounds.width;
    height = table_.bounds.height;
}

}  // namespace OrlPixels
