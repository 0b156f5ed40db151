#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/PanelPreferences.h"
#include "cli/PanelEvents.h"
#include "cli/RecordJson.h"
#include "cli/RecordOptions.h"
#include "fomal/EditorCore.h"
#include "fomal/ScriptRandom.h"
#include "fomal/LayoutView.h"
#include "fomal/MessageCatalogue.h"
#include "fomal/View.h"
#include "notation/Escape.h"
#include "patch/FactoryPatches.h"
#include "patch/ProgramText.h"
#include "pixels/Png.h"
#include "platform/Exceptions.h"
#include "plugin/PluginCore.h"
#include "plugin/PluginEditorHost.h"
#include "views/ApplicationScripts.h"
#include "views/LivingViews.h"

namespace cli {

const char* const kPanelUsage =
    "Usage: tendrane panel [FILE.tdrn | --factory N] [record options]\n"
    "                      [--layout NAME | --layout-file FILE.fomal] [--events FILE]\n"
    "                      [--tree] [--print-patch] [-o OUT.png]\n"
    "\n"
    "Opens the editor headlessly over the plug-in with the patch given (the Init\n"
    "patch by default), runs the scripted events on a virtual clock and writes\n"
    "the 384 x 512 panel as a PNG. The same events give the same image, bit for\n"
    "bit. Every alert prints 'alert: TITLE: TEXT' on standard error as it\n"
    "appears; when the editor cannot open, it prints that alert and exits with\n"
    "status 1.\n"
    "\n"
    "  --factory N          factory patch N, 0 to 15\n"
    "  --layout NAME        opens the product's layout of that name (\"dna\", \"midi\",\n"
    "                       \"about\", ...) as a modal over the main panel, as its\n"
    "                       menu entry does, and lets it come in for 1 s first\n"
    "  --layout-file FILE   a layout from a file (how a layout author previews work)\n"
    "  --events FILE        events, one a line:\n"
    "                         move X Y, down X Y [MODS], up X Y [MODS],\n"
    "                         click X Y [MODS], drag X1 Y1 X2 Y2 [STEPS] [MODS],\n"
    "                         key NAME [MODS], wait MS, note PITCH VELOCITY,\n"
    "                         noteoff PITCH, suspend, resume, shot FILE.png,\n"
    "                         choose TITLE (an entry of the open menu, a\n"
    "                         button of the open alert, a file, folder or\n"
    "                         button of the open file dialog, a control or\n"
    "                         button of the MIDI configuration dialog)\n"
    "                       MODS: shift, control, alt, right. Time moves only in\n"
    "                       'wait'; '#' starts a comment line\n"
    "  --tree               print the view tree as JSON after the events: type,\n"
    "                       label, bounds [left, top, width, height] in panel\n"
    "                       coordinates, visible, children\n"
    "  --print-patch        print the current patch text after the events\n"
    "  --first-start        the panel as a new player first sees it, the tutorial\n"
    "                       opening by itself; without it the panel is a returning\n"
    "                       player's, who has finished the tutorial (either way the\n"
    "                       run ignores where a tutorial was left before)\n"
    "  -o, --output FILE    the PNG to write after the events\n"
    "\n" TENDRANE_RECORD_OPTIONS_USAGE;

namespace {

constexpr double RATE = 44100.0;
constexpr int BLOCK = 64;
constexpr int UNDO_LIMIT = 100;
// How long a layout opened with --layout is given to come in.
constexpr std::int64_t MODAL_OPENING_MS = 1000;

VstIntPtr VST_CALL panelHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

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

std::string readFile(const std::string& path, const char* what) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Exception(std::string("Could not obtain ") + what + " : " + path);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The editor over a plug-in instance that renders its sound as the virtual
// clock moves, so that notes reach the panel as they would in a host.
class PanelSession {
public:
    explicit PanelSession(const NorvelleProgram& program)
        : plugin_(std::make_unique<PluginCore>(&panelHost)),
          host_(*plugin_, undoLimit_, [](std::string_view label) { return Fomal::MessageCatalogue::product().lookup(label); }),
          editor_(host_, clock_) {
        plugin_->fixNoiseSeed(1);
        // Random names and seeds come out the same on every run.
        Fomal::ScriptRandom::process() = Fomal::ScriptRandom(0x5EED0001u, 0x5EED0002u);
        plugin_->setSampleRate(float(RATE));
        plugin_->setBlockSize(BLOCK);
        // The slots hold the factory patches, as in a new instance, with
        // the patch given in the first.
        for (int i = 1; i < PluginCore::PROGRAM_COUNT && i < FACTORY_PATCH_COUNT; ++i)
            plugin_->programSlot(i).publish(factoryProgram(i));
        plugin_->programSlot(0).publish(program);
        plugin_->resume();
        editor_.onAlert = [](const std::string& title, const std::string& text) {
            std::fprintf(stderr, "alert: %s: %s\n", title.c_str(), text.c_str());
        };
    }

