#include "fomal/CaptionView.h"

#include "fomal/EditorServices.h"
#include "fomal/LayoutValues.h"

namespace Fomal {

OrlPixels::EllipsisSide readEllipsis(std::string_view raw) {
    if (!raw.empty() && raw.front() == '{') {
        const Array a = parseArray(raw);
        return OrlPixels::parseEllipsisSide(a.empty() ? "none" : readString(a.front()));
    }
    return OrlPixels::parseEllipsisSide(raw.empty() ? "none" : readString(raw));
}

CaptionView::CaptionView(const ViewBuild& build) : View(build) {
    const Object& k = build.keys;
    text_ = readString(k.get("text"));
    font_ = readFont(k.get("font"));
    if (k.has("align")) align_ = OrlPixels::parseTextAlign(readString(k.get("align")));
    if (k.has("ellipsis")) ellipsis_ = readEllipsis(k.get("ellipsis"));
    offset_ = tamed(readPoint(k.get("offset"), PointF{0, 0}));
}

std::string CaptionView::shownText() const {
    const std::string text = substituteText(text_, editor().substitution());
    return OrlPixels::fitText(*font_.font, text, int(rect().width), ellipsis_);
}

void CaptionView::refreshState() {
    if (shownText() != drawn_) invalidate();
}

void CaptionView::draw(OrlPixels::Surface& surface, const OrlPixels::IntRect&) {
    const std::string text = shownText();
    drawn_ = text;
    const OrlPixels::IntRect r = pixelRect();
    const int width = font_.font->measure(text).width;
    const int x = OrlPixels::alignedLeft(align_, r.left, r.width, width) + int(offset_.x);
    const int baseline = r.bottom() + int(offset_.y);
    font_.font->draw(surface, text, x, baseline - font_.font->ascent(), font_.color);
}

}  // namespace Fomal
