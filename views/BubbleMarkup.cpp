#include "views/BubbleMarkup.h"

#include <algorithm>
#include <utility>

#include "fomal/NotationNames.h"
#include "platform/Exceptions.h"

namespace views {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }

using Attributes = std::vector<std::pair<std::string, std::string>>;

const std::string* attribute(const Attributes& attributes, std::string_view key) {
    for (const auto& [k, v] : attributes)
        if (k == key) return &v;
    return nullptr;
}

// The end of a quoted text that starts at `p`: the index after its closing
// quote. A backslash escapes the next character.
std::size_t skipQuoted(std::string_view s, std::size_t p) {
    const char quote = s[p];
    for (++p; p < s.size(); ++p) {
        if (s[p] == '\\') ++p;
        else if (s[p] == quote) return p + 1;
    }
    throw Exception("Unexpected end of string");
}

// The end of a braced value that starts at `p`, quotes inside skipped.
std::size_t skipBraced(std::string_view s, std::size_t p) {
    int depth = 0;
    while (p < s.size()) {
        const char c = s[p];
        if (c == '"' || c == '\'') {
            p = skipQuoted(s, p);
            continue;
        }
        if (c == '{') ++depth;
        else if (c == '}' && --depth == 0) return p + 1;
        ++p;
    }
    throw Exception("Unexpected end of string");
}

bool isSeparator(char c) { return isBlank(c) || c == ',' || c == ';'; }

// `key: value`, `key = value`, `key='value'`, or a key alone (true).
Attributes readAttributes(std::string_view s) {
    Attributes out;
    std::size_t p = 0;
    for (;;) {
        while (p < s.size() && isSeparator(s[p])) ++p;
        if (p >= s.size()) return out;
        const std::size_t keyStart = p;
        while (p < s.size() && !isSeparator(s[p]) && s[p] != ':' && s[p] != '=') ++p;
        std::string key(s.substr(keyStart, p - keyStart));
        std::size_t q = p;
        while (q < s.size() && isBlank(s[q])) ++q;
        if (q >= s.size() || (s[q] != ':' && s[q] != '=')) {
            out.emplace_back(std::move(key), "true");
            continue;
        }
        p = q + 1;
        while (p < s.size() && isBlank(s[p])) ++p;
        const std::size_t valueStart = p;
        if (p < s.size() && (s[p] == '"' || s[p] == '\'')) {
            p = skipQuoted(s, p);
        } else if (p < s.size() && s[p] == '{') {
            p = skipBraced(s, p);
        } else {
            while (p < s.size() && !isSeparator(s[p])) ++p;
        }
        std::string value(s.substr(valueStart, p - valueStart));
        // `key='value'` quotes as mark-up does: the value is what is inside.
        if (s[q] == '=' && !value.empty() && (value.front() == '"' || value.front() == '\'')) value = Fomal::readString(value);
        out.emplace_back(std::move(key), std::move(value));
    }
}

// A quoted value means its text: `action: ">tutorial.next"` is the action
// text, `time: "0.5"` the number.
std::string valueOf(const std::string& raw) { return Fomal::readString(raw); }

struct Entity {
    std::string_view name;
    std::string_view text;
    bool keepsWord;  // a non-breaking character
};

constexpr Entity ENTITIES[] = {
    {"amp", "&", false}, {"gt", ">", false},   {"lt", "<", false},
    {"quot", "\"", false}, {"nbsp", " ", true}, {"nbhp", "-", true},
};

class Compiler {
public:
    Compiler(std::string_view page, const MarkupStyles& styles) : s_(page), styles_(styles) {}

    CompiledPage run() {
        while (p_ < s_.size()) {
            const char c = s_[p_];
            if (c == '<') {
                tag();
            } else if (c == '&') {
                entity();
            } else if (isBlank(c)) {
                blank();
                ++p_;
            } else {
                word_ += c;
                ++p_;
                // A line may end after a plain hyphen inside a word.
                if (c == '-' && word_.size() > 1) flush(true);
            }
        }
        flush(false);
        if (click_ >= 0) throw Exception("Unbalanced click tag");
        for (MarkupOp& op : out_.ops) {
            if (op.kind != MarkupKind::run) continue;
            const MarkupStyleMetrics m = styles_.metrics(op.style);
            op.width = styles_.measure(op.style, op.text) + 2 * m.side;
            op.spaceWidth = op.spaces > 0 ? op.spaces * styles_.measure(op.style, " ") : 0;
            out_.characters += op.characters();
        }
        return std::move(out_);
    }

private:
    int style() const { return styleStack_.back().second; }

