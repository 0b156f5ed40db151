// What the alert boundary shows for a failure: the title and the text,
// composed from the string catalogue's error entries. Pure functions; the
// box itself belongs to the interface.
//
//   empty message        -> "Unexpected error" entry
//   any other message    -> "Error: ^E" entry, ^E replaced by the message
//   script failure       -> "Quol error: ^E\n^S" entry, ^E the message, ^S the stack
//   UserCancelledException -> nothing at all
#pragma once

#include <cstddef>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The alert's title, the product's name.
inline constexpr std::string_view errorAlertTitle = "Tendrane";

// Keys of the catalogue entries the alerts use.
inline constexpr std::string_view unexpectedErrorKey = "Unexpected error";
inline constexpr std::string_view errorKey = "Error: ^E";
inline constexpr std::string_view scriptErrorKey = "Quol error: ^E\n^S";

// A source of catalogue texts. The interface passes the product's catalogue;
// without one, the built-in table of error texts answers.
class TextCatalogue {
public:
    virtual ~TextCatalogue() = default;
    // The entry for key, or the key itself when there is none.
    virtual std::string translate(std::string_view key) const = 0;
};

// The built-in table of the alerts' entries.
const TextCatalogue& builtInErrorTexts();

struct ErrorAlert {
    std::string title;
    std::string text;
};

// Replaces each ^E by error and each ^S by stack, in one pass over the
// template: codes inside the inserted texts are not replaced again. Other
// caret codes stay as they are.
std::string fillErrorCodes(std::string_view templateText, std::string_view error, std::string_view stack = {});

// The alert for a failure with the given message.
ErrorAlert errorAlertFor(std::string_view message, const TextCatalogue& catalogue = builtInErrorTexts());

// The alert for a script failure: its message and its stack report.
ErrorAlert scriptErrorAlert(std::string_view message, std::string_view stackReport,
                            const TextCatalogue& catalogue = builtInErrorTexts());

// The alert for a caught exception: a user's cancel gives none; a standard
// exception shows its what(); anything else is an unexpected error.
std::optional<ErrorAlert> errorAlertForException(std::exception_ptr failure,
                                                 const TextCatalogue& catalogue = builtInErrorTexts());

// One line of a script failure's stack report, marking position in source:
// "..." when more than 20 bytes stand before it, up to 20 bytes before it,
// " <!> ", up to 20 bytes after it, and a line break.
std::string scriptErrorPositionLine(std::string_view source, std::size_t position);

}  // namespace platform
