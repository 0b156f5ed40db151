// The editor's window on Windows: a child of the host's window that shows
// the panel's pixels with SetDIBitsToDevice, brings the mouse and the keys
// to the editor and ticks it from a 20 ms WM_TIMER as well as from the
// host's idle calls. Alerts and popup menus are the system's own message
// boxes and menus, and the MIDI configuration dialog a dialog of the
// system's, owned by this window; the clipboard is the system's.
//
// Every use of the editor holds the editors' lock. A message box or a menu
// runs a modal loop inside the editor's work, with the lock held, and that
// loop hands this thread's messages to the editors' windows again: such
// messages find the editor busy and do without it (a paint shows the last
// frame, a tick waits for the next one), since taking the lock again on
// the same thread would never return.
// The editor's headers before the system's: these define names (OPAQUE)
// as macros that the drawing library uses as names of its own.
// clang-format off
#include "plugin/EditorWindow.h"
#include "fomal/ClickMask.h"
#include "platform/Exceptions.h"
#include "pixels/Png.h"
#include "platform/Utf16.h"

#include <windows.h>

#include "plugin/MidiConfigDialog_win32.h"
#include "plugin/NativeDialogs_win32.h"
#include "plugin/Win32Clipboard_win32.h"
// clang-format on

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr int WIDTH = Fomal::EditorCore::WIDTH;
constexpr int HEIGHT = Fomal::EditorCore::HEIGHT;

// The timer: the editor ticks at least this often.
constexpr UINT TICK_MS = 20;
constexpr UINT_PTR TICK_TIMER = 1;
// Posted to itself when the mouse was taken away during a press.
constexpr UINT CHECK_PRESS = WM_APP + 1;

constexpr wchar_t CLASS_NAME[] = L"TendraneEditorWindow";

// How deep this thread is in an editor's work: more than 0 while it holds
// the editors' lock, or runs a dialog that the editor opened under it.
thread_local int workDepth = 0;

// The editors' lock as the window takes it: not at all when this thread is
// already inside an editor's work.
class Turn {
public:
    explicit Turn(std::mutex& lock) : lock_(lock) {
        if (workDepth > 0) return;
        lock_.lock();
        taken_ = true;
        ++workDepth;
    }
    ~Turn() {
        if (!taken_) return;
        --workDepth;
        lock_.unlock();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    bool taken() const { return taken_; }

private:
    std::mutex& lock_;
    bool taken_ = false;
};

// Marks the time a dialog's own loop runs as the editor's work.
class InDialog {
public:
    InDialog() { ++workDepth; }
    ~InDialog() { --workDepth; }
    InDialog(const InDialog&) = delete;
    InDialog& operator=(const InDialog&) = delete;
};

// The system's dialogs, run as part of the editor's work.
class WindowDialogs : public Fomal::NativeDialogs {
public:
    explicit WindowDialogs(HWND owner) : dialogs_(owner) {}

    std::string alert(const Fomal::AlertRequest& alert, std::string_view text) override {
        InDialog in;
        return dialogs_.alert(alert, text);
    }
    const Fomal::PopupItem* popup(const std::vector<Fomal::PopupItem>& items, float x, float y) override {
        InDialog in;
        return dialogs_.popup(items, x, y);
    }
    bool fileDialog(const Fomal::FileDialogRequest& request, std::string& path) override {
        InDialog in;
        return dialogs_.fileDialog(request, path);
    }

private:
    Win32Dialogs dialogs_;
};

// The system's MIDI configuration dialog, run as part of the editor's work.
class WindowMidiConfigDialog : public Fomal::NativeMidiConfigDialog {
public:
    explicit WindowMidiConfigDialog(HWND owner) : dialog_(owner) {}

    void show(Fomal::EditorServices& editor) override {
        InDialog in;
        dialog_.show(editor);
    }

private:
    Win32MidiConfigDialog dialog_;
};

HINSTANCE thisModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&thisModule), &module);
    return module;
}

