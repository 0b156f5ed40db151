// Opening and closing the editor as a host does, without a window: the
// constants, the shared scripts (a first editor of the process runs the
// application script), the editor's own script, the main layout with its
// images and fonts, and the first full paint; then closing it, which with
// the last editor tears the shared scripts down again.
#include <benchmark/benchmark.h>

#include <memory>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "fomal/MessageCatalogue.h"
#include "plugin/PluginCore.h"
#include "plugin/PluginEditorHost.h"
#include "views/ApplicationScripts.h"
#include "views/LivingViews.h"

namespace {

VstIntPtr VST_CALL quietHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

struct Editor {
    int limit = 100;
    PluginEditorHost host;
    Fomal::SteadyClock clock;
    Fomal::EditorCore core;
    explicit Editor(PluginCore& plugin)
        : host(plugin, limit, [](std::string_view label) { return Fomal::MessageCatalogue::product().lookup(label); }),
          core(host, clock) {}
};

void BM_EditorOpen(benchmark::State& state) {
    views::registerLivingViews();
    PluginCore plugin(&quietHost);
    for (auto _ : state) {
        auto editor = std::make_unique<Editor>(plugin);
        const bool opened = editor->core.open(views::applicationScripts(editor->host, editor->core));
        benchmark::DoNotOptimize(editor->core.paint());
        if (!opened) state.SkipWithError("the editor did not open");
        state.PauseTiming();
        editor->core.close();
        editor.reset();
        state.ResumeTiming();
    }
}

void BM_EditorClose(benchmark::State& state) {
    views::registerLivingViews();
    PluginCore plugin(&quietHost);
    for (auto _ : state) {
        state.PauseTiming();
        auto editor = std::make_unique<Editor>(plugin);
        editor->core.open(views::applicationScripts(editor->host, editor->core));
        editor->core.paint();
        state.ResumeTiming();
        editor->core.close();
        editor.reset();
    }
}

}  // namespace

BENCHMARK(BM_EditorOpen)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EditorClose)->Unit(benchmark::kMillisecond);
