// The editor without a window: the 384 x 512 panel surface, the view tree
// on it, the scripts and the action dispatcher, the hint window, the
// alerts and menus that the panel draws itself, and the idle tick that
// runs delayed actions, animations and view timers by the one clock. A
// window (or the headless panel of the command-line program) delivers
// mouse and key events in panel coordinates and shows the pixels.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fomal/ActionDispatcher.h"
#include "fomal/Clock.h"
#include "fomal/EditorConstants.h"
#include "fomal/EditorHost.h"
#include "fomal/EditorScripts.h"
#include "fomal/EditorServices.h"
#include "fomal/FetchResults.h"
#include "fomal/HintWindow.h"
#include "fomal/View.h"
#include "pixels/Pixel.h"
#include "pixels/Surface.h"

namespace Fomal {

class EditorCore : public EditorServices, private SubstitutionContext, private DialogPresenter {
public:
    static constexpr int WIDTH = 384;
    static constexpr int HEIGHT = 512;
    // How long the mouse rests before a hint shows.
    static constexpr std::int64_t HINT_DELAY_MS = 400;

    EditorCore(EditorHost& host, const Clock& clock, const HintWindowStyle& hintStyle = HintWindowStyle());
    ~EditorCore() override;

    // Opens the editor as a host's window does: reads the constants, starts
    // the scripts (the shared root with the first editor), builds the hint
    // window, then the view tree of the layout, and fires "opened". A
    // failure ends the opening with its alert over an empty panel; the
    // answer is false then.
    bool open(const ScriptSetup& setup, std::string_view layout = "main");
    // The same with the layout given as text.
    bool openText(const ScriptSetup& setup, std::string_view layoutText);
    // Tells the views that the editor closes. The tree and the editor's
    // frame go with the editor.
    void close();
    const EditorConstants& constants() const { return constants_; }

    // Builds the view tree of a layout text over the whole panel and fires
    // "opened" in its root. On failure the exception travels on and the
    // tree stays as it was.
    void openLayoutText(std::string_view text);
    // The same for a layout resource by name.
    void openLayout(std::string_view name);

    View* root() const { return root_.get(); }
    EditorScripts& scripts() { return scripts_; }

    // Events from the window, in panel coordinates.
    void mouseDown(const MouseEvent& e);
    void mouseMove(const MouseEvent& e);
    void mouseUp(const MouseEvent& e);
    // Keys go to the open alert or menu, else to the view with focus.
    bool keyDown(const KeyEvent& e);

    // Runs what is due by the clock: delayed actions, animations, view
    // timers and the hint, and follows the host's changes (a suspended
    // plug-in shows the layout "suspend" over the panel). Cheap when
    // nothing is due.
    void idle();
    // When `idle` next has work, INT64_MAX for never.
    std::int64_t nextWake() const { return wake_; }

    // Redraws what was invalidated since the last paint; returns that region.
    OrlPixels::IntRect paint();
    const std::vector<OrlPixels::Pixel>& pixels() const { return pixels_; }

    Cursor cursor() const { return cursor_; }
    const HintWindow& hint() const { return hint_; }

    // The alert or menu the panel shows now, for windows without a mouse
    // (the headless panel's `choose`): picks the button or the entry with
    // that title. False when there is none.
    bool choose(std::string_view title);
    // The user is in the middle of something: a drag, an open menu or alert.
    bool userBusy() const { return captured_ != nullptr || !overlay_.empty(); }
    bool dialogOpen() const { return !overlay_.empty(); }
    // The platform's own alerts and menus instead of the drawn ones; null
    // for the drawn ones. The dialogs outlive the editor or are reset first.
    void useNativeDialogs(NativeDialogs* dialogs) { native_ = dialogs; }

    // Every alert as it appears: title and text.
    std::function<void(const std::string& title, const std::string& text)> onAlert;

    // EditorServices
    void invalidate(const OrlPixels::IntRect& region) override;
    SubstitutionContext& substitution() override { return *this; }
    ActionDispatcher& actions() override { return dispatcher_; }
    EditorHost& host() override { return host_; }
    std::int64_t now() const override { return clock_.milliseconds(); }
    void retire(std::unique_ptr<View> view) override;
    void reportFailure(std::exception_ptr failure) override;
    void wakeAt(std::int64_t when) override { wake_ = std::min(wake_, when); }

    // Used by the panel's own alerts and menus.
    void closeOverlay(View& view);
    void closeMenus();
    void openOverlay(std::unique_ptr<View> view);
    const std::vector<std::unique_ptr<View>>& overlay() const { return overlay_; }

private:
    // SubstitutionContext: live values from the host, script blocks run in
    // the GUI's frame.
    std::string patchName() const override { return host_.patchName(); }
    std::string undoLabel() const override { return host_.undoLabel(); }
    std::string redoLabel() const override { return host_.redoLabel(); }
    std::string evaluate(std::string_view script) override;

    // DialogPresenter
    void showAlert(View& target, const AlertRequest& alert) override;
    void showPopup(View& target, const PopupRequest& popup) override;
    void showFileDialog(const FileDialogRequest& request, FileChosen chosen) override;

    void presentAlert(View* target, const AlertRequest& alert);
    void substituteTitles(std::vector<PopupItem>& items);
    template <typename F>
    bool opening(const ScriptSetup& setup, F&& buildTree);
    // Runs an event's work; a failure that comes up to here is shown.
    template <typename F>
    void guarded(F&& work);
    void buryRetired();
    // Brings the enabled, checked and shown values of every view up to date.
    void refreshStates();
    // Shows or hides the suspended state when the host's changed.
    void followSuspension();
    // Opens or closes the juggler when the host's jingle starts or stops.
    void followJingle();
    void updateHover(int x, int y);
    std::string hintAt(int x, int y);
    View* topOverlay() const { return overlay_.empty() ? nullptr : overlay_.back().get(); }

    EditorHost& host_;
    const Clock& clock_;
    EditorConstants constants_;
    EditorScripts scripts_;
    FetchResults fetches_{scripts_, *this};  // URL fetches its scripts wait for
    ActionDispatcher dispatcher_;
    std::vector<OrlPixels::Pixel> pixels_;
    OrlPixels::Surface surface_;
    std::unique_ptr<View> root_;
    std::vector<std::unique_ptr<View>> overlay_;  // alerts and menus, the last on top
    std::vector<std::unique_ptr<View>> retired_;  // kept until the running event is over
    OrlPixels::IntRect dirty_;
    std::int64_t wake_ = INT64_MAX;
    std::uint64_t hostRevision_ = 0;

    NativeDialogs* native_ = nullptr;
    View* captured_ = nullptr;
    View* focus_ = nullptr;
    View* hovered_ = nullptr;
    std::weak_ptr<const char> capturedLife_, focusLife_, hoveredLife_;
    HintWindow hint_;
    int mouseX_ = -1, mouseY_ = -1;
    std::int64_t hintDue_ = INT64_MAX;
    Cursor cursor_ = Cursor::arrow;
    bool suspended_ = false;
    bool jingling_ = false;
};

}  // namespace Fomal
