// The speech bubble of the tutorial, the gene help and the kerning page:
// layout type `bubble`. It shows one page of text at a time, written in
// the bubble's mark-up (views/BubbleMarkup.h), and types it out.
//
// Keys, in the order read: `minHeight`, `maxHeight` (limits of the view's
// height fitted to the text), `gamma` (coverage gamma of the outline's
// line, 1 by default), `fill`, `frame` (pen of the outline), `corners`
// { rx, ry }, `tailSize` { width, height } (no tail unless both are above
// 0), `tailPosition` (x of the tail's tip from the bubble's left edge),
// `clickAction` and `clickParams` (what a click in the bubble does; by
// default `typingRate` on the bubble itself), `margins` and `paddings`
// { left, top, right, bottom } (the bubble within the view, and the text
// within the bubble: left and top are added to the near edges, right and
// bottom to the far ones, so { 10, 10, -10, -10 } insets all round),
// `moveResizeFPS`, `moveResizeTime` (seconds), `moveResizeCurve` (the
// animation curve's c), `pages` (an array of strings) and `styles` (an
// object of styles by name). Without a `default` style the view fails with
// "Missing (default) style specification for bubble view".
//
// Keys of a style: `font`, `offset` { x, y } added to its text's place,
// `lineSpacing` (added to the font's line height), `typingRate` (characters
// a second; 0 shows its text at once), `underline` (a pen, with `offset`
// below the baseline), `frame` (a pen drawn around each run, with its own
// `margin` and `padding`), `padding` and `margin` (the frame's room inside
// and outside it, at each side, when the frame names none). A style
// without `font`, `lineSpacing`, `typingRate` or `offset` takes the
// default style's.
//
// Pages pass through the text substitution before they are compiled, so
// `[quol]` sections put their scripts' results into the page. The first
// page's scripts run at the view's first tick, after the layout's "opened"
// trigger has set up what they call; until then the bubble shows no text.
//
// Height. Each page's text is wrapped at the bubble's text width; the
// view's height becomes the lines' height with the vertical paddings and
// margins, kept between `minHeight` and `maxHeight`. The view keeps its
// bottom edge and grows or shrinks upward, moving there over
// `moveResizeTime` at `moveResizeFPS`. Each page starts from the bubble's
// place in the layout; a `move` tag moves it from there for that page.
//
// Clicks. A click on a shown clickable word runs its action on release
// over the word (at once and then repeatedly while held, for `auto`). A
// click anywhere else in the bubble runs `clickAction` with `clickParams`.
// `typingRate` with `rate` r: while the page is typing at its styles' own
// rates, the rest of it types r times as fast (0 or less shows it at
// once); once the page has been sped up, or is fully shown, the action
// runs `reclickAction` with `reclickParams` instead.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fomal/View.h"
#include "pixels/Font.h"
#include "pixels/Pen.h"
#include "pixels/Polygon.h"
#include "views/BubbleMarkup.h"

namespace views {

struct BubbleStyle {
    std::string name;
    OrlPixels::FontRef font;
    OrlPixels::Pixel color = 0xFF000000u;
    Fomal::PointF offset{0, 0};
    double lineSpacing = 0;
    double typingRate = 0;
    bool underlined = false;
    OrlPixels::Pen underline;
    double underlineOffset = 0;
    bool framed = false;
    OrlPixels::Pen frame;
    double padding = 0, margin = 0;
};

// The styles as the mark-up compiler asks for them; index 0 is `default`.
class BubbleStyles : public MarkupStyles {
public:
    std::vector<BubbleStyle> list;

    int find(std::string_view name) const override;
    double measure(int style, std::string_view text) const override;
    MarkupStyleMetrics metrics(int style) const override;
};

class BubbleView : public Fomal::View {
public:
    static constexpr double TYPING_FPS = 30;
    // Pages pass through the text substitution; its script sections open so.
    static constexpr std::string_view SCRIPT_OPEN = "[quol]";
    // An `auto` click repeats after this wait, then at this interval.
    static constexpr std::int64_t REPEAT_DELAY_MS = 400;
    static constexpr std::int64_t REPEAT_INTERVAL_MS = 100;

