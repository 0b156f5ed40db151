// What a value is taken for, judged by its form alone, and the typed
// readings that fail when the form does not fit.
#pragma once

#include <cstdint>
#include <string_view>

#include "quol/Value.h"

namespace Quol {

enum class Classification { Void, String, Number, Reference, Native, Function, Boolean };

Classification classify(std::string_view value);
// "void", "string", "number", "reference", "native", "function", "boolean".
const char* classificationName(Classification c);

// The typed readings. Each throws Exception ("Invalid boolean: ", "Invalid
// integer: ", "Invalid number: " and the escaped value) when the form does
// not fit.
bool readBoolean(const Value& v);
std::int32_t readInteger(const Value& v);
double readNumber(const Value& v);

// Integer reading without the failure: true and the value if it fits.
bool tryReadInteger(std::string_view text, std::int32_t& result);

// "true" and "false", shared.
Value booleanValue(bool b);

}  // namespace Quol
