// A file system path as a value: a root and a list of parts, each part the
// 16-bit text of one name. Empty by default; copies are independent.
//
// Two styles of text are understood, whatever the platform:
//   posix:   "/a/b", "a/b"; only '/' separates; any name but NUL is allowed.
//   windows: "C:\a", "C:a", "\a", "a\b", "\\server\share\a", and the
//            long forms "\\?\C:\a" and "\\?\UNC\server\share\a". Both '\'
//            and '/' separate, except after the long prefix, where only '\'
//            does and "." and ".." are not allowed.
// In both, "." parts are dropped (a lone "." stays) and ".." parts are kept:
// a path is never resolved against the file system.
//
// Comparison is exact on the 16-bit text of root and parts: "C:\A" differs
// from "c:\a", and a trailing separator makes no difference.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace OrlFiles {

enum class PathStyle : std::uint8_t { posix, windows };

#ifdef _WIN32
inline constexpr PathStyle nativePathStyle = PathStyle::windows;
#else
inline constexpr PathStyle nativePathStyle = PathStyle::posix;
#endif

class Path {
public:
    enum class Root : std::uint8_t {
        none,           // relative: "a\b", "a/b"
        separator,      // "/a" (posix), "\a" (the current drive's root)
        drive,          // "C:\a"
        driveRelative,  // "C:a"
        share,          // "\\server\share\a"
    };

    Path() = default;

    // Fails with "Error interpreting path : " and the text when the text is
    // empty, is not well-formed UTF-8 or is no path of the style.
    static Path parse(std::string_view utf8, PathStyle style = nativePathStyle);
    static Path parse(std::u16string_view text, PathStyle style = nativePathStyle);

    bool empty() const { return root_ == Root::none && parts_.empty(); }
    bool isAbsolute() const { return root_ == Root::separator || root_ == Root::drive || root_ == Root::share; }
    PathStyle style() const { return style_; }
    Root root() const { return root_; }
    // "C:" for drive roots, "\\server\share" for shares, empty otherwise.
    const std::u16string& rootName() const { return rootName_; }
    const std::vector<std::u16string>& parts() const { return parts_; }

    // The last part; empty when there is none.
    std::u16string name() const;
    // The last part without its extension ("a.b.tdrn" -> "a.b"; ".x" -> ".x").
    std::u16string stem() const;
    // The text after the last part's last dot, without the dot; empty if none.
    std::u16string extension() const;

    // The path without its last part; a root or an empty path stays as it is.
    Path parent() const;
    // The path with one more part. Fails with "Error interpreting path : "
    // when name is empty, ".", "..", or holds a separator or, in the windows
    // style, a character that no name may hold.
    Path child(std::u16string_view name) const;
    Path child(std::string_view utf8Name) const;

    // The text as written in the path's style, with the long prefix dropped.
    std::u16string text() const;
    std::string utf8() const;
    // The text to give the system: in the windows style, absolute drive and
    // share paths take the long prefix ("\\?\C:\a", "\\?\UNC\s\h\a"),
    // unless a part is ".." or ends in a dot or a blank, which only the
    // system's own reading of a plain path resolves.
    std::u16string systemText() const;

    friend bool operator==(const Path&, const Path&) = default;
    friend std::strong_ordering operator<=>(const Path&, const Path&) = default;

private:
    PathStyle style_ = nativePathStyle;
    Root root_ = Root::none;
    std::u16string rootName_;
    std::vector<std::u16string> parts_;
};

}  // namespace OrlFiles
