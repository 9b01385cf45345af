#include "desktop/win32/look.h"

#include <wincodec.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "desktop/shown_text.h"
#include "platform/windows/text.h"

namespace vento::desktop::win32 {
namespace {

constexpr Colour kBorder{118, 124, 132};  // 4:1 on white
constexpr Colour kDimmed{110, 116, 125};

// Space beside a text, in twips.
constexpr int kCaptionMargin = 90;
constexpr int kSmallestFont = 100;

struct CanvasDeleter {
    void operator()(HDC canvas) const { ::DeleteDC(canvas); }
};
using OwnedCanvas = std::unique_ptr<std::remove_pointer_t<HDC>, CanvasDeleter>;

bool HighContrast() {
    HIGHCONTRASTW setting{};
    setting.cbSize = sizeof setting;
    return ::SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof setting, &setting, 0) != 0 &&
           (setting.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

/// What a COM call left in `pointer`.
template <class Interface>
ComPointer<Interface> Owned(Interface* pointer) {
    return ComPointer<Interface>(pointer);
}

/// The pixels of the logo in a size: blue, green, red and opacity, by which the colours are multiplied. Empty
/// if the system can't decode it.
std::vector<std::uint8_t> LogoPixels(SIZE size) {
    // RT_RCDATA
    auto* const resource = ::FindResourceW(nullptr, MAKEINTRESOURCEW(kLogoPicture), MAKEINTRESOURCEW(10));
    auto* const file = static_cast<BYTE*>(::LockResource(::LoadResource(nullptr, resource)));
    const auto factory = MakeObject<IWICImagingFactory>(CLSID_WICImagingFactory, IID_IWICImagingFactory);
    if (file == nullptr || !factory) return {};
    IWICStream* stream = nullptr;
    factory->CreateStream(&stream);
    const auto ownedStream = Owned(stream);
    if (stream == nullptr || FAILED(stream->InitializeFromMemory(file, ::SizeofResource(nullptr, resource))))
        return {};
    IWICBitmapDecoder* decoder = nullptr;
    factory->CreateDecoderFromStream(stream, nullptr, WICDecodeMetadataCacheOnDemand, &decoder);
    const auto ownedDecoder = Owned(decoder);
    IWICBitmapFrameDecode* frame = nullptr;
    if (decoder == nullptr || FAILED(decoder->GetFrame(0, &frame))) return {};
    const auto ownedFrame = Owned(frame);
    IWICFormatConverter* converter = nullptr;
    factory->CreateFormatConverter(&converter);
    const auto ownedConverter = Owned(converter);
    IWICBitmapScaler* scaler = nullptr;
    factory->CreateBitmapScaler(&scaler);
    const auto ownedScaler = Owned(scaler);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(size.cx * size.cy) * 4);
    const bool converted =
        converter != nullptr && scaler != nullptr &&
        SUCCEEDED(converter->Initialize(frame, GUID_WICPixelFormat32bppPBGRA, WICBitmapDitherTypeNone,
                                        nullptr, 0, WICBitmapPaletteTypeCustom)) &&
        SUCCEEDED(scaler->Initialize(converter, static_cast<UINT>(size.cx), static_cast<UINT>(size.cy),
                                     WICBitmapInterpolationModeFant)) &&
        SUCCEEDED(scaler->CopyPixels(nullptr, static_cast<UINT>(size.cx * 4),
                                     static_cast<UINT>(pixels.size()), pixels.data()));
    return converted ? pixels : std::vector<std::uint8_t>();
}

/// The pixels on the background; in high contrast the logo's shape alone, in the colour of text.
OwnedBitmap Composed(std::vector<std::uint8_t>& pixels, SIZE size, const Palette& palette) {
    const std::array background{GetBValue(palette.background), GetGValue(palette.background),
                                GetRValue(palette.background)};
    const std::array ink{GetBValue(palette.text), GetGValue(palette.text), GetRValue(palette.text)};
    constexpr int kOpaque = 255;
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        const int opacity = pixels[i + 3];
        for (std::size_t colour = 0; colour < ink.size(); ++colour) {
            const int drawn = palette.highContrast ? ink[colour] * opacity / kOpaque : pixels[i + colour];
            const int behind = background[colour] * (kOpaque - opacity) / kOpaque;
            pixels[i + colour] = static_cast<std::uint8_t>(std::min(drawn + behind, kOpaque));
        }
    }
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = size.cx;
    info.bmiHeader.biHeight = -size.cy;  // below zero: from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    OwnedBitmap bitmap(::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (bitmap) std::ranges::copy(pixels, static_cast<std::uint8_t*>(bits));
    return bitmap;
}

}  // namespace

