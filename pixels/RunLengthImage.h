// Run-length form of an image: per row a list of runs, each solid (one
// value), opaque raw or plain raw, exactly the marks the span model wants.
// Rendering hands out raw spans that point straight into the pixel table:
// consumers must copy them, never write to them. A cursor remembers where a
// row's last strip ended, so the next strip of the row needs no search.
#pragma once

#include <cstdint>
#include <vector>

#include "pixels/Image.h"
#include "pixels/Raster.h"

namespace OrlPixels {

template <class T>
class RunTable {
public:
    static constexpr std::uint16_t SOLID = 0x8000;
    static constexpr std::uint16_t OPAQUE = 0x4000;
    static constexpr int MAX_RUN = 0x3FFF;

    struct RowStart {
        std::int32_t run;
        std::int32_t pixel;
    };
    struct Cursor {
        int row = -0x7FFFFFFF;
        int column = 0;  // first column of the current run
        int run = 0;
        int pixel = 0;
    };

    IntRect bounds;
    std::vector<std::uint16_t> runs;
    std::vector<T> pixels;
    std::vector<RowStart> rows;
    Cursor cursor;

    // Reads `source` row by row within its bounds, refined by a run optimizer.
    void build(typename GeneratorOf<T>::Type& source);
    void render(int x, int y, int length, BasicSpanOutput<T>& out);

private:
    void append(const BasicSpan<T>& s, std::size_t rowFirstRun);
};

// 32-bit run-length image; also a Raster at the origin of its bounds.
class RleRaster : public Image, public Raster {
public:
    // Compresses any raster; its bounds must be finite.
    explicit RleRaster(Raster& source, bool opaque = false);

    void calcBounds(IntRect& out) override { out = table_.bounds; }
    void render(int x, int y, int length, SpanOutput& out) override { table_.render(x, y, length, out); }
    Raster* asRaster() override { return this; }

    const RunTable<Pixel>& table() const { return table_; }
    RunTable<Pixel>& table() { return table_; }

private:
    RunTable<Pixel> table_;
};

// 8-bit run-length image; also a Mask.
class RleMask : public Image, public Mask {
public:
    explicit RleMask(Mask& source);

    void calcBounds(IntRect& out) override { out = table_.bounds; }
    void render(int x, int y, int length, MaskSpanOutput& out) override { table_.render(x, y, length, out); }
    Mask* asMask() override { return this; }

    const RunTable<Coverage>& table() const { return table_; }
    RunTable<Coverage>& table() { return table_; }

private:
    RunTable<Coverage> table_;
};

}  // namespace OrlPixels