LRESULT CALLBACK windowProcedure(HWND hwnd, UINT message, WPARAM w, LPARAM l);

// The window class, registered while any editor window exists.
class WindowClass {
public:
    static bool acquire() {
        std::lock_guard<std::mutex> hold(turns());
        if (users() == 0) {
            WNDCLASSEXW c = {};
            c.cbSize = sizeof c;
            c.lpfnWndProc = &windowProcedure;
            c.hInstance = thisModule();
            c.hCursor = LoadCursorW(nullptr, IDC_ARROW);
            c.lpszClassName = CLASS_NAME;
            // Still registered by a window that outlived its editor is as good.
            if (RegisterClassExW(&c) == 0 && GetLastError() != ERROR_CLASS_ALREADY_EXISTS) return false;
        }
        ++users();
        return true;
    }
    static void release() {
        std::lock_guard<std::mutex> hold(turns());
        if (users() > 0 && --users() == 0) UnregisterClassW(CLASS_NAME, thisModule());
    }

private:
    static std::mutex& turns() {
        static std::mutex m;
        return m;
    }
    static int& users() {
        static int n = 0;
        return n;
    }
};

struct CursorShape {
    Fomal::Cursor cursor;
    LPCWSTR shape;
};

const CursorShape CURSOR_SHAPES[] = {
    {Fomal::Cursor::arrow, IDC_ARROW},       {Fomal::Cursor::iBeam, IDC_IBEAM},
    {Fomal::Cursor::wait, IDC_WAIT},         {Fomal::Cursor::cross, IDC_CROSS},
    {Fomal::Cursor::upArrow, IDC_UPARROW},   {Fomal::Cursor::sizeAll, IDC_SIZEALL},
    {Fomal::Cursor::sizeNWSE, IDC_SIZENWSE}, {Fomal::Cursor::sizeNESW, IDC_SIZENESW},
    {Fomal::Cursor::sizeWE, IDC_SIZEWE},     {Fomal::Cursor::sizeNS, IDC_SIZENS},
    {Fomal::Cursor::no, IDC_NO},             {Fomal::Cursor::hand, IDC_HAND},
    {Fomal::Cursor::appStarting, IDC_APPSTARTING}, {Fomal::Cursor::help, IDC_HELP},
};

HCURSOR cursorOf(Fomal::Cursor cursor) {
    for (const CursorShape& c : CURSOR_SHAPES)
        if (c.cursor == cursor) return LoadCursorW(nullptr, c.shape);
    return LoadCursorW(nullptr, IDC_ARROW);
}

struct KeyName {
    WPARAM key;
    const char* name;
};

// Keys without a character, by the names the editor's key events use; the
// keys that type a character come with WM_CHAR.
constexpr KeyName KEY_NAMES[] = {
    {VK_LEFT, "left"},   {VK_RIGHT, "right"},   {VK_UP, "up"},          {VK_DOWN, "down"},
    {VK_HOME, "home"},   {VK_END, "end"},       {VK_PRIOR, "pageUp"},   {VK_NEXT, "pageDown"},
    {VK_DELETE, "delete"}, {VK_INSERT, "insert"}, {VK_HELP, "help"},    {VK_F1, "f1"},
    {VK_F2, "f2"},       {VK_F3, "f3"},         {VK_F4, "f4"},          {VK_F5, "f5"},
    {VK_F6, "f6"},       {VK_F7, "f7"},         {VK_F8, "f8"},          {VK_F9, "f9"},
    {VK_F10, "f10"},     {VK_F11, "f11"},       {VK_F12, "f12"},
};

// The modifier keys held now.
std::uint32_t keyModifiers() {
    std::uint32_t m = 0;
    if (GetKeyState(VK_SHIFT) < 0) m |= Fomal::SHIFT_BIT;
    if (GetKeyState(VK_CONTROL) < 0) m |= Fomal::CONTROL_BIT;
    if (GetKeyState(VK_MENU) < 0) m |= Fomal::ALT_BIT;
    return m;
}

