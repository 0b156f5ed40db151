// The patch text: a patch file (.tdrn), a factory patch and a patch on the
// clipboard are all this one text in object notation, with the parameters in
// their display units so that a person can read and edit it.
#pragma once

#include <string>
#include <string_view>

#include "patch/NorvelleProgram.h"

// The format version written and the only one read; implementations change
// between releases, the format has not.
constexpr int PROGRAM_TEXT_VERSION = 10;

// The text with "\n" line ends. forFile leaves out Path and Modified; the
// clipboard form has them when the record has a path.
std::string writeProgramText(const NorvelleProgram& record, bool forFile);

// A new record from a patch text; absent keys keep their Init values (the
// name excepted, which is empty when absent). Throws FormatException
// ("Invalid data format") for a wrong Version or an Implementation out of
// range, and the notation's own failures for unreadable quoted texts.
NorvelleProgram readProgramText(std::string_view text);

// True when the text has a top-level key TendranePatch.
bool isProgramText(std::string_view text);

// Each "\n" becomes "\r\n", as a patch file is saved. The reader accepts
// either form.
std::string withCrLf(std::string_view text);

// The value text of one parameter ("50.00000000 %", "+0.00000000 ct ", ...)
// and its reading back to a normalized value limited to 0 to 1.
std::string parameterValueText(int param, float value);
float readParameterValue(int param, std::string_view text);
