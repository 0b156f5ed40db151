// Fuzz target: the pen parser, and applying the pen it reads to a path.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string_view>

#include "pixels/MaskedRaster.h"
#include "pixels/PenParser.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"
#include "pixels/Surface.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace OrlPixels;
    try {
        const Pen pen = parsePen(std::string_view(reinterpret_cast<const char*>(data), size), 1.0);
        // Keep each run short: patterns far finer than the path are not drawn.
        if (pen.stroke > 100 || (pen.dash != 0 && pen.dash + pen.gap < 0.5)) return 0;
        Polygon path;
        path.moveTo(2, 3);
        path.lineTo(40, 10);
        path.lineTo(12, 30);
        path.addCircle(30, 30, 12);
        applyPen(path, pen);
        static Pixel block[48 * 48];
        Surface surface(block, 48, IntRect(0, 0, 48, 48));
        PolygonMask mask(path, surface.bounds);
        SolidRaster ink(pen.color);
        MaskedRaster masked(ink, mask);
        surface.draw(masked);
    } catch (const std::exception&) {
        // Refused pens are the expected outcome for most inputs.
    }
    return 0;
}
