// The host's calls for the editor: its size, opening it inside the host's
// window, closing it, and the idle call that keeps it living. Nothing that
// fails in the editor reaches the host: a failed opening answers 0.
#include "plugin/PluginCore.h"
#include "plugin/PluginEditor.h"

VstIntPtr PluginCore::editorCall(VstInt32 opcode, void* ptr) {
    try {
        switch (opcode) {
            case effEditGetRect:
                if (ptr == nullptr) return 0;
                editorRect_ = {0, 0, std::int16_t(PluginEditor::HEIGHT), std::int16_t(PluginEditor::WIDTH)};
                *static_cast<ERect**>(ptr) = &editorRect_;
                return 1;
            case effEditOpen: {
                editorKeyDown = nullptr;
                editor_.reset();
                auto editor = std::make_unique<PluginEditor>(*this);
                if (!editor->open(ptr)) return 0;
                editor_ = std::move(editor);
                editorKeyDown = [this](const Fomal::KeyEvent& key) { return editor_ && editor_->keyDown(key); };
                return 1;
            }
            case effEditClose:
                editorKeyDown = nullptr;
                editor_.reset();
                return 1;
            case effEditIdle:
                if (editor_) editor_->idle();
                return editor_ ? 1 : 0;
            default:
                return 0;
        }
    } catch (...) {
        editorKeyDown = nullptr;
        editor_.reset();
        return 0;
    }
}
