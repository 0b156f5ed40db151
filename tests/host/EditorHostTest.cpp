// The plug-in's editor in a host's window on a real X server: the host asks
// its size, opens it inside a window of its own, sends it real pointer
// events, reads back what it shows and closes it again, many times. What it
// shows must be what `tendrane panel` draws for the same events.
// The test framework first: the X headers define names it uses.
#include <gtest/gtest.h>
// clang-format off
#include <X11/Xlib.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
// clang-format on
#include <dirent.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "patch/FactoryPatches.h"
#include "patch/Preferences.h"
#include "patch/ProgramText.h"
#include "pixels/Png.h"
#include "tests/host/HostPatch.h"
#include "tests/host/PluginHost.h"

using testhost::HostRecord;
using testhost::Instance;
using testhost::Library;

namespace {

constexpr int WIDTH = 384;
constexpr int HEIGHT = 512;
constexpr int VOLUME = 8;  // the parameter the bottom right slider drives

// A preference folder of the test's own, empty at the start but for a
// finished tutorial, so that the slots are the factory patches and no
// tutorial or update check differs from the headless panel's (which is a
// returning player's).
const std::string configDir = std::string(TENDRANE_BINARY_DIR) + "/editor-host-config";
const std::string dataDir = std::string(TENDRANE_BINARY_DIR) + "/editor-host-data";
const bool privatePreferences = [] {
    std::system(("rm -rf '" + configDir + "' '" + dataDir + "' && mkdir -p '" + configDir + "'").c_str());
    if (setenv("XDG_CONFIG_HOME", configDir.c_str(), 1) != 0 || setenv("XDG_DATA_HOME", dataDir.c_str(), 1) != 0)
        return false;
    Preferences::write("completedTutorial", "true");
    return Preferences::read("completedTutorial") == std::optional<std::string>("true");
}();

Library& library() { return Library::get(TENDRANE_PLUGIN_BINARY); }

// An X server resets when its last client leaves, and refuses connections
// while it does: one connection stays open for the whole run, so that the
// server lives from test to test.
Display* keepServerAlive() {
    static Display* display = XOpenDisplay(nullptr);
    return display;
}

int countEntries(const char* folder) {
    int n = 0;
    if (DIR* d = opendir(folder)) {
        while (dirent* e = readdir(d))
            if (e->d_name[0] != '.') ++n;
        closedir(d);
    }
    return n;
}

int childCount(Display* display, Window window) {
    Window root = 0, parent = 0, *children = nullptr;
    unsigned n = 0;
    if (!XQueryTree(display, window, &root, &parent, &children, &n)) return -1;
    if (children) XFree(children);
    return int(n);
}

// Every window under the root, the editor's and any it might leak.
int windowsBelow(Display* display, Window window) {
    Window root = 0, parent = 0, *children = nullptr;
    unsigned n = 0;
    if (!XQueryTree(display, window, &root, &parent, &children, &n)) return 0;
    int total = int(n);
    for (unsigned i = 0; i < n; ++i) total += windowsBelow(display, children[i]);
    if (children) XFree(children);
    return total;
}

class EditorHost : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(privatePreferences);
        ASSERT_TRUE(library().pluginMain) << library().error;
        ASSERT_NE(keepServerAlive(), nullptr) << "no X server: this test runs under xvfb-run";
        display_ = XOpenDisplay(nullptr);
        ASSERT_NE(display_, nullptr) << "no X server: this test runs under xvfb-run";
        const int screen = DefaultScreen(display_);
        parent_ = XCreateSimpleWindow(display_, RootWindow(display_, screen), 0, 0, WIDTH, HEIGHT, 0, 0, 0);
        XMapWindow(display_, parent_);
        XSync(display_, False);
    }
    void TearDown() override {
        if (display_) {
            XDestroyWindow(display_, parent_);
            XCloseDisplay(display_);
        }
    }

    // The host's idle calls for a while, as a host's own timer makes them.
    static void idleFor(Instance& in, int ms) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
        while (std::chrono::steady_clock::now() < end) {
            in.call(effEditIdle);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    Window editorWindow() {
        Window root = 0, parent = 0, *children = nullptr;
        unsigned n = 0;
        XQueryTree(display_, parent_, &root, &parent, &children, &n);
        const Window w = n == 1 ? children[0] : 0;
        if (children) XFree(children);
        return w;
    }

    void send(Window w, int type, int x, int y, unsigned state, unsigned button = Button1) {
        XEvent e = {};
        if (type == MotionNotify) {
            e.xmotion = {};
            e.xmotion.type = MotionNotify;
            e.xmotion.display = display_;
            e.xmotion.window = w;
            e.xmotion.root = DefaultRootWindow(display_);
            e.xmotion.x = x;
            e.xmotion.y = y;
            e.xmotion.state = state;
            e.xmotion.same_screen = True;
            XSendEvent(display_, w, True, PointerMotionMask, &e);
        } else {
            e.xbutton = {};
            e.xbutton.type = type;
            e.xbutton.display = display_;
            e.xbutton.window = w;
            e.xbutton.root = DefaultRootWindow(display_);
            e.xbutton.x = x;
            e.xbutton.y = y;
            e.xbutton.state = state;
            e.xbutton.button = button;
            e.xbutton.same_screen = True;
            XSendEvent(display_, w, True, type == ButtonPress ? ButtonPressMask : ButtonReleaseMask, &e);
        }
        XFlush(display_);
    }

    void click(Instance& in, Window w, int x, int y) {
        send(w, ButtonPress, x, y, 0);
        idleFor(in, 30);
        send(w, ButtonRelease, x, y, Button1Mask);
        idleFor(in, 30);
    }

    void drag(Instance& in, Window w, int x1, int y1, int x2, int y2, int steps) {
        send(w, ButtonPress, x1, y1, 0);
        idleFor(in, 30);
        for (int i = 1; i <= steps; ++i) {
            send(w, MotionNotify, x1 + (x2 - x1) * i / steps, y1 + (y2 - y1) * i / steps, Button1Mask);
            idleFor(in, 30);
        }
        send(w, ButtonRelease, x2, y2, Button1Mask);
        idleFor(in, 30);
    }

    // The editor's pixels as 0xRRGGBB.
    std::vector<std::uint32_t> screenshot(Window w) {
        XImage* image = XGetImage(display_, w, 0, 0, WIDTH, HEIGHT, AllPlanes, ZPixmap);
        std::vector<std::uint32_t> pixels;
        if (!image) return pixels;
        for (int y = 0; y < HEIGHT; ++y)
            for (int x = 0; x < WIDTH; ++x) pixels.push_back(std::uint32_t(XGetPixel(image, x, y)) & 0xFFFFFFu);
        XDestroyImage(image);
        return pixels;
    }

    Display* display_ = nullptr;
    Window parent_ = 0;
};

