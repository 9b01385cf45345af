#include "desktop/win32/views.h"

#include <commctrl.h>

#include <array>
#include <cmath>

namespace vento::desktop::win32 {
namespace {

constexpr Colour kSystemGrey{240, 240, 240};
constexpr Colour kBorder{154, 160, 168};
constexpr Colour kDimmed{138, 144, 153};
constexpr int kHoverShade = 94;  // percent of the plain background's brightness
constexpr int kPressShade = 85;

Colour Shaded(const Colour& colour, int percent) {
    const auto shade = [percent](std::uint8_t part) {
        return static_cast<std::uint8_t>(part * percent / 100);
    };
    return {shade(colour.red), shade(colour.green), shade(colour.blue)};
}

bool IsSystemGrey(const Colour& colour) {
    return colour.red == kSystemGrey.red && colour.green == kSystemGrey.green &&
           colour.blue == kSystemGrey.blue;
}

DWORD ButtonStyle(ControlId id) {
    return WS_TABSTOP | BS_MULTILINE | (IsSystemGrey(LayoutOf(id).background) ? BS_PUSHBUTTON : BS_OWNERDRAW);
}

}  // namespace

ButtonView::ButtonView(HWND form, Button& button, ControlId id, Language language)
    : button_(button), language_(language), window_(form, id, WC_BUTTONW, ButtonStyle(id), language) {
    ::SetWindowSubclass(window_.Handle(), FollowMouse, 0, reinterpret_cast<DWORD_PTR>(this));
    button.Observe([this] { Follow(); });
    Follow();
}

void ButtonView::Follow() {
    const HWND handle = window_.Handle();
    window_.SetText(MarkedCaption(button_.Caption(), window_.Layout().mnemonic.In(language_)));
    window_.Show(button_.Visible());
    const bool enabled = button_.Visible() && button_.Enabled();  // Alt+letter presses hidden buttons too
    if ((::IsWindowEnabled(handle) != 0) == enabled) return;
    if (!enabled) focusWasTaken_ = ::GetFocus() == handle;
    ::EnableWindow(handle, enabled ? TRUE : FALSE);
    const bool nothingHasFocus = ::GetFocus() == nullptr && ::GetActiveWindow() == ::GetParent(handle);
    if (enabled && focusWasTaken_ && nothingHasFocus) ::SetFocus(handle);
}

void ButtonView::Draw(const DRAWITEMSTRUCT& state) const {
    const bool enabled = (state.itemState & ODS_DISABLED) == 0;
    const bool pressed = (state.itemState & ODS_SELECTED) != 0;
    const bool focused = (state.itemState & ODS_FOCUS) != 0;
    const bool contrast = HighContrast();
    Colour background = window_.Layout().background;
    if (pressed) {
        background = Shaded(background, kPressShade);
    } else if (mouseIsOver_) {
        background = Shaded(background, kHoverShade);
    }
    const int line = static_cast<int>(::GetDpiForWindow(state.hwndItem)) / USER_DEFAULT_SCREEN_DPI;
    const COLORREF text = contrast ? ::GetSysColor(enabled ? COLOR_BTNTEXT : COLOR_GRAYTEXT)
                                   : ColourOf(enabled ? kFormText : kDimmed);
    const OwnedBrush face(::CreateSolidBrush(contrast  ? ::GetSysColor(COLOR_BTNFACE)
                                             : enabled ? ColourOf(background)
                                                       : ColourOf(kSystemGrey)));
    const COLORREF edge = focused ? ::GetSysColor(COLOR_HIGHLIGHT) : ColourOf(kBorder);
    const OwnedPen border(::CreatePen(PS_INSIDEFRAME, line, edge));

    ::FillRect(state.hDC, &state.rcItem, static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)));
    const HGDIOBJ oldBrush = ::SelectObject(state.hDC, face.get());
    const HGDIOBJ oldPen = ::SelectObject(state.hDC, border.get());
    ::RoundRect(state.hDC, state.rcItem.left, state.rcItem.top, state.rcItem.right, state.rcItem.bottom,
                8 * line, 8 * line);
    ::SelectObject(state.hDC, oldPen);
    ::SelectObject(state.hDC, oldBrush);
    ::SetBkMode(state.hDC, TRANSPARENT);
    ::SetTextColor(state.hDC, text);
    DrawCentred(state.hDC, MarkedCaption(button_.Caption(), window_.Layout().mnemonic.In(language_)),
                state.rcItem, (state.itemState & ODS_NOACCEL) != 0 ? DT_HIDEPREFIX : 0);
    if (!focused) return;
    RECT inside = state.rcItem;
    ::InflateRect(&inside, -3 * line, -3 * line);
    ::DrawFocusRect(state.hDC, &inside);
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

