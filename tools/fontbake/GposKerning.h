// Pair kerning read from a face's glyph positioning table: the horizontal
// advance adjustments of the pair-positioning lookups that the face's
// "kern" feature names, in font units. The first lookup subtable that
// covers a pair decides it, as a text shaper would.
#pragma once

#include <cstdint>
#include <vector>

namespace fontbake {

class GposKerning {
public:
    // `table` is the whole positioning table; an empty or malformed one
    // gives no kerning.
    explicit GposKerning(std::vector<std::uint8_t> table);

    bool empty() const { return subtables_.empty(); }
    int kerning(unsigned first, unsigned second) const;

private:
    struct Reader;
    int fromSubtable(std::size_t at, unsigned first, unsigned second, bool& decided) const;

    std::vector<std::uint8_t> table_;
    std::vector<std::size_t> subtables_;  // offsets of pair-positioning subtables, in lookup order
};

}  // namespace fontbake