    Fomal::EditorCore& editor() { return editor_; }
    PluginCore& plugin() { return *plugin_; }
    PluginEditorHost& host() { return host_; }

    void run(const PanelEvent& e) {
        using Kind = PanelEvent::Kind;
        switch (e.kind) {
            case Kind::move: editor_.mouseMove({e.x, e.y, 0}); break;
            case Kind::down: editor_.mouseDown({e.x, e.y, e.modifiers}); break;
            case Kind::up: editor_.mouseUp({e.x, e.y, e.modifiers}); break;
            case Kind::click:
                editor_.mouseDown({e.x, e.y, e.modifiers});
                editor_.mouseUp({e.x, e.y, e.modifiers});
                break;
            case Kind::drag:
                editor_.mouseDown({e.x, e.y, e.modifiers});
                for (int i = 1; i <= e.steps; ++i) {
                    const int x = e.x + int((long long)(e.x2 - e.x) * i / e.steps);
                    const int y = e.y + int((long long)(e.y2 - e.y) * i / e.steps);
                    editor_.mouseMove({x, y, e.modifiers});
                }
                editor_.mouseUp({e.x2, e.y2, e.modifiers});
                break;
            case Kind::key: {
                const std::uint32_t character = e.text.size() == 1 ? std::uint32_t(static_cast<unsigned char>(e.text[0])) : 0;
                editor_.keyDown({e.text, character, e.modifiers});
                break;
            }
            case Kind::wait:
                for (std::int64_t i = 0; i < e.ms; ++i) {
                    clock_.advance(1);
                    renderUntil(clock_.milliseconds());
                    editor_.idle();
                }
                break;
            case Kind::note: queueNote(0x90, e.pitch, e.velocity); break;
            case Kind::noteOff: queueNote(0x80, e.pitch, 64); break;
            case Kind::suspend: plugin_->suspend(); break;
            case Kind::resume: plugin_->resume(); break;
            case Kind::shot: writePng(e.text); break;
            case Kind::choose:
                if (!editor_.choose(e.text))
                    throw UsageError("events line " + std::to_string(e.line) + ": no menu entry or alert button '" +
                                     e.text + "' is open");
                break;
        }
    }

    void writePng(const std::string& path) {
        editor_.paint();
        // What a window shows: the panel over the window's black, where
        // the colour bytes of a premultiplied pixel are its colour.
        std::vector<OrlPixels::Pixel> shown(editor_.pixels());
        for (OrlPixels::Pixel& p : shown) p |= 0xFF000000u;
        const std::vector<std::uint8_t> png = OrlPixels::encodePng(
            shown.data(), Fomal::EditorCore::WIDTH, Fomal::EditorCore::HEIGHT, Fomal::EditorCore::WIDTH);
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char*>(png.data()), std::streamsize(png.size()));
        if (!out || png.empty()) throw Exception("Could not write " + path);
    }

private:
    void queueNote(int status, int pitch, int velocity) {
        TimedEvent e;
        e.time = 0;
        e.status = std::uint8_t(status);
        e.data1 = std::uint8_t(pitch);
        e.data2 = std::uint8_t(velocity);
        plugin_->queueHostEvent(e);
    }

