#include "desktop/win32/logo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "desktop/layout.h"
#include "logo_shapes.h"

namespace vento::desktop::win32 {
namespace {

// Each pixel is the mean of so many by so many, since the system draws curves without smooth edges.
constexpr LONG kFineness = 6;

struct CanvasDeleter {
    void operator()(HDC canvas) const { ::DeleteDC(canvas); }
};
using OwnedCanvas = std::unique_ptr<std::remove_pointer_t<HDC>, CanvasDeleter>;

/// A picture in memory, whose pixels can be got at: rows from the top, a byte each for blue, green, red and
/// nothing.
struct Picture {
    explicit Picture(SIZE theSize) : size(theSize) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = size.cx;
        info.bmiHeader.biHeight = -size.cy;  // below zero: from the top
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        bitmap.reset(::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        if (bitmap)
            pixels = {static_cast<std::uint8_t*>(bits), static_cast<std::size_t>(size.cx * size.cy) * 4};
    }

    SIZE size;
    OwnedBitmap bitmap;
    std::span<std::uint8_t> pixels;  ///< empty if there was no memory
};

COLORREF FromRgb(std::uint32_t rgb) {
    return RGB(rgb >> 16U & 0xFFU, rgb >> 8U & 0xFFU, rgb & 0xFFU);
}

void DrawShape(HDC canvas, const art::Shape& shape) {
    const OwnedBrush brush(::CreateSolidBrush(FromRgb(shape.colour)));
    const LOGBRUSH ink{BS_SOLID, FromRgb(shape.colour), 0};
    const DWORD style =
        PS_GEOMETRIC | PS_JOIN_ROUND | static_cast<DWORD>(shape.roundCaps ? PS_ENDCAP_ROUND : PS_ENDCAP_FLAT);
    const OwnedPen pen(::ExtCreatePen(style, std::max<DWORD>(shape.strokeWidth, 1), &ink, 0, nullptr));
    const HGDIOBJ oldBrush = ::SelectObject(canvas, brush.get());
    const HGDIOBJ oldPen = ::SelectObject(canvas, pen.get());
    ::BeginPath(canvas);
    ::PolyDraw(canvas, shape.points.data(), shape.types.data(), static_cast<int>(shape.points.size()));
    ::EndPath(canvas);
    if (shape.strokeWidth == 0) {
        ::FillPath(canvas);
    } else {
        ::StrokePath(canvas);
    }
    ::SelectObject(canvas, oldPen);
    ::SelectObject(canvas, oldBrush);
}

void DrawShapes(const Picture& picture) {
    const OwnedCanvas canvas(::CreateCompatibleDC(nullptr));
    const HGDIOBJ oldBitmap = ::SelectObject(canvas.get(), picture.bitmap.get());
    const RECT all{0, 0, picture.size.cx, picture.size.cy};
    ::FillRect(canvas.get(), &all, MakeBrush(kFormBackground).get());
    ::SetGraphicsMode(canvas.get(), GM_ADVANCED);
    ::SetPolyFillMode(canvas.get(), WINDING);
    const XFORM fit{static_cast<float>(picture.size.cx) / art::kLogoWidth,  0, 0,
                    static_cast<float>(picture.size.cy) / art::kLogoHeight, 0, 0};
    for (const art::Shape& shape : art::kLogo) {
        ::SetWorldTransform(canvas.get(), &shape.matrix);
        ::ModifyWorldTransform(canvas.get(), &fit, MWT_RIGHTMULTIPLY);
        DrawShape(canvas.get(), shape);
    }
    ::SelectObject(canvas.get(), oldBitmap);
    ::GdiFlush();
}

void Shrink(const Picture& fine, const Picture& picture) {
    const auto width = static_cast<std::size_t>(picture.size.cx);
    const auto fineness = static_cast<std::size_t>(kFineness);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        const std::size_t colour = i % 4;
        const std::size_t left = i / 4 % width * fineness;
        const std::size_t top = i / 4 / width * fineness;
        unsigned sum = 0;
        for (std::size_t y = top; y < top + fineness; ++y) {
            for (std::size_t x = left; x < left + fineness; ++x)
                sum += fine.pixels[(y * width * fineness + x) * 4 + colour];
        }
        picture.pixels[i] = static_cast<std::uint8_t>(sum / (fineness * fineness));
    }
}

}  // namespace

void Logo::Draw(HDC canvas, const RECT& area) {
    const SIZE size{area.right - area.left, area.bottom - area.top};
    if (size.cx != size_.cx || size.cy != size_.cy) {
        const Picture fine({size.cx * kFineness, size.cy * kFineness});
        Picture picture(size);
        if (fine.pixels.empty() || picture.pixels.empty()) return;
        DrawShapes(fine);
        Shrink(fine, picture);
        picture_ = std::move(picture.bitmap);
        size_ = size;
    }
    const OwnedCanvas source(::CreateCompatibleDC(canvas));
    const HGDIOBJ oldBitmap = ::SelectObject(source.get(), picture_.get());
    ::BitBlt(canvas, area.left, area.top, size.cx, size.cy, source.get(), 0, 0, SRCCOPY);
    ::SelectObject(source.get(), oldBitmap);
}

}  // namespace vento::desktop::win32
