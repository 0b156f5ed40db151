// Object notation and its value readers on arbitrary bytes: parsing never
// fails, reading a value either yields or throws the notation's own failure.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "notation/Notation.h"
#include "notation/NotationReaders.h"
#include "platform/Exceptions.h"

namespace {

void readEveryWay(const std::string& raw, int depth) {
    const notation::NumberSymbol symbols[] = {{"l", 1}, {"t", 2}, {"w", 300}, {"h", 400}, {"r", 301}, {"b", 402}};
    const notation::RectF parent{1, 2, 300, 400};
    try { (void)notation::readNumber(raw, 1.5f, symbols); } catch (const Exception&) {}
    try { (void)notation::readInt(raw, 3, symbols); } catch (const Exception&) {}
    try { (void)notation::readBool(raw); } catch (const Exception&) {}
    try { (void)notation::readString(raw); } catch (const Exception&) {}
    try { (void)notation::readColor(raw); } catch (const Exception&) {}
    try { (void)notation::readPoint(raw, {}, &parent); } catch (const Exception&) {}
    try { (void)notation::readRect(raw, parent); } catch (const Exception&) {}
    if (depth < 3 && !raw.empty() && raw.front() == '{') {
        const notation::Object inner = notation::parseObject(raw);
        for (const auto& [key, value] : inner.entries()) readEveryWay(value, depth + 1);
        const notation::Array elements = notation::parseArray(raw);
        for (const auto& value : elements) readEveryWay(value, depth + 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    notation::Object object = notation::parseObject(text);
    for (const auto& [key, value] : object.entries()) readEveryWay(value, 0);
    notation::Array array = notation::parseArray(text);
    for (const auto& value : array) readEveryWay(value, 0);
    readEveryWay(std::string(text), 0);
    return 0;
}
