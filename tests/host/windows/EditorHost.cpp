// A Windows host for the plug-in's editor: it asks the editor's size, opens
// it inside a top-level window of its own, pumps messages and calls the
// editor's idle as a host does, sends mouse messages to the editor's window
// (a drag of the volume slider, undo, redo), checks the parameter, the
// gesture the host heard and the windows, reads back what the editor's
// window shows, and opens and closes the editor a hundred times. The main
// menu opens as the system's popup menu: a second thread of the host picks
// its entries by their access keys (copy, paste) as a user would, and the
// patch goes through the Windows clipboard both ways. Any other menu or
// message box that appears is a failure, and is closed.
//
//   editor_host PLUGIN OPENED.ppm GESTURES.ppm
//
// The pictures are written as binary PPM (RGB); the script compares them
// with `tendrane panel` of the same events. Every failed check prints a
// line starting with "FAILED"; the exit status is the count of them, or 77
// when the plug-in says it has no editor (a build that cannot read the
// panel's PNG images), with nothing else run.
#include <windows.h>
#include <tlhelp32.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "patch/FactoryPatches.h"
#include "patch/Preferences.h"
#include "patch/ProgramText.h"
#include "tests/host/HostPatch.h"
#include "tests/host/PluginHost.h"

using testhost::HostRecord;
using testhost::Instance;
using testhost::Library;

namespace {

constexpr int WIDTH = 384;
constexpr int HEIGHT = 512;
constexpr int VOLUME = 8;  // the parameter the bottom right slider drives
// The main menu's button; the menu opens on the press.
constexpr int MENU_X = 25, MENU_Y = 49;

int failures = 0;

void check(bool ok, const char* format, ...) {
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

// Messages to the host's windows go nowhere in particular.
LRESULT CALLBACK hostWindowProcedure(HWND hwnd, UINT message, WPARAM w, LPARAM l) {
    return DefWindowProcW(hwnd, message, w, l);
}

HWND makeHostWindow(int x, int y) {
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

// The host's loop for a while: the messages of the thread, and the
// editor's idle call every 10 ms, as a host's own timer makes it.
void pumpFor(Instance* in, int ms) {
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
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 2, QS_ALLINPUT);
    } while (GetTickCount64() < end);
}

BOOL CALLBACK countChild(HWND, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    return TRUE;
}

int childWindows(HWND parent) {
    int n = 0;
    EnumChildWindows(parent, &countChild, reinterpret_cast<LPARAM>(&n));
    return n;
}

// The threads of this process.
int threadCount() {
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

int handleCount() {
    DWORD n = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &n) ? int(n) : -1;
}

// The handle value a new handle gets. Wine hands out the lowest free slot
// (and counts no handles in GetProcessHandleCount), so handles left open
// push this up.
long long nextHandle() {
    HANDLE h = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (h == nullptr) return -1;
    const long long value = static_cast<long long>(reinterpret_cast<std::uintptr_t>(h));
    CloseHandle(h);
    return value;
}

// Every window of this thread: top-level ones and all below them.
BOOL CALLBACK countThreadWindow(HWND hwnd, LPARAM count) {
    *reinterpret_cast<int*>(count) += 1 + childWindows(hwnd);
    return TRUE;
}

int threadWindows() {
    int n = 0;
    EnumThreadWindows(GetCurrentThreadId(), &countThreadWindow, reinterpret_cast<LPARAM>(&n));
    return n;
}

struct Counts {
    int windows, threads, handles, gdi, user;
    long long nextHandle;
};

Counts counts() {
    return {threadWindows(), threadCount(), handleCount(), int(GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)),
            int(GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS)), nextHandle()};
}

BOOL CALLBACK firstChild(HWND hwnd, LPARAM found) {
    *reinterpret_cast<HWND*>(found) = hwnd;
    return FALSE;
}

HWND editorWindow(HWND parent) {
    HWND found = nullptr;
    EnumChildWindows(parent, &firstChild, reinterpret_cast<LPARAM>(&found));
    return found;
}

void post(HWND w, UINT message, WPARAM keys, int x, int y) {
    PostMessageW(w, message, keys, MAKELPARAM(x, y));
}