Palette Palette::Current() {
    if (HighContrast()) {
        return {.highContrast = true,
                .background = ::GetSysColor(COLOR_WINDOW),
                .text = ::GetSysColor(COLOR_WINDOWTEXT),
                .dimmed = ::GetSysColor(COLOR_GRAYTEXT),
                .border = ::GetSysColor(COLOR_WINDOWTEXT),
                .focused = ::GetSysColor(COLOR_HIGHLIGHT),
                .rule = ::GetSysColor(COLOR_WINDOWTEXT)};
    }
    return {.background = ColourOf(kFormBackground),
            .text = ColourOf(kFormText),
            .dimmed = ColourOf(kDimmed),
            .border = ColourOf(kBorder),
            .focused = ::GetSysColor(COLOR_HIGHLIGHT),
            .rule = ColourOf(LayoutOf(ControlId::Line1).background)};
}

int LineWidth(int dotsPerInch) {
    return std::max(1, ::MulDiv(dotsPerInch, 1, USER_DEFAULT_SCREEN_DPI));
}

COLORREF ColourOf(const Colour& colour) {
    return RGB(colour.red, colour.green, colour.blue);
}

OwnedFont MakeFont(const Font& font, int dotsPerInch) {
    const int height =
        -PixelsFromTwips(font.height, dotsPerInch);  // below zero: of the characters, not of the line
    return OwnedFont(::CreateFontW(height, 0, 0, 0, font.bold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE,
                                   DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                   CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_DONTCARE,
                                   platform::Wide(font.face).c_str()));
}

OwnedFont MakeFittingFont(const Font& font, int dotsPerInch, const std::wstring& text, SIZE room) {
    const OwnedCanvas canvas(::CreateCompatibleDC(nullptr));
    const int margin = PixelsFromTwips(kCaptionMargin, dotsPerInch);
    Font smaller = font;
    for (;; smaller.height -= smaller.height / 16) {
        OwnedFont made = MakeFont(smaller, dotsPerInch);
        const HGDIOBJ old = ::SelectObject(canvas.get(), made.get());
        RECT needed{0, 0, room.cx - 2 * margin, 0};
        ::DrawTextW(canvas.get(), text.c_str(), -1, &needed, DT_CALCRECT | DT_WORDBREAK);
        ::SelectObject(canvas.get(), old);
        const bool fits = needed.right <= room.cx - 2 * margin && needed.bottom <= room.cy;
        if (fits || smaller.height <= kSmallestFont) return made;
    }
}

RECT PlaceOf(const Rectangle& twips, int dotsPerInch) {
    const Rectangle pixels = PixelsFromTwips(twips, dotsPerInch);
    return {pixels.left, pixels.top, pixels.left + pixels.width, pixels.top + pixels.height};
}

std::wstring ShownLines(std::string_view utf8) {
    return platform::Wide(ShownText(utf8));
}

std::wstring WithReturns(const std::wstring& lines) {
    std::wstring text;
    for (const wchar_t letter : lines) {
        if (letter == L'\n') text += L'\r';
        text += letter;
    }
    return text;
}

std::wstring MarkedCaption(std::string_view utf8, std::string_view mnemonic) {
    std::wstring marked;
    bool done = mnemonic.empty();
    for (const wchar_t letter : ShownLines(utf8)) {
        if (letter == L'&') marked += L'&';
        if (!done && letter == platform::Wide(mnemonic).front()) {
            marked += L'&';
            done = true;
        }
        marked += letter;
    }
    return marked;
}

void DrawCentred(HDC canvas, const std::wstring& text, const RECT& area, UINT marks) {
    const UINT format = DT_CENTER | DT_WORDBREAK | DT_EDITCONTROL | marks;
    RECT needed = area;
    ::DrawTextW(canvas, text.c_str(), -1, &needed, format | DT_CALCRECT);
    RECT place = area;
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(canvas, &metrics);
    const LONG room =
        (area.bottom - area.top) / metrics.tmHeight * metrics.tmHeight;  // whole lines are drawn
    place.top += std::max(area.bottom - area.top - std::min(needed.bottom - needed.top, room), LONG{0}) / 2;
    ::DrawTextW(canvas, text.c_str(), -1, &place, format | DT_END_ELLIPSIS);
}

void Logo::Draw(HDC canvas, const RECT& area) {
    const SIZE size{area.right - area.left, area.bottom - area.top};
    const Palette palette = Palette::Current();
    const bool isSame = size.cx == size_.cx && size.cy == size_.cy &&
                        palette.background == palette_.background && palette.text == palette_.text &&
                        palette.highContrast == palette_.highContrast;
    if (!isSame) {
        std::vector<std::uint8_t> pixels = LogoPixels(size);
        if (pixels.empty()) return;
        picture_ = Composed(pixels, size, palette);
        size_ = size;
        palette_ = palette;
    }
    const OwnedCanvas source(::CreateCompatibleDC(canvas));
    const HGDIOBJ oldBitmap = ::SelectObject(source.get(), picture_.get());
    ::BitBlt(canvas, area.left, area.top, size.cx, size.cy, source.get(), 0, 0, SRCCOPY);
    ::SelectObject(source.get(), oldBitmap);
}

}  // namespace vento::desktop::win32
