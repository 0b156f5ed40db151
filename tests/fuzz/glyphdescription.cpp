// Fuzz target: the glyph description reader, and a font built from what it
// reads (its page a small grey atlas) measuring and drawing a line.
#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "pixels/BitmapFont.h"
#include "pixels/Png.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace OrlPixels;
    static const std::string page = [] {
        std::vector<Coverage> v(32 * 16);
        for (std::size_t i = 0; i < v.size(); ++i) v[i] = Coverage(i * 7);
        const std::vector<std::uint8_t> png = encodeGreyPng(v.data(), 32, 16, 32);
        return std::string(png.begin(), png.end());
    }();
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const OrlAngelCode::Description d = OrlAngelCode::parse(text);
        std::vector<std::pair<std::string, std::string_view>> pages;
        for (const auto& [id, file] : d.pages) pages.emplace_back(file, page);
        const FontRef font = bitmapFontFromData(text, pages, 1.8);
        static Pixel block[64 * 32];
        Surface surface(block, 64, IntRect(0, 0, 64, 32));
        const char line[] = "AVa 0\x80\xff";
        font->measure(line);
        font->draw(surface, line, 1, 1, 0xFF000000u);
    } catch (const std::exception&) {
        // Refused descriptions are the expected outcome for most inputs.
    }
    return 0;
}