void click(Instance& in, HWND w, int x, int y) {
    post(w, WM_LBUTTONDOWN, MK_LBUTTON, x, y);
    pumpFor(&in, 30);
    post(w, WM_LBUTTONUP, 0, x, y);
    pumpFor(&in, 30);
}

void drag(Instance& in, HWND w, int x1, int y1, int x2, int y2, int steps) {
    post(w, WM_LBUTTONDOWN, MK_LBUTTON, x1, y1);
    pumpFor(&in, 30);
    for (int i = 1; i <= steps; ++i) {
        post(w, WM_MOUSEMOVE, MK_LBUTTON, x1 + (x2 - x1) * i / steps, y1 + (y2 - y1) * i / steps);
        pumpFor(&in, 30);
    }
    post(w, WM_LBUTTONUP, 0, x2, y2);
    pumpFor(&in, 30);
}

// What the window shows, read back through its device context, as RGB rows.
std::vector<unsigned char> capture(HWND w) {
    std::vector<unsigned char> rgb;
    HDC windowDc = GetDC(w);
    if (windowDc == nullptr) return rgb;
    HDC memory = CreateCompatibleDC(windowDc);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = WIDTH;
    info.bmiHeader.biHeight = -HEIGHT;  // top-down
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP section = CreateDIBSection(windowDc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (memory != nullptr && section != nullptr && bits != nullptr) {
        HGDIOBJ old = SelectObject(memory, section);
        if (BitBlt(memory, 0, 0, WIDTH, HEIGHT, windowDc, 0, 0, SRCCOPY)) {
            GdiFlush();
            const auto* p = static_cast<const std::uint32_t*>(bits);
            for (int i = 0; i < WIDTH * HEIGHT; ++i) {
                rgb.push_back(static_cast<unsigned char>(p[i] >> 16));
                rgb.push_back(static_cast<unsigned char>(p[i] >> 8));
                rgb.push_back(static_cast<unsigned char>(p[i]));
            }
        }
        SelectObject(memory, old);
    }
    if (section != nullptr) DeleteObject(section);
    if (memory != nullptr) DeleteDC(memory);
    ReleaseDC(w, windowDc);
    return rgb;
}

bool writePpm(const char* path, const std::vector<unsigned char>& rgb) {
    FILE* f = std::fopen(path, "wb");
    if (f == nullptr) return false;
    std::fprintf(f, "P6\n%d %d\n255\n", WIDTH, HEIGHT);
    const bool ok = std::fwrite(rgb.data(), 1, rgb.size(), f) == rgb.size();
    return std::fclose(f) == 0 && ok;
}

// Watches the process's top-level windows from a thread of its own: a
// popup menu gets the access key it is expected to get, once; any other
// menu, and every dialog, is counted, reported and closed.
class DialogWatch {
public:
    DialogWatch() : thread_([this] { run(); }) {}
    ~DialogWatch() {
        stop_.store(true);
        thread_.join();
    }
    DialogWatch(const DialogWatch&) = delete;
    DialogWatch& operator=(const DialogWatch&) = delete;

    // The next menu gets this key.
    void expectMenu(wchar_t key) { key_.store(key); }
    int menusAnswered() const { return answered_.load(); }
    int unexpected() const { return unexpected_.load(); }

private:
    static BOOL CALLBACK visit(HWND hwnd, LPARAM self) {
        reinterpret_cast<DialogWatch*>(self)->look(hwnd);
        return TRUE;
    }

    void run() {
        while (!stop_.load()) {
            // A menu that closed was handled; the next may get its handle.
            if (handled_ != nullptr && !IsWindowVisible(handled_)) handled_ = nullptr;
            EnumWindows(&visit, reinterpret_cast<LPARAM>(this));
            Sleep(20);
        }
    }

    void look(HWND hwnd) {
        DWORD process = 0;
        GetWindowThreadProcessId(hwnd, &process);
        if (process != GetCurrentProcessId() || !IsWindowVisible(hwnd) || hwnd == handled_) return;
        wchar_t name[64] = {};
        GetClassNameW(hwnd, name, 64);
        if (std::wstring(name) == L"#32768") {
            handled_ = hwnd;
            const wchar_t key = key_.exchange(0);
            if (key != 0) {
                PostMessageW(hwnd, WM_CHAR, key, 0);
                answered_.fetch_add(1);
            } else {
                std::printf("FAILED: a popup menu opened that nothing asked for\n");
                unexpected_.fetch_add(1);
                PostMessageW(hwnd, WM_KEYDOWN, VK_ESCAPE, 0);
            }
        } else if (std::wstring(name) == L"#32770") {
            handled_ = hwnd;
            wchar_t title[256] = {};
            GetWindowTextW(hwnd, title, 256);
            std::printf("FAILED: a dialog opened: %ls\n", title);
            unexpected_.fetch_add(1);
            PostMessageW(hwnd, WM_COMMAND, IDCANCEL, 0);
            PostMessageW(hwnd, WM_COMMAND, IDOK, 0);
        }
    }

    std::atomic<bool> stop_{false};
    std::atomic<wchar_t> key_{0};
    std::atomic<int> answered_{0}, unexpected_{0};
    HWND handled_ = nullptr;  // the watching thread's alone
    std::thread thread_;
};

// The Windows clipboard's text, as UTF-8 bytes as they are ("\r\n" kept).
std::string clipboardText(HWND owner) {
    std::string text;
    if (!OpenClipboard(owner)) return text;
    if (HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
        if (const auto* units = static_cast<const wchar_t*>(GlobalLock(data))) {
            const int n = WideCharToMultiByte(CP_UTF8, 0, units, -1, nullptr, 0, nullptr, nullptr);
            if (n > 1) {
                text.resize(std::size_t(n));
                WideCharToMultiByte(CP_UTF8, 0, units, -1, text.data(), n, nullptr, nullptr);
                text.resize(std::size_t(n - 1));
            }
            GlobalUnlock(data);
        }
    }
    CloseClipboard();
    return text;
}

// Puts text on the clipboard as a Windows program does: UTF-16, "\r\n".
bool putOnClipboard(HWND owner, const std::string& utf8) {
    std::string crlf;
    for (char c : utf8) {
        if (c == '\n') crlf += '\r';
        crlf += c;
    }
    const int n = MultiByteToWideChar(CP_UTF8, 0, crlf.c_str(), -1, nullptr, 0);
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, std::size_t(n) * sizeof(wchar_t));
    if (block == nullptr) return false;
    MultiByteToWideChar(CP_UTF8, 0, crlf.c_str(), -1, static_cast<wchar_t*>(GlobalLock(block)), n);
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

std::string programName(Instance& in) {
    char name[64] = {};
    in.call(effGetProgramName, 0, 0, name);
    return name;
}

std::string narrow(const std::u16string& text) { return std::string(text.begin(), text.end()); }

std::unique_ptr<Instance> instanceWith(const NorvelleProgram& program) {
    auto in = std::make_unique<Instance>(Library::get(nullptr).pluginMain, 44100.0f, 512);
    if (!in->effect) return in;
    std::vector<uint8_t> chunk = testhost::programChunk(program);
    in->call(effSetChunk, 1, static_cast<VstIntPtr>(chunk.size()), chunk.data());
    return in;
}

float volume(Instance& in) { return in.effect->getParameter(in.effect, VOLUME); }

// The size, the flag, the window: a child of the host's, 384 x 512, shown.
void sizeAndWindow(Instance& in, HWND host) {
    check((in.effect->flags & effFlagsHasEditor) != 0, "the plug-in does not say it has an editor");
    ERect* rect = nullptr;
    check(in.call(effEditGetRect, 0, 0, &rect) == 1 && rect != nullptr, "effEditGetRect gave no rectangle");
    if (rect != nullptr) {
        std::printf("editor rectangle: top %d left %d bottom %d right %d\n", rect->top, rect->left, rect->bottom,
                    rect->right);
        check(rect->top == 0 && rect->left == 0 && rect->bottom == HEIGHT && rect->right == WIDTH,
              "the editor's rectangle is not 384 x 512");
    }
    check(in.call(effEditOpen, 0, 0, host) == 1, "effEditOpen failed");
    pumpFor(&in, 100);
    const HWND w = editorWindow(host);
    check(w != nullptr && childWindows(host) == 1, "the host's window has %d child windows, not 1", childWindows(host));
    if (w == nullptr) return;
    RECT client = {};
    GetClientRect(w, &client);
    check(client.right == WIDTH && client.bottom == HEIGHT, "the editor's window is %ld x %ld", client.right,
          client.bottom);
    check(GetParent(w) == host, "the editor's window is not the host window's child");
    check((GetWindowLongW(w, GWL_STYLE) & WS_CHILD) != 0, "the editor's window is not a child window");
    check(IsWindowVisible(w) != FALSE, "the editor's window is not visible");
    check(in.call(effEditClose) == 1, "effEditClose failed");
    pumpFor(nullptr, 20);
    check(childWindows(host) == 0, "%d child windows after closing", childWindows(host));
}

// A drag of the volume slider, undo and redo by their buttons: the
// parameter follows and the host hears one gesture. The pictures after
// opening and after the gestures go to the files.
void gestures(Instance& in, HWND host, const char* openedPath, const char* gesturesPath) {
    check(in.call(effEditOpen, 0, 0, host) == 1, "effEditOpen failed");
    pumpFor(&in, 300);
    const HWND w = editorWindow(host);
    check(w != nullptr, "no editor window");
    if (w == nullptr) return;
    const std::vector<unsigned char> opened = capture(w);
    check(opened.size() == std::size_t(WIDTH * HEIGHT * 3), "could not read the window's pixels");
    check(writePpm(openedPath, opened), "could not write %s", openedPath);

    HostRecord& record = HostRecord::get();
    const float before = volume(in);
    const int begins = record.count(audioMasterBeginEdit), ends = record.count(audioMasterEndEdit);
    const int automations = record.count(audioMasterAutomate);

    drag(in, w, 308, 461, 330, 461, 11);
    pumpFor(&in, 300);
    const float dragged = volume(in);
    std::printf("volume %.6f, dragged to %.6f; begin edit %d, end edit %d, automate %d\n", before, dragged,
                record.count(audioMasterBeginEdit) - begins, record.count(audioMasterEndEdit) - ends,
                record.count(audioMasterAutomate) - automations);
    check(dragged > before, "the drag did not raise the volume");
    check(record.count(audioMasterBeginEdit) - begins == 1, "begin edit heard %d times",
          record.count(audioMasterBeginEdit) - begins);
    check(record.count(audioMasterEndEdit) - ends == 1, "end edit heard %d times",
          record.count(audioMasterEndEdit) - ends);
    check(record.count(audioMasterAutomate) - automations >= 1, "no automation during the drag");

    click(in, w, 105, 49);  // undo
    pumpFor(&in, 300);
    const float undone = volume(in);
    click(in, w, 145, 49);  // redo
    pumpFor(&in, 300);
    const float redone = volume(in);
    std::printf("after undo %.6f, after redo %.6f\n", undone, redone);
    check(undone == before, "undo left the volume at %.6f, not %.6f", undone, before);
    check(redone == dragged, "redo left the volume at %.6f, not %.6f", redone, dragged);

    // Every hint and animation settles.
    pumpFor(&in, 1500);
    const std::vector<unsigned char> shown = capture(w);
    check(shown.size() == std::size_t(WIDTH * HEIGHT * 3), "could not read the window's pixels");
    check(writePpm(gesturesPath, shown), "could not write %s", gesturesPath);
    check(in.call(effEditClose) == 1, "effEditClose failed");
}

// The main menu is the system's popup menu: "Copy Patch" puts the patch on
// the Windows clipboard, "Paste Patch" takes another program's patch from
// it, and text that is no patch pastes nothing. The editor keeps living
// while the menu is open, and goes on after it.
void menuAndClipboard(Instance& in, HWND host, DialogWatch& watch) {
    check(in.call(effEditOpen, 0, 0, host) == 1, "effEditOpen failed");
    pumpFor(&in, 200);
    const HWND w = editorWindow(host);
    if (w == nullptr) return;
    const int before = watch.menusAnswered();

    watch.expectMenu(L'c');
    click(in, w, MENU_X, MENU_Y);
    pumpFor(&in, 100);
    check(watch.menusAnswered() == before + 1, "the main menu did not open as a popup menu");
    const std::string copied = clipboardText(host);
    std::printf("copied: %zu bytes, starting \"%.20s\"\n", copied.size(), copied.c_str());
    check(copied.rfind("TendranePatch:", 0) == 0, "the clipboard holds no patch after Copy Patch");
    check(copied.find("\r\n") != std::string::npos, "the copied patch's lines do not end in \\r\\n");
    try {
        check(narrow(readProgramText(copied).getName()) == "Radix Gravis", "the copied patch is not the current one");
    } catch (const std::exception& e) {
        check(false, "the copied patch does not read: %s", e.what());
    }

    const NorvelleProgram other = factoryProgram(3);
    check(putOnClipboard(host, writeProgramText(other, false)), "could not put a patch on the clipboard");
    watch.expectMenu(L'p');
    click(in, w, MENU_X, MENU_Y);
    pumpFor(&in, 200);
    check(watch.menusAnswered() == before + 2, "the main menu did not open the second time");
    std::printf("pasted: \"%s\"\n", programName(in).c_str());
    check(programName(in) == narrow(other.getName()), "Paste Patch did not take the patch from the clipboard");

    const std::string pasted = programName(in);
    check(putOnClipboard(host, "just some words"), "could not put text on the clipboard");
    watch.expectMenu(L'p');
    click(in, w, MENU_X, MENU_Y);
    pumpFor(&in, 200);
    check(watch.menusAnswered() == before + 3, "the main menu did not open the third time");
    check(programName(in) == pasted, "text that is no patch changed the patch");
    check(in.call(effEditClose) == 1, "effEditClose failed");
}

void hundredTimes(Instance& in, HWND host) {
    // Once first, so that what lives as long as the process is there.
    check(in.call(effEditOpen, 0, 0, host) == 1, "effEditOpen failed");
    pumpFor(&in, 50);
    in.call(effEditClose);
    pumpFor(nullptr, 50);
    const Counts first = counts();
    for (int i = 0; i < 100; ++i) {
        if (in.call(effEditOpen, 0, 0, host) != 1) {
            check(false, "opening %d failed", i);
            return;
        }
        in.call(effEditIdle);
        pumpFor(nullptr, 0);
        if (childWindows(host) != 1) {
            check(false, "opening %d: %d child windows", i, childWindows(host));
            return;
        }
        if (in.call(effEditClose) != 1) {
            check(false, "closing %d failed", i);
            return;
        }
    }
    pumpFor(nullptr, 50);
    const Counts last = counts();
    std::printf("100 openings: child windows %d; windows of the thread %d -> %d, threads %d -> %d, handles %d -> %d, "
                "GDI objects %d -> %d, USER objects %d -> %d, next handle %#llx -> %#llx\n",
                childWindows(host), first.windows, last.windows, first.threads, last.threads, first.handles,
                last.handles, first.gdi, last.gdi, first.user, last.user, first.nextHandle, last.nextHandle);
    check(childWindows(host) == 0, "%d child windows left", childWindows(host));
    check(last.windows == first.windows, "windows grew from %d to %d", first.windows, last.windows);
    check(last.threads == first.threads, "threads grew from %d to %d", first.threads, last.threads);
    check(last.handles <= first.handles, "handles grew from %d to %d", first.handles, last.handles);
    check(last.gdi <= first.gdi, "GDI objects grew from %d to %d", first.gdi, last.gdi);
    check(last.user <= first.user, "USER objects grew from %d to %d", first.user, last.user);
    check(last.nextHandle <= first.nextHandle, "handles were left open: the next handle moved from %#llx to %#llx",
          first.nextHandle, last.nextHandle);
}

// Two editors at once in two windows, closed in turn; the window class goes
// with the last window and comes back with the next.
void twoAtOnce(HWND host) {
    auto a = instanceWith(factoryProgram(1));
    auto b = instanceWith(factoryProgram(2));
    HWND second = makeHostWindow(WIDTH + 40, 0);
    check(second != nullptr, "no second host window");
    if (!a->effect || !b->effect || second == nullptr) return;
    check(a->call(effEditOpen, 0, 0, host) == 1, "first editor did not open");
    check(b->call(effEditOpen, 0, 0, second) == 1, "second editor did not open");
    pumpFor(a.get(), 100);
    pumpFor(b.get(), 100);
    check(childWindows(host) == 1 && childWindows(second) == 1, "child windows %d and %d, not 1 and 1",
          childWindows(host), childWindows(second));
    wchar_t className[256] = {};
    HMODULE module = nullptr;
    if (HWND w = editorWindow(host)) {
        GetClassNameW(w, className, 256);
        module = reinterpret_cast<HMODULE>(GetClassLongPtrW(w, GCLP_HMODULE));
    }
    a->call(effEditClose);
    pumpFor(b.get(), 100);
    check(childWindows(second) == 1, "the second editor went with the first");
    WNDCLASSEXW info = {};
    info.cbSize = sizeof info;
    check(GetClassInfoExW(module, className, &info) != FALSE, "the window class went while a window is open");
    b->call(effEditClose);
    pumpFor(nullptr, 20);
    check(GetClassInfoExW(module, className, &info) == FALSE, "the window class stays after the last window");
    // A third after the last closed.
    check(a->call(effEditOpen, 0, 0, host) == 1, "the editor did not open again");
    pumpFor(a.get(), 100);
    check(childWindows(host) == 1, "no window after opening again");
    a->call(effEditClose);
    DestroyWindow(second);
    pumpFor(nullptr, 20);
}

// A host that destroys its window before it closes the editor.
void hostWindowGoneFirst() {
    auto in = instanceWith(factoryProgram(0));
    HWND host = makeHostWindow(0, 0);
    if (!in->effect || host == nullptr) return;
    check(in->call(effEditOpen, 0, 0, host) == 1, "effEditOpen failed");
    pumpFor(in.get(), 100);
    DestroyWindow(host);
    pumpFor(in.get(), 100);
    check(in->call(effEditClose) == 1, "closing after the host's window went failed");
    // A window that does not exist is refused, without harm.
    check(in->call(effEditOpen, 0, 0, host) == 0, "opening in a window that does not exist succeeded");
    check(in->call(effEditClose) == 1, "effEditClose failed");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: editor_host PLUGIN OPENED.ppm GESTURES.ppm\n");
        return 2;
    }
    setvbuf(stdout, nullptr, _IONBF, 0);
    // A returning player's machine, as the headless panel it is compared
    // with: the tutorial has been finished and does not open by itself.
    Preferences::write("completedTutorial", "true");
    Library& library = Library::get(argv[1]);
    if (!library.pluginMain) {
        std::printf("FAILED: no entry point in %s: %s\n", argv[1], library.error.c_str());
        return 1;
    }
    // The real mouse stays far from the windows: only the messages sent
    // here move the editor's mouse.
    SetCursorPos(1200, 1000);
    HWND host = makeHostWindow(0, 0);
    if (host == nullptr) {
        std::printf("FAILED: no host window\n");
        return 1;
    }
    pumpFor(nullptr, 100);
    DialogWatch watch;
    {
        auto in = instanceWith(factoryProgram(0));
        if (!in->effect) {
            std::printf("FAILED: the plug-in made no instance\n");
            return 1;
        }
        if ((in->effect->flags & effFlagsHasEditor) == 0) {
            std::printf("no editor: the plug-in says it has none\n");
            return 77;
        }
        sizeAndWindow(*in, host);
        gestures(*in, host, argv[2], argv[3]);
        hundredTimes(*in, host);
    }
    {
        auto in = instanceWith(factoryProgram(0));
        if (in->effect) menuAndClipboard(*in, host, watch);
    }
    twoAtOnce(host);
    hostWindowGoneFirst();
    DestroyWindow(host);
    check(watch.unexpected() == 0, "%d menus or dialogs opened that nothing asked for", watch.unexpected());
    std::printf("%s: %d failed checks\n", failures == 0 ? "passed" : "FAILED", failures);
    return failures;
}
