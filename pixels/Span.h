// A row is handed up as a list of spans. A span says how many pixels it
// covers, whether one value holds for all of them (solid) and whether they
// are all opaque; its data points to that one value or to the pixels.
//
// The record table has one slot per pixel: a span of length n takes n slots
// and is written into the first and the last of them, so a consumer can walk
// forward (step n slots) and backward (read the last slot). The pixel area
// advances in step with the table, also for a solid span, whose value is
// stored at the pixel cursor. So slot index and pixel offset always agree.
#pragma once

#include <cstdint>

#include "pixels/Pixel.h"

namespace OrlPixels {

// The longest request: every consumer owns a table and scratch of this size.
const int MAX_SPAN_REQUEST = 256;

template <class T>
struct BasicSpan {
    static constexpr std::uint32_t SOLID = 0x80000000u;
    static constexpr std::uint32_t OPAQUE = 0x40000000u;
    static constexpr std::uint32_t LENGTH_MASK = 0x3FFFFFFFu;

    std::uint32_t bits;
    const T* data;

    int length() const { return int(bits & LENGTH_MASK); }
    bool solid() const { return (bits & SOLID) != 0; }
    bool opaque() const { return (bits & OPAQUE) != 0; }
    std::uint32_t flags() const { return bits & (SOLID | OPAQUE); }
};

typedef BasicSpan<Pixel> Span;
typedef BasicSpan<Coverage> MaskSpan;

// Writes a span record into the first and last slot of its range.
template <class T>
inline void putSpanRecord(BasicSpan<T>* slot, int length, std::uint32_t flags, const T* data) {
    BasicSpan<T> s;
    s.bits = std::uint32_t(length) | flags;
    s.data = data;
    slot[0] = s;
    slot[length - 1] = s;
}

template <class T>
struct BasicSpanOutput {
    BasicSpan<T>* table;      // start of the record table
    T* pixels;                // start of the pixel area
    BasicSpan<T>* tableEnd;   // current end of the record table
    T* pixelsEnd;             // current end of the pixel area

    BasicSpanOutput(BasicSpan<T>* t, T* p) : table(t), pixels(p), tableEnd(t), pixelsEnd(p) {}

    // Number of pixels written so far.
    int count() const { return int(tableEnd - table); }

    void putSolid(int length, T value, bool opaque) {
        *pixelsEnd = value;
        putSpanRecord(tableEnd, length, BasicSpan<T>::SOLID | (opaque ? BasicSpan<T>::OPAQUE : 0u), pixelsEnd);
        tableEnd += length;
        pixelsEnd += length;
    }

    // A raw span whose pixels lie elsewhere (or already at the cursor).
    void putRaw(int length, const T* data, bool opaque) {
        putSpanRecord(tableEnd, length, opaque ? BasicSpan<T>::OPAQUE : 0u, data);
        tableEnd += length;
        pixelsEnd += length;
    }

    // A raw span whose pixels the caller writes at the cursor.
    T* beginRaw() { return pixelsEnd; }

    void putSpan(const BasicSpan<T>& s) {
        if (s.solid())
            putSolid(s.length(), *s.data, s.opaque());
        else
            putRaw(s.length(), s.data, s.opaque());
    }
};

typedef BasicSpanOutput<Pixel> SpanOutput;
typedef BasicSpanOutput<Coverage> MaskSpanOutput;

// The table and scratch a node owns to render an operand into.
template <class T>
struct SpanScratch {
    BasicSpan<T> table[MAX_SPAN_REQUEST];
    T pixels[MAX_SPAN_REQUEST];

    BasicSpanOutput<T> output() { return BasicSpanOutput<T>(table, pixels); }
};

template <class T>
inline bool isOpaqueValue(T v);
template <>
inline bool isOpaqueValue<Pixel>(Pixel v) { return isOpaquePixel(v); }
template <>
inline bool isOpaqueValue<Coverage>(Coverage v) { return isOpaqueCoverage(v); }

}  // namespace OrlPixels