LabelView::LabelView(HWND form, Label& label, ControlId id, Language language)
    : label_(label), window_(form, id, WC_STATICW, SS_CENTER | SS_NOPREFIX | SS_NOTIFY, language) {
    label.Observe([this] { Follow(); });
    Follow();
}

void LabelView::Follow() {
    window_.SetText(ShownLines(label_.Caption()));
    window_.Show(label_.Visible());
}

ItemsView::ItemsView(HWND form, ListView& list, ControlId id, Language language, ToolTips& toolTips)
    : list_(list),
      window_(form, id, WC_LISTBOXW,
              WS_TABSTOP | WS_BORDER | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS | LBS_NOINTEGRALHEIGHT, language),
      toolTips_(toolTips) {
    window_.Show(true);
    list.Observe([this] { Follow(); });
    Follow();
}

void ItemsView::Follow() {
    ::SendMessageW(window_.Handle(), LB_RESETCONTENT, 0, 0);
    std::wstring all;
    for (const std::string& each : list_.Items()) {
        const std::wstring text = ShownLines(each);
        ::SendMessageW(window_.Handle(), LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        all.append(all.empty() ? L"" : L"\n").append(text);
    }
    toolTips_.SetText(window_.Handle(), all);
}

void ItemsView::FitItems() const {
    RECT room{};
    ::GetClientRect(window_.Handle(), &room);
    ::SendMessageW(window_.Handle(), LB_SETITEMHEIGHT, 0, room.bottom);
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
    const bool contrast = HighContrast();
    const OwnedBrush face(
        ::CreateSolidBrush(contrast ? ::GetSysColor(COLOR_WINDOW) : ColourOf(window_.Layout().background)));
    ::FillRect(state.hDC, &state.rcItem, face.get());
    ::SetBkMode(state.hDC, TRANSPARENT);
    ::SetTextColor(state.hDC, contrast ? ::GetSysColor(COLOR_WINDOWTEXT) : ColourOf(kFormText));
    RECT inside = state.rcItem;
    ::InflateRect(&inside, -3, -1);
    DrawCentred(state.hDC, ItemText(state.itemID), inside, DT_NOPREFIX);
    if ((state.itemState & ODS_FOCUS) != 0 && (state.itemState & ODS_NOFOCUSRECT) == 0) {
        ::DrawFocusRect(state.hDC, &state.rcItem);
    }
}

BarView::BarView(HWND form, ProgressBar& bar, ControlId id, Language language)
    : bar_(bar), window_(form, id, PROGRESS_CLASSW, PBS_SMOOTH, language) {
    bar.Observe([this] { Follow(); });
    Follow();
}

void BarView::Follow() {
    ::SendMessageW(window_.Handle(), PBM_SETRANGE32, static_cast<WPARAM>(std::lround(bar_.Minimum())),
                   std::lround(bar_.Maximum()));
    ::SendMessageW(window_.Handle(), PBM_SETPOS, static_cast<WPARAM>(std::lround(bar_.Value())), 0);
    window_.Show(bar_.Visible());
}

}  // namespace vento::desktop::win32
