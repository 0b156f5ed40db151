// fontbake: makes the panel's glyph atlases from freely licensed faces.
// Run by hand; its output is committed under resources/fonts/, and the
// resource check bakes everything again and compares.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "Baker.h"
#include "FontTable.h"
#include "tools/common/ToolFiles.h"

namespace {

using tools::readFile;
using tools::writeFile;

const char* const USAGE =
    "Usage:\n"
    "  fontbake --all DIR [--scale N]      bake every font of the panel into DIR\n"
    "  fontbake --check DIR [--scale N]    bake them again and compare with the files in DIR, byte for byte\n"
    "  fontbake --face FILE --size PIXELS --name NAME [--oblique] [--scale N] -o DIR\n"
    "                                       bake one face\n"
    "Each font is NAME.fnt (the glyph description) and NAME_0.png (its atlas page).\n";

void save(const fontbake::BakeRequest& r, const std::string& dir) {
    const fontbake::BakedFiles f = fontbake::bake(r);
    writeFile(dir + "/" + r.name + ".fnt", f.description.data(), f.description.size());
    writeFile(dir + "/" + r.name + "_0.png", f.page.data(), f.page.size());
    std::printf("%s: %zu bytes of description, %zu bytes of page\n", r.name.c_str(), f.description.size(),
                f.page.size());
}

// True when both files of the font are as committed.
bool check(const fontbake::BakeRequest& r, const std::string& dir) {
    const fontbake::BakedFiles f = fontbake::bake(r);
    bool ok = true;
    bool found = false;
    const std::string fnt = readFile(dir + "/" + r.name + ".fnt", found);
    if (!found || fnt != f.description) {
        std::printf("%s.fnt differs from what the face bakes\n", r.name.c_str());
        ok = false;
    }
    const std::string png = readFile(dir + "/" + r.name + "_0.png", found);
    if (!found || png != std::string(f.page.begin(), f.page.end())) {
        std::printf("%s_0.png differs from what the face bakes\n", r.name.c_str());
        ok = false;
    }
    if (ok) std::printf("%s: same\n", r.name.c_str());
    return ok;
}

}  // namespace

int main(int argc, char** argv) {
    std::string all, checkDir, out;
    fontbake::BakeRequest one;
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
            } else if (a == "--all") {
                all = value();
            } else if (a == "--check") {
                checkDir = value();
            } else if (a == "--scale") {
                scale = std::stoi(value());
                if (scale < 1 || scale > 8) throw std::runtime_error("--scale takes 1 to 8");
            } else if (a == "--face") {
                one.faceFile = value();
            } else if (a == "--size") {
                one.pixelSize = std::stoi(value());
            } else if (a == "--name") {
                one.name = value();
            } else if (a == "--oblique") {
                one.oblique = true;
            } else if (a == "-o") {
                out = value();
            } else {
                throw std::runtime_error("unknown argument " + a);
            }
        }
        if (!all.empty() || !checkDir.empty()) {
            bool ok = true;
            for (const fontbake::BakedFont& f : fontbake::PANEL_FONTS) {
                const fontbake::BakeRequest r{f.name, f.faceFile, f.pixelSize, f.oblique, scale};
                if (!all.empty()) save(r, all);
                else ok = check(r, checkDir) && ok;
            }
            return ok ? 0 : 1;
        }
        if (one.faceFile.empty() || one.name.empty() || out.empty()) throw std::runtime_error("nothing to bake");
        one.scale = scale;
        save(one, out);
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "fontbake: %s\n%s", e.what(), USAGE);
        return 1;
    }
}
