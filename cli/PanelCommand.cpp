#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "cli/Command.h"
#include "cli/Options.h"
#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"
#include "fomal/View.h"
#include "pixels/Png.h"
#include "platform/Exceptions.h"
#include "cli/RecordJson.h"

namespace cli {

const char* const kPanelUsage =
    "Usage: tendrane panel --layout-file FILE.fomal [--tree] -o OUT.png\n"
    "\n"
    "Opens a layout headlessly on the 384 x 512 panel and writes the panel as a\n"
    "PNG image. Texts show the Init patch's name.\n"
    "\n"
    "  --layout-file FILE  the layout to open, as a file (how a layout author\n"
    "                      previews work)\n"
    "  --tree              print the view tree as JSON: type, label, bounds in\n"
    "                      panel coordinates [left, top, width, height], visible,\n"
    "                      children\n"
    "  -o, --output FILE   the PNG to write\n"
    "\n"
    "The panel's own layouts, events, scripts and the plug-in behind the panel\n"
    "come with the editor; until then a layout is shown as it stands.\n";

namespace {

void printTree(const Fomal::View& v, int depth, std::string& out) {
    const std::string indent(std::size_t(depth) * 2, ' ');
    const OrlPixels::IntRect r = v.pixelRect();
    char bounds[96];
    std::snprintf(bounds, sizeof bounds, "[%d, %d, %d, %d]", r.left, r.top, r.width, r.height);
    out += indent + "{\"type\": " + jsonString(v.type()) + ", \"label\": " + jsonString(v.label()) +
           ", \"bounds\": " + bounds + ", \"visible\": " + (v.hidden() ? "false" : "true") + ", \"children\": [";
    if (v.children().empty()) {
        out += "]}";
        return;
    }
    out += "\n";
    for (std::size_t i = 0; i < v.children().size(); ++i) {
        printTree(*v.children()[i], depth + 1, out);
        out += i + 1 < v.children().size() ? ",\n" : "\n";
    }
    out += indent + "]}";
}

}  // namespace

int runPanel(const std::vector<std::string>& args) {
    Options options({{"layout-file", 0, true, false}, {"tree", 0, false, false}, {"output", 'o', true, false}});
    options.parse(args);
    if (options.has("help")) {
        std::fputs(kPanelUsage, stdout);
        return 0;
    }
    if (!options.positional().empty())
        throw UsageError("unexpected argument '" + options.positional().front() + "'");
    if (!options.has("layout-file")) throw UsageError("missing --layout-file FILE.fomal (the panel's own layouts come with the editor)");
    if (!options.has("output") && !options.has("tree")) throw UsageError("missing -o OUT.png");
    const std::string file = options.value("layout-file");
    std::ifstream in(file, std::ios::binary);
    if (!in) throw Exception("Could not obtain layout : " + file);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());

    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(host, clock);
    try {
        editor.openLayoutText(text);
    } catch (const std::exception& e) {
        // The editor cannot open: the alert it would show, and nothing drawn.
        std::fprintf(stderr, "alert: Tendrane: Error: %s\n", e.what());
        return 1;
    }
    editor.paint();
    if (options.has("tree")) {
        std::string json;
        printTree(*editor.root(), 0, json);
        std::printf("%s\n", json.c_str());
    }
    if (options.has("output")) {
        const std::string path = options.value("output");
        const std::vector<std::uint8_t> png =
            OrlPixels::encodePng(editor.pixels().data(), Fomal::EditorCore::WIDTH, Fomal::EditorCore::HEIGHT,
                                 Fomal::EditorCore::WIDTH);
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(png.data()), std::streamsize(png.size()));
        if (!out || png.empty()) throw Exception("Could not write " + path);
    }
    return 0;
}

}  // namespace cli