    explicit BubbleView(const Fomal::ViewBuild& build);

    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    void idle(std::int64_t now) override;
    bool takesMouse() const override { return true; }
    bool hitsAt(int x, int y) const override;
    bool mouseDown(const Fomal::MouseEvent& e) override;
    void mouseUp(const Fomal::MouseEvent& e) override;
    Fomal::Cursor cursorAt(int x, int y) const override;
    bool canPerformOwn(std::string_view action, std::string_view params) override;
    void performOwn(std::string_view action, std::string_view params) override;

    // Shows a page from its start; a number that is no page fails with
    // "Invalid page number: " and the text (with `wrap`, numbers beyond
    // either end wrap around).
    void gotoPage(int page);
    int page() const { return page_; }
    int pageCount() const { return int(pages_.size()); }

    // The outline in panel coordinates: one closed contour.
    OrlPixels::Polygon outline() const;
    // The bubble's rectangle within the view (panel coordinates).
    Fomal::RectF bubbleRect() const;
    const CompiledPage& compiled() const { return compiled_; }
    const WrappedPage& wrapped() const { return wrapped_; }
    const BubbleStyles& styles() const { return styles_; }
    // Characters shown of the page's `compiled().characters`.
    int shownCharacters() const;
    bool typing() const { return op_ < compiled_.ops.size(); }
    bool moving() const { return moveTime_ > 0 && moveStart_ >= 0; }
    // The place the view moves to (or stands at).
    const Fomal::RectF& targetRect() const { return target_; }
    // The typing speed's factor that clicks have set (1 at a page's start).
    double speedFactor() const { return speed_; }

private:
    // Compiles a page and starts it; without `runScripts` its script
    // sections are left out.
    void showPage(int page, bool runScripts);
    // Ends a move where it was going.
    void standAtTarget();
    void fitHeight();
    void advance(std::int64_t now, bool runActions);
    void startMove(const Fomal::RectF& to, double seconds, double curve);
    void stepMove(std::int64_t now);
    void updateTicks();
    void typingRate(std::string_view params);
    void runAction(const std::string& action, const std::string& params);
    // The clickable run under a panel point among those shown, or -1.
    int clickAt(int x, int y) const;
    void invalidateLines(int fromCharacter, int toCharacter);
    double textLeft() const;
    double textTop() const;
    double textWidth() const;
    // The parent's rectangle, in whose terms a `move` tag's bounds are.
    Fomal::RectF parentRectOf() const;

    double minHeight_ = 0, maxHeight_ = 1e6;
    double gamma_ = 1.0;
    OrlPixels::Pixel fill_ = 0;
    bool framed_ = false;
    OrlPixels::Pen frame_;
    double rx_ = 0, ry_ = 0;
    double tailWidth_ = 0, tailHeight_ = 0, tailPosition_ = 0;
    std::string clickAction_ = "typingRate";
    std::string clickParams_;
    double margins_[4] = {}, paddings_[4] = {};
    double moveResizeFPS_ = 30, moveResizeTime_ = 0.3, moveResizeCurve_ = 0.5;
    std::vector<std::string> pages_;
    BubbleStyles styles_;

    Fomal::RectF home_;    // the layout's place
    Fomal::RectF target_;  // where the view moves to
    int page_ = 0;
    CompiledPage compiled_;
    WrappedPage wrapped_;

    // Typing: the next op, the characters typed of it and before it, the
    // time typing has reached, the end of a pause.
    std::size_t op_ = 0;
    double typedInOp_ = 0;
    int typedBefore_ = 0;
    double typedTo_ = 0;  // ms
    double pauseEnd_ = -1;  // ms
    double speed_ = 1.0;
    bool spedUp_ = false;

    // Moving: from, start time (-1 for none), seconds and curve.
    Fomal::RectF moveFrom_;
    std::int64_t moveStart_ = -1;
    double moveTime_ = 0, moveCurve_ = 0.5;

    int pressedClick_ = -1;
    bool repeating_ = false;
    std::int64_t nextRepeat_ = 0;
    double ticksAsked_ = 0;
    bool scriptsPending_ = false;
};

}  // namespace views
