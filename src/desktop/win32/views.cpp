#include "desktop/win32/views.h"

#include <commctrl.h>
#include <uxtheme.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/windows/text.h"

namespace vento::desktop::win32 {
namespace {

constexpr Colour kSystemGrey{240, 240, 240};
constexpr int kHoverShade = 94;  // percent of the plain background's brightness
constexpr int kPressShade = 85;

Colour Shaded(const Colour& colour, int percent) {
    const auto shade = [percent](std::uint8_t part) {
        return static_cast<std::uint8_t>(part * percent / 100);
    };
    return {shade(colour.red), shade(colour.green), shade(colour.blue)};
}

int LineHeight(HWND window) {
    const HDC canvas = ::GetDC(window);
    const HGDIOBJ old =
        ::SelectObject(canvas, reinterpret_cast<HFONT>(::SendMessageW(window, WM_GETFONT, 0, 0)));
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(canvas, &metrics);
    ::SelectObject(canvas, old);
    ::ReleaseDC(window, canvas);
    return metrics.tmHeight;
}

}  // namespace

PictureView::PictureView(FormParts& parts, const ControlLayout& layout)
    : window_(parts, layout, WC_STATICW, WS_VISIBLE | SS_OWNERDRAW) {}

ButtonView::ButtonView(FormParts& parts, const ControlLayout& layout, Button& button)
    : button_(button), window_(parts, layout, WC_BUTTONW, WS_TABSTOP | BS_OWNERDRAW) {
    ::SetWindowSubclass(window_.Handle(), FollowMouse, 0, reinterpret_cast<DWORD_PTR>(this));
    button.Observe([this] { Follow(); });
    Follow();
}

std::wstring ButtonView::Caption() const {
    return MarkedCaption(button_.Caption(), window_.Layout().mnemonic.In(window_.Parts().language));
}

void ButtonView::Scale(int dotsPerInch) {
    window_.Scale(dotsPerInch, Caption());
}

void ButtonView::SetDimmed(bool dimmed) {
    if (std::exchange(dimmed_, dimmed) != dimmed) Follow();
}

void ButtonView::Follow() {
    window_.SetText(Caption());
    window_.Show(button_.Visible());
    window_.Enable(button_.Visible() && button_.Enabled() && !dimmed_);  // Alt+letter presses hidden ones too
}

void ButtonView::Draw(const DRAWITEMSTRUCT& state) const {
    const bool enabled = (state.itemState & ODS_DISABLED) == 0;
    const bool focused = (state.itemState & ODS_FOCUS) != 0;
    const Palette palette = Palette::Current();
    Colour background = enabled ? window_.Layout().background : kSystemGrey;
    if ((state.itemState & ODS_SELECTED) != 0) {
        background = Shaded(background, kPressShade);
    } else if (mouseIsOver_) {
        background = Shaded(background, kHoverShade);
    }
    const bool ringed = focused && (state.itemState & ODS_NOFOCUSRECT) == 0;
    const int line = LineWidth(window_.DotsPerInch()) * (ringed ? kFocusLines : 1);
    const OwnedBrush corners(::CreateSolidBrush(palette.background));
    const OwnedBrush face(
        ::CreateSolidBrush(palette.highContrast ? ::GetSysColor(COLOR_BTNFACE) : ColourOf(background)));
    const OwnedPen border(::CreatePen(PS_INSIDEFRAME, line, focused ? palette.focused : palette.border));
    ::FillRect(state.hDC, &state.rcItem, corners.get());
    const HGDIOBJ oldBrush = ::SelectObject(state.hDC, face.get());
    const HGDIOBJ oldPen = ::SelectObject(state.hDC, border.get());
    ::RoundRect(state.hDC, state.rcItem.left, state.rcItem.top, state.rcItem.right, state.rcItem.bottom,
                8 * line, 8 * line);
    ::SelectObject(state.hDC, oldPen);
    ::SelectObject(state.hDC, oldBrush);
    ::SetBkMode(state.hDC, TRANSPARENT);
    const COLORREF text = palette.highContrast ? ::GetSysColor(COLOR_BTNTEXT) : palette.text;
    ::SetTextColor(state.hDC, enabled ? text : palette.dimmed);
    DrawCentred(state.hDC, Caption(), state.rcItem, (state.itemState & ODS_NOACCEL) != 0 ? DT_HIDEPREFIX : 0);
}

// The system tells a button drawn by its owner of everything but the mouse above it.
LRESULT CALLBACK ButtonView::FollowMouse(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                         DWORD_PTR self) {
    auto& view = *reinterpret_cast<ButtonView*>(self);
    const bool isOver = message == WM_MOUSEMOVE;
    if ((isOver || message == WM_MOUSELEAVE) && view.mouseIsOver_ != isOver) {
        view.mouseIsOver_ = isOver;
        TRACKMOUSEEVENT leave{sizeof leave, TME_LEAVE, window, 0};
        if (isOver) ::TrackMouseEvent(&leave);
        ::InvalidateRect(window, nullptr, FALSE);
    }
    return ::DefSubclassProc(window, message, wParam, lParam);
}

// A field of the system's, since text in there can be selected; but it takes no key and has no caret.
LabelView::LabelView(FormParts& parts, const ControlLayout& layout, Label& label)
    : label_(label), window_(parts, layout, WC_EDITW, ES_MULTILINE | ES_READONLY | ES_CENTER) {
    parts.refuge = window_.Handle();
    parts.accessibility.MakeLiveRegion(window_.Handle());
    ::SetWindowSubclass(window_.Handle(), LeaveKeys, 0, 0);
    label.Observe([this] { Follow(); });
    Follow();
}

void LabelView::Follow() {
    window_.Show(label_.Visible());
    const std::wstring text = ShownLines(label_.Caption());
    if (text == std::exchange(shown_, text)) return;
    Scale(window_.DotsPerInch());
    const FormParts& parts = window_.Parts();
    // Its text is what a screen reader speaks; without one it still has to be called something.
    const std::wstring name = text.empty() ? platform::Wide(window_.Layout().name.In(parts.language)) : text;
    parts.accessibility.SetName(window_.Handle(), name);
    if (!text.empty()) Accessibility::Announce(window_.Handle());
}

// The system puts the lines to the top: the room that they get begins further down.
void LabelView::Scale(int dotsPerInch) {
    window_.SetText(WithReturns(shown_));
    if (dotsPerInch == 0) return;
    window_.Scale(dotsPerInch, shown_);
    RECT room{};
    ::GetClientRect(window_.Handle(), &room);
    ::SendMessageW(window_.Handle(), EM_SETRECT, 0, reinterpret_cast<LPARAM>(&room));
    const LRESULT lines = ::SendMessageW(window_.Handle(), EM_GETLINECOUNT, 0, 0);
    room.top += std::max(room.bottom - static_cast<LONG>(lines) * LineHeight(window_.Handle()), LONG{0}) / 2;
    ::SendMessageW(window_.Handle(), EM_SETRECT, 0, reinterpret_cast<LPARAM>(&room));
}

std::wstring LabelView::Selection() const {
    const std::wstring text = WithReturns(shown_);
    DWORD begin = 0;
    DWORD end = 0;
    ::SendMessageW(window_.Handle(), EM_GETSEL, reinterpret_cast<WPARAM>(&begin),
                   reinterpret_cast<LPARAM>(&end));
    return begin < end && end <= text.size() ? text.substr(begin, end - begin) : std::wstring();
}

LRESULT CALLBACK LabelView::LeaveKeys(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                                      DWORD_PTR) {
    if (message == WM_GETDLGCODE || message == WM_CHAR) return 0;
    const LRESULT result = ::DefSubclassProc(window, message, wParam, lParam);
    if (message == WM_SETFOCUS) ::HideCaret(window);
    return result;
}

ItemsView::ItemsView(FormParts& parts, const ControlLayout& layout, ListView& list)
    : list_(list),
      window_(parts, layout, WC_LISTBOXW,
              WS_TABSTOP | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_NOINTEGRALHEIGHT) {
    window_.DrawBorder(true);
    window_.Show(true);
    list.Observe([this] { Follow(); });
    Follow();
}

void ItemsView::Follow() {
    ::SendMessageW(window_.Handle(), LB_RESETCONTENT, 0, 0);
    for (const std::string& each : list_.Items()) {
        const std::wstring text = ShownLines(each);
        ::SendMessageW(window_.Handle(), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    }
}

void ItemsView::Scale(int dotsPerInch) {
    window_.Scale(dotsPerInch);
    RECT room{};
    ::GetClientRect(window_.Handle(), &room);
    ::SendMessageW(window_.Handle(), LB_SETITEMHEIGHT, 0, room.bottom);  // each item fills the list
}

std::wstring ItemsView::ItemText(UINT index) const {
    const LRESULT length = ::SendMessageW(window_.Handle(), LB_GETTEXTLEN, index, 0);
    if (length == LB_ERR) return {};
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    ::SendMessageW(window_.Handle(), LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.data()));
    text.pop_back();
    return text;
}

void ItemsView::Draw(const DRAWITEMSTRUCT& state) const {
    const Palette palette = Palette::Current();
    const OwnedBrush face(::CreateSolidBrush(palette.background));
    ::FillRect(state.hDC, &state.rcItem, face.get());
    ::SetBkMode(state.hDC, TRANSPARENT);
    ::SetTextColor(state.hDC, palette.text);
    DrawCentred(state.hDC, ItemText(state.itemID), state.rcItem, DT_NOPREFIX);
}

BarView::BarView(FormParts& parts, const ControlLayout& layout, ProgressBar& bar,
                 std::function<void(std::optional<int>)> progress)
    : bar_(bar), window_(parts, layout, PROGRESS_CLASSW, PBS_SMOOTH), progress_(std::move(progress)) {
    // A theme would have a bar of its own colours, in a trough that can hardly be seen.
    ::SetWindowTheme(window_.Handle(), L" ", L" ");
    window_.DrawBorder(false);
    TakeColours();
    bar.Observe([this] { Follow(); });
}

void BarView::TakeColours() {
    const Palette palette = Palette::Current();
    ::SendMessageW(window_.Handle(), PBM_SETBARCOLOR, 0, static_cast<LPARAM>(palette.focused));
    ::SendMessageW(window_.Handle(), PBM_SETBKCOLOR, 0, static_cast<LPARAM>(palette.background));
}

// Each move of the bar is an event to a screen reader: there is one a percent at the most.
void BarView::Follow() {
    std::optional<int> percent;
    if (bar_.Visible() && bar_.Maximum() > bar_.Minimum()) percent = bar_.Percent();
    if (percent == shownPercent_) return;
    shownPercent_ = percent;
    ::SendMessageW(window_.Handle(), PBM_SETRANGE32, static_cast<WPARAM>(std::lround(bar_.Minimum())),
                   std::lround(bar_.Maximum()));
    ::SendMessageW(window_.Handle(), PBM_SETPOS, static_cast<WPARAM>(std::lround(bar_.Value())), 0);
    window_.Show(bar_.Visible());
    progress_(percent);
}

}  // namespace vento::desktop::win32
