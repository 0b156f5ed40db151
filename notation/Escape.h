// The script language's string literals, in both directions: `escape` writes
// any byte string so that it can stand as a literal in a script or in object
// notation, and `unescape` reads such a literal back.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace notation {

// Text without control bytes, bytes above 126 and single quotes comes back
// between single quotes as it stands. Anything else comes back between double
// quotes with backslash escapes; a single quote passes as it is there.
std::string escape(std::string_view text);

// The text must begin with a single or double quote; it is read as one string
// literal and whatever follows the literal is ignored. Throws ::Exception with
// "Invalid string literal: " and the escaped text when it does not begin with
// a quote, and "Unterminated string" when the literal runs to the end.
std::string unescape(std::string_view text);

// Reads one string literal that starts at text[pos] (a quote) and leaves pos
// on the byte after its closing quote. The same rules and failures as above;
// this is the form the script parser uses.
std::string readStringLiteral(std::string_view text, std::size_t& pos);

// Appends the backslash form of one byte as used inside double quotes
// ("\\n", "\\x1f", ...), or the byte itself when it needs none.
void appendEscapedByte(std::string& out, unsigned char byte);

}  // namespace notation
