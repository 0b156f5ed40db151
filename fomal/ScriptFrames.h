// The two levels of the interface's script frames. One shared root frame
// lives while any editor of the process is open: the application script
// runs in it once and its globals are everyone's. Each editor has its own
// global frame below it: `::name` written there stays private to the
// editor, unless the shared root already has that name, and natives
// registered there (those that reach one editor) shadow the shared ones.
#pragma once

#include <functional>
#include <memory>

#include "quol/Frame.h"

namespace Fomal {

class SharedScriptRoot {
public:
    using Builder = std::function<void(Quol::Frame& root)>;

    // The root the open editors share; when none is open, a new one made
    // by `build`. A failed build leaves no root behind. Editor thread only.
    static std::shared_ptr<Quol::Frame> acquire(const Builder& build);
    // Whether some editor holds the shared root now.
    static bool exists();
};

class GuiFrame : public Quol::Frame {
public:
    explicit GuiFrame(std::shared_ptr<Quol::Frame> shared);
    ~GuiFrame() override;

    Quol::Frame& shared() const { return *shared_; }

    bool lookup(std::string_view name, Quol::Value& result) override;
    bool assign(const Quol::Value& name, const Quol::Value& value) override;
    void erase(std::string_view name) override;
    void list(std::string_view prefix, Entries& entries) override;
    bool callNative(std::string_view name, Quol::Frame& arguments, Quol::Value& result) override;

private:
    std::shared_ptr<Quol::Frame> shared_;
};

}  // namespace Fomal
