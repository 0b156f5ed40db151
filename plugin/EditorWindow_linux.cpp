// The editor's window on Linux: a child of the host's window on a display
// connection of its own, marked for embedding. It shows the panel's pixels
// with XPutImage, brings the mouse and the keyboard to the editor, and
// keeps the editor living from a timer thread of its own, since some hosts
// call the editor's idle rarely or never. The host's calls and the timer
// share the editor's lock; the display is used only under it.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/cursorfont.h>
#include <X11/keysym.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "fomal/ClickMask.h"
#include "platform/Exceptions.h"
#include "plugin/EditorWindow.h"
#include "plugin/X11Clipboard_linux.h"

namespace {

// The timer: the editor ticks at least this often.
constexpr int TICK_MS = 20;

struct KeyName {
    KeySym symbol;
    const char* name;
};

// Keys without a character, by the names the editor's key events use.
constexpr KeyName KEY_NAMES[] = {
    {XK_BackSpace, "backspace"}, {XK_Tab, "tab"},        {XK_Return, "return"},     {XK_KP_Enter, "enter"},
    {XK_Escape, "escape"},       {XK_space, "space"},    {XK_Left, "left"},         {XK_Right, "right"},
    {XK_Up, "up"},               {XK_Down, "down"},      {XK_Home, "home"},         {XK_End, "end"},
    {XK_Prior, "pageUp"},        {XK_Next, "pageDown"},  {XK_Delete, "delete"},     {XK_Insert, "insert"},
    {XK_Help, "help"},           {XK_F1, "f1"},          {XK_F2, "f2"},             {XK_F3, "f3"},
    {XK_F4, "f4"},               {XK_F5, "f5"},          {XK_F6, "f6"},             {XK_F7, "f7"},
    {XK_F8, "f8"},               {XK_F9, "f9"},          {XK_F10, "f10"},           {XK_F11, "f11"},
    {XK_F12, "f12"},
};

std::uint32_t modifiersOf(unsigned state) {
    std::uint32_t m = 0;
    if (state & ShiftMask) m |= Fomal::SHIFT_BIT;
    if (state & ControlMask) m |= Fomal::CONTROL_BIT;
    if (state & Mod1Mask) m |= Fomal::ALT_BIT;
    return m;
}

unsigned cursorShape(Fomal::Cursor cursor) {
    using Fomal::Cursor;
    switch (cursor) {
        case Cursor::iBeam: return XC_xterm;
        case Cursor::wait: return XC_watch;
        case Cursor::appStarting: return XC_watch;
        case Cursor::cross: return XC_crosshair;
        case Cursor::upArrow: return XC_sb_up_arrow;
        case Cursor::sizeAll: return XC_fleur;
        case Cursor::sizeNWSE: return XC_bottom_right_corner;
        case Cursor::sizeNESW: return XC_bottom_left_corner;
        case Cursor::sizeWE: return XC_sb_h_double_arrow;
        case Cursor::sizeNS: return XC_sb_v_double_arrow;
        case Cursor::no: return XC_X_cursor;
        case Cursor::hand: return XC_hand2;
        case Cursor::help: return XC_question_arrow;
        default: return XC_left_ptr;
    }
}

// Where a colour channel sits in a pixel of the visual.
struct Channel {
    int shift = 0;
    int bits = 0;
    explicit Channel(unsigned long mask) {
        while (mask != 0 && (mask & 1) == 0) {
            mask >>= 1;
            ++shift;
        }
        while (mask & 1) {
            mask >>= 1;
            ++bits;
        }
    }
    std::uint32_t place(std::uint32_t byte) const {
        return bits >= 8 ? byte << (shift + bits - 8) : (byte >> (8 - bits)) << shift;
    }
};

// Errors of the display are reported to a handler that is the process's
// own, and Xlib's default one ends the process: while the editor talks to
// its display (a host window that went away, a window the host destroyed
// first), a handler of ours notes the errors of the editor's display and
// passes any other display's on. The editors of a process take turns.
class ErrorTrap {
public:
    explicit ErrorTrap(Display* display) : hold_(turns()), own_(display), first_(NextRequest(display)) {
        display_.store(display);
        failed_.store(false);
        previous_.store(XSetErrorHandler(&note));
    }
    ~ErrorTrap() {
        sync();
        XSetErrorHandler(previous_.load());
        display_.store(nullptr);
    }
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;