std::unique_ptr<Instance> instanceWith(const NorvelleProgram& program) {
    auto in = std::make_unique<Instance>(library().pluginMain, 44100.0f, 512);
    std::vector<uint8_t> chunk = testhost::programChunk(program);
    in->call(effSetChunk, 1, static_cast<VstIntPtr>(chunk.size()), chunk.data());
    return in;
}

// The panel that `tendrane panel` draws for the events, as 0xRRGGBB.
std::vector<std::uint32_t> headlessPanel(const std::string& events, const std::string& name) {
    const std::string dir = std::string(TENDRANE_BINARY_DIR) + "/editor-host";
    std::system(("mkdir -p '" + dir + "'").c_str());
    const std::string eventsFile = dir + "/" + name + ".events", png = dir + "/" + name + "-panel.png";
    std::ofstream(eventsFile) << events;
    const std::string command = std::string("XDG_CONFIG_HOME='") + configDir + "-panel' XDG_DATA_HOME='" + dataDir +
                                "-panel' '" + TENDRANE_PROGRAM +
                                "' panel --factory 0 --events '" + eventsFile + "' -o '" + png + "'";
    if (std::system(command.c_str()) != 0) return {};
    std::ifstream in(png, std::ios::binary);
    const std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const OrlPixels::DecodedPng decoded = OrlPixels::decodePng(bytes.data(), bytes.size());
    std::vector<std::uint32_t> pixels;
    for (OrlPixels::Pixel p : decoded.pixels) pixels.push_back(p & 0xFFFFFFu);
    return pixels;
}

