#include <cstdio>
#include <fstream>

#include "cli/ArtworkSheet.h"
#include "cli/Command.h"
#include "cli/Options.h"
#include "pixels/Png.h"
#include "platform/Exceptions.h"

namespace cli {

const char* const kArtworkSheetUsage =
    "Usage: tendrane artwork-sheet [--list] -o OUT.png\n"
    "\n"
    "Draws one contact sheet of the panel's artwork: every image with all its\n"
    "film frames side by side, each labelled with its name, and a line of every\n"
    "font's characters.\n"
    "\n"
    "  -o, --output FILE   the PNG to write\n"
    "  --list              also print each image's name, frame size and frame count\n";

int runArtworkSheet(const std::vector<std::string>& args) {
    Options options({{"output", 'o', true, false}, {"list", 0, false, false}});
    options.parse(args);
    if (options.has("help")) {
        std::fputs(kArtworkSheetUsage, stdout);
        return 0;
    }
    if (!options.positional().empty())
        throw UsageError("unexpected argument '" + options.positional().front() + "'");
    if (!options.has("output")) throw UsageError("missing -o OUT.png");
    const ArtworkSheet sheet = drawArtworkSheet();
    const std::vector<std::uint8_t> png = OrlPixels::encodePng(sheet.pixels.data(), sheet.width, sheet.height, sheet.width);
    const std::string path = options.value("output");
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(png.data()), std::streamsize(png.size()));
    if (!out || png.empty()) throw Exception("Could not write " + path);
    if (options.has("list")) {
        for (const SheetEntry& e : sheet.images)
            std::printf("%s %dx%d x%d\n", e.name.c_str(), e.width, e.height, e.frames);
        for (const std::string& f : sheet.fonts) std::printf("font %s\n", f.c_str());
    }
    std::fprintf(stderr, "artwork-sheet: %zu images, %zu fonts, %dx%d -> %s\n", sheet.images.size(), sheet.fonts.size(),
                 sheet.width, sheet.height, path.c_str());
    return 0;
}

}  // namespace cli
