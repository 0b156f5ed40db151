#include "cli/PanelEvents.h"

#include <cerrno>
#include <cstdlib>
#include <sstream>

#include "cli/Options.h"
#include "fomal/ClickMask.h"

namespace cli {

namespace {

struct KindName {
    std::string_view name;
    PanelEvent::Kind kind;
};

constexpr KindName KINDS[] = {
    {"move", PanelEvent::Kind::move},     {"down", PanelEvent::Kind::down},       {"up", PanelEvent::Kind::up},
    {"click", PanelEvent::Kind::click},   {"drag", PanelEvent::Kind::drag},       {"key", PanelEvent::Kind::key},
    {"wait", PanelEvent::Kind::wait},     {"note", PanelEvent::Kind::note},       {"noteoff", PanelEvent::Kind::noteOff},
    {"suspend", PanelEvent::Kind::suspend}, {"resume", PanelEvent::Kind::resume}, {"shot", PanelEvent::Kind::shot},
    {"choose", PanelEvent::Kind::choose},
};

struct ModifierName {
    std::string_view name;
    std::uint32_t bit;
};

constexpr ModifierName MODIFIERS[] = {
    {"shift", Fomal::SHIFT_BIT}, {"control", Fomal::CONTROL_BIT}, {"alt", Fomal::ALT_BIT}, {"right", Fomal::RIGHT_BIT}};

class LineReader {
public:
    LineReader(int number, std::vector<std::string> words) : number_(number), words_(std::move(words)) {}

    [[noreturn]] void fail(const std::string& what) const {
        throw UsageError("events line " + std::to_string(number_) + ": " + what);
    }
    bool more() const { return next_ < words_.size(); }
    const std::string& peek() const { return words_[next_]; }

    long long integer(const char* what, long long low, long long high) {
        if (!more()) fail(std::string("missing ") + what);
        const std::string& word = words_[next_++];
        char* end = nullptr;
        errno = 0;
        const long long v = std::strtoll(word.c_str(), &end, 10);
        if (word.empty() || *end != '\0' || errno != 0 || v < low || v > high)
            fail(std::string(what) + " must be a whole number from " + std::to_string(low) + " to " +
                 std::to_string(high) + ", not '" + word + "'");
        return v;
    }

    std::string word(const char* what) {
        if (!more()) fail(std::string("missing ") + what);
        return words_[next_++];
    }

    // The rest of the words as modifiers; the left button unless `right`.
    std::uint32_t modifiers(bool withButton) {
        std::uint32_t bits = 0;
        while (more()) {
            const std::string& word = words_[next_++];
            bool known = false;
            for (const ModifierName& m : MODIFIERS)
                if (word == m.name) {
                    bits |= m.bit;
                    known = true;
                }
            if (!known) fail("unknown modifier '" + word + "' (shift, control, alt or right)");
        }
        if (withButton && (bits & Fomal::RIGHT_BIT) == 0) bits |= Fomal::LEFT_BIT;
        if (!withButton) bits &= ~Fomal::RIGHT_BIT;
        return bits;
    }

    // The rest of the line as one text (a title may hold blanks).
    std::string rest(const char* what) {
        if (!more()) fail(std::string("missing ") + what);
        std::string text;
        while (more()) {
            if (!text.empty()) text += ' ';
            text += words_[next_++];
        }
        return text;
    }

    void end() const {
        if (more()) fail("unexpected '" + peek() + "'");
    }

private:
    int number_;
    std::vector<std::string> words_;
    std::size_t next_ = 1;
};

constexpr long long COORDINATE = 100000;

}  // namespace

std::vector<PanelEvent> parsePanelEvents(std::string_view text) {
    std::vector<PanelEvent> events;
    std::istringstream in{std::string(text)};
    std::string raw;
    int number = 0;
    while (std::getline(in, raw)) {
        ++number;
        if (!raw.empty() && raw.back() == '\r') raw.pop_back();
        std::istringstream words_in(raw);
        std::vector<std::string> words;
        for (std::string w; words_in >> w;) words.push_back(w);
        if (words.empty() || words.front().front() == '#') continue;
        LineReader r(number, words);
        PanelEvent e;
        e.line = number;
        bool known = false;
        for (const KindName& k : KINDS)
            if (words.front() == k.name) {
                e.kind = k.kind;
                known = true;
            }
        if (!known) r.fail("unknown event '" + words.front() + "'");
        using Kind = PanelEvent::Kind;
        switch (e.kind) {
            case Kind::move:
                e.x = int(r.integer("X", -COORDINATE, COORDINATE));
                e.y = int(r.integer("Y", -COORDINATE, COORDINATE));
                r.end();
                break;
            case Kind::down:
            case Kind::up:
            case Kind::click:
                e.x = int(r.integer("X", -COORDINATE, COORDINATE));
                e.y = int(r.integer("Y", -COORDINATE, COORDINATE));
                e.modifiers = r.modifiers(true);
                break;
            case Kind::drag:
                e.x = int(r.integer("X1", -COORDINATE, COORDINATE));
                e.y = int(r.integer("Y1", -COORDINATE, COORDINATE));
                e.x2 = int(r.integer("X2", -COORDINATE, COORDINATE));
                e.y2 = int(r.integer("Y2", -COORDINATE, COORDINATE));
                if (r.more() && r.peek().find_first_not_of("0123456789") == std::string::npos)
                    e.steps = int(r.integer("STEPS", 1, 10000));
                e.modifiers = r.modifiers(true);
                break;
            case Kind::key:
                e.text = r.word("NAME");
                e.modifiers = r.modifiers(false);
                break;
            case Kind::wait:
                e.ms = r.integer("MS", 0, 24LL * 3600 * 1000);
                r.end();
                break;
            case Kind::note:
                e.pitch = int(r.integer("PITCH", 0, 127));
                e.velocity = int(r.integer("VELOCITY", 0, 127));
                r.end();
                break;
            case Kind::noteOff:
                e.pitch = int(r.integer("PITCH", 0, 127));
                r.end();
                break;
            case Kind::suspend:
            case Kind::resume:
                r.end();
                break;
            case Kind::shot:
                e.text = r.rest("FILE.png");
                break;
            case Kind::choose:
                e.text = r.rest("TITLE");
                break;
        }
        events.push_back(std::move(e));
    }
    return events;
}

}  // namespace cli
