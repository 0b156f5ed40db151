// Numbers as the script language writes and reads them. A script number is
// a string; these are the rules that turn it into a 64-bit float and back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "quol/Value.h"

namespace Quol {

// Reads a number from text at position; returns 0.0 without moving when no
// number can begin there. The position is left behind what was read.
double parseNumber(std::string_view text, std::size_t& position);

// True if parseNumber reads at least one byte and the whole text.
bool strictNumber(std::string_view text, double& value);
bool strictNumber(std::string_view text);

// Writes v with the given number of significant digits; with trim, whole
// numbers in 32-bit range are written as integers and trailing zeros go.
Value numberToString(double v, int precision = 14, bool trim = true);

// The same, into a caller's buffer of at least kNumberTextSize bytes;
// returns the length written.
constexpr std::size_t kNumberTextSize = 96;
std::size_t writeNumber(char* out, double v, int precision, bool trim);

// Plain decimal of a 32-bit integer.
Value integerToString(std::int32_t v);

}  // namespace Quol