void writeShot(const std::vector<std::uint32_t>& rgb, const std::string& name) {
    std::vector<OrlPixels::Pixel> argb;
    for (std::uint32_t p : rgb) argb.push_back(0xFF000000u | p);
    const std::vector<std::uint8_t> png = OrlPixels::encodePng(argb.data(), WIDTH, HEIGHT, WIDTH);
    std::ofstream(std::string(TENDRANE_BINARY_DIR) + "/editor-host/" + name + "-x11.png", std::ios::binary)
        .write(reinterpret_cast<const char*>(png.data()), std::streamsize(png.size()));
}

// The plant sways a little even when no note sounds, with a phase that
// follows the ticks: a window on the real clock and the headless panel on
// its virtual one show it at different moments. Its disc is left out of
// the comparison; the plant's own pictures are pinned by the plant's tests.
bool inPlant(int x, int y) {
    const int dx = x - 192, dy = y - 264;
    return dx * dx + dy * dy <= 114 * 114;
}

// The count of pixels that differ outside the plant; where they lie goes to
// the log.
int differingPixels(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b) {
    if (a.size() != b.size()) return -1;
    int n = 0, left = WIDTH, top = HEIGHT, right = -1, bottom = -1;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] == b[i] || inPlant(int(i % WIDTH), int(i / WIDTH))) continue;
        ++n;
        if (n <= 8) std::printf("  (%d, %d): %06x against %06x\n", int(i % WIDTH), int(i / WIDTH), a[i], b[i]);
        const int x = int(i % WIDTH), y = int(i / WIDTH);
        left = std::min(left, x), right = std::max(right, x), top = std::min(top, y), bottom = std::max(bottom, y);
    }
    if (n > 0) std::printf("differing pixels from (%d, %d) to (%d, %d)\n", left, top, right, bottom);
    return n;
}

// Another program on the display that owns the CLIPBOARD selection with a
// text, and answers for it from a thread of its own while the host waits.
class ClipboardOwner {
public:
    explicit ClipboardOwner(std::string text) : text_(std::move(text)) {
        display_ = XOpenDisplay(nullptr);
        window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1, 1, 0, 0, 0);
        clipboard_ = XInternAtom(display_, "CLIPBOARD", False);
        utf8_ = XInternAtom(display_, "UTF8_STRING", False);
        XSetSelectionOwner(display_, clipboard_, window_, CurrentTime);
        XSync(display_, False);
        thread_ = std::thread([this] { serve(); });
    }
    ~ClipboardOwner() {
        stop_ = true;
        thread_.join();
        XDestroyWindow(display_, window_);
        XCloseDisplay(display_);
    }
    int answered() const { return answered_.load(); }

