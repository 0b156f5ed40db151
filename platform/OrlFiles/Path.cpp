#include "platform/OrlFiles/Path.h"

#include "platform/OrlFiles/Exception.h"
#include "platform/Utf16.h"

#include <algorithm>

namespace OrlFiles {

namespace {

constexpr std::u16string_view longPrefix = u"\\\\?\\";
constexpr std::u16string_view longSharePrefix = u"\\\\?\\UNC\\";

[[noreturn]] void failToInterpret(std::u16string_view text) {
    throw Exception("Error interpreting path : " + platform::utf16ToUtf8Lossy(text));
}

bool isAsciiLetter(char16_t c) {
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}

// Characters that no name may hold in the windows style.
bool isForbiddenInWindowsName(char16_t c) {
    return c < 0x20 || c == u'<' || c == u'>' || c == u':' || c == u'"' || c == u'|' || c == u'?' ||
           c == u'*' || c == u'\\' || c == u'/';
}

bool isValidName(std::u16string_view name, PathStyle style) {
    if (name.empty())
        return false;
    for (char16_t c : name) {
        if (c == 0)
            return false;
        if (style == PathStyle::posix ? c == u'/' : isForbiddenInWindowsName(c))
            return false;
    }
    return true;
}

struct Splitter {
    PathStyle style;
    bool backslashOnly;  // after the long prefix

