#include "fomal/TextSubstitution.h"

#include "platform/Version.h"

namespace Fomal {

namespace {

struct Tag {
    std::string_view open;
    std::string_view close;
};

constexpr Tag WINDOWS_TAG = {"[windows]", "[/windows]"};
constexpr Tag MAC_TAG = {"[mac]", "[/mac]"};
constexpr Tag QUOL_TAG = {"[quol]", "[/quol]"};

bool startsWith(std::string_view text, std::size_t at, std::string_view prefix) {
    return text.substr(at, prefix.size()) == prefix;
}

std::string stepLabel(const std::string& label, const MessageCatalogue& catalogue) {
    std::string shown;
    if (label.empty()) return shown;
    shown += ' ';
    shown += catalogue.lookup(label);
    return shown;
}

}  // namespace

std::string expandTags(std::string_view text, SubstitutionContext& context) {
    std::string out;
    std::size_t i = 0;
    while (i < text.size()) {
        if (text[i] == '[') {
            const Tag* tag = nullptr;
            for (const Tag* t : {&WINDOWS_TAG, &MAC_TAG, &QUOL_TAG})
                if (startsWith(text, i, t->open)) tag = t;
            if (tag != nullptr) {
                const std::size_t inner = i + tag->open.size();
                const std::size_t close = text.find(tag->close, inner);
                if (close != std::string_view::npos) {
                    const std::string_view body = text.substr(inner, close - inner);
                    if (tag == &QUOL_TAG) {
                        out += context.evaluate(body);
                    } else {
                        const bool ours = (tag == &WINDOWS_TAG) == (PLATFORM_TAG == "windows");
                        if (ours) out += expandTags(body, context);
                    }
                    i = close + tag->close.size();
                    continue;
                }
            }
        }
        out += text[i++];
    }
    return out;
}

std::string expandCarets(std::string_view text, SubstitutionContext& context, const MessageCatalogue& catalogue) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '^' || i + 1 >= text.size()) {
            out += text[i];
            continue;
        }
        const char code = text[i + 1];
        switch (code) {
        case 'B': out += platform::kBuildNumber; break;
        case 'N': out += context.patchName(); break;
        case 'R': out += stepLabel(context.redoLabel(), catalogue); break;
        case 'U': out += stepLabel(context.undoLabel(), catalogue); break;
        case 'V': out += platform::kVersionString; break;
        case '^': out += '^'; break;
        default:
            // A code without an entry stands for itself.
            out += '^';
            out += code;
        }
        ++i;
    }
    return out;
}

std::string substituteText(std::string_view text, SubstitutionContext& context, const MessageCatalogue& catalogue) {
    return expandCarets(expandTags(catalogue.lookup(text), context), context, catalogue);
}

}  // namespace Fomal
