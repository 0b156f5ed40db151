// What the Windows test programs share: checks that print each failure on
// a line starting with "FAILED" and count it; text between the system's
// UTF-16 and UTF-8, and the texts and classes of windows; a watcher that
// hands over the popup menus and dialogs the process shows; the
// clipboard's text as another program sees it; and the threads of the
// process.
#pragma once

#include <windows.h>
#include <tlhelp32.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace wintest {

// ---- Checks ----------------------------------------------------------------

inline std::atomic<int> failures{0};  // from any thread of the program

// A failed check prints "FAILED: " and its text on a line of its own, at
// once, and counts.
__attribute__((format(gnu_printf, 2, 3))) inline void check(bool ok, const char* format, ...) {
    if (ok) return;
    ++failures;
    std::va_list args;
    va_start(args, format);
    std::printf("FAILED: ");
    std::vprintf(format, args);
    std::printf("\n");
    va_end(args);
    std::fflush(stdout);
}

inline int failedChecks() { return failures.load(); }

// ---- Text ------------------------------------------------------------------

// The system's UTF-16 text as UTF-8, and back.
inline std::string utf8(const std::wstring& text) {
    const int n = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (n <= 1) return {};
    std::string out(std::size_t(n), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, out.data(), n, nullptr, nullptr);
    out.resize(std::size_t(n - 1));
    return out;
}

inline std::wstring utf16(const std::string& text) {
    const int n = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    if (n <= 1) return {};
    std::wstring out(std::size_t(n), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, out.data(), n);
    out.resize(std::size_t(n - 1));
    return out;
}

inline std::wstring windowText(HWND w) {
    wchar_t text[256] = {};
    GetWindowTextW(w, text, 256);
    return text;
}

// "#32768" for a popup menu, "#32770" for a dialog or a message box.
inline std::wstring windowClass(HWND w) {
    wchar_t name[64] = {};
    GetClassNameW(w, name, 64);
    return name;
}

// ---- Menus and dialogs -----------------------------------------------------

// Watches the process's top-level windows from a thread of its own: each
// popup menu that shows goes to `menu`, each dialog or message box to
// `dialog`, once while it stays shown, on the watching thread. An owner
// declares its watch after everything the two use, so that the watch
// stops first.
class WindowWatch {
public:
    using Seen = std::function<void(HWND)>;

    WindowWatch(Seen menu, Seen dialog)
        : menu_(std::move(menu)), dialog_(std::move(dialog)), thread_([this] { run(); }) {}
    ~WindowWatch() {
        stop_.store(true);
        thread_.join();
    }
    WindowWatch(const WindowWatch&) = delete;
    WindowWatch& operator=(const WindowWatch&) = delete;

private:
    static BOOL CALLBACK visit(HWND hwnd, LPARAM self) {
        reinterpret_cast<WindowWatch*>(self)->look(hwnd);
        return TRUE;
    }

    void run() {
        while (!stop_.load()) {
            // A window that closed was handled; the next may get its handle.
            if (handled_ != nullptr && !IsWindowVisible(handled_)) handled_ = nullptr;
            EnumWindows(&visit, reinterpret_cast<LPARAM>(this));
            Sleep(20);
        }
    }

    void look(HWND hwnd) {
        DWORD process = 0;
        GetWindowThreadProcessId(hwnd, &process);
        if (process != GetCurrentProcessId() || !IsWindowVisible(hwnd) || hwnd == handled_) return;
        const std::wstring name = windowClass(hwnd);
        if (name == L"#32768") {
            handled_ = hwnd;
            menu_(hwnd);
        } else if (name == L"#32770") {
            handled_ = hwnd;
            dialog_(hwnd);
        }
    }

    const Seen menu_, dialog_;
    std::atomic<bool> stop_{false};
    HWND handled_ = nullptr;  // the watching thread's alone
    std::thread thread_;
};

// ---- The clipboard ---------------------------------------------------------

// The clipboard's text as another program reads it, CF_UNICODETEXT as it
// is; nothing when the clipboard does not open or holds no text.
inline std::optional<std::wstring> clipboardUnits(HWND owner) {
    if (!OpenClipboard(owner)) return std::nullopt;
    std::optional<std::wstring> text;
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
        if (const auto* units = static_cast<const wchar_t*>(GlobalLock(data))) {
            text = units;
            GlobalUnlock(data);
        }
    }
    CloseClipboard();
    return text;
}

// Text put on the clipboard as another program puts it.
inline bool putOnClipboard(HWND owner, const std::wstring& text) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    if (block == nullptr) return false;
    std::copy(text.c_str(), text.c_str() + text.size() + 1, static_cast<wchar_t*>(GlobalLock(block)));
    GlobalUnlock(block);
    if (!OpenClipboard(owner)) {
        GlobalFree(block);
        return false;
    }
    EmptyClipboard();
    const bool ok = SetClipboardData(CF_UNICODETEXT, block) != nullptr;
    if (!ok) GlobalFree(block);
    CloseClipboard();
    return ok;
}

// ---- The process -----------------------------------------------------------

// The threads of this process.
inline int threadCount() {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) return -1;
    THREADENTRY32 e = {};
    e.dwSize = sizeof e;
    int n = 0;
    for (BOOL more = Thread32First(snapshot, &e); more; more = Thread32Next(snapshot, &e))
        if (e.th32OwnerProcessID == GetCurrentProcessId()) ++n;
    CloseHandle(snapshot);
    return n;
}

}  // namespace wintest
