#include "platform/windows/hid_host.h"

extern "C" {
#include <hidsdi.h>
}

#include <system_error>
#include <vector>

#include "platform/advice.h"
#include "platform/windows/hid_identity.h"
#include "platform/windows/report_transfer.h"

namespace vento::platform {
namespace {

HANDLE HandleOf(HidHandle device) {
    return reinterpret_cast<HANDLE>(device);
}

OpenOutcome OutcomeOf(DWORD error) {
    switch (error) {
        case ERROR_ACCESS_DENIED:
            return OpenOutcome::forbidden;
        case ERROR_SHARING_VIOLATION:
            return OpenOutcome::busy;
        default:
            return OpenOutcome::failed;
    }
}

/// The path by which a listed interface is opened; empty if the system doesn't give it.
std::string PathOf(HDEVINFO list, SP_DEVICE_INTERFACE_DATA& interfaceData) {
    DWORD size = 0;
    ::SetupDiGetDeviceInterfaceDetailA(list, &interfaceData, nullptr, 0, &size, nullptr);
    // The byte more ends the path whatever the system writes.
    std::vector<char> buffer(std::size_t{size} + 1 + sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A));
    auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(buffer.data());
    detail->cbSize = sizeof *detail;
    if (::SetupDiGetDeviceInterfaceDetailA(list, &interfaceData, detail, size, nullptr, nullptr) == 0)
        return {};
    return &detail->DevicePath[0];
}

}  // namespace

WindowsHidHost::WindowsHidHost() : completed_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (!completed_) {
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "CreateEvent");
    }
}

void WindowsHidHost::BeginSearch() {
    EndSearch();
    ::HidD_GetHidGuid(&hidClass_);
    present_ = ::SetupDiGetClassDevsA(&hidClass_, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    next_ = 0;
}

bool WindowsHidHost::NextInterface() {
    if (present_ == INVALID_HANDLE_VALUE) return false;
    SP_DEVICE_INTERFACE_DATA interfaceData{};
    interfaceData.cbSize = sizeof interfaceData;
    if (::SetupDiEnumDeviceInterfaces(present_, nullptr, &hidClass_, next_, &interfaceData) == 0)
        return false;
    ++next_;
    path_ = PathOf(present_, interfaceData);
    return true;
}

OpenAnswer WindowsHidHost::OpenInterface(bool (*wanted)(HidIdentity)) {
    SECURITY_ATTRIBUTES inherited{
        .nLength = sizeof inherited, .lpSecurityDescriptor = nullptr, .bInheritHandle = TRUE};
    OwnedHandle device(::CreateFileA(path_.c_str(), GENERIC_READ | GENERIC_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING,
                                     FILE_FLAG_OVERLAPPED, nullptr));
    if (!device) return {.outcome = OutcomeOf(::GetLastError()), .identity = IdentityInPath(path_)};

    HIDD_ATTRIBUTES attributes{};
    attributes.Size = sizeof attributes;
    if (::HidD_GetAttributes(device.Get(), &attributes) == 0) {
        return {.outcome = OpenOutcome::failed, .identity = IdentityInPath(path_)};
    }
    const HidIdentity identity{attributes.VendorID, attributes.ProductID};
    if (!wanted(identity)) return {.outcome = OpenOutcome::foreign, .identity = identity};
    return {.outcome = OpenOutcome::opened,
            .identity = identity,
            .handle = reinterpret_cast<HidHandle>(device.Release())};
}

void WindowsHidHost::EndSearch() {
    if (present_ != INVALID_HANDLE_VALUE) ::SetupDiDestroyDeviceInfoList(present_);
    present_ = INVALID_HANDLE_VALUE;
}

bool WindowsHidHost::WriteReport(HidHandle device, const Report& report) {
    return WriteWholeReport(HandleOf(device), completed_.Get(), report);
}

bool WindowsHidHost::ReadReport(HidHandle device, Report& report) {
    return ReadWholeReport(HandleOf(device), completed_.Get(), report);
}

void WindowsHidHost::Cancel(HidHandle device) {
    ::CancelIo(HandleOf(device));
}

void WindowsHidHost::Close(HidHandle device) {
    const OwnedHandle closing(HandleOf(device));
}

std::string WindowsHidHost::Advice(OpenOutcome outcome, Language language) const {
    constexpr AdviceText kForbidden{
        "Il trasmettitore è collegato, ma Windows non ti permette di aprirlo. Chiedi a chi amministra questo "
        "computer "
        "di consentire l'accesso ai dispositivi HID, poi scollega il trasmettitore e ricollegalo.",
        "The transmitter is connected, but Windows does not let you open it. Ask whoever administers this "
        "computer to "
        "allow access to HID devices, then unplug the transmitter and plug it in again."};
    return AdviceFor(outcome, language, kForbidden);
}

}  // namespace vento::platform
