#include "quol/Classification.h"

#include "quol/Exception.h"
#include "quol/Number.h"

namespace Quol {

Classification classify(std::string_view v) {
    if (v.empty()) return Classification::Void;
    const unsigned char first = static_cast<unsigned char>(v.front());
    const unsigned char last = static_cast<unsigned char>(v.back());
    if (first == 0) return Classification::String;
    if (first == '-' || (first >= '0' && first <= '9'))
        return strictNumber(v) ? Classification::Number : Classification::String;
    if (first == ':') return Classification::Reference;
    if (first == '<' && v.size() > 1 && last == '>') return Classification::Native;
    if (first == '>') return Classification::Function;
    if (first == '{' && v.size() > 1 && last == '}') return Classification::Function;
    if (v == "true" || v == "false") return Classification::Boolean;
    return Classification::String;
}

const char* classificationName(Classification c) {
    switch (c) {
    case Classification::Void: return "void";
    case Classification::String: return "string";
    case Classification::Number: return "number";
    case Classification::Reference: return "reference";
    case Classification::Native: return "native";
    case Classification::Function: return "function";
    case Classification::Boolean: return "boolean";
    }
    return "string";
}

bool readBoolean(const Value& v) {
    if (v == "true") return true;
    if (v == "false") return false;
    fail("Invalid boolean: ", v);
}

bool tryReadInteger(std::string_view text, std::int32_t& result) {
    std::size_t p = 0;
    const std::size_t n = text.size();
    bool negative = false;
    if (n > 1 && text[0] == '-') {
        negative = true;
        p = 1;
    }
    if (p >= n) return false;
    std::uint32_t value = 0;
    for (; p < n; ++p) {
        const char c = text[p];
        if (c < '0' || c > '9') return false;
        value = value * 10u + static_cast<std::uint32_t>(c - '0');
    }
    if (negative) value = 0u - value;
    result = static_cast<std::int32_t>(value);
    return true;
}

std::int32_t readInteger(const Value& v) {
    std::int32_t result;
    if (!tryReadInteger(v, result)) fail("Invalid integer: ", v);
    return result;
}

double readNumber(const Value& v) {
    double result;
    if (!strictNumber(v, result)) fail("Invalid number: ", v);
    return result;
}

Value booleanValue(bool b) { return b ? Value::external("true", 4) : Value::external("false", 5); }

}  // namespace Quol
