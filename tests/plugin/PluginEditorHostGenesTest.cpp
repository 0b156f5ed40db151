// The genes through the plug-in's editor host: an edit reaches the current
// program and the sound at once, one edit is one undo step "Gene
// Modifications", and the DNA view's drags go through it.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "patch/GeneTable.h"
#include "plugin/PluginCore.h"
#include "plugin/PluginEditorHost.h"
#include "views/DnaHelix.h"
#include "views/DnaView.h"
#include "views/LivingViews.h"

namespace {

VstIntPtr VST_CALL quietHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

// An engine that keeps the genes of the program of its last block.
class GeneEngine : public RenderInterface {
public:
    std::vector<float> heard;
    int blocks = 0;

    void init(float, uint32_t) override {}
    void render(const NorvelleProgram& program, const MidiConfigRecord&, int, const TimedEvent*, float* left,
                float* right, bool& silent) override {
        heard.assign(program.genes, program.genes + GENE_COUNT);
        ++blocks;
        for (int i = 0; i < BLOCK; ++i) left[i] = right[i] = 0.0f;
        silent = true;
    }
    void copyVisualState(VisualState& target) const override { target = VisualState{}; }
};

struct Rig {
    GeneEngine* engine = nullptr;
    std::unique_ptr<PluginCore> plugin;
    int limit = 100;
    std::unique_ptr<PluginEditorHost> host;

    Rig() {
        auto e = std::make_unique<GeneEngine>();
        engine = e.get();
        plugin = std::make_unique<PluginCore>(&quietHost, std::move(e));
        plugin->resume();
        host = std::make_unique<PluginEditorHost>(*plugin, limit);
        block();
    }
    // One host call of a block; the engine hears the program as it is.
    void block() {
        std::vector<float> left(64), right(64);
        float* outs[2] = {left.data(), right.data()};
        plugin->processReplacing(nullptr, outs, 64);
    }
    float gene(int i) { return plugin->currentProgramRecord().genes[i]; }
};

}  // namespace

TEST(PluginEditorHostGenesTest, TheHostTellsTheGenomeOfTheCurrentProgram) {
    Rig r;
    EXPECT_EQ(r.host->geneCount(), 37);
    EXPECT_EQ(r.host->geneName(0), "env_time");
    EXPECT_EQ(r.host->geneName(36), "fx_size");
    EXPECT_EQ(r.host->geneName(37), "");
    EXPECT_DOUBLE_EQ(r.host->geneValue(16), 0.5);
    EXPECT_DOUBLE_EQ(r.host->geneInitValue(16), 0.5);
}

TEST(PluginEditorHostGenesTest, AnEditReachesTheProgramAndTheSoundAtOnceAndIsOneUndoStep) {
    Rig r;
    const int before = r.engine->blocks;
    r.host->beginGeneEdit();
    r.host->changeGene(Gene::flt_freq, 0.6);
    r.block();
    // The very next block sounds with the change, in the middle of the drag.
    EXPECT_GT(r.engine->blocks, before);
    EXPECT_FLOAT_EQ(r.engine->heard[Gene::flt_freq], 0.6f);
    r.host->changeGene(Gene::flt_freq, 0.75);
    r.host->changeGene(Gene::flt_q, 0.25);
    r.host->endGeneEdit();
    r.block();
    EXPECT_FLOAT_EQ(r.gene(Gene::flt_freq), 0.75f);
    EXPECT_FLOAT_EQ(r.engine->heard[Gene::flt_freq], 0.75f);
    EXPECT_FLOAT_EQ(r.engine->heard[Gene::flt_q], 0.25f);
    EXPECT_TRUE(r.plugin->currentProgramRecord().modified);
    EXPECT_EQ(r.host->history().position(), 1u);
    EXPECT_EQ(r.host->undoLabel(), "Gene Modifications");

    // Undo takes the whole edit back, and the sound hears that too.
    r.host->undo();
    r.block();
    EXPECT_FLOAT_EQ(r.gene(Gene::flt_freq), 0.5f);
    EXPECT_FLOAT_EQ(r.gene(Gene::flt_q), 0.5f);
    EXPECT_FLOAT_EQ(r.engine->heard[Gene::flt_freq], 0.5f);
    EXPECT_FALSE(r.plugin->currentProgramRecord().modified);
    r.host->redo();
    EXPECT_FLOAT_EQ(r.gene(Gene::flt_freq), 0.75f);
}

