#include "quol/Natives.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "quol/Classification.h"
#include "notation/Escape.h"
#include "quol/Exception.h"
#include "quol/Number.h"

namespace Quol {

// A plain read of $i, except that the failure names the argument as it
// stands: "Undefined: $1".
Value argument(Frame& arguments, std::size_t i) {
    const Value name = argumentName(i);
    Value v;
    if (arguments.lookup(name, v) || arguments.root().lookup(name, v)) return v;
    throw Exception(std::string_view(std::string("Undefined: ") + name.str()));
}

Value optionalArgument(Frame& arguments, std::size_t i) {
    Value v;
    arguments.lookup(argumentName(i), v);
    return v;
}

namespace {

using NumberFunction = double (*)(double);
using TwoNumberFunction = double (*)(double, double);
using PlainFunction = Value (*)(Frame&);

// Wrappers by signature.
class NumberToNumber : public Native {
public:
    explicit NumberToNumber(NumberFunction f) : f_(f) {}
    Value run(Frame& a) override { return numberToString(f_(readNumber(argument(a, 0)))); }

private:
    NumberFunction f_;
};

class TwoNumbersToNumber : public Native {
public:
    explicit TwoNumbersToNumber(TwoNumberFunction f) : f_(f) {}
    Value run(Frame& a) override {
        const double x = readNumber(argument(a, 0));
        return numberToString(f_(x, readNumber(argument(a, 1))));
    }

private:
    TwoNumberFunction f_;
};

class Plain : public Native {
public:
    explicit Plain(PlainFunction f) : f_(f) {}
    Value run(Frame& a) override { return f_(a); }

private:
    PlainFunction f_;
};

std::unique_ptr<Native> number(NumberFunction f) { return std::make_unique<NumberToNumber>(f); }
std::unique_ptr<Native> twoNumbers(TwoNumberFunction f) { return std::make_unique<TwoNumbersToNumber>(f); }
std::unique_ptr<Native> plain(PlainFunction f) { return std::make_unique<Plain>(f); }

// Failures raised by the string helpers of the notation side are plain
// exceptions; scripts see them as their own.
template <typename F>
auto asScriptFailure(F&& f) -> decltype(f()) {
    try {
        return f();
    } catch (const Exception&) {
        throw;
    } catch (const ::Exception& e) {
        fail(e.what());
    }
}

Value nativeChar(Frame& a) {
    const double v = readNumber(argument(a, 0));
    if (!(v >= 0 && v <= 255) || v != std::floor(v)) {
        std::string message = "Illegal char code: ";
        message += numberToString(v).view();
        fail(message.c_str());
    }
    const char c = static_cast<char>(static_cast<int>(v));
    return Value(std::string_view(&c, 1));
}

Value nativeCharcode(Frame& a) {
    const Value s = argument(a, 0);
    if (s.size() != 1) fail("Value is not single character: ", s);
    return integerToString(s.front());
}

Value nativeClassify(Frame& a) {
    const char* name = classificationName(classify(argument(a, 0)));
    return Value::external(name, std::char_traits<char>::length(name));
}

Value nativeDelete(Frame& a) {
    Value name = argument(a, 0);
    Frame& f = a.resolve(name);
    f.erase(name);
    return Value();
}

Value nativeEscape(Frame& a) { return Value(notation::escape(argument(a, 0))); }

Value nativeExists(Frame& a) {
    Value name = argument(a, 0);
    Frame& f = a.resolve(name);
    Value ignored;
    return booleanValue(f.lookup(name, ignored));
}

Value nativeFind(Frame& a) {
    const Value s = argument(a, 0);
    const Value chars = argument(a, 1);
    const std::size_t i = s.view().find_first_of(chars.view());
    return integerToString(static_cast<std::int32_t>(i == std::string_view::npos ? s.size() : i));
}

Value nativeFindstr(Frame& a) {
    const Value s = argument(a, 0);
    const Value needle = argument(a, 1);
    const std::size_t i = s.view().find(needle.view());
    return integerToString(static_cast<std::int32_t>(i == std::string_view::npos ? s.size() : i));
}

Value nativeForeach(Frame& a) {
    Value prefix = memberName(argument(a, 0), "");
    const Value function = argument(a, 1);
    Frame& f = a.resolve(prefix);
    Frame::Entries entries;
    f.list(prefix, entries);
    // The entries are listed first, so that changes made by the calls do
    // not affect the walk.
    const Value label = f.label();
    for (const auto& entry : entries) {
        Value arguments[3] = {label.empty() ? entry.first : Value::joined(label, entry.first),
                              entry.first.substr(prefix.size()), entry.second};
        callWith(a, function, arguments, 3);
    }
    return Value();
}

Value nativeInvoke(Frame& a) {
    const Value function = argument(a, 0);
    const Value object = argument(a, 1);
    const Value offsetText = optionalArgument(a, 2);
    const Value countText = optionalArgument(a, 3);
    const Value self = optionalArgument(a, 4);
    const std::int32_t offset = offsetText.empty() ? 0 : readInteger(offsetText);
    const std::int32_t count = countText.empty()
                                   ? readInteger(a.get(memberName(object, "n"), true)) - offset
                                   : readInteger(countText);
    std::vector<Value> arguments;
    for (std::int32_t i = 0; i < count; ++i)
        arguments.push_back(a.get(memberName(object, integerToString(offset + i)), true));
    return callWith(a, function, arguments.data(), arguments.size(), self);
}

Value nativeLength(Frame& a) { return integerToString(static_cast<std::int32_t>(argument(a, 0).size())); }

Value mapBytes(Frame& a, char (*f)(char)) {
    const Value s = argument(a, 0);
    std::string out(s.view());
    for (char& c : out) c = f(c);
    return Value(out);
}

Value nativeLower(Frame& a) {
    return mapBytes(a, [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
}

Value nativeUpper(Frame& a) {
    return mapBytes(a, [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
}

Value nativePrint(Frame& a) {
    const Value s = argument(a, 0);
    std::fwrite(s.data(), 1, s.size(), stdout);
    std::fflush(stdout);
    return Value();
}

Value nativeRandom(Frame& a) {
    const double x = readNumber(argument(a, 0));
    // Fifteen bits, as the range 0 ... 32767 of the formula expects.
    const double v = (std::rand() & 0x7FFF) * x / 32767.0;
    return numberToString(v);
}

Value nativeReverse(Frame& a) {
    const Value s = argument(a, 0);
    std::string out(s.view().rbegin(), s.view().rend());
    return Value(out);
}

Value nativeSpan(Frame& a) {
    const Value s = argument(a, 0);
    const Value chars = argument(a, 1);
    if (s.empty() || chars.empty()) return integerToString(0);
    const std::size_t i = s.view().find_first_not_of(chars.view());
    return integerToString(static_cast<std::int32_t>(i == std::string_view::npos ? s.size() : i));
}

Value nativeString(Frame& a) {
    const Value v = argument(a, 0);
    const Value precisionText = optionalArgument(a, 1);
    if (precisionText.empty()) return v;
    const double x = readNumber(v);
    const std::int32_t precision = std::clamp<std::int32_t>(readInteger(precisionText), 1, 24);
    return numberToString(x, precision, optionalArgument(a, 2) == "true");
}

Value nativeSubstr(Frame& a) {
    const Value s = argument(a, 0);
    std::int64_t start = readInteger(argument(a, 1));
    const Value lengthText = optionalArgument(a, 2);
    const bool hasLength = !lengthText.empty();
    std::int64_t length = hasLength ? readInteger(lengthText) : 0;
    if (start < 0) {
        if (hasLength) length += start;
        start = 0;
    }
    if (start >= static_cast<std::int64_t>(s.size()) || (hasLength && length < 0)) return Value();
    return hasLength ? s.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(length))
                     : s.substr(static_cast<std::size_t>(start));
}

Value nativeTime(Frame&) {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return numberToString(std::chrono::duration<double>(since).count());
}

Value nativeThrow(Frame& a) { throw Exception(argument(a, 0)); }

Value nativeTrunc(Frame& a) {
    const double x = readNumber(argument(a, 0));
    const Value digitsText = optionalArgument(a, 1);
    const std::int32_t digits = digitsText.empty() ? 0 : std::clamp<std::int32_t>(readInteger(digitsText), 0, 23);
    const double scale = std::pow(10.0, digits);
    return numberToString(std::trunc(x * scale) / scale);
}

Value nativeTry(Frame& a) {
    const Value function = argument(a, 0);
    try {
        callWith(a, function, nullptr, 0);
    } catch (const Exception& e) {
        return e.text();
    } catch (...) {
        return Value("General exception");
    }
    return Value();
}

Value nativeUnescape(Frame& a) {
    const Value s = argument(a, 0);
    return asScriptFailure([&] { return Value(notation::unescape(s)); });
}

Value nativeLoad(Frame& a) {
    const Value path = argument(a, 0);
    std::FILE* f = std::fopen(path.str().c_str(), "r");
    if (!f) fail("Cannot open file for reading: ", path);
    std::string text;
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) text.append(buffer, n);
    const bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed) fail("Error reading from file: ", path);
    return Value(text);
}

Value nativeSave(Frame& a) {
    const Value path = argument(a, 0);
    const Value text = argument(a, 1);
    std::FILE* f = std::fopen(path.str().c_str(), "w");
    if (!f) fail("Cannot open file for writing: ", path);
    const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    const bool closed = std::fclose(f) == 0;
    if (!written || !closed) fail("Error writing to file: ", path);
    return Value();
}

Value nativeInput(Frame&) {
    char line[1024];
    if (!std::fgets(line, sizeof line, stdin)) return Value();
    std::size_t n = std::char_traits<char>::length(line);
    while (n > 0 && (line[n - 1] == '\n' || line[n - 1] == '\r')) --n;
    return Value(std::string_view(line, n));
}

}  // namespace

void installStandardNatives(Frame& f) {
    f.addNative("abs", number([](double x) { return std::fabs(x); }));
    f.addNative("acos", number([](double x) { return std::acos(x); }));
    f.addNative("asin", number([](double x) { return std::asin(x); }));
    f.addNative("atan", number([](double x) { return std::atan(x); }));
    f.addNative("cos", number([](double x) { return std::cos(x); }));
    f.addNative("sin", number([](double x) { return std::sin(x); }));
    f.addNative("tan", number([](double x) { return std::tan(x); }));
    f.addNative("cosh", number([](double x) { return std::cosh(x); }));
    f.addNative("sinh", number([](double x) { return std::sinh(x); }));
    f.addNative("tanh", number([](double x) { return std::tanh(x); }));
    f.addNative("atan2", twoNumbers([](double y, double x) { return std::atan2(y, x); }));
    f.addNative("ceil", number([](double x) { return std::ceil(x); }));
    f.addNative("floor", number([](double x) { return std::floor(x); }));
    f.addNative("exp", number([](double x) { return std::exp(x); }));
    f.addNative("sqrt", number([](double x) { return std::sqrt(x); }));
    f.addNative("ln", number([](double x) { return std::log(x); }));
    f.addNative("log2", number([](double x) { return std::log(x) * 1.4426950408889634; }));
    f.addNative("log10", number([](double x) { return std::log10(x); }));
    f.addNative("pow", twoNumbers([](double x, double y) { return std::pow(x, y); }));
    f.addNative("char", plain(nativeChar));
    f.addNative("charcode", plain(nativeCharcode));
    f.addNative("classify", plain(nativeClassify));
    f.addNative("delete", plain(nativeDelete));
    f.addNative("escape", plain(nativeEscape));
    f.addNative("exists", plain(nativeExists));
    f.addNative("find", plain(nativeFind));
    f.addNative("findstr", plain(nativeFindstr));
    f.addNative("foreach", plain(nativeForeach));
    f.addNative("invoke", plain(nativeInvoke));
    f.addNative("length", plain(nativeLength));
    f.addNative("lower", plain(nativeLower));
    f.addNative("upper", plain(nativeUpper));
    f.addNative("print", plain(nativePrint));
    f.addNative("random", plain(nativeRandom));
    f.addNative("reverse", plain(nativeReverse));
    f.addNative("span", plain(nativeSpan));
    f.addNative("string", plain(nativeString));
    f.addNative("substr", plain(nativeSubstr));
    f.addNative("time", plain(nativeTime));
    f.addNative("throw", plain(nativeThrow));
    f.addNative("trunc", plain(nativeTrunc));
    f.addNative("try", plain(nativeTry));
    f.addNative("unescape", plain(nativeUnescape));
    f.addNative("load", plain(nativeLoad));
    f.addNative("save", plain(nativeSave));
    f.addNative("input", plain(nativeInput));
}

}  // namespace Quol
