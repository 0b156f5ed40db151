// From a layout's view object to a view: the `type` key chooses the maker.
#pragma once

#include <memory>
#include <string_view>

#include "fomal/View.h"

namespace Fomal {

using ViewMaker = std::unique_ptr<View> (*)(const ViewBuild& build);

struct ViewType {
    std::string_view name;
    ViewMaker make;
};

// The plain types of this library.
const ViewType* viewTypes(std::size_t& count);

// Adds types made outside this library (the living views of the panel).
// Called once at start-up, before any layout is built; a name given again
// replaces the earlier maker.
void addViewTypes(const ViewType* types, std::size_t count);

// Builds a view and, for nested layouts, its subtree. An unknown type fails
// with "Unknown view type : " and the name.
std::unique_ptr<View> makeView(const ViewBuild& build);

}  // namespace Fomal