private:
    void serve() {
        while (!stop_) {
            while (XPending(display_) > 0) {
                XEvent e;
                XNextEvent(display_, &e);
                if (e.type != SelectionRequest) continue;
                const XSelectionRequestEvent& r = e.xselectionrequest;
                XEvent reply = {};
                reply.xselection.type = SelectionNotify;
                reply.xselection.requestor = r.requestor;
                reply.xselection.selection = r.selection;
                reply.xselection.target = r.target;
                reply.xselection.time = r.time;
                reply.xselection.property = None;
                if (r.target == utf8_ || r.target == XA_STRING) {
                    XChangeProperty(display_, r.requestor, r.property, r.target, 8, PropModeReplace,
                                    reinterpret_cast<const unsigned char*>(text_.data()), int(text_.size()));
                    reply.xselection.property = r.property;
                }
                XSendEvent(display_, r.requestor, False, NoEventMask, &reply);
                XFlush(display_);
                ++answered_;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    std::string text_;
    Display* display_ = nullptr;
    Window window_ = 0;
    Atom clipboard_ = 0, utf8_ = 0;
    std::atomic<bool> stop_{false};
    std::atomic<int> answered_{0};
    std::thread thread_;
};

std::string programName(Instance& in) {
    char name[64] = {};
    in.call(effGetProgramName, 0, 0, name);
    return name;
}

}  // namespace

TEST_F(EditorHost, TellsItsSizeAndOpensAsAChildOfTheHostWindow) {
    auto in = instanceWith(factoryProgram(0));
    ASSERT_TRUE(in->effect->flags & effFlagsHasEditor);
    ERect* rect = nullptr;
    ASSERT_EQ(in->call(effEditGetRect, 0, 0, &rect), 1);
    ASSERT_NE(rect, nullptr);
    EXPECT_EQ(rect->top, 0);
    EXPECT_EQ(rect->left, 0);
    EXPECT_EQ(rect->bottom, HEIGHT);
    EXPECT_EQ(rect->right, WIDTH);

    ASSERT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1);
    idleFor(*in, 100);
    const Window w = editorWindow();
    ASSERT_NE(w, 0u);
    XWindowAttributes a;
    ASSERT_TRUE(XGetWindowAttributes(display_, w, &a));
    EXPECT_EQ(a.width, WIDTH);
    EXPECT_EQ(a.height, HEIGHT);
    EXPECT_EQ(a.map_state, IsViewable);
    // Marked for embedding: version 0, mapped.
    const Atom info = XInternAtom(display_, "_XEMBED_INFO", True);
    ASSERT_NE(info, None);
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    ASSERT_EQ(XGetWindowProperty(display_, w, info, 0, 2, False, AnyPropertyType, &type, &format, &count, &after, &data),
              Success);
    ASSERT_EQ(count, 2u);
    EXPECT_EQ(reinterpret_cast<long*>(data)[1], 1);
    XFree(data);

    EXPECT_EQ(in->call(effEditClose), 1);
    XSync(display_, False);
    EXPECT_EQ(childCount(display_, parent_), 0);
}

// A drag of the volume slider, undo and redo by their buttons: the
// parameter follows, the host hears one gesture, and the window shows what
// the headless panel draws for the same events.
TEST_F(EditorHost, GesturesReachParametersUndoAndTheHostLikeTheHeadlessPanel) {
    auto in = instanceWith(factoryProgram(0));
    ASSERT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1);
    idleFor(*in, 300);
    const Window w = editorWindow();
    ASSERT_NE(w, 0u);

    {
        const std::vector<std::uint32_t> first = screenshot(w);
        const std::vector<std::uint32_t> still = headlessPanel("wait 300\n", "opened");
        writeShot(first, "opened");
        EXPECT_EQ(differingPixels(first, still), 0) << "compare " << TENDRANE_BINARY_DIR << "/editor-host/opened-*.png";
    }
    HostRecord& host = HostRecord::get();
    const float before = in->effect->getParameter(in->effect, VOLUME);
    const int begins = host.count(audioMasterBeginEdit), ends = host.count(audioMasterEndEdit);
    const int automations = host.count(audioMasterAutomate);

    drag(*in, w, 308, 461, 330, 461, 11);
    idleFor(*in, 300);
    const float dragged = in->effect->getParameter(in->effect, VOLUME);
    EXPECT_GT(dragged, before);
    EXPECT_EQ(host.count(audioMasterBeginEdit) - begins, 1);
    EXPECT_EQ(host.count(audioMasterEndEdit) - ends, 1);
    EXPECT_GE(host.count(audioMasterAutomate) - automations, 1);

    click(*in, w, 105, 49);  // undo
    idleFor(*in, 300);
    EXPECT_EQ(in->effect->getParameter(in->effect, VOLUME), before);
    click(*in, w, 145, 49);  // redo
    idleFor(*in, 300);
    EXPECT_EQ(in->effect->getParameter(in->effect, VOLUME), dragged);

    // Every hint and animation settles.
    idleFor(*in, 1500);
    const std::vector<std::uint32_t> shown = screenshot(w);
    const std::vector<std::uint32_t> headless =
        headlessPanel("drag 308 461 330 461 11\nwait 300\nclick 105 49\nwait 300\nclick 145 49\nwait 1800\n", "gestures");
    writeShot(shown, "gestures");
    ASSERT_EQ(shown.size(), std::size_t(WIDTH * HEIGHT));
    ASSERT_EQ(headless.size(), shown.size()) << "tendrane panel did not draw";
    EXPECT_EQ(differingPixels(shown, headless), 0) << "compare " << TENDRANE_BINARY_DIR << "/editor-host/gestures-*.png";
    EXPECT_EQ(in->call(effEditClose), 1);
}