// The modifiers of a mouse message, without its buttons.
std::uint32_t mouseModifiers(WPARAM w) {
    std::uint32_t m = 0;
    if (w & MK_SHIFT) m |= Fomal::SHIFT_BIT;
    if (w & MK_CONTROL) m |= Fomal::CONTROL_BIT;
    if (GetKeyState(VK_MENU) < 0) m |= Fomal::ALT_BIT;
    return m;
}

std::uint32_t mouseButtons(WPARAM w) {
    std::uint32_t m = 0;
    if (w & MK_LBUTTON) m |= Fomal::LEFT_BIT;
    if (w & MK_RBUTTON) m |= Fomal::RIGHT_BIT;
    return m;
}

int xOf(LPARAM l) { return int(short(LOWORD(l))); }
int yOf(LPARAM l) { return int(short(HIWORD(l))); }

class Win32EditorWindow : public EditorWindow {
public:
    Win32EditorWindow(HWND parent, Fomal::EditorCore& core, std::mutex& lock) : core_(core), lock_(lock) {
        if (!IsWindow(parent)) throw Exception("Could not find the host's window");
        frame_.assign(std::size_t(WIDTH) * HEIGHT, 0);
        if (!WindowClass::acquire()) throw Exception("Could not open the editor's window");
        hwnd_ = CreateWindowExW(0, CLASS_NAME, L"", WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS, 0, 0, WIDTH, HEIGHT,
                                parent, nullptr, thisModule(), this);
        if (hwnd_ == nullptr) {
            WindowClass::release();
            throw Exception("Could not open the editor's window");
        }
        thread_ = GetCurrentThreadId();
        clipboard_ = std::make_unique<Win32Clipboard>(hwnd_);
        dialogs_ = std::make_unique<WindowDialogs>(hwnd_);
        midiConfigDialog_ = std::make_unique<WindowMidiConfigDialog>(hwnd_);
        {
            Turn turn(lock_);
            if (turn.taken()) {
                core_.useNativeDialogs(dialogs_.get());
                core_.useNativeMidiConfigDialog(midiConfigDialog_.get());
                // The whole panel goes up at the first paint.
                core_.invalidate(OrlPixels::IntRect(0, 0, WIDTH, HEIGHT));
                show();
            }
        }
        SetTimer(hwnd_, TICK_TIMER, TICK_MS, nullptr);
    }

    ~Win32EditorWindow() override {
        closing_ = true;
        {
            Turn turn(lock_);
            // Alerts, menus and the MIDI configuration dialog are drawn by
            // the panel again.
            if (turn.taken()) {
                core_.useNativeDialogs(nullptr);
                core_.useNativeMidiConfigDialog(nullptr);
            }
        }
        if (hwnd_ != nullptr) {
            const HWND hwnd = hwnd_;
            KillTimer(hwnd, TICK_TIMER);
            if (!DestroyWindow(hwnd)) {
                // Another thread's window: it forgets this object and closes
                // on its own thread.
                SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
                PostMessageW(hwnd, WM_CLOSE, 0, 0);
            }
            hwnd_ = nullptr;
        }
        WindowClass::release();
    }

    void idle() override {
        work([&] { core_.idle(); });
    }

    bool keyDown(const Fomal::KeyEvent& key) override {
        bool used = false;
        work([&] { used = core_.keyDown(key); });
        return used;
    }

    void* nativeHandle() const override { return hwnd_; }