    bool isSeparator(char16_t c) const {
        if (style == PathStyle::posix)
            return c == u'/';
        return c == u'\\' || (!backslashOnly && c == u'/');
    }
};

// Splits rest into parts, dropping empty and "." parts; fails on invalid names.
void splitParts(std::u16string_view whole, std::u16string_view rest, const Splitter& splitter,
                std::vector<std::u16string>& parts) {
    std::size_t i = 0;
    while (i <= rest.size()) {
        std::size_t j = i;
        while (j < rest.size() && !splitter.isSeparator(rest[j]))
            ++j;
        const std::u16string_view part = rest.substr(i, j - i);
        if (!part.empty()) {
            if (splitter.backslashOnly && (part == u"." || part == u".."))
                failToInterpret(whole);
            if (part != u"." && part != u"..") {
                // ':' and the like are no part of a name in the windows style;
                // '/' is, after the long prefix, and is refused there too.
                if (!isValidName(part, splitter.style))
                    failToInterpret(whole);
            }
            if (part != u".")
                parts.emplace_back(part);
        }
        i = j + 1;
    }
}

}  // namespace

Path Path::parse(std::string_view utf8, PathStyle style) {
    const auto text = platform::utf8ToUtf16(utf8);
    if (!text)
        throw Exception("Error interpreting path : " + std::string(utf8));
    return parse(*text, style);
}

Path Path::parse(std::u16string_view text, PathStyle style) {
    if (text.empty() || text.find(u'\0') != std::u16string_view::npos)
        failToInterpret(text);

    Path path;
    path.style_ = style;
    Splitter splitter{style, false};
    std::u16string_view rest = text;

    if (style == PathStyle::posix) {
        if (rest.front() == u'/')
            path.root_ = Root::separator;
    } else {
        auto sep = [](char16_t c) { return c == u'\\' || c == u'/'; };
        if (rest.starts_with(longSharePrefix)) {
            splitter.backslashOnly = true;
            rest.remove_prefix(longSharePrefix.size());
            goto share;
        } else if (rest.starts_with(longPrefix)) {
            splitter.backslashOnly = true;
            rest.remove_prefix(longPrefix.size());
            if (rest.size() < 2 || !isAsciiLetter(rest[0]) || rest[1] != u':' || (rest.size() > 2 && rest[2] != u'\\'))
                failToInterpret(text);
            path.root_ = Root::drive;
            path.rootName_ = rest.substr(0, 2);
            rest.remove_prefix(2);
        } else if (rest.size() >= 2 && sep(rest[0]) && sep(rest[1])) {
            rest.remove_prefix(2);
            goto share;
        } else if (rest.size() >= 2 && isAsciiLetter(rest[0]) && rest[1] == u':') {
            path.rootName_ = rest.substr(0, 2);
            path.root_ = rest.size() > 2 && sep(rest[2]) ? Root::drive : Root::driveRelative;
            rest.remove_prefix(2);
        } else if (sep(rest[0])) {
            path.root_ = Root::separator;
        }
        goto parts;

    share:
        // server and share: two names, both required.
        {
            std::size_t serverEnd = 0;
            while (serverEnd < rest.size() && !splitter.isSeparator(rest[serverEnd]))
                ++serverEnd;
            std::size_t shareEnd = serverEnd + 1;
            while (shareEnd < rest.size() && !splitter.isSeparator(rest[shareEnd]))
                ++shareEnd;
            if (serverEnd >= rest.size())
                failToInterpret(text);
            const auto server = rest.substr(0, serverEnd);
            const auto share = rest.substr(serverEnd + 1, shareEnd - serverEnd - 1);
            if (!isValidName(server, style) || !isValidName(share, style) || server == u"." || server == u".." ||
                share == u"." || share == u"..")
                failToInterpret(text);
            path.root_ = Root::share;
            path.rootName_ = u"\\\\";
            path.rootName_ += server;
            path.rootName_ += u'\\';
            path.rootName_ += share;
            rest.remove_prefix(std::min(shareEnd, rest.size()));
        }
    }

parts:
    splitParts(text, rest, splitter, path.parts_);
    if (path.empty())
        path.parts_.emplace_back(u".");  // a lone "." and the like: the current folder
    return path;
}

std::u16string Path::name() const {
    return parts_.empty() ? std::u16string() : parts_.back();
}

std::u16string Path::stem() const {
    const std::u16string n = name();
    const auto dot = n.rfind(u'.');
    if (dot == std::u16string::npos || dot == 0 || n == u"..")
        return n;
    return n.substr(0, dot);
}

std::u16string Path::extension() const {
    const std::u16string n = name();
    const auto dot = n.rfind(u'.');
    if (dot == std::u16string::npos || dot == 0 || n == u"..")
        return {};
    return n.substr(dot + 1);
}

Path Path::parent() const {
    Path p = *this;
    if (!p.parts_.empty())
        p.parts_.pop_back();
    return p;
}

Path Path::child(std::u16string_view childName) const {
    if (!isValidName(childName, style_) || childName == u"." || childName == u"..")
        failToInterpret(childName);
    Path p = *this;
    if (p.root_ == Root::none && p.parts_.size() == 1 && p.parts_[0] == u".")
        p.parts_.clear();
    p.parts_.emplace_back(childName);
    return p;
}

Path Path::child(std::string_view utf8Name) const {
    const auto n = platform::utf8ToUtf16(utf8Name);
    if (!n)
        throw Exception("Error interpreting path : " + std::string(utf8Name));
    return child(std::u16string_view(*n));
}

std::u16string Path::text() const {
    const char16_t separator = style_ == PathStyle::posix ? u'/' : u'\\';
    std::u16string out;
    switch (root_) {
    case Root::none: break;
    case Root::separator: out += separator; break;
    case Root::drive: out += rootName_; out += separator; break;
    case Root::driveRelative: out += rootName_; break;
    case Root::share:
        out += rootName_;
        if (!parts_.empty())
            out += separator;
        break;
    }
    for (std::size_t i = 0; i < parts_.size(); ++i) {
        if (i > 0)
            out += separator;
        out += parts_[i];
    }
    return out;
}

std::string Path::utf8() const {
    return platform::utf16ToUtf8Lossy(text());
}

std::u16string Path::systemText() const {
    // The long prefix turns off the system's own reading of the text: ".."
    // would no longer step up, and a trailing dot or blank would stay in a
    // name. Such paths go without it.
    const bool plain = std::any_of(parts_.begin(), parts_.end(), [](const std::u16string& part) {
        return part == u".." || part.back() == u'.' || part.back() == u' ';
    });
    if (style_ == PathStyle::windows && !plain) {
        if (root_ == Root::drive)
            return std::u16string(longPrefix) + text();
        if (root_ == Root::share)
            return std::u16string(longSharePrefix) + text().substr(2);
    }
    return text();
}

}  // namespace OrlFiles
