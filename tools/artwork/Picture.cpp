#include "Picture.h"

#include <algorithm>
#include <cmath>

#include "pixels/AffineTransformation.h"
#include "pixels/BitmapFont.h"
#include "pixels/BlockGenerator.h"
#include "pixels/PixelBlock.h"
#include "pixels/TransformedRaster.h"
#include "pixels/Gradient.h"
#include "pixels/MaskedRaster.h"
#include "pixels/OffsetRaster.h"
#include "pixels/PolygonMask.h"
#include "pixels/SolidRaster.h"
#include "pixels/Stroking.h"

namespace artwork {

using namespace OrlPixels;

namespace {
constexpr double PI = 3.14159265358979323846;
}

Pixel rgba(int r, int g, int b, int a) {
    auto premultiplied = [a](int c) { return unsigned((c * a + 127) / 255); };
    return Pixel(unsigned(a) << 24 | premultiplied(r) << 16 | premultiplied(g) << 8 | premultiplied(b));
}

Pixel faded(Pixel color, double opacity) {
    const double o = std::clamp(opacity, 0.0, 1.0);
    auto channel = [&](int shift) { return unsigned(std::floor(((color >> shift) & 0xFF) * o + 0.5)) << shift; };
    return Pixel(channel(24) | channel(16) | channel(8) | channel(0));
}

Picture::Picture(int width, int height, int scale)
    : width_(width * scale), height_(height * scale), scale_(scale),
      pixels_(std::size_t(width_) * std::size_t(height_), 0u),
      surface_(pixels_.data(), width_, IntRect(0, 0, width_, height_)) {}

void Picture::scaled(Polygon& path) const {
    if (scale_ != 1) path.transform(AffineTransformation::scaling(scale_, scale_));
}

void Picture::through(Polygon path, Raster& paint, int mode) {
    scaled(path);
    PolygonMask mask(path, surface_.bounds);
    MaskedRaster masked(paint, mask);
    surface_.draw(masked, mode);
}

void Picture::fill(Polygon path, Pixel color, int mode) {
    SolidRaster ink(color);
    through(std::move(path), ink, mode);
}

void Picture::stroke(Polygon path, const Pen& p, int mode) {
    // Stroked at density 1; the outline is scaled like any path.
    applyPen(path, p);
    SolidRaster ink(p.color);
    through(std::move(path), ink, mode);
}

void Picture::linear(Polygon path, double x0, double y0, double x1, double y1, const std::vector<GradientStop>& stops,
                     int mode) {
    LinearGradient paint(surface_.bounds, x0 * scale_, y0 * scale_, x1 * scale_, y1 * scale_, stops);
    through(std::move(path), paint, mode);
}

void Picture::radial(Polygon path, double cx, double cy, double rx, double ry, const std::vector<GradientStop>& stops,
                     int mode) {
    // The radial ramp is full at the centre and empty at the rim; the
    // artwork's stops count from the centre out.
    std::vector<GradientStop> outward;
    for (auto it = stops.rbegin(); it != stops.rend(); ++it) outward.push_back({1.0 - it->position, it->color});
    RadialGradient paint(surface_.bounds, cx * scale_, cy * scale_, rx * scale_, ry * scale_, outward);
    through(std::move(path), paint, mode);
}

void Picture::cut(Polygon path) {
    scaled(path);
    PolygonMask mask(path, surface_.bounds);
    // Keep (255 - coverage) of each pixel.
    std::vector<Coverage> keep(std::size_t(width_), 0);
    for (int y = 0; y < height_; ++y) {
        Coverage table[MAX_SPAN_REQUEST];
        for (int x0 = 0; x0 < width_; x0 += MAX_SPAN_REQUEST) {
            const int n = std::min(MAX_SPAN_REQUEST, width_ - x0);
            MaskSpan spans[MAX_SPAN_REQUEST];
            MaskSpanOutput out(spans, table);
            mask.render(x0, y, n, out);
            for (int i = 0; i < n;) {
                const MaskSpan s = spans[i];
                const int len = s.length();
                for (int k = 0; k < len; ++k) {
                    const Coverage c = s.solid() ? *s.data : s.data[k];
                    Pixel& p = pixels_[std::size_t(y) * std::size_t(width_) + std::size_t(x0 + i + k)];
                    p = faded(p, (255 - c) / 255.0);
                }
                i += len > 0 ? len : 1;
            }
        }
    }
}

void Picture::paste(const Picture& other, double x, double y, int mode) {
    PixelBlockRaster block(other.pixels_.data(), other.width_, IntRect(0, 0, other.width_, other.height_), false);
    OffsetRaster moved(block, int(std::lround(x * scale_)), int(std::lround(y * scale_)));
    surface_.draw(moved, mode);
}

int Picture::text(const char* font, double gamma, std::string_view line, double x, double y, Pixel color) {
    const FontRef f = loadBitmapFont(font, gamma);
    const int width = f->measure(line).width;
    if (scale_ == 1) {
        f->draw(surface_, line, int(std::lround(x)), int(std::lround(y)), color);
        return width;
    }
    Picture plain(width + 4, f->lineHeight() + 4, 1);
    f->draw(plain.surface_, line, 2, 2, color);
    PixelBlock block{plain.pixels_.data(), plain.width_, plain.width_, plain.height_, false};
    const AffineTransformation place =
        AffineTransformation::scaling(scale_, scale_)
            .then(AffineTransformation::translation((x - 2) * scale_, (y - 2) * scale_));
    TransformedRaster enlarged(block, place, false);
    surface_.draw(enlarged);
    return width;
}

Picture filmOf(const std::vector<Picture>& frames) {
    const Picture& first = frames.front();
    const int s = first.scale();
    Picture film(first.width() / s, first.height() / s * int(frames.size()), s);
    for (std::size_t i = 0; i < frames.size(); ++i) film.paste(frames[i], 0, double(i) * first.height() / s);
    return film;
}

Polygon circle(double cx, double cy, double r) {
    Polygon p;
    p.addCircle(cx, cy, r, 4.0);
    return p;
}

Polygon ellipse(double cx, double cy, double rx, double ry) {
    Polygon p;
    p.addEllipse(cx, cy, rx, ry, 4.0);
    return p;
}

Polygon rect(double x, double y, double w, double h) {
    Polygon p;
    p.addRectangle(x, y, w, h);
    return p;
}

Polygon roundRect(double x, double y, double w, double h, double r) {
    r = std::min({r, w / 2, h / 2});
    Polygon p;
    const int steps = 12;
    auto corner = [&](double cx, double cy, double from) {
        for (int i = 0; i <= steps; ++i) {
            const double a = (from + 90.0 * i / steps) * PI / 180.0;
            const double px = cx + r * std::cos(a), py = cy + r * std::sin(a);
            if (p.isEmpty()) p.moveTo(px, py);
            else p.lineTo(px, py);
        }
    };
    corner(x + w - r, y + r, -90);
    corner(x + w - r, y + h - r, 0);
    corner(x + r, y + h - r, 90);
    corner(x + r, y + r, 180);
    p.close(0);
    return p;
}

Polygon arc(double cx, double cy, double r, double startDegrees, double sweepDegrees) {
    Polygon p;
    const int steps = std::max(8, int(std::fabs(sweepDegrees) * r / 40.0));
    for (int i = 0; i <= steps; ++i) {
        const double a = (startDegrees + sweepDegrees * i / steps) * PI / 180.0;
        if (i == 0) p.moveTo(cx + r * std::cos(a), cy + r * std::sin(a));
        else p.lineTo(cx + r * std::cos(a), cy + r * std::sin(a));
    }
    return p;
}

Polygon sector(double cx, double cy, double inner, double outer, double startDegrees, double sweepDegrees) {
    Polygon p;
    const int steps = std::max(8, int(std::fabs(sweepDegrees) * outer / 30.0));
    for (int i = 0; i <= steps; ++i) {
        const double a = (startDegrees + sweepDegrees * i / steps) * PI / 180.0;
        if (i == 0) p.moveTo(cx + outer * std::cos(a), cy + outer * std::sin(a));
        else p.lineTo(cx + outer * std::cos(a), cy + outer * std::sin(a));
    }
    for (int i = steps; i >= 0; --i) {
        const double a = (startDegrees + sweepDegrees * i / steps) * PI / 180.0;
        p.lineTo(cx + inner * std::cos(a), cy + inner * std::sin(a));
    }
    p.close(0);
    return p;
}

Polygon ring(double cx, double cy, double inner, double outer) {
    Polygon p;
    p.addCircle(cx, cy, outer, 4.0);
    // Mirrored, the inner circle runs the other way round: the non-zero
    // rule leaves it empty.
    p.addEllipse(cx, cy, -inner, inner, 4.0);
    return p;
}

Polygon polyline(std::initializer_list<std::pair<double, double>> points, bool closed) {
    Polygon p;
    bool first = true;
    for (const auto& [x, y] : points) {
        if (first) p.moveTo(x, y);
        else p.lineTo(x, y);
        first = false;
    }
    if (closed) p.close(0);
    return p;
}

Pen pen(Pixel color, double width, PenCaps caps, PenJoints joints) {
    Pen p;
    p.color = color;
    p.stroke = width;
    p.caps = caps;
    p.joints = joints;
    return p;
}

}  // namespace artwork