TEST(PluginEditorHostGenesTest, EachEditIsAStepOfItsOwnAndAnEditThatChangesNothingMakesNone) {
    Rig r;
    r.host->beginGeneEdit();
    r.host->changeGene(0, 0.5);  // the value it has
    r.host->endGeneEdit();
    EXPECT_EQ(r.host->history().position(), 0u);
    for (int step = 1; step <= 2; ++step) {
        r.host->beginGeneEdit();
        r.host->changeGene(0, 0.5 + 0.1 * step);
        r.host->endGeneEdit();
        EXPECT_EQ(r.host->history().position(), std::size_t(step));
    }
    // Values beyond the range are held to it.
    r.host->beginGeneEdit();
    r.host->changeGene(3, 7.0);
    r.host->endGeneEdit();
    EXPECT_FLOAT_EQ(r.gene(3), 1.0f);
}

TEST(PluginEditorHostGenesTest, ADragOnTheDnaViewChangesThePluginsGeneAsOneStep) {
    Rig r;
    views::registerLivingViews();
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(*r.host, clock);
    editor.openLayoutText("views: { { type: \"dna\", label: \"dna\", bounds: { 12, 82, 360, 420 } } }");
    for (int i = 0; i < 1600; ++i) {
        clock.advance(1);
        editor.idle();
    }
    auto& view = static_cast<views::DnaView&>(*editor.root()->findView("dna"));
    const views::DnaEnd ball = views::dnaRungAt(view.shape(), Gene::vol_sus).ends[0];
    const int x = int(std::lround(ball.x)), y = int(std::lround(ball.y));
    editor.mouseDown({x, y, Fomal::LEFT_BIT});
    for (int i = 1; i <= 30; ++i) editor.mouseMove({x, y - i, Fomal::LEFT_BIT});
    editor.mouseUp({x, y - 30, Fomal::LEFT_BIT});
    r.block();
    EXPECT_NEAR(r.gene(Gene::vol_sus), 0.5 + 30 * views::DnaView::DRAG_SCALE, 1e-6);
    EXPECT_NEAR(r.engine->heard[Gene::vol_sus], 0.5 + 30 * views::DnaView::DRAG_SCALE, 1e-6);
    EXPECT_EQ(r.host->history().position(), 1u);
    EXPECT_EQ(r.host->undoLabel(), "Gene Modifications");
}

TEST(PluginEditorHostGenesTest, AnUndoOutsideTheDnaViewShowsInItsValueBoxAtOnce) {
    Rig r;
    views::registerLivingViews();
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(*r.host, clock);
    editor.openLayoutText("views: { { type: \"dna\", label: \"dna\", bounds: { 12, 82, 360, 420 } } }");
    for (int i = 0; i < 1600; ++i) {
        clock.advance(1);
        editor.idle();
    }
    auto& view = static_cast<views::DnaView&>(*editor.root()->findView("dna"));
    const Fomal::RectF box = view.valueBox(Gene::env_tilt);
    auto boxPixels = [&] {
        editor.paint();
        std::vector<OrlPixels::Pixel> p;
        for (int y = int(box.top); y < int(box.bottom()); ++y)
            for (int x = int(box.left); x < int(box.right()); ++x) p.push_back(editor.pixels()[y * 384 + x]);
        return p;
    };
    editor.mouseMove({2, 2, 0});
    const std::vector<OrlPixels::Pixel> before = boxPixels();
    r.host->beginGeneEdit();
    r.host->changeGene(Gene::env_tilt, 0.9);
    r.host->endGeneEdit();
    editor.idle();
    const std::vector<OrlPixels::Pixel> changed = boxPixels();
    EXPECT_NE(changed, before);
    r.host->undo();
    editor.idle();
    EXPECT_EQ(boxPixels(), before);
}