    // Whether a request so far failed.
    bool failed() {
        sync();
        return failed_.load();
    }

private:
    static std::mutex& turns() {
        static std::mutex m;
        return m;
    }
    static int note(Display* display, XErrorEvent* error) {
        if (display == display_.load()) {
            failed_.store(true);
            return 0;
        }
        const XErrorHandler previous = previous_.load();
        return previous != nullptr ? previous(display, error) : 0;
    }
    // Waits for the answers to the requests made under the trap; a tick
    // that asked the server nothing waits for nothing.
    void sync() {
        if (NextRequest(own_) == first_) return;
        XSync(own_, False);
        first_ = NextRequest(own_);
    }

    std::lock_guard<std::mutex> hold_;
    Display* own_;
    unsigned long first_;
    static inline std::atomic<Display*> display_{nullptr};
    static inline std::atomic<bool> failed_{false};
    static inline std::atomic<XErrorHandler> previous_{nullptr};
};

class X11EditorWindow : public EditorWindow {
public:
    X11EditorWindow(Window parent, Fomal::EditorCore& core, std::mutex& lock) : core_(core), lock_(lock) {
        display_ = XOpenDisplay(nullptr);
        if (display_ == nullptr) throw Exception("Could not open the display");
        try {
            build(parent);
        } catch (...) {
            destroy();
            throw;
        }
        if (pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0) {
            destroy();
            throw Exception("Could not start the editor's timer");
        }
        {
            // The whole panel goes up at the first paint.
            std::lock_guard<std::mutex> hold(lock_);
            core_.invalidate(OrlPixels::IntRect(0, 0, Fomal::EditorCore::WIDTH, Fomal::EditorCore::HEIGHT));
            show();
        }
        timer_ = std::thread([this] { run(); });
    }

    ~X11EditorWindow() override {
        stopping_.store(true);
        const char byte = 0;
        (void)!write(wake_[1], &byte, 1);
        if (timer_.joinable()) timer_.join();
        close(wake_[0]);
        close(wake_[1]);
        std::lock_guard<std::mutex> hold(lock_);
        destroy();
    }

    void idle() override {
        std::lock_guard<std::mutex> hold(lock_);
        pump();
    }

    bool keyDown(const Fomal::KeyEvent& key) override {
        std::lock_guard<std::mutex> hold(lock_);
        if (gone_) return false;
        Fomal::Clipboard::Use clipboard(*clipboard_);
        ErrorTrap trap(display_);
        bool used = false;
        try {
            used = core_.keyDown(key);
        } catch (...) {
        }
        show();
        return used;
    }

    void* nativeHandle() const override { return reinterpret_cast<void*>(window_); }

private:
    void build(Window parent) {
        XWindowAttributes parentAttributes = {};
        {
            ErrorTrap trap(display_);
            const Status found = XGetWindowAttributes(display_, parent, &parentAttributes);
            if (found == 0 || trap.failed()) throw Exception("Could not find the host's window");
        }
        ErrorTrap trap(display_);
        visual_ = parentAttributes.visual;
        depth_ = parentAttributes.depth;
        if (visual_->c_class != TrueColor || (depth_ != 24 && depth_ != 32))
            throw Exception("The display's colours are not supported");

        XSetWindowAttributes attributes = {};
        attributes.event_mask = ExposureMask | ButtonPressMask | ButtonReleaseMask | PointerMotionMask |
                                KeyPressMask | LeaveWindowMask | StructureNotifyMask;
        attributes.background_pixel = 0;
        attributes.border_pixel = 0;
        colormap_ = XCreateColormap(display_, parent, visual_, AllocNone);
        attributes.colormap = colormap_;
        window_ = XCreateWindow(display_, parent, 0, 0, Fomal::EditorCore::WIDTH, Fomal::EditorCore::HEIGHT, 0,
                                depth_, InputOutput, visual_,
                                CWEventMask | CWBackPixel | CWBorderPixel | CWColormap, &attributes);
        // The embedding protocol's version 0, mapped.
        const Atom xembedInfo = XInternAtom(display_, "_XEMBED_INFO", False);
        const long info[2] = {0, 1};
        XChangeProperty(display_, window_, xembedInfo, xembedInfo, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(info), 2);
        gc_ = XCreateGC(display_, window_, 0, nullptr);

        const Channel red(visual_->red_mask), green(visual_->green_mask), blue(visual_->blue_mask);
        red_ = red;
        green_ = green;
        blue_ = blue;
        frame_.assign(std::size_t(Fomal::EditorCore::WIDTH) * Fomal::EditorCore::HEIGHT, 0);
        image_ = XCreateImage(display_, visual_, unsigned(depth_), ZPixmap, 0, reinterpret_cast<char*>(frame_.data()),
                              Fomal::EditorCore::WIDTH, Fomal::EditorCore::HEIGHT, 32, 0);
        if (image_ == nullptr) throw Exception("Could not make the panel's image");
        clipboard_ = std::make_unique<X11Clipboard>(display_, window_);
        setCursor(Fomal::Cursor::arrow);
        XMapWindow(display_, window_);
        if (trap.failed()) throw Exception("Could not open the editor's window");
    }

