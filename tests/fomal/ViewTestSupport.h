// An editor with no plug-in behind it, on a clock that moves only when a
// test says so, for view tests.
#pragma once

#include <string>
#include <vector>

#include "fomal/EditorCore.h"
#include "fomal/StillHost.h"

namespace viewtest {

struct Editor {
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core{host, clock};
    std::vector<std::string> alerts;  // "title: text", as they appeared

    explicit Editor(std::string_view layout) {
        core.onAlert = [this](const std::string& title, const std::string& text) { alerts.push_back(title + ": " + text); };
        core.openLayoutText(layout);
    }
    Fomal::View& root() { return *core.root(); }
    Fomal::View& find(std::string_view label) { return *core.root()->findView(label); }

    // Moves the clock on and runs the idle tick at every millisecond, as a
    // window's timer would at its finest.
    void wait(std::int64_t ms) {
        for (std::int64_t i = 0; i < ms; ++i) {
            clock.advance(1);
            core.idle();
        }
    }
    void click(int x, int y, std::uint32_t modifiers = Fomal::LEFT_BIT) {
        core.mouseDown({x, y, modifiers});
        core.mouseUp({x, y, modifiers});
    }
};

inline std::string failureOf(std::string_view layout) {
    Fomal::StillHost host;
    Fomal::VirtualClock clock;
    Fomal::EditorCore core(host, clock);
    try {
        core.openLayoutText(layout);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "(no failure)";
}

}  // namespace viewtest
