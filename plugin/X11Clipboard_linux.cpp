#include "plugin/X11Clipboard_linux.h"

#include <X11/Xatom.h>
#include <poll.h>

#include <chrono>

X11Clipboard::X11Clipboard(Display* display, Window window)
    : display_(display),
      window_(window),
      clipboard_(XInternAtom(display, "CLIPBOARD", False)),
      utf8_(XInternAtom(display, "UTF8_STRING", False)),
      targets_(XInternAtom(display, "TARGETS", False)),
      text_(XInternAtom(display, "TEXT", False)),
      property_(XInternAtom(display, "TENDRANE_PASTE", False)) {}

void X11Clipboard::write(std::string_view text) {
    copied_.assign(text);
    XSetSelectionOwner(display_, clipboard_, window_, CurrentTime);
    owned_ = XGetSelectionOwner(display_, clipboard_) == window_;
    XFlush(display_);
}

std::optional<std::string> X11Clipboard::read() {
    const Window owner = XGetSelectionOwner(display_, clipboard_);
    if (owner == None) return std::nullopt;
    if (owner == window_ && owned_) return copied_;
    // Text in UTF-8 if the owner has it, else Latin-1 as the oldest
    // programs give it.
    if (std::optional<std::string> text = fetch(utf8_)) return text;
    return fetch(XA_STRING);
}

std::optional<std::string> X11Clipboard::fetch(Atom target) {
    XDeleteProperty(display_, window_, property_);
    XConvertSelection(display_, clipboard_, target, property_, window_, CurrentTime);
    XFlush(display_);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ANSWER_WAIT_MS);
    XEvent event;
    while (!XCheckTypedWindowEvent(display_, window_, SelectionNotify, &event)) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return std::nullopt;
        pollfd fd = {ConnectionNumber(display_), POLLIN, 0};
        poll(&fd, 1, int(std::min<long long>(left.count(), 20)));
    }
    if (event.xselection.property == None) return std::nullopt;

    std::string text;
    long offset = 0;
    for (;;) {
        Atom type = None;
        int format = 0;
        unsigned long count = 0, after = 0;
        unsigned char* data = nullptr;
        if (XGetWindowProperty(display_, window_, property_, offset, 65536, False, AnyPropertyType, &type, &format,
                               &count, &after, &data) != Success)
            return std::nullopt;
        if (data != nullptr) {
            if (format == 8) text.append(reinterpret_cast<const char*>(data), count);
            XFree(data);
        }
        // An owner that sends its text in pieces (INCR) is not followed:
        // patches are far smaller than one request.
        if (format != 8) return std::nullopt;
        offset += long(count / 4);
        if (after == 0) break;
    }
    XDeleteProperty(display_, window_, property_);
    return text;
}

void X11Clipboard::answer(const XSelectionRequestEvent& request) {
    XSelectionEvent reply = {};
    reply.type = SelectionNotify;
    reply.display = request.display;
    reply.requestor = request.requestor;
    reply.selection = request.selection;
    reply.target = request.target;
    reply.time = request.time;
    // Old clients name no property: the target's name is the property then.
    const Atom property = request.property != None ? request.property : request.target;
    reply.property = None;
    if (owned_ && request.selection == clipboard_) {
        if (request.target == targets_) {
            const Atom offered[] = {targets_, utf8_, XA_STRING, text_};
            XChangeProperty(display_, request.requestor, property, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(offered), 4);
            reply.property = property;
        } else if (request.target == utf8_ || request.target == XA_STRING || request.target == text_) {
            // Patch texts are ASCII, the same bytes in either form.
            XChangeProperty(display_, request.requestor, property, request.target == text_ ? utf8_ : request.target, 8,
                            PropModeReplace, reinterpret_cast<const unsigned char*>(copied_.data()),
                            int(copied_.size()));
            reply.property = property;
        }
    }
    XEvent event;
    event.xselection = reply;
    XSendEvent(display_, request.requestor, False, NoEventMask, &event);
    XFlush(display_);
}