TEST_F(EditorHost, OpensAndClosesAHundredTimesWithoutLeaks) {
    auto in = instanceWith(factoryProgram(0));
    // Once first, so that what lives as long as the process is there.
    ASSERT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1);
    idleFor(*in, 50);
    in->call(effEditClose);
    XSync(display_, False);
    const int threads = countEntries("/proc/self/task");
    const int files = countEntries("/proc/self/fd");
    const int windows = windowsBelow(display_, DefaultRootWindow(display_));

    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1) << "opening " << i;
        in->call(effEditIdle);
        ASSERT_EQ(childCount(display_, parent_), 1);
        ASSERT_EQ(in->call(effEditClose), 1);
    }
    XSync(display_, False);
    EXPECT_EQ(childCount(display_, parent_), 0);
    EXPECT_EQ(windowsBelow(display_, DefaultRootWindow(display_)), windows);
    EXPECT_EQ(countEntries("/proc/self/task"), threads);
    EXPECT_EQ(countEntries("/proc/self/fd"), files);
}

// Several instances with their editors open at once, closed in any order.
TEST_F(EditorHost, SeveralEditorsAtOnce) {
    auto a = instanceWith(factoryProgram(1));
    auto b = instanceWith(factoryProgram(2));
    const Window second = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 400, 0, WIDTH, HEIGHT, 0, 0, 0);
    XMapWindow(display_, second);
    XSync(display_, False);
    ASSERT_EQ(a->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1);
    ASSERT_EQ(b->call(effEditOpen, 0, 0, reinterpret_cast<void*>(second)), 1);
    idleFor(*a, 100);
    idleFor(*b, 100);
    EXPECT_EQ(childCount(display_, parent_), 1);
    EXPECT_EQ(childCount(display_, second), 1);
    a->call(effEditClose);
    idleFor(*b, 100);
    b->call(effEditClose);
    // A third after the last closed starts the shared scripts again.
    ASSERT_EQ(a->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1);
    idleFor(*a, 100);
    a->call(effEditClose);
    XDestroyWindow(display_, second);
    XSync(display_, False);
}

// A host that destroys its window before closing the editor.
TEST_F(EditorHost, HostWindowGoneFirst) {
    auto in = instanceWith(factoryProgram(0));
    const Window host = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, WIDTH, HEIGHT, 0, 0, 0);
    XMapWindow(display_, host);
    XSync(display_, False);
    ASSERT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(host)), 1);
    idleFor(*in, 100);
    XDestroyWindow(display_, host);
    XSync(display_, False);
    idleFor(*in, 100);
    EXPECT_EQ(in->call(effEditClose), 1);
    // A window that does not exist is refused, without harm.
    EXPECT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(host)), 0);
    EXPECT_EQ(in->call(effEditClose), 1);
}

// The main menu's entries, where the panel draws them under its button.
constexpr int MENU_X = 24, MENU_Y = 49;
constexpr int COPY_X = 60, COPY_Y = 158;
constexpr int PASTE_X = 60, PASTE_Y = 176;

