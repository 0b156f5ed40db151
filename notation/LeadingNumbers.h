// The one reader of numbers written in texts: by the C library's rules and
// never by the C locale, which a host may have set to write a decimal
// comma. Patch texts, MIDI configurations, pens and the literals of the
// notation's expressions read their numbers here; the script language keeps
// its own rules for the strings it computes with.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

struct LeadingNumber {
    double value = 0.0;
    std::size_t length = 0;  // bytes consumed, 0 when nothing could be read
};

// The floating-point prefix as strtod reads it: leading white space, a sign,
// then a decimal or "0x" hexadecimal number, "inf", "infinity" or "nan".
LeadingNumber leadingDouble(std::string_view text);

// The length of the decimal number at text[pos]: digits, an optional
// fraction, an optional exponent with at least one digit; no sign. Zero
// when the mantissa has no digit.
std::size_t decimalLiteralLength(std::string_view text, std::size_t pos);

// strtol with base 0 and a 32-bit long: decimal, "0x" hexadecimal, a leading
// 0 means octal; out-of-range values saturate. Empty when no digit is read.
std::optional<int32_t> leadingLong(std::string_view text);

// strtoul with base 0 and a 32-bit long: as above, a minus sign negates
// modulo 2^32, and values beyond 32 bits saturate at 0xFFFFFFFF.
std::optional<uint32_t> leadingUnsignedLong(std::string_view text);
