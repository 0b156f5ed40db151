// Path parsing: any text either parses or fails with the path message, and
// a parsed path's own text parses back to an equal path.
#include "platform/OrlFiles/Exception.h"
#include "platform/OrlFiles/Path.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using OrlFiles::Path;
using OrlFiles::PathStyle;

void check(bool condition) {
    if (!condition)
        std::abort();
}

template <class Text>
void parseAndRoundTrip(Text text, PathStyle style) {
    Path p;
    try {
        p = Path::parse(text, style);
    } catch (const OrlFiles::Exception& e) {
        check(e.message().rfind("Error interpreting path : ", 0) == 0);
        return;
    }
    check(!p.empty());
    check(Path::parse(p.text(), style) == p);
    check(Path::parse(p.systemText(), style) == p);
    check(p.parent().parts().size() + (p.parts().empty() ? 0 : 1) == p.parts().size());
    for (const auto& part : p.parts())
        check(!part.empty());
    if (!p.parts().empty() && p.parts().back() != u"." && p.parts().back() != u"..")
        check(p.parent().child(std::u16string_view(p.name())) == p);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    parseAndRoundTrip(bytes, PathStyle::posix);
    parseAndRoundTrip(bytes, PathStyle::windows);
    // The same bytes read as 16-bit text.
    std::u16string wide(size / 2, u'\0');
    for (size_t i = 0; i + 1 < size; i += 2)
        wide[i / 2] = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
    parseAndRoundTrip(std::u16string_view(wide), PathStyle::windows);
    parseAndRoundTrip(std::u16string_view(wide), PathStyle::posix);
    return 0;
}
