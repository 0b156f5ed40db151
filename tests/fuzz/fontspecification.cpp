// Fuzz target: font specifications, the font they name measuring and
// drawing a line. Names reach only the product's own resources.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string_view>

#include "pixels/FontSpecification.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace OrlPixels;
    try {
        const FontText values(std::string_view(reinterpret_cast<const char*>(data), size));
        // Keep runs short: system fonts far larger than any panel text are not drawn.
        if (values.has("size") && !(values.number("size") >= 0 && values.number("size") <= 72)) return 0;
        const FontSpecification spec = readFontSpecification(values);
        static Pixel block[96 * 32];
        Surface surface(block, 96, IntRect(0, 0, 96, 32));
        spec.font->measure("Tuning 0.5");
        spec.font->draw(surface, "Tuning 0.5", 2, 2, spec.color);
    } catch (const std::exception&) {
        // Refused specifications are the expected outcome for most inputs.
    }
    return 0;
}
