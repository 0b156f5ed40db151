// A font drawn by the platform's own text service: each line is drawn into
// a temporary block whose coverage then serves as the mask.
#pragma once

#include <memory>

#include "pixels/Font.h"
#include "platform/SystemText.h"

namespace OrlPixels {

class SystemFont : public Font {
public:
    explicit SystemFont(const platform::SystemTextStyle& style);

    TextSize measure(std::string_view text) const override;
    void draw(Surface& surface, std::string_view text, int x, int y, Pixel color) const override;
    int ascent() const override { return face_->ascent(); }
    int lineHeight() const override { return face_->lineHeight(); }

private:
    std::unique_ptr<platform::SystemTextFace> face_;
};

}  // namespace OrlPixels
