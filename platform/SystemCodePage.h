// The system's 8-bit text is Windows-1252: the Unicode code point of each
// byte, 0 for the five bytes the code page leaves empty.
#pragma once

#include <cstdint>

namespace platform {

inline unsigned systemCodePoint(unsigned char byte) {
    static constexpr std::uint16_t HIGH[32] = {
        0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
    };
    if (byte >= 0x80 && byte < 0xA0) return HIGH[byte - 0x80];
    return byte;
}

}  // namespace platform
