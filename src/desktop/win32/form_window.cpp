#include "desktop/win32/form_window.h"

#include <commctrl.h>

#include <system_error>
#include <utility>

#include "desktop/win32/resource_ids.h"
#include "platform/windows/text.h"

namespace vento::desktop::win32 {
namespace {

constexpr DWORD kFrameStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_CLIPCHILDREN;
constexpr wchar_t kFrameClass[] = L"FormWeb";

HICON LoadIconOfSize(int metric) {
    const int size = ::GetSystemMetrics(metric);
    return static_cast<HICON>(::LoadImageW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(kProgramIcon),
                                           IMAGE_ICON, size, size, LR_SHARED));
}

void RegisterFrameClass(WNDPROC receive) {
    WNDCLASSEXW frameClass{};
    frameClass.cbSize = sizeof frameClass;
    frameClass.lpfnWndProc = receive;
    frameClass.hInstance = ::GetModuleHandleW(nullptr);
    frameClass.hIcon = LoadIconOfSize(SM_CXICON);
    frameClass.hIconSm = LoadIconOfSize(SM_CXSMICON);
    frameClass.hCursor = ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // IDC_ARROW
    frameClass.hbrBackground = static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH));
    frameClass.lpszClassName = kFrameClass;
    ::RegisterClassExW(&frameClass);
}

std::wstring DroppedPath(HDROP drop) {
    std::wstring path(::DragQueryFileW(drop, 0, nullptr, 0), L'\0');
    ::DragQueryFileW(drop, 0, path.data(), static_cast<UINT>(path.size()) + 1);
    return path;
}

bool IsProgrammeFile(const std::wstring& path) {
    constexpr std::wstring_view kExtension = L".qlb";
    return path.size() > kExtension.size() &&
           ::CompareStringOrdinal(path.c_str() + path.size() - kExtension.size(), -1, kExtension.data(), -1,
                                  TRUE) == CSTR_EQUAL;
}

}  // namespace

SIZE FormFrame::SizeAt(int dotsPerInch) {
    RECT outside = PlaceOf(kFormArea, dotsPerInch);
    ::AdjustWindowRectExForDpi(&outside, kFrameStyle, FALSE, 0, static_cast<UINT>(dotsPerInch));
    return {outside.right - outside.left, outside.bottom - outside.top};
}

FormFrame::FormFrame(const FormPlace& place, const std::wstring& title, WNDPROC receive) {
    RegisterFrameClass(receive);
    const int dotsPerInch = static_cast<int>(::GetDpiForSystem());
    const SIZE size = SizeAt(dotsPerInch);
    handle_ =
        ::CreateWindowExW(0, kFrameClass, title.c_str(), kFrameStyle,
                          PixelsFromTwips(place.left, dotsPerInch), PixelsFromTwips(place.top, dotsPerInch),
                          size.cx, size.cy, nullptr, nullptr, ::GetModuleHandleW(nullptr), nullptr);
    if (handle_ == nullptr) {
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "CreateWindowEx");
    }
}

void FormFrame::Destroy() {
    if (handle_ != nullptr) ::DestroyWindow(std::exchange(handle_, nullptr));
}

