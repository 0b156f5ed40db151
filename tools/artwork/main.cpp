// artwork: draws every image of the panel with our own vector library and
// packs the tutorial's icons as a font. Run by hand; its output is
// committed under resources/, and the resource check draws everything
// again and compares.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "Images.h"
#include "Symbols.h"
#include "pixels/Png.h"
#include "tools/common/ToolFiles.h"

namespace {

using tools::readFile;

const char* const USAGE =
    "Usage:\n"
    "  artwork --out DIR [--scale N]     draw every image into DIR/images and the icon font into DIR/fonts\n"
    "  artwork --check DIR [--scale N]   draw them again and compare with DIR/images and DIR/fonts byte for byte\n"
    "  artwork --list                    the names of the images\n"
    "DIR is normally the resources folder. N is the pixel density (1: the panel as it is; 2: twice as dense).\n";

// Writes or compares one file; false when a comparison differs.
bool emit(const std::string& path, const std::string& bytes, bool checking) {
    if (!checking) {
        tools::writeFile(path, bytes.data(), bytes.size());
        return true;
    }
    bool found = false;
    const std::string stored = readFile(path, found);
    if (!found || stored != bytes) {
        std::printf("%s differs from what the drawing code makes\n", path.c_str());
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::string dir;
    bool checking = false;
    int scale = 1;
    try {
        for (int i = 1; i < argc; ++i) {
            const std::string a = argv[i];
            auto value = [&]() -> std::string {
                if (i + 1 >= argc) throw std::runtime_error(a + " needs a value");
                return argv[++i];
            };
            if (a == "--help" || a == "-h") {
                std::fputs(USAGE, stdout);
                return 0;
            } else if (a == "--list") {
                for (const artwork::ImageMaker& m : artwork::allImages()) std::printf("%s\n", m.name);
                return 0;
            } else if (a == "--out") {
                dir = value();
            } else if (a == "--check") {
                dir = value();
                checking = true;
            } else if (a == "--scale") {
                scale = std::stoi(value());
                if (scale < 1 || scale > 8) throw std::runtime_error("--scale takes 1 to 8");
            } else {
                throw std::runtime_error("unknown argument " + a);
            }
        }
        if (dir.empty()) throw std::runtime_error("nothing to do");
        bool same = true;
        for (const artwork::ImageMaker& m : artwork::allImages()) {
            const artwork::Picture p = m.draw(scale);
            const std::vector<std::uint8_t> png =
                OrlPixels::encodePng(p.pixels().data(), p.width(), p.height(), p.width());
            same = emit(dir + "/images/" + m.name + ".png", std::string(png.begin(), png.end()), checking) && same;
            std::printf("%s %dx%d\n", m.name, p.width(), p.height());
        }
        const artwork::BakedSymbols symbols = artwork::drawSymbols(scale);
        same = emit(dir + "/fonts/spsymbols.fnt", symbols.description, checking) && same;
        same = emit(dir + "/fonts/spsymbols_0.png", std::string(symbols.page.begin(), symbols.page.end()), checking) &&
               same;
        if (checking) std::printf(same ? "every image as committed\n" : "some images differ\n");
        return same ? 0 : 1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "artwork: %s\n%s", e.what(), USAGE);
        return 1;
    }
}
