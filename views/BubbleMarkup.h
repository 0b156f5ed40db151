// The mark-up of a speech bubble's page, compiled once into a list of
// operations that the bubble types out, and the wrapping of those
// operations into lines at a given width. Plain values; nothing is drawn.
//
// A page is words, entities and tags. Tags are written in angle brackets:
// `<name attributes>`, `</name>` and `<name attributes />`:
//   <br>                               a line break (also <br/>)
//   <click action: .. params: ..>..</click>
//                                      a clickable run; `auto` repeats its
//                                      action while the mouse is held on it
//   <do action: .. params: .. delay: s /> an action when typing gets here,
//                                      or `delay` seconds later
//   <pause delay: s />                 typing stands still for s seconds
//   <move bounds: .. time: s curve: c /> moves the bubble
//   <name>..</name>                    the named style, and back
// Attributes follow the object notation: `key: value` and also
// `key='value'` or `key="value"`, apart by blanks, commas or semicolons; a
// key alone is true. After `=` the quotes only hold the value together
// (`bounds='{ 0, 0, $, $ }'` is the object); after `:` a value is raw
// notation, so `params: "dna"` hands the quoted argument to the action. Entities: &amp; &gt; &lt; &quot;, &nbsp; (a space
// that keeps its word whole) and &nbhp; (a hyphen that does the same).
//
// Failures (::Exception): "Unbalanced click tag", "Missing delay in pause
// tag", "Missing bounds in move tag", "Missing action in click or do tag",
// "Unknown style tag: " and the name, "Unbalanced style tags: " with the
// open and the closing name apart by " and ", and "Unexpected end of
// string" for a tag or quoted value that the page ends inside.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace views {

// What the compiler and the wrapping ask of the bubble's styles.
struct MarkupStyleMetrics {
    double ascent = 0;
    double lineHeight = 0;
    double lineSpacing = 0;
    // Room a run of the style takes at each side beyond its text (its
    // frame's padding and margin).
    double side = 0;
};

class MarkupStyles {
public:
    virtual ~MarkupStyles() = default;
    // The index of a style by name, -1 when there is none. Index 0 is the
    // default style.
    virtual int find(std::string_view name) const = 0;
    virtual double measure(int style, std::string_view text) const = 0;
    virtual MarkupStyleMetrics metrics(int style) const = 0;
};

enum class MarkupKind { run, lineBreak, pause, action, move };

struct MarkupOp {
    MarkupKind kind = MarkupKind::run;
    // A run: its characters in one style, the blanks after it, and whether
    // a line may end after it (after blanks or a plain hyphen).
    int style = 0;
    std::string text;
    int spaces = 0;
    bool breakable = false;
    double width = 0;       // of the text, with the style's side room
    double spaceWidth = 0;  // of the blanks
    int click = -1;         // index into the page's clicks, -1 for none
    // A pause: its seconds. An action: its delay in seconds.
    double delay = 0;
    // An action: the action text and raw params. A move: the raw bounds
    // (`$` keeps the bubble's own value), and time and curve as raw
    // texts, empty for the bubble's own.
    std::string action, params;
    std::string bounds, time, curve;

    // Characters the op counts for when typing: a run's text and blanks.
    int characters() const { return kind == MarkupKind::run ? int(text.size()) + spaces : 0; }
};

struct MarkupClick {
    std::string action, params;
    bool autoRepeat = false;
};

struct CompiledPage {
    std::vector<MarkupOp> ops;
    std::vector<MarkupClick> clicks;
    int characters = 0;  // of all runs
};

CompiledPage compileMarkup(std::string_view page, const MarkupStyles& styles);

// A run placed on a line: x from the text's left, and the characters of
// the page typed before it.
struct PlacedRun {
    std::size_t op = 0;
    int line = 0;
    double x = 0;
    int firstCharacter = 0;
};

struct MarkupLine {
    double top = 0;       // from the text's top
    double baseline = 0;  // from the text's top
    double height = 0;    // the style's line height plus its spacing
    double width = 0;     // of its runs, without the last run's blanks
};

struct WrappedPage {
    std::vector<PlacedRun> runs;
    std::vector<MarkupLine> lines;
    double height = 0;  // of all lines
};

// Words go onto a line while they fit `width`; a word wider than the line
// stands alone on its own. A word is runs with no break between them.
WrappedPage wrapMarkup(const CompiledPage& page, double width, const MarkupStyles& styles);

}  // namespace views
