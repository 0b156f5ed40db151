#include "plugin/PluginEditor.h"

#include "fomal/MessageCatalogue.h"
#include "plugin/PluginCore.h"
#include "views/ApplicationScripts.h"
#include "views/LivingViews.h"

PluginEditor::PluginEditor(PluginCore& plugin)
    : plugin_(plugin),
      host_(plugin, undoLimit_, [](std::string_view label) { return Fomal::MessageCatalogue::product().lookup(label); }) {
}

PluginEditor::~PluginEditor() {
    if (core_) {
        std::lock_guard<std::mutex> hold(editorsLock());
        core_->close();
    }
    // The window's timer stops before the core it paints goes.
    window_.reset();
    std::lock_guard<std::mutex> hold(editorsLock());
    core_.reset();
}

std::mutex& PluginEditor::editorsLock() {
    static std::mutex lock;
    return lock;
}

bool PluginEditor::open(void* parent) {
    {
        std::lock_guard<std::mutex> hold(editorsLock());
        views::registerLivingViews();
        core_ = std::make_unique<Fomal::EditorCore>(host_, clock_);
        // A failed opening shows its alert over the empty panel.
        core_->open(views::applicationScripts(host_, *core_));
        undoLimit_ = core_->constants().undoHistory;
    }
    try {
        window_ = openEditorWindow(parent, *core_, editorsLock());
    } catch (...) {
        window_.reset();
    }
    if (!window_) {
        std::lock_guard<std::mutex> hold(editorsLock());
        core_->close();
        core_.reset();
        return false;
    }
    return true;
}

void PluginEditor::idle() {
    if (window_) window_->idle();
}

bool PluginEditor::keyDown(const Fomal::KeyEvent& key) { return window_ && window_->keyDown(key); }
