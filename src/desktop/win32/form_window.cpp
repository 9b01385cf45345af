#include "desktop/win32/form_window.h"

#include <commctrl.h>

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

#include "desktop/guidance.h"
#include "platform/windows/text.h"

namespace vento::desktop::win32 {
namespace {

constexpr DWORD kFrameStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_CLIPCHILDREN;
constexpr wchar_t kFrameClass[] = L"FormWeb";

constexpr int kLowestDensity = 48;

constexpr UINT kRefresh = WM_APP;

// A device that is plugged in or out brings a burst of messages.
constexpr UINT_PTR kLookTimer = 1;
constexpr UINT kLookMilliseconds = 250;

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
    frameClass.lpszClassName = kFrameClass;
    ::RegisterClassExW(&frameClass);
}

/// Where a window of that size stands in the middle of what a monitor has room for.
POINT CentreOf(HMONITOR monitor, SIZE size) {
    MONITORINFO info{};
    info.cbSize = sizeof info;
    ::GetMonitorInfoW(monitor, &info);
    const RECT& room = info.rcWork;
    return {std::max(room.left, (room.left + room.right - size.cx) / 2),
            std::max(room.top, (room.top + room.bottom - size.cy) / 2)};
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

SIZE FormFrame::SizeAt(int dotsPerInch, int areaDotsPerInch) {
    RECT outside = PlaceOf(kFormArea, areaDotsPerInch);
    ::AdjustWindowRectExForDpi(&outside, kFrameStyle, FALSE, 0, static_cast<UINT>(dotsPerInch));
    return {outside.right - outside.left, outside.bottom - outside.top};
}

int FormFrame::FittingDensity(int dotsPerInch, HMONITOR monitor) {
    MONITORINFO info{};
    info.cbSize = sizeof info;
    if (::GetMonitorInfoW(monitor, &info) == 0) return dotsPerInch;
    const RECT& room = info.rcWork;
    const auto fits = [&](int density) {
        const SIZE size = SizeAt(dotsPerInch, density);
        return size.cx <= room.right - room.left && size.cy <= room.bottom - room.top;
    };
    int density = dotsPerInch;
    while (density > kLowestDensity && !fits(density))
        --density;
    return density;
}

FormFrame::FormFrame(const FormPlace& place, const std::wstring& title, WNDPROC receive) {
    RegisterFrameClass(receive);
    const int dotsPerInch = static_cast<int>(::GetDpiForSystem());
    POINT corner{PixelsFromTwips(place.left, dotsPerInch), PixelsFromTwips(place.top, dotsPerInch)};
    HMONITOR const monitor = ::MonitorFromPoint(POINT{}, MONITOR_DEFAULTTOPRIMARY);
    const int density = FittingDensity(dotsPerInch, monitor);
    const SIZE size = SizeAt(dotsPerInch, density);
    if (density != dotsPerInch) corner = CentreOf(monitor, size);
    handle_ = ::CreateWindowExW(0, kFrameClass, title.c_str(), kFrameStyle, corner.x, corner.y, size.cx,
                                size.cy, nullptr, nullptr, ::GetModuleHandleW(nullptr), nullptr);
    if (handle_ == nullptr) {
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "CreateWindowEx");
    }
}

void FormFrame::Destroy() {
    if (handle_ != nullptr) ::DestroyWindow(std::exchange(handle_, nullptr));
}

FormWindow::FormWindow(FormWeb& form, Win32Desktop& desktop, const std::wstring& title)
    : form_(form),
      desktop_(desktop),
      taskbar_(MakeObject<ITaskbarList3>(CLSID_TaskbarList, IID_ITaskbarList3)),
      frame_(form.Place, title, Receive),
      parts_(Handle(), form.PanelLanguage()),
      hint_(false, true) {
    TakeColours();
    // To the system, tab order is the order in which the windows are made.
    for (const ControlLayout& each : ControlLayouts())
        MakeView(each);
    form.Command6(FormWeb::kCancelHolder).Observe([this] { RefreshSoon(); });
    LookForTransmitter();
    desktop.ObserveOperation([this] { ShowOperation(); });
    ::DragAcceptFiles(Handle(), TRUE);
    ::SendMessageW(Handle(), WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEACCEL), 0);
    Scale(static_cast<int>(::GetDpiForWindow(Handle())));
    // Up to here, the system has answered for the window.
    ::SetWindowLongPtrW(Handle(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

FormWindow::~FormWindow() {
    ::SetWindowLongPtrW(Handle(), GWLP_USERDATA, 0);
    desktop_.ObserveOperation({});
    form_.Command6(FormWeb::kCancelHolder).Observe({});
    views_.clear();
    frame_.Destroy();
}

void FormWindow::MakeView(const ControlLayout& layout) {
    const auto make = [&]<class Kind>(std::in_place_type_t<Kind> kind, auto&&... arguments) {
        views_.emplace_back(kind, parts_, layout, std::forward<decltype(arguments)>(arguments)...);
    };
    switch (layout.id) {
        case ControlId::Image1:
            return make(std::in_place_type<PictureView>);
        case ControlId::Line1:
            return;  // painted with the background
        case ControlId::Command2:
            return make(std::in_place_type<ButtonView>, form_.Command2);
        case ControlId::Command3:
            return make(std::in_place_type<ButtonView>, form_.Command3);
        case ControlId::Command4:
            return make(std::in_place_type<ButtonView>, form_.Command4);
        case ControlId::Command6_0:
            return make(std::in_place_type<ButtonView>, form_.Command6(0));
        case ControlId::ListView1_0:
            return make(std::in_place_type<ItemsView>, form_.ListView1[0]);
        case ControlId::ListView1_1:
            return make(std::in_place_type<ItemsView>, form_.ListView1[1]);
        case ControlId::ListView1_2:
            return make(std::in_place_type<ItemsView>, form_.ListView1[2]);
        case ControlId::Label1:
            return make(std::in_place_type<LabelView>, form_.Label1);
        case ControlId::ProgressBar1:
            return make(std::in_place_type<BarView>, form_.ProgressBar1,
                        [this](std::optional<int> percent) { ShowProgress(percent); });
        case ControlId::hint:
            return make(std::in_place_type<ButtonView>, hint_);
    }
}

ControlWindow& FormWindow::WindowOf(ControlId id) {
    const auto window = [](View& view) -> ControlWindow& {
        return std::visit([](auto& each) -> ControlWindow& { return each.Window(); }, view);
    };
    return window(*std::ranges::find_if(views_, [&](View& each) { return window(each).Layout().id == id; }));
}

void FormWindow::Show() {
    focused_ = WindowOf(ControlId::Command2).Handle();
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
            LookForTransmitterSoon();  // rights and other programs change without a message
            break;
        case WM_DEVICECHANGE:
            LookForTransmitterSoon();
            break;
        case WM_TIMER:
            if (wParam != kLookTimer) break;
            ::KillTimer(Handle(), kLookTimer);
            LookForTransmitter();
            return 0;
        case WM_HELP:
            ShowDetails();
            return TRUE;
        case WM_SETFOCUS:
            ::SetFocus(::IsWindowEnabled(focused_) != 0 ? focused_ : parts_.refuge);
            return 0;
        case WM_CLOSE:
            form_.Form_Unload();
            return 0;
        case WM_QUERYENDSESSION:
            return desktop_.BlocksShutdown() ? FALSE : TRUE;
        case WM_ENDSESSION:
            if (wParam != 0) form_.Form_Unload();
            return 0;
        case WM_DROPFILES:
            DropFiles(reinterpret_cast<HDROP>(wParam));
            return 0;
        case kRefresh:
            Refresh();
            return 0;
        case WM_COPY:
            CopyStatus();
            return 0;
        case WM_SETCURSOR:
            if (LOWORD(lParam) != HTCLIENT || !desktop_.Operating()) break;
            ::SetCursor(::LoadCursorW(nullptr, MAKEINTRESOURCEW(32650)));  // IDC_APPSTARTING
            return TRUE;
        default:
            if (const auto result = HandleLook(message, wParam, lParam)) return *result;
            break;
    }
    return ::DefWindowProcW(Handle(), message, wParam, lParam);
}

std::optional<LRESULT> FormWindow::HandleLook(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_ERASEBKGND: {
            RECT area{};
            ::GetClientRect(Handle(), &area);
            ::FillRect(reinterpret_cast<HDC>(wParam), &area, background_.get());
            return TRUE;
        }
        case WM_PAINT:
            Paint();
            return 0;
        case WM_DRAWITEM:
            if (Draw(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam))) return TRUE;
            return std::nullopt;
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORLISTBOX:
            ::SetTextColor(reinterpret_cast<HDC>(wParam), palette_.text);
            ::SetBkColor(reinterpret_cast<HDC>(wParam), palette_.background);
            return reinterpret_cast<LRESULT>(background_.get());
        case WM_SYSCOLORCHANGE:
        case WM_THEMECHANGED:
        case WM_SETTINGCHANGE:
            TakeColours();
            return std::nullopt;
        case WM_GETDPISCALEDSIZE: {
            const int dotsPerInch = static_cast<int>(wParam);
            HMONITOR const monitor = ::MonitorFromWindow(Handle(), MONITOR_DEFAULTTONEAREST);
            *reinterpret_cast<SIZE*>(lParam) =
                FormFrame::SizeAt(dotsPerInch, FormFrame::FittingDensity(dotsPerInch, monitor));
            return TRUE;
        }
        case WM_DPICHANGED:
            MoveToScreen(HIWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
            return 0;
        default:
            return std::nullopt;
    }
}

void FormWindow::MoveToScreen(int dotsPerInch, const RECT& place) {
    HMONITOR const monitor = ::MonitorFromRect(&place, MONITOR_DEFAULTTONEAREST);
    const SIZE size = FormFrame::SizeAt(dotsPerInch, FormFrame::FittingDensity(dotsPerInch, monitor));
    ::SetWindowPos(Handle(), nullptr, place.left, place.top, size.cx, size.cy, SWP_NOZORDER | SWP_NOACTIVATE);
    Scale(dotsPerInch);
}

// Controls of the system's have colours of their own, which they take when they are told of the change.
void FormWindow::TakeColours() {
    palette_ = Palette::Current();
    background_.reset(::CreateSolidBrush(palette_.background));
    for (View& each : views_) {
        const ControlWindow& window =
            std::visit([](auto& view) -> ControlWindow& { return view.Window(); }, each);
        ::SendMessageW(window.Handle(), WM_SYSCOLORCHANGE, 0, 0);
        if (auto* const bar = std::get_if<BarView>(&each)) bar->TakeColours();
    }
    ::RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
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
    RefreshSoon();
}

void FormWindow::Press(ControlId id) {
    if (id != ControlId::hint) pressed_ = WindowOf(id).Handle();
    switch (id) {
        case ControlId::hint:
            return HelpFor(form_) == Help::cancel ? form_.Cancel() : ShowDetails();
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
    HMONITOR const monitor = ::MonitorFromWindow(Handle(), MONITOR_DEFAULTTONEAREST);
    areaDotsPerInch_ = FormFrame::FittingDensity(dotsPerInch, monitor);
    for (View& each : views_)
        std::visit([&](auto& view) { view.Scale(areaDotsPerInch_); }, each);
    parts_.toolTips.Scale(dotsPerInch);
    ::RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void FormWindow::DropFiles(HDROP drop) {
    const bool isOne = ::DragQueryFileW(drop, 0xFFFFFFFF, nullptr, 0) == 1;
    const std::wstring path = isOne ? DroppedPath(drop) : std::wstring();
    ::DragFinish(drop);
    if (!IsProgrammeFile(path)) return;
    ::SetForegroundWindow(Handle());
    form_.DropFile(platform::Utf8(path));
    RefreshSoon();
}

bool FormWindow::Draw(const DRAWITEMSTRUCT& state) {
    for (View& each : views_) {
        const bool drawn = std::visit(
            [&](auto& view) {
                if constexpr (requires { view.Draw(state); }) {
                    if (view.Window().Handle() != state.hwndItem) return false;
                    view.Draw(state);
                    return true;
                }
                return false;
            },
            each);
        if (drawn) return true;
    }
    return false;
}

void FormWindow::Paint() const {
    PAINTSTRUCT paint{};
    const HDC canvas = ::BeginPaint(Handle(), &paint);
    const RECT place = PlaceOf(LayoutOf(ControlId::Line1).place, areaDotsPerInch_);
    const OwnedBrush rule(::CreateSolidBrush(palette_.rule));
    ::FillRect(canvas, &place, rule.get());
    ::EndPaint(Handle(), &paint);
}

// Once for all that changes in a turn.
void FormWindow::RefreshSoon() {
    if (!std::exchange(refreshIsDue_, true)) ::PostMessageW(Handle(), kRefresh, 0, 0);
}

// The controls' own state is not touched: what would do nothing now looks like it, that is all.
void FormWindow::Refresh() {
    refreshIsDue_ = false;
    const Help help = HelpFor(form_);
    if (help != Help::none) hint_.SetCaption(HintText(help, form_.PanelLanguage()));
    hint_.SetVisible(help != Help::none && !form_.ProgressBar1.Visible());
    for (View& each : views_) {
        ControlWindow& window = std::visit([](auto& view) -> ControlWindow& { return view.Window(); }, each);
        const ControlId id = window.Layout().id;
        if (auto* const button = std::get_if<ButtonView>(&each)) button->SetDimmed(IsDimmed(id, form_));
        window.SetTip(platform::Wide(GuidanceFor(id, form_, transmitter_)));
    }
}

void FormWindow::LookForTransmitterSoon() const {
    ::SetTimer(Handle(), kLookTimer, kLookMilliseconds, nullptr);
}

// An operation is not to be disturbed, and has the transmitter anyway.
void FormWindow::LookForTransmitter() {
    if (desktop_.Operating() || form_.Ended()) return;
    transmitter_ = form_.Transmitter();
    Refresh();
}

// The system hands on what a box was asked for help.
void FormWindow::ShowDetails() {
    if (::IsWindowEnabled(Handle()) == 0) return;
    if (HelpFor(form_) == Help::details) desktop_.ShowMessage(form_.Label1.Caption(), DetailsOf(form_));
}

void FormWindow::ShowOperation() {
    const bool operating = desktop_.Operating();
    Refresh();
    ::DragAcceptFiles(Handle(), operating ? FALSE : TRUE);
    ::PostMessageW(Handle(), WM_SETCURSOR, reinterpret_cast<WPARAM>(Handle()),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    if (operating || form_.Ended()) return;
    if (::GetFocus() == parts_.refuge && ::IsWindowEnabled(pressed_) != 0) ::SetFocus(pressed_);
    LookForTransmitterSoon();
    CallForAttention();
}

// Hands and eyes are at the remote, and another window may be in front.
void FormWindow::CallForAttention() const {
    if (::GetForegroundWindow() == Handle()) return;
    const auto& outcome = form_.LatestOutcome();
    const bool succeeded = outcome && outcome->code == ResultCode::success;
    ::MessageBeep(succeeded ? MB_ICONASTERISK : MB_ICONWARNING);
    FLASHWINFO flash{sizeof flash, Handle(), FLASHW_ALL | FLASHW_TIMERNOFG, 3, 0};
    ::FlashWindowEx(&flash);
}

void FormWindow::ShowProgress(std::optional<int> percent) {
    RefreshSoon();
    if (!taskbar_) return;
    taskbar_->SetProgressState(Handle(), percent ? TBPF_NORMAL : TBPF_NOPROGRESS);
    if (percent) taskbar_->SetProgressValue(Handle(), static_cast<ULONGLONG>(*percent), 100);
}

// What is selected of it, or else all, with the details, if there are any to be shown.
void FormWindow::CopyStatus() {
    std::wstring text;
    for (const View& each : views_) {
        if (const auto* const label = std::get_if<LabelView>(&each)) text = label->Selection();
    }
    if (text.empty()) {
        std::string lines = form_.Label1.Caption();
        if (HelpFor(form_) == Help::details) lines.append("\n").append(DetailsOf(form_));
        text = WithReturns(ShownLines(lines));
    }
    if (text.empty() || ::OpenClipboard(Handle()) == 0) return;
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    auto* const memory = ::GlobalAlloc(GMEM_MOVEABLE, size);
    if (memory != nullptr) {
        std::copy_n(text.c_str(), text.size() + 1, static_cast<wchar_t*>(::GlobalLock(memory)));
        ::GlobalUnlock(memory);
        ::EmptyClipboard();
        ::SetClipboardData(CF_UNICODETEXT, memory);  // which owns it from here on
    }
    ::CloseClipboard();
}

}  // namespace vento::desktop::win32