// Copy puts the patch on the X clipboard for other programs; paste takes a
// patch from another program's clipboard, and pastes nothing when the
// clipboard holds something else.
TEST_F(EditorHost, CopyAndPasteGoThroughTheXClipboard) {
    auto in = instanceWith(factoryProgram(0));
    ASSERT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1);
    idleFor(*in, 200);
    const Window w = editorWindow();
    ASSERT_NE(w, 0u);

    click(*in, w, MENU_X, MENU_Y);
    click(*in, w, COPY_X, COPY_Y);
    idleFor(*in, 100);
    // Asked as another program asks.
    const Atom clipboard = XInternAtom(display_, "CLIPBOARD", False);
    const Atom utf8 = XInternAtom(display_, "UTF8_STRING", False);
    const Atom property = XInternAtom(display_, "EDITOR_HOST_TEST", False);
    EXPECT_NE(XGetSelectionOwner(display_, clipboard), None);
    XConvertSelection(display_, clipboard, utf8, property, parent_, CurrentTime);
    XFlush(display_);
    XEvent notify = {};
    bool answered = false;
    for (int i = 0; i < 200 && !answered; ++i) {
        answered = XCheckTypedWindowEvent(display_, parent_, SelectionNotify, &notify);
        if (!answered) idleFor(*in, 10);
    }
    ASSERT_TRUE(answered);
    ASSERT_EQ(notify.xselection.property, property);
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    ASSERT_EQ(XGetWindowProperty(display_, parent_, property, 0, 1 << 20, True, AnyPropertyType, &type, &format, &count,
                                 &after, &data),
              Success);
    const std::string copied(reinterpret_cast<const char*>(data), count);
    XFree(data);
    EXPECT_EQ(copied.rfind("TendranePatch:", 0), 0u) << copied;
    EXPECT_EQ(readProgramText(copied).getName(), u"Radix Gravis");

    {
        // A patch from another program is pasted.
        const NorvelleProgram other = factoryProgram(3);
        ClipboardOwner owner(writeProgramText(other, false));
        click(*in, w, MENU_X, MENU_Y);
        click(*in, w, PASTE_X, PASTE_Y);
        idleFor(*in, 200);
        const std::u16string name = other.getName();
        EXPECT_EQ(programName(*in), std::string(name.begin(), name.end()));
        EXPECT_GE(owner.answered(), 1);
    }
    {
        // Text that is not a patch pastes nothing.
        const std::string before = programName(*in);
        ClipboardOwner owner("just some words");
        click(*in, w, MENU_X, MENU_Y);
        click(*in, w, PASTE_X, PASTE_Y);
        idleFor(*in, 200);
        EXPECT_EQ(programName(*in), before);
        EXPECT_GE(owner.answered(), 1);
    }
    EXPECT_EQ(in->call(effEditClose), 1);
}

// Holding the seed down sounds a note from the panel.
TEST_F(EditorHost, PressingTheSeedSoundsANote) {
    auto in = instanceWith(factoryProgram(0));
    ASSERT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1);
    idleFor(*in, 200);
    const Window w = editorWindow();
    ASSERT_NE(w, 0u);
    std::vector<float> left, right;
    in->render({}, 4096, left, right);
    float quiet = 0;
    for (float v : left) quiet = std::max(quiet, std::fabs(v));
    EXPECT_EQ(quiet, 0.0f);

    send(w, ButtonPress, 192, 264, 0);
    idleFor(*in, 50);
    in->render({}, 22050, left, right);
    float loud = 0;
    for (float v : left) loud = std::max(loud, std::fabs(v));
    EXPECT_GT(loud, 0.001f);
    send(w, ButtonRelease, 192, 264, Button1Mask);
    idleFor(*in, 50);
    EXPECT_EQ(in->call(effEditClose), 1);
}

// A suspended plug-in: the plant's sway stands still from the start, it
// droops until it stands fully drooped, and then the window shows what the
// headless panel shows, plant and all. (Suspended before the first tick,
// so that no real-time tick can move a sway phase before it freezes.)
TEST_F(EditorHost, ASuspendedPanelStandsStillAsTheHeadlessOne) {
    auto in = instanceWith(factoryProgram(0));
    in->call(effStopProcess);
    in->call(effMainsChanged, 0, 0);
    ASSERT_EQ(in->call(effEditOpen, 0, 0, reinterpret_cast<void*>(parent_)), 1);
    idleFor(*in, 8000);
    const Window w = editorWindow();
    ASSERT_NE(w, 0u);
    const std::vector<std::uint32_t> shown = screenshot(w);
    const std::vector<std::uint32_t> headless = headlessPanel("suspend\nwait 8000\n", "suspended");
    writeShot(shown, "suspended");
    ASSERT_EQ(headless.size(), shown.size()) << "tendrane panel did not draw";
    std::size_t differing = 0;
    for (std::size_t i = 0; i < shown.size(); ++i) differing += shown[i] != headless[i];
    EXPECT_EQ(differing, 0u) << "compare " << TENDRANE_BINARY_DIR << "/editor-host/suspended-*.png";
    in->call(effMainsChanged, 0, 1);
    in->call(effStartProcess);
    EXPECT_EQ(in->call(effEditClose), 1);
}
