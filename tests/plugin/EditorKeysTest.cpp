// Keys forwarded by the host: translated to the editor's key events and
// handed to the open editor, whose answer goes back to the host.
#include "plugin/EditorKeys.h"

#include <gtest/gtest.h>

#include <memory>

#include "fomal/Clock.h"
#include "fomal/EditorCore.h"
#include "plugin/PluginCore.h"
#include "plugin/PluginEditorHost.h"
#include "tests/plugin/BlockTestEngine.h"

namespace {

VstIntPtr VST_CALL quietHost(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

}  // namespace

TEST(EditorKeysTest, NamedKeysCharactersAndModifiers) {
    const auto ret = keyEventFromHost(0, VKEY_RETURN, 0);
    ASSERT_TRUE(ret);
    EXPECT_EQ(ret->name, "return");
    const auto left = keyEventFromHost(0, VKEY_LEFT, float(MODIFIER_SHIFT | MODIFIER_CONTROL));
    ASSERT_TRUE(left);
    EXPECT_EQ(left->name, "left");
    EXPECT_EQ(left->modifiers, Fomal::SHIFT_BIT | Fomal::CONTROL_BIT);
    const auto a = keyEventFromHost('a', 0, float(MODIFIER_ALTERNATE));
    ASSERT_TRUE(a);
    EXPECT_EQ(a->name, "a");
    EXPECT_EQ(a->character, std::uint32_t('a'));
    EXPECT_EQ(a->modifiers, Fomal::ALT_BIT);
    const auto seven = keyEventFromHost(0, VKEY_NUMPAD7, 0);
    ASSERT_TRUE(seven);
    EXPECT_EQ(seven->name, "7");
    const auto space = keyEventFromHost(' ', VKEY_SPACE, 0);
    ASSERT_TRUE(space);
    EXPECT_EQ(space->character, std::uint32_t(' '));
    // A modifier alone is nothing to the editor.
    EXPECT_FALSE(keyEventFromHost(0, VKEY_SHIFT, float(MODIFIER_SHIFT)));
    EXPECT_FALSE(keyEventFromHost(0, 0, 0));
}

TEST(EditorKeysTest, TheHostsKeysReachTheOpenEditor) {
    PluginCore plugin(&quietHost, std::make_unique<BlockTestEngine>());
    AEffect* effect = plugin.getAeffect();
    // No editor: the key is the host's.
    EXPECT_EQ(effect->dispatcher(effect, effEditKeyDown, 0, VKEY_RETURN, nullptr, 0), 0);

    int limit = 100;
    PluginEditorHost host(plugin, limit);
    Fomal::VirtualClock clock;
    Fomal::EditorCore editor(host, clock);
    editor.openLayoutText("views: { { type: \"rectangle\", fill: 0xFF000000 } }");
    plugin.editorKeyDown = [&](const Fomal::KeyEvent& e) { return editor.keyDown(e); };
    // Nothing has focus: the editor leaves the key to the host.
    EXPECT_EQ(effect->dispatcher(effect, effEditKeyDown, 0, VKEY_RETURN, nullptr, 0), 0);
    editor.actions().perform(*editor.root(), "alert", "{ text: \"Hello\" }", false);
    ASSERT_TRUE(editor.dialogOpen());
    EXPECT_EQ(effect->dispatcher(effect, effEditKeyDown, 0, VKEY_RETURN, nullptr, 0), 1);
    EXPECT_FALSE(editor.dialogOpen());
    EXPECT_EQ(effect->dispatcher(effect, effEditKeyUp, 0, VKEY_RETURN, nullptr, 0), 0);
    plugin.editorKeyDown = nullptr;
}
