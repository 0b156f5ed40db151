// What the views of one editor ask of it: redraws of panel regions, the
// clock, the action dispatcher, the program around the editor, and the
// live values that shown texts are filled with.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>

#include "fomal/TextSubstitution.h"
#include "pixels/IntRect.h"

namespace Fomal {

class ActionDispatcher;
class EditorHost;
class EditorServices;
class View;

// The MIDI configuration dialog of the platform's own (Windows), shown
// instead of the one the panel draws: modal, it returns when the user has
// closed it, having made its changes through the editor's host.
class NativeMidiConfigDialog {
public:
    virtual ~NativeMidiConfigDialog() = default;
    virtual void show(EditorServices& editor) = 0;
};

class EditorServices {
public:
    virtual ~EditorServices() = default;
    // Marks a panel region for redrawing at the next paint.
    virtual void invalidate(const OrlPixels::IntRect& region) = 0;
    virtual SubstitutionContext& substitution() = 0;
    virtual ActionDispatcher& actions() = 0;
    virtual EditorHost& host() = 0;
    // Milliseconds of the editor's one clock.
    virtual std::int64_t now() const = 0;
    // A view taken out of the tree: the editor keeps it until no event
    // or tick can still be running in it, and lets nothing point at it.
    virtual void retire(std::unique_ptr<View> view) = 0;
    // Shows a failure that reached the root of an event in an error alert.
    virtual void reportFailure(std::exception_ptr failure) = 0;
    // Asks for the tick at `when` at the latest.
    virtual void wakeAt(std::int64_t when) = 0;

    // The platform's own MIDI configuration dialog, set by a window that
    // has one; null for the dialog the panel draws. The dialog outlives
    // the editor or is reset first.
    NativeMidiConfigDialog* nativeMidiConfigDialog() const { return nativeMidiConfig_; }
    void useNativeMidiConfigDialog(NativeMidiConfigDialog* dialog) { nativeMidiConfig_ = dialog; }

private:
    NativeMidiConfigDialog* nativeMidiConfig_ = nullptr;
};

}  // namespace Fomal