// The views are made in tab order, which to the system is the order of the windows.
FormWindow::FormWindow(FormWeb& form, Win32Desktop& desktop, const std::wstring& title)
    : form_(form),
      desktop_(desktop),
      frame_(form.Place, title, Receive),
      toolTips_(Handle()),
      image1_(Handle(), ControlId::Image1, WC_STATICW, WS_VISIBLE | SS_OWNERDRAW, form.PanelLanguage()),
      progressBar1_(Handle(), form.ProgressBar1, ControlId::ProgressBar1, form.PanelLanguage()),
      label1_(Handle(), form.Label1, ControlId::Label1, form.PanelLanguage()),
      command2_(Handle(), form.Command2, ControlId::Command2, form.PanelLanguage()),
      command3_(Handle(), form.Command3, ControlId::Command3, form.PanelLanguage()),
      command4_(Handle(), form.Command4, ControlId::Command4, form.PanelLanguage()),
      listView1_{
          ItemsView(Handle(), form.ListView1[0], ControlId::ListView1_0, form.PanelLanguage(), toolTips_),
          ItemsView(Handle(), form.ListView1[1], ControlId::ListView1_1, form.PanelLanguage(), toolTips_),
          ItemsView(Handle(), form.ListView1[2], ControlId::ListView1_2, form.PanelLanguage(), toolTips_)},
      command6_(Handle(), form.Command6(0), ControlId::Command6_0, form.PanelLanguage()),
      windows_{&image1_,
               &progressBar1_.Window(),
               &label1_.Window(),
               &command2_.Window(),
               &command3_.Window(),
               &command4_.Window(),
               &listView1_[0].Window(),
               &listView1_[1].Window(),
               &listView1_[2].Window(),
               &command6_.Window()} {
    for (const ControlWindow* each : windows_) {
        const std::string tip = ToolTipOf(each->Layout(), form.PanelLanguage());
        if (!tip.empty()) toolTips_.SetText(each->Handle(), platform::Wide(tip));
    }
    ::DragAcceptFiles(Handle(), TRUE);
    Scale(static_cast<int>(::GetDpiForWindow(Handle())));
    // Up to here, the system has answered for the window.
    ::SetWindowLongPtrW(Handle(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

FormWindow::~FormWindow() {
    ::SetWindowLongPtrW(Handle(), GWLP_USERDATA, 0);
    frame_.Destroy();
}

void FormWindow::Show() {
    focused_ = command2_.Window().Handle();
    ::ShowWindow(Handle(), SW_SHOWDEFAULT);
    ::UpdateWindow(Handle());
}

LRESULT CALLBACK FormWindow::Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const self = reinterpret_cast<FormWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr) return ::DefWindowProcW(window, message, wParam, lParam);
    try {
        return self->Handle(message, wParam, lParam);
    } catch (...) {  // must not go through the system's own frames
        self->failure_ = std::current_exception();
        ::PostQuitMessage(EXIT_FAILURE);
        return 0;
    }
}

LRESULT FormWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND:
            Command(LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_ACTIVATE:  // the control that has the focus gets it back with the window's next turn
            if (LOWORD(wParam) == WA_INACTIVE && ::IsChild(Handle(), ::GetFocus()) != 0)
                focused_ = ::GetFocus();
            break;
        case WM_SETFOCUS:
            ::SetFocus(focused_);
            return 0;
        case WM_CLOSE:
            form_.Form_Unload();
            return 0;
        case WM_ENDSESSION:
            if (wParam != 0) form_.Form_Unload();
            return 0;
        case WM_DROPFILES:
            DropFiles(reinterpret_cast<HDROP>(wParam));
            return 0;
        case WM_PAINT:
            Paint();
            return 0;
        case WM_DRAWITEM:
            if (Draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam))) return TRUE;
            break;
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORLISTBOX:
            ::SetTextColor(reinterpret_cast<HDC>(wParam), ColourOf(kFormText));
            ::SetBkColor(reinterpret_cast<HDC>(wParam), ColourOf(kFormBackground));
            return reinterpret_cast<LRESULT>(::GetStockObject(WHITE_BRUSH));
        case WM_GETDPISCALEDSIZE:
            *reinterpret_cast<SIZE*>(lParam) = FormFrame::SizeAt(static_cast<int>(wParam));
            return TRUE;
        case WM_DPICHANGED: {
            const RECT& place = *reinterpret_cast<const RECT*>(lParam);
            const SIZE size = FormFrame::SizeAt(HIWORD(wParam));
            ::SetWindowPos(Handle(), nullptr, place.left, place.top, size.cx, size.cy,
                           SWP_NOZORDER | SWP_NOACTIVATE);
            Scale(HIWORD(wParam));
            return 0;
        }
        default:
            break;
    }
    return ::DefWindowProcW(Handle(), message, wParam, lParam);
}

// Enter comes as the number IDOK, Esc as IDCANCEL, whichever control has the focus.
void FormWindow::Command(int control, int notification) {
    if (control == IDCANCEL) {
        form_.Cancel();
    } else if (control == IDOK) {
        const int focused = ::GetDlgCtrlID(::GetFocus());
        if (focused >= kFirstControl) Press(static_cast<ControlId>(focused - kFirstControl));
    } else if (control >= kFirstControl && (notification == BN_CLICKED || notification == BN_DBLCLK)) {
        Press(static_cast<ControlId>(control - kFirstControl));
    }
}

void FormWindow::Press(ControlId id) {
    switch (id) {
        case ControlId::Command2:
            return desktop_.Operate([this] { form_.Command2_Click(); });
        case ControlId::Command3:
            return form_.Command3_Click();
        case ControlId::Command4:
            return form_.Command4_Click();
        case ControlId::Command6_0:
            return desktop_.Operate([this] { form_.Command6_Click(0); });
        default:
            return;
    }
}

void FormWindow::Scale(int dotsPerInch) {
    dotsPerInch_ = dotsPerInch;
    for (ControlWindow* each : windows_)
        each->Scale(dotsPerInch);
    for (const ItemsView& each : listView1_)
        each.FitItems();
    ::RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void FormWindow::DropFiles(HDROP drop) {
    const bool isOne = ::DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0) == 1;
    const std::wstring path = isOne ? DroppedPath(drop) : std::wstring();
    ::DragFinish(drop);
    if (!IsProgrammeFile(path)) return;
    ::SetForegroundWindow(Handle());
    form_.DropFile(platform::Utf8(path));
}

bool FormWindow::Draw(const DRAWITEMSTRUCT& state) {
    if (state.hwndItem == image1_.Handle()) {
        logo_.Draw(state.hDC, state.rcItem);
        return true;
    }
    if (state.hwndItem == command6_.Window().Handle()) {
        command6_.Draw(state);
        return true;
    }
    for (ItemsView& each : listView1_) {
        if (state.hwndItem != each.Window().Handle()) continue;
        each.Draw(state);
        return true;
    }
    return false;
}

void FormWindow::Paint() const {
    PAINTSTRUCT paint{};
    const HDC canvas = ::BeginPaint(Handle(), &paint);
    const ControlLayout& rule = LayoutOf(ControlId::Line1);
    const RECT place = PlaceOf(rule.place, dotsPerInch_);
    ::FillRect(canvas, &place, MakeBrush(rule.background).get());
    ::EndPaint(Handle(), &paint);
}

}  // namespace vento::desktop::win32
