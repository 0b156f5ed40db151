#include "pixels/BitmapFont.h"

#include <cctype>
#include <map>
#include <mutex>

#include "pixels/Png.h"
#include "pixels/PlainMaskImage.h"
#include "pixels/RunLengthImage.h"
#include "platform/Resources.h"

namespace OrlPixels {

namespace {

// Glyph numbers far beyond any atlas are held within reach, so that sums of
// positions never overflow.
int tame(int v) { return v < -0x7FFF ? -0x7FFF : v > 0x7FFF ? 0x7FFF : v; }

}  // namespace

BitmapFont::BitmapFont(const OrlAngelCode::Description& d, const std::vector<std::pair<int, ImageRef>>& pages)
    : lineHeight_(tame(d.common.lineHeight)), base_(tame(d.common.base)) {
    std::map<int, Mask*> masks;
    for (const auto& [id, image] : pages) {
        pages_.push_back(image);
        if (image) masks[id] = image->asMask();
    }
    for (const auto& [code, c] : d.chars) {
        if (code < 0 || code > 255) continue;
        Glyph& g = glyphs_[std::size_t(code)];
        g.present = true;
        g.source = IntRect(tame(c.x), tame(c.y), c.width > 0 ? tame(c.width) : 0, c.height > 0 ? tame(c.height) : 0);
        g.xoffset = tame(c.xoffset);
        g.yoffset = tame(c.yoffset);
        g.xadvance = tame(c.xadvance);
        const auto page = masks.find(c.page);
        g.page = page == masks.end() ? nullptr : page->second;
    }
    for (const auto& [pair, amount] : d.kernings) {
        if (pair.first < 0 || pair.first > 255 || pair.second < 0 || pair.second > 255) continue;
        kernings_[unsigned(pair.first) << 8 | unsigned(pair.second)] = tame(amount);
    }
}

int BitmapFont::kerning(unsigned char first, unsigned char second) const {
    if (kernings_.empty()) return 0;
    const auto it = kernings_.find(unsigned(first) << 8 | second);
    return it == kernings_.end() ? 0 : it->second;
}

TextSize BitmapFont::measure(std::string_view text) const {
    int width = 0;
    int previous = -1;
    for (const char ch : text) {
        const unsigned char c = static_cast<unsigned char>(ch);
        const Glyph& g = glyphs_[c];
        if (!g.present) continue;
        if (previous >= 0) width += kerning(static_cast<unsigned char>(previous), c);
        width += g.xadvance;
        previous = c;
    }
    return {width, lineHeight_};
}

void BitmapFont::draw(Surface& surface, std::string_view text, int x, int y, Pixel color) const {
    int pen = x;
    int previous = -1;
    for (const char ch : text) {
        const unsigned char c = static_cast<unsigned char>(ch);
        const Glyph& g = glyphs_[c];
        if (!g.present) continue;
        if (previous >= 0) pen += kerning(static_cast<unsigned char>(previous), c);
        if (g.page != nullptr && !g.source.isEmpty())
            drawMaskPart(surface, *g.page, g.source, pen + g.xoffset, y + g.yoffset, color);
        pen += g.xadvance;
        previous = c;
    }
}

namespace {

// A page's file name as a resource name: no folder, no extension.
std::string pageResourceName(const std::string& file) {
    std::string name = file;
    const std::size_t slash = name.find_last_of("/\\");
    if (slash != std::string::npos) name.erase(0, slash + 1);
    const std::size_t dot = name.rfind('.');
    if (dot != std::string::npos) name.erase(dot);
    return name;
}

std::string upper(std::string s) {
    for (char& c : s) c = char(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

ImageRef decodePage(std::string_view png, double gamma) {
    DecodedPng d = decodePngMask(reinterpret_cast<const std::uint8_t*>(png.data()), png.size(), gamma);
    ImageRef plain(new PlainMaskImage(d.width, d.height, std::move(d.values)));
    return ImageRef(new RleMask(*plain->asMask()));
}

FontRef build(std::string_view description, const std::vector<std::pair<std::string, std::string_view>>& pngs,
              double gamma, const std::string* resourceName) {
    const OrlAngelCode::Description d = OrlAngelCode::parse(description);
    std::vector<std::pair<int, ImageRef>> pages;
    for (const auto& [id, file] : d.pages) {
        const std::string want = pageResourceName(file);
        const std::string_view* data = nullptr;
        for (const auto& [name, bytes] : pngs)
            if (upper(pageResourceName(name)) == upper(want)) data = &bytes;
        if (data == nullptr) {
            if (resourceName != nullptr) throw Exception("Could not obtain font : " + *resourceName);
            throw OrlAngelCode::Exception("Missing page '" + file + "' of AngelCode Font File");
        }
        try {
            pages.emplace_back(id, decodePage(*data, gamma));
        } catch (const OrlPNG&) {
            if (resourceName != nullptr) throw Exception("Could not obtain font : " + *resourceName);
            throw;
        }
    }
    return FontRef(new BitmapFont(d, pages));
}

}  // namespace

FontRef bitmapFontFromData(std::string_view description,
                           const std::vector<std::pair<std::string, std::string_view>>& pagePngs, double gamma) {
    return build(description, pagePngs, gamma, nullptr);
}

FontRef loadBitmapFont(const std::string& name, double gamma) {
    static std::mutex lock;
    static std::map<std::pair<std::string, double>, FontRef> shared;
    const std::string key = upper(name);
    std::lock_guard<std::mutex> guard(lock);
    const auto found = shared.find({key, gamma});
    if (found != shared.end()) return found->second;

    const platform::ResourceTable& resources = platform::productResources();
    const platform::Resource fnt = resources.find("FNT", key);
    if (!fnt) throw Exception("Could not obtain font : " + name);
    const OrlAngelCode::Description d = OrlAngelCode::parse(fnt.text());
    std::vector<std::pair<std::string, std::string_view>> pngs;
    for (const auto& [id, file] : d.pages) {
        const platform::Resource png = resources.find("PNG", upper(pageResourceName(file)));
        if (!png) throw Exception("Could not obtain font : " + name);
        pngs.emplace_back(file, png.text());
    }
    FontRef font = build(fnt.text(), pngs, gamma, &name);
    shared.emplace(std::make_pair(key, gamma), font);
    return font;
}

}  // namespace OrlPixels