    void flush(bool breakable) {
        if (word_.empty()) return;
        MarkupOp op;
        op.kind = MarkupKind::run;
        op.style = style();
        op.text = std::move(word_);
        op.breakable = breakable;
        op.click = click_;
        out_.ops.push_back(std::move(op));
        word_.clear();
    }

    // Blanks end a word; the run before them gets one space, once.
    void blank() {
        flush(false);
        for (auto it = out_.ops.rbegin(); it != out_.ops.rend(); ++it) {
            if (it->kind == MarkupKind::lineBreak) return;
            if (it->kind != MarkupKind::run) continue;
            if (it->spaces == 0 && !it->breakable) {
                it->spaces = 1;
                it->breakable = true;
            }
            return;
        }
    }

    void entity() {
        const std::size_t end = s_.find(';', p_);
        if (end != std::string_view::npos && end - p_ <= 5) {
            const std::string_view name = s_.substr(p_ + 1, end - p_ - 1);
            for (const Entity& e : ENTITIES) {
                if (e.name != name) continue;
                word_ += e.text;
                p_ = end + 1;
                return;
            }
        }
        // An ampersand that starts no entity stands for itself.
        word_ += '&';
        ++p_;
    }

    void tag() {
        // The tag ends at the first `>` outside quotes and braces.
        std::size_t q = p_ + 1;
        while (q < s_.size() && s_[q] != '>') {
            if (s_[q] == '"' || s_[q] == '\'') q = skipQuoted(s_, q);
            else if (s_[q] == '{') q = skipBraced(s_, q);
            else ++q;
        }
        if (q >= s_.size()) throw Exception("Unexpected end of string");
        std::string_view body = s_.substr(p_ + 1, q - p_ - 1);
        p_ = q + 1;
        flush(false);

        const bool closing = !body.empty() && body.front() == '/';
        if (closing) body.remove_prefix(1);
        std::size_t n = 0;
        while (n < body.size() && !isBlank(body[n]) && body[n] != '/') ++n;
        const std::string name(body.substr(0, n));
        std::string_view rest = body.substr(n);
        while (!rest.empty() && isBlank(rest.back())) rest.remove_suffix(1);
        const bool selfClosing = !rest.empty() && rest.back() == '/';
        if (selfClosing) rest.remove_suffix(1);

        if (closing) {
            close(name);
            return;
        }
        if (name == "br") {
            lineBreak();
        } else if (name == "click") {
            openClick(readAttributes(rest));
            if (selfClosing) click_ = -1;
        } else if (name == "do") {
            doAction(readAttributes(rest));
        } else if (name == "pause") {
            pause(readAttributes(rest));
        } else if (name == "move") {
            move(readAttributes(rest));
        } else {
            const int index = styles_.find(name);
            if (index < 0) throw Exception("Unknown style tag: " + name);
            if (!selfClosing) styleStack_.emplace_back(name, index);
        }
    }

    void close(const std::string& name) {
        if (name == "click") {
            if (click_ < 0) throw Exception("Unbalanced click tag");
            click_ = -1;
            return;
        }
        // The tags that hold nothing may be closed: nothing happens.
        if (name == "br" || name == "do" || name == "pause" || name == "move") return;
        if (styles_.find(name) < 0) throw Exception("Unknown style tag: " + name);
        if (styleStack_.size() < 2 || styleStack_.back().first != name)
            throw Exception("Unbalanced style tags: " + styleStack_.back().first + " and " + name);
        styleStack_.pop_back();
    }

    void lineBreak() {
        for (auto it = out_.ops.rbegin(); it != out_.ops.rend() && it->kind != MarkupKind::lineBreak; ++it) {
            if (it->kind != MarkupKind::run) continue;
            it->breakable = true;
            break;
        }
        MarkupOp op;
        op.kind = MarkupKind::lineBreak;
        out_.ops.push_back(std::move(op));
    }

    static std::pair<std::string, std::string> actionOf(const Attributes& a) {
        const std::string* action = attribute(a, "action");
        if (action == nullptr || action->empty()) throw Exception("Missing action in click or do tag");
        const std::string* params = attribute(a, "params");
        // Params stay raw, as a layout's would: a quoted main argument keeps
        // its quotes, an object its braces (`params='{ .. }'` gives the
        // object, `params: "dna"` the quoted argument).
        return {valueOf(*action), params != nullptr ? *params : std::string()};
    }

    void openClick(const Attributes& a) {
        if (click_ >= 0) throw Exception("Unbalanced click tag");
        auto [action, params] = actionOf(a);
        MarkupClick c;
        c.action = std::move(action);
        c.params = std::move(params);
        if (const std::string* repeat = attribute(a, "auto")) c.autoRepeat = Fomal::readBool(*repeat);
        click_ = int(out_.clicks.size());
        out_.clicks.push_back(std::move(c));
    }

