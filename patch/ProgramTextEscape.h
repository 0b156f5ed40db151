// Names and paths are 16-bit texts; in the patch and MIDI configuration texts
// they stand as string literals of the script language, widened: characters
// outside printable ASCII are written "\x" with two hexadecimal digits up to
// 0xFF and "\u" with four above, so that every character survives.
#pragma once

#include <string>
#include <string_view>

// Plain text between single quotes, anything else between double quotes with
// backslash escapes.
std::string escapeWide(std::u16string_view text);

// A quoted raw value is read as a string literal ("\u" keeps all 16 bits,
// "\l" takes up to eight hexadecimal digits and keeps the low 16); any other
// raw value is taken as it stands. Bytes become characters of the same code.
// Throws ::Exception "Unterminated string" as the script language does.
std::u16string unescapeWide(std::string_view raw);

// Characters up to 0xFF as bytes of the same value, others as '?'. For
// messages and command-line output only.
std::string narrowForDisplay(std::u16string_view text);
std::u16string widen(std::string_view bytes);
