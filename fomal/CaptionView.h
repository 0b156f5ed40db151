// One line of text: `text` (through the text substitution), `font`,
// `align` ("left", "center", "right"), `offset` added after alignment and
// `ellipsis` side. The baseline stands at the view's bottom edge moved by
// the offset, so a caption's words sit the same in any font.
#pragma once

#include <string>

#include "fomal/View.h"
#include "pixels/FontSpecification.h"
#include "pixels/TextLayout.h"

namespace Fomal {

class CaptionView : public View {
public:
    explicit CaptionView(const ViewBuild& build);
    void draw(OrlPixels::Surface& surface, const OrlPixels::IntRect& clip) override;
    // A text with live values (the patch's name) is drawn again when it changes.
    void refreshState() override;

    // The text as shown now (substituted and shortened).
    std::string shownText() const;

private:
    std::string text_;
    OrlPixels::FontSpecification font_;
    OrlPixels::TextAlign align_ = OrlPixels::TextAlign::left;
    OrlPixels::EllipsisSide ellipsis_ = OrlPixels::EllipsisSide::none;
    PointF offset_;
    std::string drawn_;
};

// An `ellipsis` value: a side, bare or quoted, or an array holding one.
OrlPixels::EllipsisSide readEllipsis(std::string_view raw);

}  // namespace Fomal