    // A message for this window; false leaves it to the system.
    bool handle(UINT message, WPARAM w, LPARAM l, LRESULT& result) {
        result = 0;
        switch (message) {
            case WM_ERASEBKGND:
                result = 1;  // the paint covers everything
                return true;
            case WM_PAINT: {
                PAINTSTRUCT ps;
                if (HDC dc = BeginPaint(hwnd_, &ps)) {
                    // What the editor invalidated first, then what Windows asks.
                    work([] {});
                    blit(dc, ps.rcPaint);
                    EndPaint(hwnd_, &ps);
                }
                return true;
            }
            case WM_PRINTCLIENT:
                blit(reinterpret_cast<HDC>(w), RECT{0, 0, WIDTH, HEIGHT});
                return true;
            case WM_TIMER:
                if (w != TICK_TIMER) return false;
                work([&] { core_.idle(); });
                return true;
            case WM_LBUTTONDOWN:
            case WM_RBUTTONDOWN:
                press(message == WM_LBUTTONDOWN ? Fomal::LEFT_BIT : Fomal::RIGHT_BIT, w, l);
                return true;
            case WM_LBUTTONUP:
            case WM_RBUTTONUP:
                release(message == WM_LBUTTONUP ? Fomal::LEFT_BIT : Fomal::RIGHT_BIT, w, l);
                return true;
            case WM_MOUSEMOVE:
                move(w, l);
                return true;
            case WM_MOUSELEAVE:
                tracking_ = false;
                // A press keeps the mouse wherever it goes.
                if (buttons_ == 0) moveTo(-1, -1, mouseModifiers(0));
                return true;
            case WM_CAPTURECHANGED:
                if (buttons_ != 0) PostMessageW(hwnd_, CHECK_PRESS, 0, 0);
                return true;
            case CHECK_PRESS:
                if (buttons_ != 0 && GetCapture() != hwnd_) endPress();
                return true;
            case WM_SETCURSOR:
                if (reinterpret_cast<HWND>(w) != hwnd_ || LOWORD(l) != HTCLIENT) return false;
                SetCursor(cursorOf(cursor_));
                result = TRUE;
                return true;
            case WM_GETDLGCODE:
                result = DLGC_WANTALLKEYS | DLGC_WANTARROWS | DLGC_WANTCHARS | DLGC_WANTTAB;
                return true;
            case WM_KEYDOWN:
                for (const KeyName& k : KEY_NAMES) {
                    if (k.key != w) continue;
                    Fomal::KeyEvent key;
                    key.name = k.name;
                    key.modifiers = keyModifiers();
                    return keyDown(key);
                }
                return false;
            case WM_CHAR:
                if (std::optional<Fomal::KeyEvent> key = typed(w, l)) return keyDown(*key);
                return false;
            case WM_DESTROY:
                // The host's window went first and took this one with it.
                closing_ = true;
                {
                    Turn turn(lock_);
                    if (turn.taken()) {
                        core_.useNativeDialogs(nullptr);
                        core_.useNativeMidiConfigDialog(nullptr);
                    }
                }
                return true;
            case WM_NCDESTROY:
                closing_ = true;
                hwnd_ = nullptr;
                return false;
            default:
                return false;
        }
    }

private:
    // Runs the editor's work under its lock, with the window's clipboard,
    // and shows what changed; nothing when this thread is already inside
    // an editor's work or the window is going.
    template <typename F>
    bool work(F&& f) {
        if (closing_ || hwnd_ == nullptr) return false;
        Turn turn(lock_);
        if (!turn.taken()) return false;
        Fomal::Clipboard::Use clipboard(*clipboard_);
        try {
            f();
        } catch (...) {
            // Nothing from the editor reaches the host.
        }
        try {
            show();
        } catch (...) {
        }
        return true;
    }

    void press(std::uint32_t button, WPARAM w, LPARAM l) {
        if (buttons_ == 0) SetCapture(hwnd_);
        buttons_ |= button;
        pressModifiers_ = mouseModifiers(w);
        lastX_ = xOf(l);
        lastY_ = yOf(l);
        const std::uint32_t context = button == Fomal::RIGHT_BIT ? std::uint32_t(Fomal::CONTEXT_BIT) : 0u;
        const Fomal::MouseEvent e{lastX_, lastY_, pressModifiers_ | button | context};
        work([&] { core_.mouseDown(e); });
        // A message box or a menu took the mouse: the press ends there.
        if (buttons_ != 0 && GetCapture() != hwnd_) endPress();
    }

