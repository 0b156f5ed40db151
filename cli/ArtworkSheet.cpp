#include "cli/ArtworkSheet.h"

#include <algorithm>
#include <cctype>

#include "pixels/BitmapFont.h"
#include "pixels/ImageLoader.h"
#include "pixels/TransformedRaster.h"
#include "platform/Resources.h"

namespace cli {

namespace {

using namespace OrlPixels;

constexpr int SHEET_WIDTH = 1280;
constexpr int GAP = 10;

// How the layouts cut the films: the height of one frame (frames run down
// the strip), or for a strip across, the width.
struct FilmCut {
    const char* name;
    int frameHeight;
    int frameWidth;
};
constexpr FilmCut FILMS[] = {
    {"RoundButtonFilm", 41, 0},      {"RoundButtonFilmDis", 41, 0},  {"DNAButtonFilm", 41, 0},
    {"LeftDisplayButtonDown", 35, 0}, {"RightDisplayButtonDown", 35, 0}, {"CloseCross", 16, 0},
    {"WhiteCloseCross", 16, 0},      {"NavPrevious", 23, 0},         {"NavNext", 23, 0},
    {"NavClose", 23, 0},             {"NavPreviousDisabled", 23, 0}, {"NavNextDisabled", 23, 0},
    {"NavCloseDisabled", 23, 0},     {"HelpButtonFilm", 24, 0},      {"KeyRingFilm", 300, 0},
    {"CCLabelBackgrounds", 18, 0},   {"CCPlantBackgrounds", 18, 0},  {"CCWheelBackgrounds", 18, 0},
    {"CCRotationBackgrounds", 18, 0}, {"MIDILabelCharacters", 0, 6},
};

const char* const FONTS[] = {"futura14", "futura14_lt", "futura16", "futura16b_lt", "futura18",
                             "futura18i", "segoe14b",   "spsymbols"};

std::string lower(std::string s) {
    for (char& c : s) c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

// The images among the resources: every PNG that is not a font's page.
std::vector<std::string> imageNames() {
    std::vector<std::string> names;
    const platform::ResourceTable& table = platform::productResources();
    for (std::size_t i = 0; i < table.size(); ++i) {
        if (lower(table[i].type) != "png") continue;
        const std::string name = table[i].name;
        const bool page = name.size() > 2 && name.compare(name.size() - 2, 2, "_0") == 0 &&
                          table.find("FNT", name.substr(0, name.size() - 2));
        if (!page) names.push_back(name);
    }
    return names;
}

void checker(std::vector<Pixel>& pixels, int width, int x0, int y0, int w, int h) {
    for (int y = y0; y < y0 + h; ++y)
        for (int x = x0; x < x0 + w; ++x)
            pixels[std::size_t(y) * std::size_t(width) + std::size_t(x)] =
                ((x - x0) / 6 + (y - y0) / 6) % 2 ? 0xFF505850u : 0xFF444C44u;
}

}  // namespace

ArtworkSheet drawArtworkSheet() {
    ArtworkSheet sheet;
    const FontRef labelFont = loadBitmapFont("futura14", 2.7);
    const int labelHeight = labelFont->lineHeight() + 2;

    struct Placed {
        SheetEntry entry;
        ImageRef image;
        int shown = 1;  // frames are shown at 1 / shown of their size
        int x = 0, y = 0;
    };
    std::vector<Placed> placed;
    int x = GAP, y = GAP, rowHeight = 0;
    for (const std::string& name : imageNames()) {
        Placed p;
        p.entry.name = name;
        p.image = loadImage(name, PLAIN_FORMAT);
        p.entry.width = p.image->width;
        p.entry.height = p.image->height;
        for (const FilmCut& f : FILMS) {
            if (lower(f.name) != lower(name)) continue;
            if (f.frameHeight > 0) {
                p.entry.height = f.frameHeight;
                p.entry.frames = std::max(1, p.image->height / f.frameHeight);
            } else {
                p.entry.width = f.frameWidth;
                p.entry.frames = std::max(1, p.image->width / f.frameWidth);
            }
        }
        p.shown = p.entry.width * p.entry.frames > SHEET_WIDTH / 2 && p.entry.width >= 200 ? 3 : 1;
        const int frameW = p.entry.width / p.shown, frameH = p.entry.height / p.shown;
        const int w = std::max(labelFont->measure(name).width, p.entry.frames * (frameW + 4));
        const int h = labelHeight + frameH;
        if (x + w > SHEET_WIDTH - GAP && x > GAP) {
            x = GAP;
            y += rowHeight + GAP;
            rowHeight = 0;
        }
        p.x = x;
        p.y = y;
        x += w + GAP;
        rowHeight = std::max(rowHeight, h);
        placed.push_back(std::move(p));
    }
    y += rowHeight + 2 * GAP;
    int fontTop = y;
    for (const char* name : FONTS) y += loadBitmapFont(name, 2.7)->lineHeight() + 6;

    sheet.width = SHEET_WIDTH;
    sheet.height = y + GAP;
    sheet.pixels.assign(std::size_t(sheet.width) * std::size_t(sheet.height), 0xFF1E241Eu);
    Surface surface(sheet.pixels.data(), sheet.width, IntRect(0, 0, sheet.width, sheet.height), true);

    for (Placed& p : placed) {
        labelFont->draw(surface, p.entry.name, p.x, p.y, 0xFFE0E4D8u);
        const int frameW = p.entry.width / p.shown, frameH = p.entry.height / p.shown;
        for (int f = 0; f < p.entry.frames; ++f) {
            const int fx = p.x + f * (frameW + 4), fy = p.y + labelHeight;
            checker(sheet.pixels, sheet.width, fx, fy, frameW, frameH);
            const bool across = p.entry.width * p.entry.frames == p.image->width && p.entry.frames > 1;
            const IntRect source = across ? IntRect(f * p.entry.width, 0, p.entry.width, p.entry.height)
                                           : IntRect(0, f * p.entry.height, p.entry.width, p.entry.height);
            if (p.shown == 1) {
                p.image->drawPart(surface, source, fx, fy);
            } else {
                std::vector<Pixel> frame(std::size_t(source.width) * std::size_t(source.height), 0);
                Surface frameSurface(frame.data(), source.width, IntRect(0, 0, source.width, source.height));
                p.image->drawPart(frameSurface, source, 0, 0);
                const PixelBlock block{frame.data(), source.width, source.width, source.height, false};
                const double k = 1.0 / p.shown;
                TransformedRaster small(block,
                                        AffineTransformation::scaling(k, k).then(AffineTransformation::translation(fx, fy)),
                                        false);
                surface.draw(small);
            }
        }
        sheet.images.push_back(p.entry);
    }

    std::string characters;
    for (int c = 33; c < 127; ++c) characters += char(c);
    for (const char* name : FONTS) {
        const FontRef font = loadBitmapFont(name, 2.7);
        const std::string line = std::string(name) == "spsymbols" ? "12345678?" : characters;
        labelFont->draw(surface, name, GAP, fontTop + (font->lineHeight() - labelFont->lineHeight()) / 2, 0xFF98A090u);
        font->draw(surface, line, GAP + 110, fontTop, 0xFFF0F0E8u);
        fontTop += font->lineHeight() + 6;
        sheet.fonts.push_back(name);
    }
    return sheet;
}

}  // namespace cli
