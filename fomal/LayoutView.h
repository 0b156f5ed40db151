// The `fomal` view: a layout within the layout. Its children are the views
// of its `views` array, or of the layout resource that `layout` names
// ("Could not obtain layout : " and the name when there is none). The top
// of a view tree is one too.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "fomal/View.h"

namespace Fomal {

class LayoutView : public View {
public:
    explicit LayoutView(const ViewBuild& build);

private:
    void buildChildren(const Object& layout);
};

// A view object that names a `layout`: the layout's own keys under the
// object's (the object's win); other objects unchanged.
Object withNestedLayout(const Object& keys);

// The text of a layout resource (type FOMAL).
std::string layoutText(std::string_view name);

// A whole view tree from layout text, in the panel rectangle given.
std::unique_ptr<View> buildLayout(std::string_view text, const RectF& panel, EditorServices& editor);

}  // namespace Fomal
