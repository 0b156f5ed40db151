#include "fomal/ScriptFrames.h"

#include <algorithm>

namespace Fomal {

namespace {

std::weak_ptr<Quol::Frame>& sharedRoot() {
    static std::weak_ptr<Quol::Frame> root;
    return root;
}

}  // namespace

std::shared_ptr<Quol::Frame> SharedScriptRoot::acquire(const Builder& build) {
    if (std::shared_ptr<Quol::Frame> root = sharedRoot().lock()) return root;
    auto root = std::make_shared<Quol::Frame>();
    build(*root);
    sharedRoot() = root;
    return root;
}

bool SharedScriptRoot::exists() { return !sharedRoot().expired(); }

GuiFrame::GuiFrame(std::shared_ptr<Quol::Frame> shared) : shared_(std::move(shared)) {}

GuiFrame::~GuiFrame() = default;

bool GuiFrame::lookup(std::string_view name, Quol::Value& result) {
    return Frame::lookup(name, result) || shared_->lookup(name, result);
}

bool GuiFrame::assign(const Quol::Value& name, const Quol::Value& value) {
    if (variables.find(name.view()) == variables.end()) {
        Quol::Value ignored;
        if (shared_->lookup(name.view(), ignored)) return shared_->assign(name, value);
    }
    return Frame::assign(name, value);
}

void GuiFrame::erase(std::string_view name) {
    if (variables.find(name) != variables.end())
        Frame::erase(name);
    else
        shared_->erase(name);
}

void GuiFrame::list(std::string_view prefix, Entries& entries) {
    // The editor's own variables hide shared ones of the same name.
    Entries own, common;
    Frame::list(prefix, own);
    shared_->list(prefix, common);
    const std::size_t start = entries.size();
    entries.insert(entries.end(), own.begin(), own.end());
    for (auto& entry : common)
        if (variables.find(entry.first.view()) == variables.end()) entries.push_back(std::move(entry));
    std::sort(entries.begin() + std::ptrdiff_t(start), entries.end(),
              [](const auto& x, const auto& y) { return Quol::Value::Less()(x.first, y.first); });
}

bool GuiFrame::callNative(std::string_view name, Quol::Frame& arguments, Quol::Value& result) {
    return Frame::callNative(name, arguments, result) || shared_->callNative(name, arguments, result);
}

}  // namespace Fomal