    void doAction(const Attributes& a) {
        auto [action, params] = actionOf(a);
        MarkupOp op;
        op.kind = MarkupKind::action;
        op.action = std::move(action);
        op.params = std::move(params);
        if (const std::string* delay = attribute(a, "delay")) op.delay = std::max(0.0f, Fomal::readNumber(valueOf(*delay), 0.0f));
        out_.ops.push_back(std::move(op));
    }

    void pause(const Attributes& a) {
        const std::string* delay = attribute(a, "delay");
        if (delay == nullptr || delay->empty()) throw Exception("Missing delay in pause tag");
        MarkupOp op;
        op.kind = MarkupKind::pause;
        op.delay = std::max(0.0f, Fomal::readNumber(valueOf(*delay), 0.0f));
        out_.ops.push_back(std::move(op));
    }

    void move(const Attributes& a) {
        const std::string* bounds = attribute(a, "bounds");
        if (bounds == nullptr || bounds->empty()) throw Exception("Missing bounds in move tag");
        MarkupOp op;
        op.kind = MarkupKind::move;
        op.bounds = valueOf(*bounds);
        if (const std::string* time = attribute(a, "time")) op.time = valueOf(*time);
        if (const std::string* curve = attribute(a, "curve")) op.curve = valueOf(*curve);
        out_.ops.push_back(std::move(op));
    }

    std::string_view s_;
    const MarkupStyles& styles_;
    std::size_t p_ = 0;
    CompiledPage out_;
    std::string word_;
    std::vector<std::pair<std::string, int>> styleStack_{{"default", 0}};
    int click_ = -1;
};

}  // namespace

CompiledPage compileMarkup(std::string_view page, const MarkupStyles& styles) {
    return Compiler(page, styles).run();
}

WrappedPage wrapMarkup(const CompiledPage& page, double width, const MarkupStyles& styles) {
    WrappedPage out;
    const std::vector<MarkupOp>& ops = page.ops;
    double x = 0;
    int line = 0;
    int typed = 0;
    // The styles on each line set its height and baseline.
    std::vector<std::vector<int>> lineStyles(1);
    std::vector<double> lineWidths(1, 0.0);
    const auto newLine = [&] {
        ++line;
        x = 0;
        lineStyles.emplace_back();
        lineWidths.push_back(0.0);
    };
    std::size_t i = 0;
    while (i < ops.size()) {
        if (ops[i].kind == MarkupKind::lineBreak) {
            newLine();
            ++i;
            continue;
        }
        if (ops[i].kind != MarkupKind::run) {
            ++i;
            continue;
        }
        // A word: runs up to one after which a line may end.
        std::size_t end = i;
        double wordWidth = 0;
        for (std::size_t j = i; j < ops.size() && ops[j].kind != MarkupKind::lineBreak; ++j) {
            if (ops[j].kind != MarkupKind::run) continue;
            end = j;
            wordWidth += ops[j].width;
            if (ops[j].breakable) break;
            wordWidth += ops[j].spaceWidth;
        }
        if (x > 0 && x + wordWidth > width) newLine();
        for (std::size_t j = i; j <= end; ++j) {
            const MarkupOp& op = ops[j];
            if (op.kind != MarkupKind::run) continue;
            PlacedRun placed;
            placed.op = j;
            placed.line = line;
            placed.x = x;
            out.runs.push_back(placed);
            lineStyles.back().push_back(op.style);
            lineWidths.back() = x + op.width;
            x += op.width + op.spaceWidth;
        }
        i = end + 1;
    }
    // The characters typed before each run, in the order of the ops.
    for (std::size_t j = 0, r = 0; j < ops.size(); ++j) {
        if (r < out.runs.size() && out.runs[r].op == j) out.runs[r++].firstCharacter = typed;
        typed += ops[j].characters();
    }
    double top = 0;
    for (std::size_t l = 0; l < lineStyles.size(); ++l) {
        if (lineStyles[l].empty()) lineStyles[l].push_back(0);
        MarkupLine ml;
        ml.top = top;
        double ascent = 0;
        for (std::size_t k = 0; k < lineStyles[l].size(); ++k) {
            const MarkupStyleMetrics m = styles.metrics(lineStyles[l][k]);
            ascent = k == 0 ? m.ascent : std::max(ascent, m.ascent);
            const double h = m.lineHeight + m.lineSpacing;
            ml.height = k == 0 ? h : std::max(ml.height, h);
        }
        ml.baseline = top + ascent;
        ml.width = lineWidths[l];
        top += ml.height;
        out.lines.push_back(ml);
    }
    out.height = top;
    return out;
}

}  // namespace views
