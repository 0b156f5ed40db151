// The scheme shared by every node that combines two operands. One operand,
// S, decides: it is rendered first into the node's own scratch. Where S is
// neutral the other operand, B, passes through untouched (a single neutral
// span forwards the whole request to B with the caller's output); where S
// settles the result alone, B is never rendered. B is rendered only for the
// columns between the settled lead and tail, straight into the caller's
// output, and the result is written over B's spans in place.
//
// A Rule supplies the element types and the arithmetic:
//   typedef SElem, BElem; typedef SGenerator, BGenerator;
//   static bool neutral(SElem)             S leaves B unchanged
//   static bool settles(const BasicSpan<SElem>&)
//   static BElem settledValue(SElem)       result of a settling solid span
//   static BElem combine(SElem s, BElem b)
//   static bool rawOpaque(bool sOpaque, bool bOpaque)
#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "pixels/Raster.h"

namespace OrlPixels {

// Splits the span at `index` into two records at length m. A solid value
// that lies in the area is copied to the split-off position, so both parts
// stay valid when the first part's pixel is later overwritten.
template <class T>
void splitSpan(BasicSpan<T>* table, T* area, int index, int m) {
    const BasicSpan<T> s = table[index];
    const int length = s.length();
    const std::uint32_t flags = s.flags();
    const T* rest;
    if (s.solid()) {
        const std::uintptr_t p = reinterpret_cast<std::uintptr_t>(s.data);
        const std::uintptr_t lo = reinterpret_cast<std::uintptr_t>(area);
        const std::uintptr_t hi = reinterpret_cast<std::uintptr_t>(area + index + length);
        if (p >= lo && p < hi) {
            area[index + m] = *s.data;
            rest = area + index + m;
        } else {
            rest = s.data;
        }
    } else {
        rest = s.data + m;
    }
    putSpanRecord(table + index, m, flags, s.data);
    putSpanRecord(table + index + m, length - m, flags, rest);
}

template <class Rule>
class BinaryComposition : public GeneratorOf<typename Rule::BElem>::Type {
public:
    typedef typename Rule::SElem SElem;
    typedef typename Rule::BElem BElem;
    typedef typename GeneratorOf<SElem>::Type SGenerator;
    typedef typename GeneratorOf<BElem>::Type BGenerator;

    BinaryComposition(SGenerator& s, BGenerator& b) : s_(s), b_(b) {}
    BinaryComposition(const BinaryComposition&) = delete;
    BinaryComposition& operator=(const BinaryComposition&) = delete;

    void render(int x, int y, int n, BasicSpanOutput<BElem>& out) override {
        if (n <= 0) return;
        BasicSpanOutput<SElem> sOut = scratch_.output();
        s_.render(x, y, n, sOut);
        BasicSpan<SElem>* st = scratch_.table;
        SElem* sp = scratch_.pixels;

        if (st[0].length() == n && st[0].solid() && Rule::neutral(*st[0].data)) {
            b_.render(x, y, n, out);
            return;
        }

        int lead = 0;
        while (lead < n && Rule::settles(st[lead])) lead += st[lead].length();
        int trail = n;
        while (trail > lead && Rule::settles(st[trail - 1])) trail -= st[trail - 1].length();

        for (int i = 0; i < lead; i += st[i].length()) appendSettled(out, st[i]);

        if (lead < trail) {
            BasicSpan<BElem>* bt = out.tableEnd;
            BElem* bp = out.pixelsEnd;
            b_.render(x + lead, y, trail - lead, out);
            int i = lead;
            while (i < trail) {
                const int j = i - lead;
                const int ls = st[i].length();
                const int lb = bt[j].length();
                const int m = std::min(ls, lb);
                if (ls > m) splitSpan(st, sp, i, m);
                if (lb > m) splitSpan(bt, bp, j, m);
                combineSpans(st[i], bt[j], bt + j, bp + j, m);
                i += m;
            }
        }

        for (int i = trail; i < n; i += st[i].length()) appendSettled(out, st[i]);
    }

protected:
    SGenerator& s_;
    BGenerator& b_;

private:
    static void writeSettled(BasicSpan<BElem>* slot, BElem* pix, const BasicSpan<SElem>& s) {
        const int length = s.length();
        if (s.solid()) {
            const BElem v = Rule::settledValue(*s.data);
            *pix = v;
            putSpanRecord(slot, length,
                          BasicSpan<BElem>::SOLID | (isOpaqueValue<BElem>(v) ? BasicSpan<BElem>::OPAQUE : 0u), pix);
        } else {
            if constexpr (std::is_same_v<SElem, BElem>) putSpanRecord(slot, length, s.flags(), s.data);
        }
    }

    static void appendSettled(BasicSpanOutput<BElem>& out, const BasicSpan<SElem>& s) {
        writeSettled(out.tableEnd, out.pixelsEnd, s);
        out.tableEnd += s.length();
        out.pixelsEnd += s.length();
    }

    // Writes the result of one pair of equally long spans over B's record.
    static void combineSpans(const BasicSpan<SElem> s, const BasicSpan<BElem> b, BasicSpan<BElem>* slot, BElem* pix,
                             int m) {
        if (s.solid() && Rule::neutral(*s.data)) return;  // B's span stands as it is
        if (Rule::settles(s)) {
            writeSettled(slot, pix, s);
            return;
        }
        if (s.solid() && b.solid()) {
            const BElem v = Rule::combine(*s.data, *b.data);
            *pix = v;
            putSpanRecord(slot, m, BasicSpan<BElem>::SOLID | (isOpaqueValue<BElem>(v) ? BasicSpan<BElem>::OPAQUE : 0u),
                          pix);
            return;
        }
        if (s.solid()) {
            const SElem sv = *s.data;
            const BElem* bd = b.data;
            for (int k = 0; k < m; ++k) pix[k] = Rule::combine(sv, bd[k]);
        } else if (b.solid()) {
            const BElem bv = *b.data;
            const SElem* sd = s.data;
            for (int k = 0; k < m; ++k) pix[k] = Rule::combine(sd[k], bv);
        } else {
            const SElem* sd = s.data;
            const BElem* bd = b.data;
            for (int k = 0; k < m; ++k) pix[k] = Rule::combine(sd[k], bd[k]);
        }
        putSpanRecord(slot, m, Rule::rawOpaque(s.opaque(), b.opaque()) ? BasicSpan<BElem>::OPAQUE : 0u,
                      const_cast<const BElem*>(pix));
    }

    SpanScratch<SElem> scratch_;
};

}  // namespace OrlPixels
