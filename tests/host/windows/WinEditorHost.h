// What the Windows hosts of the editor share: their start (the arguments,
// the plug-in, the host's window), the instances they open the editor of,
// the host's message loop with the editor's idle call, and the mouse
// messages a user's clicks send to the editor's window.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

#include "patch/FactoryPatches.h"
#include "patch/Preferences.h"
#include "tests/host/HostPatch.h"
#include "tests/host/PluginHost.h"

namespace wintest {

// The editor's size, and its main menu's button (the menu opens on the press).
constexpr int WIDTH = 384;
constexpr int HEIGHT = 512;
constexpr int MENU_X = 25, MENU_Y = 49;

// ---- The start -------------------------------------------------------------

// Whether the host was called with its `count` arguments; when not, how to
// call it goes to stderr.
inline bool calledWith(int argc, int count, const char* usage) {
    if (argc == count + 1) return true;
    std::fprintf(stderr, "usage: %s\n", usage);
    return false;
}

inline LRESULT CALLBACK hostWindowProcedure(HWND hwnd, UINT message, WPARAM w, LPARAM l) {
    // Messages to the host's windows go nowhere in particular.
    return DefWindowProcW(hwnd, message, w, l);
}

// A top-level window of the editor's size for the editor to live in, shown
// without taking the focus.
inline HWND makeHostWindow(int x = 0, int y = 0) {
    static const bool registered = [] {
        WNDCLASSEXW c = {};
        c.cbSize = sizeof c;
        c.lpfnWndProc = &hostWindowProcedure;
        c.hInstance = GetModuleHandleW(nullptr);
        c.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        c.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
        c.lpszClassName = L"EditorHostFrame";
        return RegisterClassExW(&c) != 0;
    }();
    if (!registered) return nullptr;
    RECT r{0, 0, WIDTH, HEIGHT};
    const DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
    AdjustWindowRect(&r, style, FALSE);
    HWND hwnd = CreateWindowExW(0, L"EditorHostFrame", L"Editor host", style, x, y, r.right - r.left,
                                r.bottom - r.top, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    if (hwnd != nullptr) {
        ShowWindow(hwnd, SW_SHOWNOACTIVATE);
        UpdateWindow(hwnd);
    }
    return hwnd;
}

// The start of a host of the editor: stdout unbuffered; a returning
// player's machine, as the headless panel the editor is compared with
// (the tutorial has been finished and does not open by itself); the
// plug-in loaded from `path`; the real mouse far from the windows (only
// the messages sent here move the editor's mouse); and the host's window.
// Nothing when the plug-in or the window is missing, said as a failure.
inline HWND startEditorHost(const char* path) {
    setvbuf(stdout, nullptr, _IONBF, 0);
    Preferences::write("completedTutorial", "true");
    testhost::Library& library = testhost::Library::get(path);
    if (!library.pluginMain) {
        std::printf("FAILED: no entry point in %s: %s\n", path, library.error.c_str());
        return nullptr;
    }
    SetCursorPos(1200, 1000);
    HWND host = makeHostWindow();
    if (host == nullptr) std::printf("FAILED: no host window\n");
    return host;
}

// An instance of the plug-in the host started with, playing `program`.
inline std::unique_ptr<testhost::Instance> instanceWith(const NorvelleProgram& program) {
    auto in = std::make_unique<testhost::Instance>(testhost::Library::get(nullptr).pluginMain, 44100.0f, 512);
    if (!in->effect) return in;
    std::vector<uint8_t> chunk = testhost::programChunk(program);
    in->call(effSetChunk, 1, static_cast<VstIntPtr>(chunk.size()), chunk.data());
    return in;
}

// Whether the host's first instance can go on to its editor: 0 when it
// can; 1, said as a failure, when the plug-in made no instance; 77 when
// the plug-in says it has no editor (a build that cannot read the panel's
// PNG images), the status of a test that cannot run.
inline int editorMissing(const testhost::Instance& in) {
    if (!in.effect) {
        std::printf("FAILED: the plug-in made no instance\n");
        return 1;
    }
    if ((in.effect->flags & effFlagsHasEditor) == 0) {
        std::printf("no editor: the plug-in says it has none\n");
        return 77;
    }
    return 0;
}

// ---- The host's loop and the user's mouse ----------------------------------

// The editor's window: the first child of the host's.
inline HWND editorWindow(HWND host) { return GetWindow(host, GW_CHILD); }

// The host's loop for a while: the messages of the thread, and the
// editor's idle call every 10 ms, as a host's own timer makes it, until
// `until` says so or the time is up.
inline void pumpFor(testhost::Instance* in, int ms, const std::function<bool()>& until = {}) {
    const ULONGLONG end = GetTickCount64() + ULONGLONG(ms);
    ULONGLONG nextIdle = 0;
    do {
        MSG m;
        while (PeekMessageW(&m, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&m);
            DispatchMessageW(&m);
        }
        const ULONGLONG now = GetTickCount64();
        if (in != nullptr && now >= nextIdle) {
            in->call(effEditIdle);
            nextIdle = now + 10;
        }
        if (until && until()) return;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 2, QS_ALLINPUT);
    } while (GetTickCount64() < end);
}

// A mouse message at a point of the window, with the buttons held.
inline void post(HWND w, UINT message, WPARAM keys, int x, int y) {
    PostMessageW(w, message, keys, MAKELPARAM(x, y));
}

// A click of the left button, the host's loop running between press and
// release and after.
inline void click(testhost::Instance& in, HWND w, int x, int y) {
    post(w, WM_LBUTTONDOWN, MK_LBUTTON, x, y);
    pumpFor(&in, 30);
    post(w, WM_LBUTTONUP, 0, x, y);
    pumpFor(&in, 30);
}

}  // namespace wintest