    void destroy() {
        {
            ErrorTrap trap(display_);
            if (image_ != nullptr) {
                image_->data = nullptr;  // the frame is ours
                XDestroyImage(image_);
                image_ = nullptr;
            }
            clipboard_.reset();
            if (cursor_ != None) XFreeCursor(display_, cursor_);
            if (gc_ != nullptr) XFreeGC(display_, gc_);
            // A host that destroyed its window first took ours with it.
            if (window_ != None && !gone_) XDestroyWindow(display_, window_);
            if (colormap_ != None) XFreeColormap(display_, colormap_);
        }
        XCloseDisplay(display_);
        display_ = nullptr;
    }

    // The timer thread: wakes for the display's events, or at the tick.
    void run() {
        pollfd fds[2] = {{ConnectionNumber(display_), POLLIN, 0}, {wake_[0], POLLIN, 0}};
        while (!stopping_.load()) {
            poll(fds, 2, TICK_MS);
            if (stopping_.load()) break;
            std::lock_guard<std::mutex> hold(lock_);
            pump();
        }
    }

    // Handles what the display sent, ticks the editor and shows what changed.
    void pump() {
        if (gone_) return;
        Fomal::Clipboard::Use clipboard(*clipboard_);
        ErrorTrap trap(display_);
        try {
            while (XPending(display_) > 0) {
                XEvent event;
                XNextEvent(display_, &event);
                handle(event);
            }
            core_.idle();
        } catch (...) {
            // Nothing from the editor reaches the host.
        }
        show();
        if (trap.failed()) gone_ = true;
    }

    void handle(XEvent& event) {
        switch (event.type) {
            case Expose: {
                const XExposeEvent& e = event.xexpose;
                core_.invalidate(OrlPixels::IntRect(e.x, e.y, e.width, e.height));
                break;
            }
            case ButtonPress:
            case ButtonRelease: {
                const XButtonEvent& e = event.xbutton;
                std::uint32_t button = 0;
                if (e.button == Button1) button = Fomal::LEFT_BIT;
                else if (e.button == Button3) button = Fomal::RIGHT_BIT | (event.type == ButtonPress ? std::uint32_t(Fomal::CONTEXT_BIT) : 0u);
                else break;  // the wheel and other buttons mean nothing here
                const Fomal::MouseEvent m{e.x, e.y, modifiersOf(e.state) | button};
                if (event.type == ButtonPress) core_.mouseDown(m);
                else core_.mouseUp(m);
                break;
            }
            case MotionNotify: {
                // Only the last of a run of moves counts.
                while (XCheckTypedWindowEvent(display_, window_, MotionNotify, &event)) {
                }
                const XMotionEvent& e = event.xmotion;
                std::uint32_t buttons = 0;
                if (e.state & Button1Mask) buttons |= Fomal::LEFT_BIT;
                if (e.state & Button3Mask) buttons |= Fomal::RIGHT_BIT;
                core_.mouseMove({e.x, e.y, modifiersOf(e.state) | buttons});
                break;
            }
            case LeaveNotify:
                core_.mouseMove({-1, -1, modifiersOf(event.xcrossing.state)});
                break;
            case KeyPress: {
                if (std::optional<Fomal::KeyEvent> key = keyOf(event.xkey)) core_.keyDown(*key);
                break;
            }
            case SelectionRequest: clipboard_->answer(event.xselectionrequest); break;
            case SelectionClear: clipboard_->lost(); break;
            case DestroyNotify:
                if (event.xdestroywindow.window == window_) gone_ = true;
                break;
            default: break;
        }
    }

