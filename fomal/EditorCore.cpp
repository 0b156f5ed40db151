#include "fomal/EditorCore.h"

#include <algorithm>
#include <climits>

#include "fomal/AlertBox.h"
#include "fomal/FileDialogView.h"
#include "fomal/LayoutView.h"
#include "fomal/MidiConfigDialog.h"
#include "fomal/PopupMenu.h"
#include "platform/ErrorAlert.h"
#include "quol/Exception.h"

namespace Fomal {

namespace {

// The product's catalogue as the alert boundary asks for it.
class CatalogueTexts : public platform::TextCatalogue {
public:
    std::string translate(std::string_view key) const override { return MessageCatalogue::product().lookup(key); }
};

bool alive(View* view, const std::weak_ptr<const char>& life) {
    return view != nullptr && !life.expired() && !view->retired();
}

}  // namespace

EditorCore::EditorCore(EditorHost& host, const Clock& clock, const HintWindowStyle& hintStyle)
    : host_(host),
      clock_(clock),
      dispatcher_(*this, scripts_, *this),
      pixels_(std::size_t(WIDTH) * HEIGHT, 0xFF000000u),
      surface_(pixels_.data(), WIDTH, OrlPixels::IntRect(0, 0, WIDTH, HEIGHT), true),
      hint_(hintStyle) {}

EditorCore::~EditorCore() {
    overlay_.clear();
    root_.reset();
    retired_.clear();
}

template <typename F>
void EditorCore::guarded(F&& work) {
    try {
        work();
        // Buttons and sliders show what the event did.
        refreshStates();
    } catch (...) {
        reportFailure(std::current_exception());
    }
    buryRetired();
}

bool EditorCore::open(const ScriptSetup& setup, std::string_view layout) {
    return opening(setup, [&] { openLayout(layout); });
}

bool EditorCore::openText(const ScriptSetup& setup, std::string_view layoutText) {
    return opening(setup, [&] { openLayoutText(layoutText); });
}

template <typename F>
bool EditorCore::opening(const ScriptSetup& setup, F&& buildTree) {
    try {
        constants_ = readEditorConstants();
        if (!scripts_.started()) scripts_.start(setup);
        hint_ = HintWindow(constants_.hintWindow);
        buildTree();
        followSuspension();
        followJingle();
        return true;
    } catch (...) {
        invalidate(surface_.bounds);
        reportFailure(std::current_exception());
        return false;
    }
}

void EditorCore::close() {
    closeMenus();
    if (root_) guarded([&] { root_->fireTrigger("closing"); });
}

void EditorCore::followSuspension() {
    if (!root_ || host_.suspended() == suspended_) return;
    suspended_ = !suspended_;
    guarded([&] {
        if (suspended_)
            dispatcher_.perform(*root_, "openView", "\"suspend\"", false);
        else
            dispatcher_.perform(*root_, "closeView", "{ label: \"suspend\" }", false);
        root_->fireTrigger(suspended_ ? "suspended" : "resumed");
    });
}

// The juggler comes out while the plug-in plays its jingle, and goes when
// the jingle stops.
void EditorCore::followJingle() {
    if (!root_ || host_.jingling() == jingling_) return;
    jingling_ = !jingling_;
    guarded([&] { root_->fireTrigger(jingling_ ? "openJuggler" : "closeJuggler"); });
}

void EditorCore::refreshStates() {
    hostRevision_ = host_.revision();
    struct Walk {
        static void refresh(View& v) {
            if (v.hidden()) return;
            v.refreshState();
            for (const std::unique_ptr<View>& child : v.children()) refresh(*child);
        }
    };
    if (root_) Walk::refresh(*root_);
}

void EditorCore::openLayoutText(std::string_view text) {
    std::unique_ptr<View> tree = buildLayout(text, RectF{0, 0, float(WIDTH), float(HEIGHT)}, *this);
    if (root_) {
        root_->retireTree();
        retired_.push_back(std::move(root_));
    }
    captured_ = focus_ = nullptr;
    root_ = std::move(tree);
    scripts_.attach(dispatcher_, *root_);
    invalidate(surface_.bounds);
    guarded([&] { root_->fireTrigger("opened"); });
}

void EditorCore::openLayout(std::string_view name) { openLayoutText(layoutText(name)); }

void EditorCore::invalidate(const OrlPixels::IntRect& region) {
    const OrlPixels::IntRect r = intersection(region, surface_.bounds);
    if (r.isEmpty()) return;
    dirty_ = dirty_.isEmpty() ? r : unionOf(dirty_, r);
}

OrlPixels::IntRect EditorCore::paint() {
    const OrlPixels::IntRect region = dirty_;
    dirty_ = OrlPixels::IntRect();
    if (region.isEmpty()) return region;
    // The panel is opaque: what no view covers is black.
    for (std::int64_t y = region.top; y < region.bottom(); ++y)
        std::fill_n(pixels_.begin() + std::ptrdiff_t(y * WIDTH + region.left), region.width, 0xFF000000u);
    if (root_) root_->drawTree(surface_, region);
    for (const std::unique_ptr<View>& v : overlay_) v->drawTree(surface_, region);
    if (hint_.shown() && !intersection(hint_.bounds(), region).isEmpty()) {
        OrlPixels::Surface clipped = surface_.clipped(region);
        hint_.draw(clipped);
    }
    return region;
}

void EditorCore::retire(std::unique_ptr<View> view) {
    if (!view) return;
    view->retireTree();
    retired_.push_back(std::move(view));
}

void EditorCore::buryRetired() {
    if (!alive(captured_, capturedLife_)) captured_ = nullptr;
    if (!alive(focus_, focusLife_)) focus_ = nullptr;
    // Burying may retire more (a view's own children go with it).
    while (!retired_.empty()) {
        std::vector<std::unique_ptr<View>> gone = std::move(retired_);
        retired_.clear();
        gone.clear();
    }
    if (captured_ != nullptr && capturedLife_.expired()) captured_ = nullptr;
    if (focus_ != nullptr && focusLife_.expired()) focus_ = nullptr;
}

void EditorCore::mouseDown(const MouseEvent& e) {
    mouseX_ = e.x;
    mouseY_ = e.y;
    invalidate(hint_.hide());
    hintDue_ = INT64_MAX;
    guarded([&] {
        View* top = topOverlay();
        View* hit = nullptr;
        if (top != nullptr) {
            // An alert or a menu is modal: the press is its own, wherever it is.
            hit = top->hitTest(e.x, e.y);
            if (hit == nullptr) hit = top;
        } else if (root_) {
            hit = root_->hitTest(e.x, e.y);
        }
        if (hit == nullptr) return;
        const std::weak_ptr<const char> life = hit->lifeToken();
        if (hit->mouseDown(e) && !life.expired() && !hit->retired()) {
            captured_ = hit;
            capturedLife_ = life;
            focus_ = hit;
            focusLife_ = life;
        }
    });
}

void EditorCore::mouseMove(const MouseEvent& e) {
    mouseX_ = e.x;
    mouseY_ = e.y;
    guarded([&] {
        if (alive(captured_, capturedLife_)) {
            captured_->mouseMove(e);
            // A dragged control that has a value shows its hint at once, with
            // the value as it changes.
            if (alive(captured_, capturedLife_) && (hint_.shown() || !captured_->valueText().empty()))
                updateHover(e.x, e.y);
            return;
        }
        View* top = topOverlay();
        if (top != nullptr) top->mouseMove(e);
        invalidate(hint_.hide());
        hintDue_ = now() + HINT_DELAY_MS;
        wakeAt(hintDue_);
        View* hit = root_ && e.x >= 0 && e.y >= 0 ? root_->hitTest(e.x, e.y) : nullptr;
        cursor_ = hit != nullptr ? hit->cursorAt(e.x, e.y) : (root_ ? root_->cursor() : Cursor::arrow);
        // The view under the mouse hears it, and the one it left that it left;
        // an open alert or menu keeps the mouse from the panel.
        if (top != nullptr) hit = nullptr;
        View* before = alive(hovered_, hoveredLife_) ? hovered_ : nullptr;
        if (before != nullptr && before != hit) before->hoverEnds();
        hovered_ = hit;
        hoveredLife_ = hit != nullptr ? hit->lifeToken() : std::weak_ptr<const char>();
        if (hit != nullptr) hit->hover(e);
    });
}

void EditorCore::mouseUp(const MouseEvent& e) {
    mouseX_ = e.x;
    mouseY_ = e.y;
    guarded([&] {
        View* view = alive(captured_, capturedLife_) ? captured_ : nullptr;
        captured_ = nullptr;
        if (view != nullptr) view->mouseUp(e);
    });
}

bool EditorCore::keyDown(const KeyEvent& e) {
    bool used = false;
    guarded([&] {
        if (View* top = topOverlay()) {
            used = top->keyDown(e);
            return;
        }
        if (alive(focus_, focusLife_)) used = focus_->keyDown(e);
    });
    return used;
}

void EditorCore::idle() {
    fetches_.deliver();
    if (host_.revision() != hostRevision_) guarded([] {});
    followSuspension();
    followJingle();
    const std::int64_t t = now();
    if (t < wake_) return;
    wake_ = INT64_MAX;
    guarded([&] {
        // Every view of the tree and of the overlay, gathered first: a tick
        // may open and close views.
        std::vector<View*> views;
        std::vector<std::weak_ptr<const char>> lives;
        struct Gather {
            static void add(View& v, std::vector<View*>& out, std::vector<std::weak_ptr<const char>>& l) {
                out.push_back(&v);
                l.push_back(v.lifeToken());
                for (const std::unique_ptr<View>& child : v.children()) add(*child, out, l);
            }
        };
        if (root_) Gather::add(*root_, views, lives);
        for (const std::unique_ptr<View>& v : overlay_) Gather::add(*v, views, lives);
        for (std::size_t i = 0; i < views.size(); ++i)
            if (alive(views[i], lives[i])) wakeAt(views[i]->tick(t));
    });
    if (hintDue_ <= t) {
        hintDue_ = INT64_MAX;
        updateHover(mouseX_, mouseY_);
    } else if (hintDue_ != INT64_MAX) {
        wakeAt(hintDue_);
    }
}

std::string EditorCore::hintAt(int x, int y) {
    View* target = alive(captured_, capturedLife_) ? captured_ : (root_ ? root_->hitTest(x, y) : nullptr);
    // The hint of the hit view, else of its nearest ancestor that has one.
    for (View* v = target; v != nullptr; v = v->parent()) {
        if (!v->hint()) continue;
        std::string text = *v->hint();
        const std::string value = v->valueText();
        // An empty hint lets the view say what the mouse is over.
        if (text.empty()) return substituteText(value, *this);
        for (std::size_t at = text.find("^X"); at != std::string::npos; at = text.find("^X", at + value.size()))
            text.replace(at, 2, value);
        return substituteText(text, *this);
    }
    return {};
}

void EditorCore::updateHover(int x, int y) {
    if (x < 0 || y < 0 || !overlay_.empty()) return;
    invalidate(hint_.show(hintAt(x, y), x, y, surface_.bounds));
}

std::string EditorCore::evaluate(std::string_view script) {
    if (!root_) return {};
    try {
        return scripts_.evaluate(*root_, script);
    } catch (...) {
        // Texts are filled while drawing: the failure is shown, the text
        // goes without the block.
        reportFailure(std::current_exception());
        return {};
    }
}

void EditorCore::reportFailure(std::exception_ptr failure) {
    std::optional<platform::ErrorAlert> shown;
    try {
        std::rethrow_exception(failure);
    } catch (const Quol::Exception& e) {
        shown = platform::scriptErrorAlert(e.what(), Quol::faultLines(e), CatalogueTexts());
    } catch (...) {
        shown = platform::errorAlertForException(std::current_exception(), CatalogueTexts());
    }
    if (!shown) return;
    AlertRequest alert;
    alert.type = "error";
    alert.title = shown->title;
    alert.text = shown->text;
    alert.buttons = {"ok"};
    alert.defaultButton = "ok";
    presentAlert(root_.get(), alert);
}

void EditorCore::showAlert(View& target, const AlertRequest& alert) { presentAlert(&target, alert); }

void EditorCore::presentAlert(View* target, const AlertRequest& alert) {
    const std::string text = substituteText(alert.text, *this);
    // The same failure again (a text that fails each time it is drawn)
    // does not stack alerts.
    if (auto* open = dynamic_cast<AlertBox*>(topOverlay()))
        if (open->request().title == alert.title && open->shownText() == text) return;
    if (onAlert) onAlert(alert.title, text);
    closeMenus();
    if (native_ != nullptr) {
        // The platform's box blocks until answered; the target is kept
        // until the event is over.
        const std::string word = native_->alert(alert, text);
        if (target != nullptr && !target->retired()) actions().alertAnswered(*target, alert, word);
        return;
    }
    openOverlay(std::make_unique<AlertBox>(*this, target, alert, text));
}

void EditorCore::substituteTitles(std::vector<PopupItem>& items) {
    for (PopupItem& item : items) {
        if (!item.separator() && !item.literal) item.title = substituteText(item.title, *this);
        substituteTitles(item.items);
    }
}

void EditorCore::showPopup(View& target, const PopupRequest& request) {
    // Menu titles are shown texts like any other: "&Undo^U" names the step.
    PopupRequest popup = request;
    substituteTitles(popup.items);
    closeMenus();
    if (native_ != nullptr) {
        invalidate(hint_.hide());
        const PopupItem* chosen = native_->popup(popup.items, popup.x, popup.y);
        if (chosen != nullptr && !target.retired()) actions().popupChosen(target, *chosen);
        return;
    }
    openOverlay(std::make_unique<PopupMenu>(*this, target, popup.items, popup.x, popup.y));
}

void EditorCore::showFileDialog(const FileDialogRequest& request, FileChosen chosen) {
    closeMenus();
    invalidate(hint_.hide());
    std::string path;
    if (native_ != nullptr && native_->fileDialog(request, path)) {
        if (!path.empty() && chosen) chosen(path);
        return;
    }
    openOverlay(std::make_unique<FileDialogView>(*this, request, std::move(chosen)));
}

void EditorCore::openOverlay(std::unique_ptr<View> view) {
    invalidate(hint_.hide());
    view->invalidate();
    overlay_.push_back(std::move(view));
}

void EditorCore::closeOverlay(View& view) {
    for (auto it = overlay_.begin(); it != overlay_.end(); ++it)
        if (it->get() == &view) {
            view.invalidate();
            retire(std::move(*it));
            overlay_.erase(it);
            return;
        }
}

void EditorCore::closeMenus() {
    for (std::size_t i = overlay_.size(); i-- > 0;)
        if (dynamic_cast<PopupMenu*>(overlay_[i].get()) != nullptr) closeOverlay(*overlay_[i]);
}

bool EditorCore::choose(std::string_view title) {
    View* top = topOverlay();
    if (top == nullptr) return false;
    bool chosen = false;
    guarded([&] {
        // What the choice starts may fail (a file that does not read): it
        // was chosen all the same, and the failure is shown.
        try {
            if (auto* alert = dynamic_cast<AlertBox*>(top))
                chosen = alert->choose(title);
            else if (auto* menu = dynamic_cast<PopupMenu*>(top))
                chosen = menu->choose(title);
            else if (auto* files = dynamic_cast<FileDialogView*>(top))
                chosen = files->choose(title);
            else if (auto* midi = dynamic_cast<MidiConfigDialog*>(top))
                chosen = midi->choose(title);
        } catch (...) {
            chosen = true;
            throw;
        }
    });
    return chosen;
}

}  // namespace Fomal
