// Host parameters of the plug-in core: reading, setting through the
// parameter setter's steps, the preview slot, and the texts the host reads.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "plugin/PluginCore.h"
#include "tests/plugin/BlockTestEngine.h"

namespace {

VstIntPtr VST_CALL quietHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

std::unique_ptr<PluginCore> makeCore() {
    return std::make_unique<PluginCore>(&quietHost, std::make_unique<BlockTestEngine>());
}

uint32_t stampOf(VersionedCell<NorvelleProgram>& cell) {
    NorvelleProgram* r = cell.acquire();
    const uint32_t s = r->stamp();
    cell.release(r);
    return s;
}

bool modifiedOf(VersionedCell<NorvelleProgram>& cell) {
    NorvelleProgram* r = cell.acquire();
    const bool m = r->modified;
    cell.release(r);
    return m;
}

}  // namespace

TEST(PluginParameters, SetThenGetThroughTheEffectRecord) {
    auto core = makeCore();
    AEffect* e = core->getAeffect();
    e->setParameter(e, 3, 0.75f);
    EXPECT_FLOAT_EQ(e->getParameter(e, 3), 0.75f);
    EXPECT_FLOAT_EQ(core->getParameter(3), 0.75f);
}

TEST(PluginParameters, SameValueTwiceChangesNoStampAndRaisesNoSecondRefresh) {
    auto core = makeCore();
    auto& slot = core->programSlot(0);
    EXPECT_TRUE(core->parameterChanged(4, 0.2f));
    const uint32_t stamp = stampOf(slot);
    EXPECT_EQ(core->guiRefresh().exchange(0), 1);
    EXPECT_FALSE(core->parameterChanged(4, 0.2f));
    EXPECT_EQ(stampOf(slot), stamp);
    EXPECT_EQ(core->guiRefresh().load(), 0);
}

TEST(PluginParameters, ChangeTakesAFreshStampAndMarksModified) {
    auto core = makeCore();
    auto& slot = core->programSlot(0);
    const uint32_t before = stampOf(slot);
    EXPECT_FALSE(modifiedOf(slot));
    EXPECT_TRUE(core->parameterChanged(7, 0.9f));
    EXPECT_NE(stampOf(slot), before);
    EXPECT_TRUE(modifiedOf(slot));
}

TEST(PluginParameters, ModWheelDoesNotDirtyThePatch) {
    auto core = makeCore();
    auto& slot = core->programSlot(0);
    const uint32_t before = stampOf(slot);
    EXPECT_TRUE(core->parameterChanged(0, 0.6f));
    EXPECT_NE(stampOf(slot), before);
    EXPECT_FALSE(modifiedOf(slot));
}

TEST(PluginParameters, GuiRefreshIsRaisedOnlyFromZero) {
    auto core = makeCore();
    core->guiRefresh().store(2);
    EXPECT_TRUE(core->parameterChanged(1, 0.3f));
    EXPECT_EQ(core->guiRefresh().load(), 2);
}

TEST(PluginParameters, PreviewSlotFollowsOnlyWhilePreviewing) {
    auto core = makeCore();
    core->parameterChanged(2, 0.1f);
    NorvelleProgram* p = core->previewSlot().acquire();
    EXPECT_FLOAT_EQ(p->param(2), 0.5f);
    core->previewSlot().release(p);

    core->setPreviewing(true);
    core->parameterChanged(2, 0.2f);
    p = core->previewSlot().acquire();
    EXPECT_FLOAT_EQ(p->param(2), 0.2f);
    core->previewSlot().release(p);
    EXPECT_FLOAT_EQ(core->getParameter(2), 0.2f);
}

TEST(PluginParameters, OutOfRangeIndexIsIgnored) {
    auto core = makeCore();
    EXPECT_FALSE(core->parameterChanged(21, 0.5f));
    EXPECT_FALSE(core->parameterChanged(-1, 0.5f));
    EXPECT_EQ(core->getParameter(21), 0.0f);
    char text[64] = "x";
    core->getParameterDisplay(21, text);
    EXPECT_STREQ(text, "");
}

TEST(PluginParameters, HostValuesAreKeptBetweenZeroAndOne) {
    auto core = makeCore();
    core->setParameter(1, 1.5f);
    EXPECT_EQ(core->getParameter(1), 1.0f);
    core->setParameter(1, -0.5f);
    EXPECT_EQ(core->getParameter(1), 0.0f);
    core->setParameter(1, std::nanf(""));
    EXPECT_EQ(core->getParameter(1), 0.0f);
}

TEST(PluginParameters, DispatcherGivesNamesLabelsAndDisplays) {
    auto core = makeCore();
    AEffect* e = core->getAeffect();
    char text[64];
    e->dispatcher(e, effGetParamName, 6, 0, text, 0);
    EXPECT_STREQ(text, "WheelScale");
    e->dispatcher(e, effGetParamLabel, 1, 0, text, 0);
    EXPECT_STREQ(text, "degrees");
    e->dispatcher(e, effGetParamDisplay, 5, 0, text, 0);
    EXPECT_STREQ(text, "223.61 ms");
    e->dispatcher(e, effGetParamDisplay, 2, 0, text, 0);
    EXPECT_STREQ(text, "+0 ct");
    e->setParameter(e, 8, 0.0f);
    e->dispatcher(e, effGetParamDisplay, 8, 0, text, 0);
    EXPECT_STREQ(text, "-inf");
}

TEST(PluginParameters, DisplayIsCutToTwentyFourBytes) {
    auto core = makeCore();
    char text[64];
    std::memset(text, 'x', sizeof text);
    core->getParameterDisplay(0, text);
    EXPECT_LT(std::strlen(text), 24u);
}
