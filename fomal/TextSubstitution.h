// The one step every shown text passes through: the catalogue replaces the
// text by its entry, then the bracket tags are expanded ([windows] and
// [mac] keep or drop their text by platform, [quol] is replaced by its
// script's result), then the caret codes: `^` and a character from B to ^,
// of which the substitution fills ^B (build), ^N (patch name), ^R and ^U
// (a blank and the label of the step redo or undo would take, through the
// catalogue, or nothing), ^V (version) and ^^ (a caret). Any other code,
// and a `[` that opens no known tag, stays as it is.
#pragma once

#include <string>
#include <string_view>

#include "fomal/MessageCatalogue.h"

namespace Fomal {

// What the substitution asks of the editor for live values.
class SubstitutionContext {
public:
    virtual ~SubstitutionContext() = default;
    virtual std::string patchName() const = 0;
    // The labels of the steps undo and redo would take; empty when none.
    virtual std::string undoLabel() const = 0;
    virtual std::string redoLabel() const = 0;
    // Runs the script text of a [quol] block and gives its result as text.
    virtual std::string evaluate(std::string_view script) = 0;
};

// The side of per-platform texts this build shows: "windows" here, as on
// the product's own platform.
inline constexpr std::string_view PLATFORM_TAG = "windows";

std::string substituteText(std::string_view text, SubstitutionContext& context,
                           const MessageCatalogue& catalogue = MessageCatalogue::product());

// The bracket and caret steps alone, for texts that skip the catalogue.
std::string expandTags(std::string_view text, SubstitutionContext& context);
std::string expandCarets(std::string_view text, SubstitutionContext& context, const MessageCatalogue& catalogue);

}  // namespace Fomal
