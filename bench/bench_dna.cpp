// The DNA view turning at rest over a plug-in: one frame is the view's tick
// and the repaint of what it invalidated (the whole view), as the editor
// does 30 times a second. Reports milliseconds per frame, and the share of
// a core of one second of frames.
#include <benchmark/benchmark.h>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "plugin/PluginCore.h"
#include "plugin/PluginEditorHost.h"
#include "views/DnaSettings.h"
#include "views/LivingViews.h"

namespace {

VstIntPtr VST_CALL quietHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

// The DNA view with the panel's keys where the DNA page stands, on a light
// ground, after its opening.
struct DnaPage {
    int limit = 100;
    PluginCore plugin{&quietHost};
    PluginEditorHost host{plugin, limit};
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};

    DnaPage() {
        views::registerLivingViews();
        std::string keys = views::dnaPanelKeys();
        keys = keys.substr(keys.find('{') + 1);
        core.openLayoutText("bounds: { 12, 82, 360, 420 }\n"
                            "views: { { type: \"gradient\", start: { 0, 0 }, end: { 0, 420 },\n"
                            "           stops: { { 0.0, 0xFFF4F1E6 }, { 1.0, 0xFFE2DCC8 } } }\n"
                            "         { type: \"dna\", label: \"dna\", " +
                            keys + " }");
        for (int i = 0; i < 60; ++i) frame();
    }
    void frame() {
        clock.advance(33);
        core.idle();
        core.paint();
    }
};

void BM_DnaFrameTurning(benchmark::State& state) {
    DnaPage page;
    for (auto _ : state) page.frame();
    state.SetLabel("tick and repaint of the turning molecule");
}
BENCHMARK(BM_DnaFrameTurning)->Unit(benchmark::kMillisecond);

// A second of the molecule turning at 30 frames a second: the time per
// iteration over one second is the share of a core.
void BM_DnaOneSecondAt30Fps(benchmark::State& state) {
    DnaPage page;
    for (auto _ : state)
        for (int i = 0; i < 30; ++i) page.frame();
    state.SetLabel("one second of the turning molecule; ms / 1000 = share of a core");
}
BENCHMARK(BM_DnaOneSecondAt30Fps)->Unit(benchmark::kMillisecond);

}  // namespace