    void release(std::uint32_t button, WPARAM w, LPARAM l) {
        // A release whose press ended already, or never came here.
        if ((buttons_ & button) == 0) return;
        buttons_ &= ~button;
        lastX_ = xOf(l);
        lastY_ = yOf(l);
        const Fomal::MouseEvent e{lastX_, lastY_, mouseModifiers(w) | button};
        work([&] { core_.mouseUp(e); });
        if (buttons_ == 0 && GetCapture() == hwnd_) ReleaseCapture();
    }

    // The press was cut short (the mouse went to a message box, a menu or
    // another window): it ends where the mouse was last seen.
    void endPress() {
        const std::uint32_t buttons = buttons_;
        buttons_ = 0;
        const Fomal::MouseEvent e{lastX_, lastY_, pressModifiers_ | buttons};
        work([&] { core_.mouseUp(e); });
    }

    void move(WPARAM w, LPARAM l) {
        if (!tracking_) {
            TRACKMOUSEEVENT t = {};
            t.cbSize = sizeof t;
            t.dwFlags = TME_LEAVE;
            t.hwndTrack = hwnd_;
            tracking_ = TrackMouseEvent(&t) != 0;
        }
        const int x = xOf(l), y = yOf(l);
        const std::uint32_t modifiers = mouseModifiers(w) | mouseButtons(w);
        // Windows repeats a move where the mouse did not move; the editor
        // would take it for the mouse waking from rest.
        if (x == movedX_ && y == movedY_ && modifiers == movedModifiers_) return;
        lastX_ = x;
        lastY_ = y;
        moveTo(x, y, modifiers);
    }

    void moveTo(int x, int y, std::uint32_t modifiers) {
        movedX_ = x;
        movedY_ = y;
        movedModifiers_ = modifiers;
        work([&] { core_.mouseMove({x, y, modifiers}); });
    }

    static std::optional<Fomal::KeyEvent> typed(WPARAM w, LPARAM l) {
        Fomal::KeyEvent key;
        key.modifiers = keyModifiers();
        const char32_t unit = char32_t(w & 0xFFFF);
        switch (unit) {
            case 8: key.name = "backspace"; break;
            case 9: key.name = "tab"; break;
            // The number pad's enter key is the extended one.
            case 13: key.name = (HIWORD(l) & KF_EXTENDED) ? "enter" : "return"; break;
            case 27: key.name = "escape"; break;
            case 32: key.name = "space"; break;
            default: break;
        }
        if (!key.name.empty()) {
            key.character = unit;
            return key;
        }
        if (unit < 32) {
            // Control with a letter types a control character: the letter is
            // what was pressed.
            if (unit >= 1 && unit <= 26 && (key.modifiers & Fomal::CONTROL_BIT)) {
                key.character = U'a' + unit - 1;
                key.name = std::string(1, char('a' + unit - 1));
                return key;
            }
            return std::nullopt;
        }
        if (unit == 127) return std::nullopt;
        // A character beyond the first plane comes in two halves.
        static thread_local char16_t high = 0;
        std::u16string units;
        if (unit >= 0xD800 && unit < 0xDC00) {
            high = char16_t(unit);
            return std::nullopt;
        }
        if (unit >= 0xDC00 && unit < 0xE000) {
            if (high == 0) return std::nullopt;
            units = {high, char16_t(unit)};
            key.character = 0x10000 + ((char32_t(high) - 0xD800) << 10) + (unit - 0xDC00);
        } else {
            units = {char16_t(unit)};
            key.character = unit;
        }
        high = 0;
        key.name = platform::utf16ToUtf8Lossy(units);
        return key;
    }

