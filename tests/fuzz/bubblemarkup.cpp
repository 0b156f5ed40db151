// Fuzz target: the speech bubble's mark-up compiler and its line wrapping
// on arbitrary page text. A page either compiles, and then wraps into lines
// that hold every run once, in order, or fails with one of the system's own
// messages.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fomal/LayoutValues.h"
#include "platform/Exceptions.h"
#include "views/BubbleMarkup.h"
#include "views/BubbleView.h"

namespace {

const views::BubbleStyles& styles() {
    static const views::BubbleStyles table = [] {
        views::BubbleStyles s;
        const char* const names[] = {"default", "g", "i", "key"};
        const char* const fonts[] = {"futura18", "futura16b_lt", "futura18i", "segoe14b"};
        for (int i = 0; i < 4; ++i) {
            views::BubbleStyle style;
            style.name = names[i];
            style.font = Fomal::readFont(std::string("{ fnt: \"") + fonts[i] + "\" }").font;
            style.lineSpacing = -4;
            style.padding = i == 3 ? 2 : 0;
            s.list.push_back(style);
        }
        return s;
    }();
    return table;
}

bool known(std::string_view message) {
    constexpr std::string_view whole[] = {"Unbalanced click tag", "Missing delay in pause tag",
                                          "Missing bounds in move tag", "Missing action in click or do tag",
                                          "Unexpected end of string", "Expected ')'"};
    constexpr std::string_view starts[] = {"Unknown style tag: ", "Unbalanced style tags: ", "Invalid number: ",
                                           "Undefined symbol: ", "Invalid boolean: "};
    for (std::string_view w : whole)
        if (message == w) return true;
    for (std::string_view s : starts)
        if (message.substr(0, s.size()) == s) return true;
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    views::CompiledPage page;
    try {
        page = views::compileMarkup(text, styles());
    } catch (const Exception& e) {
        if (!known(e.what())) std::abort();
        return 0;
    }
    int characters = 0;
    std::size_t runs = 0;
    for (const views::MarkupOp& op : page.ops) {
        characters += op.characters();
        if (op.kind == views::MarkupKind::run) ++runs;
        if (op.click >= int(page.clicks.size())) std::abort();
    }
    if (characters != page.characters) std::abort();
    const views::WrappedPage wrapped = views::wrapMarkup(page, 250, styles());
    if (wrapped.runs.size() != runs || wrapped.lines.empty()) std::abort();
    for (std::size_t i = 0; i < wrapped.runs.size(); ++i) {
        const views::PlacedRun& r = wrapped.runs[i];
        if (r.line < 0 || std::size_t(r.line) >= wrapped.lines.size()) std::abort();
        if (i > 0 && (r.op <= wrapped.runs[i - 1].op || r.line < wrapped.runs[i - 1].line)) std::abort();
    }
    return 0;
}
