// The icon font of the tutorial, made from drawings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Picture.h"

namespace artwork {

struct BakedSymbols {
    std::string description;         // spsymbols.fnt
    std::vector<std::uint8_t> page;  // spsymbols_0.png
};

BakedSymbols drawSymbols(int scale);

}  // namespace artwork
