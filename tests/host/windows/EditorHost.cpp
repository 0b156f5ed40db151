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

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "patch/FactoryPatches.h"
#include "patch/ProgramText.h"
#include "tests/host/PluginHost.h"
#include "tests/host/windows/WinEditorHost.h"
#include "tests/host/windows/WinTestSupport.h"

using namespace wintest;
using testhost::HostRecord;
using testhost::Instance;

namespace {

constexpr int VOLUME = 8;  // the parameter the bottom right slider drives

BOOL CALLBACK countChild(HWND, LPARAM count) {
    ++*reinterpret_cast<int*>(count);
    return TRUE;
}

int childWindows(HWND parent) {
    int n = 0;
    EnumChildWindows(parent, &countChild, reinterpret_cast<LPARAM>(&n));
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

// The process's menus and dialogs, watched: a popup menu gets the access
// key it is expected to get, once; any other menu, and every dialog, is
// counted, reported and closed.
class DialogWatch {
public:
    // The next menu gets this key.
    void expectMenu(wchar_t key) { key_.store(key); }
    int menusAnswered() const { return answered_.load(); }
    int unexpected() const { return unexpected_.load(); }

private:
    void menu(HWND hwnd) {
        const wchar_t key = key_.exchange(0);
        if (key != 0) {
            PostMessageW(hwnd, WM_CHAR, key, 0);
            answered_.fetch_add(1);
        } else {
            std::printf("FAILED: a popup menu opened that nothing asked for\n");
            unexpected_.fetch_add(1);
            PostMessageW(hwnd, WM_KEYDOWN, VK_ESCAPE, 0);
        }
    }

    void dialog(HWND hwnd) {
        std::printf("FAILED: a dialog opened: %ls\n", windowText(hwnd).c_str());
        unexpected_.fetch_add(1);
        PostMessageW(hwnd, WM_COMMAND, IDCANCEL, 0);
        PostMessageW(hwnd, WM_COMMAND, IDOK, 0);
    }

    std::atomic<wchar_t> key_{0};
    std::atomic<int> answered_{0}, unexpected_{0};
    WindowWatch watch_{[this](HWND hwnd) { menu(hwnd); }, [this](HWND hwnd) { dialog(hwnd); }};
};

// The Windows clipboard's text, as UTF-8 bytes as they are ("\r\n" kept).
std::string clipboardText(HWND owner) { return utf8(clipboardUnits(owner).value_or(L"")); }

// Puts text on the clipboard as a Windows program does: UTF-16, "\r\n".
bool putTextOnClipboard(HWND owner, const std::string& text) {
    std::string crlf;
    for (char c : text) {
        if (c == '\n') crlf += '\r';
        crlf += c;
    }
    return putOnClipboard(owner, utf16(crlf));
}

std::string programName(Instance& in) {
    char name[64] = {};
    in.call(effGetProgramName, 0, 0, name);
    return name;
}

std::string narrow(const std::u16string& text) { return std::string(text.begin(), text.end()); }

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
    check(putTextOnClipboard(host, writeProgramText(other, false)), "could not put a patch on the clipboard");
    watch.expectMenu(L'p');
    click(in, w, MENU_X, MENU_Y);
    pumpFor(&in, 200);
    check(watch.menusAnswered() == before + 2, "the main menu did not open the second time");
    std::printf("pasted: \"%s\"\n", programName(in).c_str());
    check(programName(in) == narrow(other.getName()), "Paste Patch did not take the patch from the clipboard");

    const std::string pasted = programName(in);
    check(putTextOnClipboard(host, "just some words"), "could not put text on the clipboard");
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
    if (!calledWith(argc, 3, "editor_host PLUGIN OPENED.ppm GESTURES.ppm")) return 2;
    HWND host = startEditorHost(argv[1]);
    if (host == nullptr) return 1;
    pumpFor(nullptr, 100);
    DialogWatch watch;
    {
        auto in = instanceWith(factoryProgram(0));
        if (const int status = editorMissing(*in)) return status;
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
    std::printf("%s: %d failed checks\n", failedChecks() == 0 ? "passed" : "FAILED", failedChecks());
    return failedChecks();
}
