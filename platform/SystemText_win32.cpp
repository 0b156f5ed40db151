// System text on Windows: GDI draws the line white on black into a 32-bit
// DIB section, and the green channel is the coverage.
#include "platform/SystemText.h"

#include <windows.h>

#include <algorithm>
#include <cmath>

#include "platform/Exceptions.h"

namespace platform {

namespace {

class GdiFace : public SystemTextFace {
public:
    explicit GdiFace(const SystemTextStyle& style) {
        dc_ = CreateCompatibleDC(nullptr);
        const std::string name = style.face.empty() ? DEFAULT_SYSTEM_FACE : style.face;
        const std::wstring face(name.begin(), name.end());
        // Sizes outside what a panel can show are held at its limits.
        const double points = style.size > 1.0 ? std::min(style.size, 500.0) : 1.0;
        const int pixels = std::max(1, int(std::floor(points * 96.0 / 72.0 + 0.5)));
        font_ = CreateFontW(-pixels, 0, 0, 0, style.bold ? FW_BOLD : FW_NORMAL, style.italic, style.underline, FALSE,
                            ANSI_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY,
                            DEFAULT_PITCH | FF_DONTCARE, face.c_str());
        if (dc_ == nullptr || font_ == nullptr) {
            if (font_ != nullptr) DeleteObject(font_);
            if (dc_ != nullptr) DeleteDC(dc_);
            throw Exception("Could not obtain font : " + name);
        }
        SelectObject(dc_, font_);
        TEXTMETRICW m{};
        GetTextMetricsW(dc_, &m);
        ascent_ = m.tmAscent;
        lineHeight_ = m.tmHeight;
    }

    ~GdiFace() override {
        DeleteObject(font_);
        DeleteDC(dc_);
    }

    int measure(std::string_view text) const override {
        SIZE size{};
        GetTextExtentPoint32A(dc_, text.data(), int(text.size()), &size);
        return size.cx;
    }

    TextCoverage render(std::string_view text) const override {
        TextCoverage out;
        out.width = measure(text) + lineHeight_ / 4;  // room for an italic overhang
        out.height = lineHeight_;
        if (out.width <= 0 || out.height <= 0) return out;
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        info.bmiHeader.biWidth = out.width;
        info.bmiHeader.biHeight = -out.height;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        void* bits = nullptr;
        HBITMAP bitmap = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        if (bitmap == nullptr || bits == nullptr) return out;
        HGDIOBJ old = SelectObject(dc_, bitmap);
        std::fill_n(static_cast<std::uint32_t*>(bits), std::size_t(out.width) * std::size_t(out.height), 0u);
        SetBkMode(dc_, TRANSPARENT);
        SetTextColor(dc_, RGB(255, 255, 255));
        TextOutA(dc_, 0, 0, text.data(), int(text.size()));
        GdiFlush();
        out.values.resize(std::size_t(out.width) * std::size_t(out.height));
        const std::uint32_t* p = static_cast<const std::uint32_t*>(bits);
        for (std::size_t i = 0; i < out.values.size(); ++i) out.values[i] = std::uint8_t((p[i] >> 8) & 0xFF);
        SelectObject(dc_, old);
        DeleteObject(bitmap);
        return out;
    }

    int ascent() const override { return ascent_; }
    int lineHeight() const override { return lineHeight_; }

private:
    HDC dc_ = nullptr;
    HFONT font_ = nullptr;
    int ascent_ = 0;
    int lineHeight_ = 0;
};

}  // namespace

std::unique_ptr<SystemTextFace> openSystemTextFace(const SystemTextStyle& style) {
    return std::make_unique<GdiFace>(style);
}

}  // namespace platform
