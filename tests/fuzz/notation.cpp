// Object notation and its value readers on arbitrary bytes: parsing never
// fails, reading a value either yields or throws the notation's own failure.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fomal/Notation.h"
#include "fomal/NotationReaders.h"
#include "platform/Exceptions.h"

namespace {

void readEveryWay(const std::string& raw, int depth) {
    const Fomal::NumberSymbol symbols[] = {{"l", 1}, {"t", 2}, {"w", 300}, {"h", 400}, {"r", 301}, {"b", 402}};
    const Fomal::RectF parent{1, 2, 300, 400};
    try { (void)Fomal::readNumber(raw, 1.5f, symbols); } catch (const Exception&) {}
    try { (void)Fomal::readInt(raw, 3, symbols); } catch (const Exception&) {}
    try { (void)Fomal::readBool(raw); } catch (const Exception&) {}
    try { (void)Fomal::readString(raw); } catch (const Exception&) {}
    try { (void)Fomal::readColor(raw); } catch (const Exception&) {}
    try { (void)Fomal::readPoint(raw, {}, &parent); } catch (const Exception&) {}
    try { (void)Fomal::readRect(raw, parent); } catch (const Exception&) {}
    if (depth < 3 && !raw.empty() && raw.front() == '{') {
        const Fomal::Object inner = Fomal::parseObject(raw);
        for (const auto& [key, value] : inner.entries()) readEveryWay(value, depth + 1);
        const Fomal::Array elements = Fomal::parseArray(raw);
        for (const auto& value : elements) readEveryWay(value, depth + 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    Fomal::Object object = Fomal::parseObject(text);
    for (const auto& [key, value] : object.entries()) readEveryWay(value, 0);
    Fomal::Array array = Fomal::parseArray(text);
    for (const auto& value : array) readEveryWay(value, 0);
    readEveryWay(std::string(text), 0);
    return 0;
}
