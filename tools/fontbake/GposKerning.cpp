#include "GposKerning.h"

#include <algorithm>
#include <bit>

namespace fontbake {

namespace {

constexpr std::uint16_t X_ADVANCE = 0x0004;

}  // namespace

// Big-endian reads that give 0 past the end, so a damaged table reads as
// zeros instead of running off the buffer.
struct GposKerning::Reader {
    const std::vector<std::uint8_t>& t;
    unsigned u16(std::size_t at) const { return at + 2 <= t.size() ? unsigned(t[at] << 8 | t[at + 1]) : 0; }
    int s16(std::size_t at) const { return int(std::int16_t(std::uint16_t(u16(at)))); }
    std::size_t u32(std::size_t at) const {
        return at + 4 <= t.size() ? std::size_t(t[at]) << 24 | std::size_t(t[at + 1]) << 16 |
                                        std::size_t(t[at + 2]) << 8 | std::size_t(t[at + 3])
                                  : 0;
    }
    bool tagIs(std::size_t at, const char* tag) const {
        return at + 4 <= t.size() && std::equal(tag, tag + 4, t.begin() + std::ptrdiff_t(at));
    }

    // The glyph's index in a coverage table, or -1.
    int coverage(std::size_t at, unsigned glyph) const {
        const unsigned format = u16(at);
        const unsigned count = u16(at + 2);
        if (format == 1) {
            for (unsigned i = 0; i < count; ++i)
                if (u16(at + 4 + 2 * i) == glyph) return int(i);
        } else if (format == 2) {
            for (unsigned i = 0; i < count; ++i) {
                const std::size_t r = at + 4 + 6 * i;
                if (glyph >= u16(r) && glyph <= u16(r + 2)) return int(u16(r + 4) + glyph - u16(r));
            }
        }
        return -1;
    }

    unsigned glyphClass(std::size_t at, unsigned glyph) const {
        const unsigned format = u16(at);
        if (format == 1) {
            const unsigned start = u16(at + 2);
            const unsigned count = u16(at + 4);
            if (glyph >= start && glyph < start + count) return u16(at + 6 + 2 * (glyph - start));
        } else if (format == 2) {
            const unsigned count = u16(at + 2);
            for (unsigned i = 0; i < count; ++i) {
                const std::size_t r = at + 4 + 6 * i;
                if (glyph >= u16(r) && glyph <= u16(r + 2)) return u16(r + 4);
            }
        }
        return 0;
    }

    // The x advance of a value record, 0 when its format has none.
    int xAdvance(std::size_t record, unsigned format) const {
        if ((format & X_ADVANCE) == 0) return 0;
        const int before = std::popcount(format & (X_ADVANCE - 1));
        return s16(record + 2 * std::size_t(before));
    }
};

GposKerning::GposKerning(std::vector<std::uint8_t> table) : table_(std::move(table)) {
    const Reader r{table_};
    if (table_.size() < 10) return;
    const std::size_t features = r.u16(6);
    const std::size_t lookups = r.u16(8);
    std::vector<unsigned> chosen;
    const unsigned featureCount = r.u16(features);
    for (unsigned i = 0; i < featureCount; ++i) {
        const std::size_t record = features + 2 + 6 * i;
        if (!r.tagIs(record, "kern")) continue;
        const std::size_t feature = features + r.u16(record + 4);
        const unsigned n = r.u16(feature + 2);
        for (unsigned k = 0; k < n; ++k) chosen.push_back(r.u16(feature + 4 + 2 * k));
    }
    std::sort(chosen.begin(), chosen.end());
    chosen.erase(std::unique(chosen.begin(), chosen.end()), chosen.end());
    const unsigned lookupCount = r.u16(lookups);
    for (unsigned index : chosen) {
        if (index >= lookupCount) continue;
        const std::size_t lookup = lookups + r.u16(lookups + 2 + 2 * index);
        const unsigned type = r.u16(lookup);
        const unsigned subtableCount = r.u16(lookup + 4);
        for (unsigned s = 0; s < subtableCount; ++s) {
            std::size_t sub = lookup + r.u16(lookup + 6 + 2 * s);
            if (type == 9) {  // an extension: the real subtable lies further
                if (r.u16(sub + 2) != 2) continue;
                sub += r.u32(sub + 4);
            } else if (type != 2) {
                continue;
            }
            subtables_.push_back(sub);
        }
    }
}

int GposKerning::fromSubtable(std::size_t at, unsigned first, unsigned second, bool& decided) const {
    const Reader r{table_};
    const unsigned format = r.u16(at);
    const int index = r.coverage(at + r.u16(at + 2), first);
    if (index < 0) return 0;
    const unsigned format1 = r.u16(at + 4);
    const unsigned format2 = r.u16(at + 6);
    const std::size_t size1 = 2 * std::size_t(std::popcount(format1));
    const std::size_t size2 = 2 * std::size_t(std::popcount(format2));
    if (format == 1) {
        if (unsigned(index) >= r.u16(at + 8)) return 0;
        const std::size_t set = at + r.u16(at + 10 + 2 * std::size_t(index));
        const unsigned count = r.u16(set);
        for (unsigned i = 0; i < count; ++i) {
            const std::size_t record = set + 2 + i * (2 + size1 + size2);
            if (r.u16(record) == second) {
                decided = true;
                return r.xAdvance(record + 2, format1);
            }
        }
        return 0;
    }
    if (format == 2) {
        const unsigned class1 = r.glyphClass(at + r.u16(at + 8), first);
        const unsigned class2 = r.glyphClass(at + r.u16(at + 10), second);
        const unsigned count1 = r.u16(at + 12);
        const unsigned count2 = r.u16(at + 14);
        if (class1 >= count1 || class2 >= count2) return 0;
        decided = true;
        const std::size_t record = at + 16 + (std::size_t(class1) * count2 + class2) * (size1 + size2);
        return r.xAdvance(record, format1);
    }
    return 0;
}

int GposKerning::kerning(unsigned first, unsigned second) const {
    for (std::size_t at : subtables_) {
        bool decided = false;
        const int amount = fromSubtable(at, first, second, decided);
        if (decided) return amount;
    }
    return 0;
}

}  // namespace fontbake