    // The sound up to the clock's time, in the blocks a host would call.
    void renderUntil(std::int64_t ms) {
        const std::int64_t target = std::int64_t(double(ms) * RATE / 1000.0);
        float left[BLOCK], right[BLOCK];
        float* outs[2] = {left, right};
        while (rendered_ < target) {
            const int n = int(std::min<std::int64_t>(BLOCK, target - rendered_));
            plugin_->processReplacing(nullptr, outs, n);
            rendered_ += n;
        }
    }

    int undoLimit_ = UNDO_LIMIT;
    std::unique_ptr<PluginCore> plugin_;
    PluginEditorHost host_;
    Fomal::VirtualClock clock_;
    Fomal::EditorCore editor_;
    std::int64_t rendered_ = 0;
};

}  // namespace

int runPanel(const std::vector<std::string>& args) {
    std::vector<OptionSpec> specs = {{"factory", 0, true, false},     {"layout", 0, true, false},
                                     {"layout-file", 0, true, false}, {"events", 0, true, false},
                                     {"tree", 0, false, false},       {"print-patch", 0, false, false},
                                     {"first-start", 0, false, false},
                                     {"output", 'o', true, false}};
    for (const OptionSpec& s : recordOptionSpecs()) specs.push_back(s);
    Options options(specs);
    options.parse(args);
    if (options.has("help")) {
        std::fputs(kPanelUsage, stdout);
        return 0;
    }
    if (options.positional().size() > 1) throw UsageError("unexpected argument '" + options.positional()[1] + "'");
    const std::string patchFile = options.positional().empty() ? std::string() : options.positional().front();
    if (!patchFile.empty() && options.has("factory")) throw UsageError("give either FILE.tdrn or --factory");
    if (options.has("layout") && options.has("layout-file")) throw UsageError("give either --layout or --layout-file");
    if (!options.has("output") && !options.has("tree") && !options.has("print-patch"))
        throw UsageError("missing -o OUT.png (or --tree, --print-patch)");

    NorvelleProgram program;
    if (options.has("factory")) {
        const long long n = parseInteger("factory", options.value("factory"));
        if (n < 0 || n >= FACTORY_PATCH_COUNT) throw UsageError("option '--factory' must be 0 to 15");
        if (hasRecordOptions(options)) throw UsageError("record options can't be combined with --factory");
        program = factoryProgram(int(n));
    } else {
        program = buildRecord(options, patchFile);
    }
    // Every event is read before the editor opens: a bad line runs nothing.
    std::vector<PanelEvent> events;
    if (options.has("events")) events = parsePanelEvents(readFile(options.value("events"), "events"));

    // Before anything reads a preference: the tutorial's place is the run's.
    static PanelPreferences preferences;
    preferences.startRun(options.has("first-start"));
    setProcessPreferenceBackend(&preferences);
    views::registerLivingViews();
    PanelSession session(program);
    Fomal::EditorCore& editor = session.editor();
    // The editor opens as in a host; when it cannot, the alert it shows
    // went to the error output, and the panel stays empty.
    const Fomal::ScriptSetup scripts = views::applicationScripts(session.host(), editor);
    const bool opened = options.has("layout-file")
                            ? editor.openText(scripts, readFile(options.value("layout-file"), "layout"))
                            : editor.open(scripts, "main");
    if (!opened) return 1;
    // Another layout of the product opens as the panel's scripts open it,
    // as a modal over the main panel, and comes fully in before the events.
    if (options.has("layout") && options.value("layout") != "main") {
        const std::string name = options.value("layout");
        editor.actions().perform(*editor.root(), ">modal", notation::escape(name), true);
        if (editor.root()->findView(name) == nullptr) return 1;
        PanelEvent settle;
        settle.kind = PanelEvent::Kind::wait;
        settle.ms = MODAL_OPENING_MS;
        session.run(settle);
    }
    for (const PanelEvent& e : events) session.run(e);

    editor.paint();
    if (options.has("tree")) {
        std::string json;
        printTree(*editor.root(), 0, json);
        std::printf("%s\n", json.c_str());
    }
    if (options.has("print-patch")) std::printf("%s\n", writeProgramText(session.plugin().currentProgramRecord(), false).c_str());
    if (options.has("output")) session.writePng(options.value("output"));
    return 0;
}

}  // namespace cli