    static std::optional<Fomal::KeyEvent> keyOf(XKeyEvent& e) {
        char text[8] = {};
        KeySym symbol = NoSymbol;
        const int n = XLookupString(&e, text, sizeof text - 1, &symbol, nullptr);
        Fomal::KeyEvent key;
        key.modifiers = modifiersOf(e.state);
        for (const KeyName& k : KEY_NAMES) {
            if (k.symbol == symbol) {
                key.name = k.name;
                if (n == 1) key.character = static_cast<unsigned char>(text[0]);
                return key;
            }
        }
        if (n != 1) return std::nullopt;
        key.character = static_cast<unsigned char>(text[0]);
        key.name = std::string(1, text[0]);
        return key;
    }

    void setCursor(Fomal::Cursor cursor) {
        if (cursor == shownCursor_) return;
        if (cursor_ != None) XFreeCursor(display_, cursor_);
        cursor_ = XCreateFontCursor(display_, cursorShape(cursor));
        XDefineCursor(display_, window_, cursor_);
        shownCursor_ = cursor;
    }

    // Paints what the editor invalidated and puts that region on screen.
    void show() {
        const OrlPixels::IntRect r = core_.paint();
        setCursor(core_.cursor());
        if (!r.isEmpty()) {
            const std::vector<OrlPixels::Pixel>& pixels = core_.pixels();
            const int width = Fomal::EditorCore::WIDTH;
            // Premultiplied colour over black: the colour bytes as they are,
            // placed where the visual keeps them (the usual visual keeps them
            // where the panel does).
            const bool usual = red_.shift == 16 && green_.shift == 8 && blue_.shift == 0 && red_.bits == 8 &&
                               green_.bits == 8 && blue_.bits == 8;
            for (int y = r.top; y < r.bottom(); ++y) {
                const OrlPixels::Pixel* from = pixels.data() + std::size_t(y) * width;
                std::uint32_t* to = frame_.data() + std::size_t(y) * width;
                if (usual) {
                    for (int x = r.left; x < r.right(); ++x) to[x] = from[x] & 0x00FFFFFFu;
                } else {
                    for (int x = r.left; x < r.right(); ++x) {
                        const OrlPixels::Pixel p = from[x];
                        to[x] = red_.place((p >> 16) & 0xFF) | green_.place((p >> 8) & 0xFF) | blue_.place(p & 0xFF);
                    }
                }
            }
            XPutImage(display_, window_, gc_, image_, r.left, r.top, r.left, r.top, unsigned(r.width),
                      unsigned(r.height));
        }
        XFlush(display_);
    }

    Fomal::EditorCore& core_;
    std::mutex& lock_;
    Display* display_ = nullptr;
    Visual* visual_ = nullptr;
    int depth_ = 0;
    Window window_ = None;
    Colormap colormap_ = None;
    GC gc_ = nullptr;
    XImage* image_ = nullptr;
    std::vector<std::uint32_t> frame_;
    Channel red_{0}, green_{0}, blue_{0};
    ::Cursor cursor_ = None;
    Fomal::Cursor shownCursor_ = Fomal::Cursor::inherited;
    std::unique_ptr<X11Clipboard> clipboard_;
    int wake_[2] = {-1, -1};
    // The window went with the host's: nothing more is drawn.
    bool gone_ = false;
    std::atomic<bool> stopping_{false};
    std::thread timer_;
};

}  // namespace

std::unique_ptr<EditorWindow> openEditorWindow(void* parent, Fomal::EditorCore& core, std::mutex& lock) {
    if (parent == nullptr) return nullptr;
    return std::make_unique<X11EditorWindow>(Window(reinterpret_cast<std::uintptr_t>(parent)), core, lock);
}

bool editorWindowsExist() { return true; }