    // Paints what the editor invalidated into the frame and onto the screen.
    void show() {
        const OrlPixels::IntRect r = core_.paint();
        showCursor(core_.cursor());
        if (r.isEmpty() || hwnd_ == nullptr) return;
        const int left = std::max(0, r.left), top = std::max(0, r.top);
        const int right = int(std::min<std::int64_t>(WIDTH, r.right()));
        const int bottom = int(std::min<std::int64_t>(HEIGHT, r.bottom()));
        if (left >= right || top >= bottom) return;
        const std::vector<OrlPixels::Pixel>& pixels = core_.pixels();
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                // Premultiplied colour over black: the colour bytes as they are.
                const std::size_t i = std::size_t(y) * WIDTH + x;
                frame_[i] = pixels[i] & 0xFFFFFFu;
            }
        }
        if (HDC dc = GetDC(hwnd_)) {
            blit(dc, RECT{left, top, right, bottom});
            ReleaseDC(hwnd_, dc);
        }
    }

    // Copies part of the frame to a device context of the window.
    void blit(HDC dc, RECT r) const {
        r.left = std::max<LONG>(r.left, 0);
        r.top = std::max<LONG>(r.top, 0);
        r.right = std::min<LONG>(r.right, WIDTH);
        r.bottom = std::min<LONG>(r.bottom, HEIGHT);
        if (r.left >= r.right || r.top >= r.bottom) return;
        const int rows = int(r.bottom - r.top);
        // The rows of the region alone, as a top-down image of their own:
        // its first row is the region's first.
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = WIDTH;
        info.bmiHeader.biHeight = -rows;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        SetDIBitsToDevice(dc, r.left, r.top, DWORD(r.right - r.left), DWORD(rows), r.left, 0, 0, UINT(rows),
                          frame_.data() + std::size_t(r.top) * WIDTH, &info, DIB_RGB_COLORS);
    }

    void showCursor(Fomal::Cursor cursor) {
        if (cursor == cursor_) return;
        cursor_ = cursor;
        // At once where the mouse is over the window; elsewhere with the
        // next WM_SETCURSOR.
        if (GetCurrentThreadId() != thread_) return;
        POINT at;
        if (GetCapture() == hwnd_ || (GetCursorPos(&at) && WindowFromPoint(at) == hwnd_)) SetCursor(cursorOf(cursor));
    }

    Fomal::EditorCore& core_;
    std::mutex& lock_;
    HWND hwnd_ = nullptr;
    DWORD thread_ = 0;
    std::vector<std::uint32_t> frame_;  // what the window shows, 0x00RRGGBB
    std::unique_ptr<Win32Clipboard> clipboard_;
    std::unique_ptr<WindowDialogs> dialogs_;
    std::unique_ptr<WindowMidiConfigDialog> midiConfigDialog_;
    Fomal::Cursor cursor_ = Fomal::Cursor::arrow;
    // The mouse: buttons pressed here, the modifiers of the press, where it
    // was last seen, and the last move the editor heard.
    std::uint32_t buttons_ = 0;
    std::uint32_t pressModifiers_ = 0;
    int lastX_ = -1, lastY_ = -1;
    int movedX_ = INT32_MIN, movedY_ = INT32_MIN;
    std::uint32_t movedModifiers_ = 0;
    bool tracking_ = false;
    // The window is going: the editor is no longer used from it.
    bool closing_ = false;
};

LRESULT CALLBACK windowProcedure(HWND hwnd, UINT message, WPARAM w, LPARAM l) {
    if (message == WM_NCCREATE) {
        const auto* create = reinterpret_cast<const CREATESTRUCTW*>(l);
        SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
    }
    auto* window = reinterpret_cast<Win32EditorWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (window != nullptr && window->nativeHandle() != nullptr) {
        try {
            LRESULT result = 0;
            if (window->handle(message, w, l, result)) return result;
        } catch (...) {
            // Nothing is thrown into the system's code.
        }
    }
    if (message == WM_NCDESTROY) SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
    return DefWindowProcW(hwnd, message, w, l);
}

}  // namespace

std::unique_ptr<EditorWindow> openEditorWindow(void* parent, Fomal::EditorCore& core, std::mutex& lock) {
    if (parent == nullptr) return nullptr;
    return std::make_unique<Win32EditorWindow>(static_cast<HWND>(parent), core, lock);
}

// The panel is drawn from PNG images and font pages: a build that cannot
// read them has no panel to show, and its hosts show their own controls.
bool editorWindowsExist() { return OrlPixels::pngAvailable(); }
