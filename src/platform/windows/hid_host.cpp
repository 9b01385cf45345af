#include "platform/windows/hid_host.h"

#include "platform/windows/system.h"
// These need that before them.
#include <setupapi.h>
extern "C" {
#include <hidsdi.h>
}

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace vento::platform {
namespace {

constexpr DWORD kBoundInMilliseconds = 1000;

HANDLE HandleOf(HidHandle device) {
    return reinterpret_cast<HANDLE>(device);
}

OpenOutcome OutcomeFor(DWORD error) {
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

char Lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The four hexadecimal digits behind `key`, which is in lower case.
std::optional<std::uint16_t> NumberBehind(std::string_view key, std::string path) {
    constexpr std::size_t kDigits = 4;
    std::ranges::transform(path, path.begin(), Lower);
    const std::size_t found = path.find(key);
    if (found == std::string::npos) return std::nullopt;
    const std::string number = path.substr(found + key.size(), kDigits);
    std::uint16_t value = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), value, 16);
    const bool isWhole = number.size() == kDigits && read.ptr == number.data() + kDigits;
    return read.ec == std::errc{} && isWhole ? std::optional(value) : std::nullopt;
}

/// Waits for the end of a transfer that `begun`, the result of WriteFile or ReadFile, tells of.
ReportTransfer Complete(HANDLE device, OVERLAPPED& transfer, BOOL begun) {
    DWORD error = begun == 0 ? ::GetLastError() : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS && error != ERROR_IO_PENDING) return {.error = static_cast<int>(error)};
    const bool pending = error == ERROR_IO_PENDING;
    if (pending && ::WaitForSingleObject(transfer.hEvent, kBoundInMilliseconds) != WAIT_OBJECT_0) {
        ::CancelIo(device);
    }
    DWORD count = 0;
    error = ::GetOverlappedResult(device, &transfer, &count, TRUE) == 0 ? ::GetLastError() : ERROR_SUCCESS;
    return {.whole = error == ERROR_SUCCESS && count == sizeof(Report),
            .error = static_cast<int>(error),
            .bytes = count};
}

}  // namespace

WindowsHidHost::WindowsHidHost() : completed_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (!completed_) {
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "CreateEvent");
    }
}

void WindowsHidHost::Search(const std::function<bool(std::string_view path)>& visit) {
    GUID hidClass{};
    ::HidD_GetHidGuid(&hidClass);
    const std::unique_ptr<void, decltype(&::SetupDiDestroyDeviceInfoList)> present(
        ::SetupDiGetClassDevsA(&hidClass, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE),
        &::SetupDiDestroyDeviceInfoList);
    if (present.get() == INVALID_HANDLE_VALUE) return;
    SP_DEVICE_INTERFACE_DATA interfaceData{};
    interfaceData.cbSize = sizeof interfaceData;
    for (DWORD index = 0;
         ::SetupDiEnumDeviceInterfaces(present.get(), nullptr, &hidClass, index, &interfaceData) != 0;
         ++index) {
        if (!visit(PathOf(present.get(), interfaceData))) return;
    }
}

OpenAnswer WindowsHidHost::Open(std::string_view path, Wanted wanted) {
    SECURITY_ATTRIBUTES inherited{
        .nLength = sizeof inherited, .lpSecurityDescriptor = nullptr, .bInheritHandle = TRUE};
    OwnedHandle device(::CreateFileA(std::string(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING,
                                     FILE_FLAG_OVERLAPPED, nullptr));
    if (!device) {
        const DWORD error = ::GetLastError();
        return {
            .outcome = OutcomeFor(error), .identity = IdentityInPath(path), .error = static_cast<int>(error)};
    }
    HIDD_ATTRIBUTES attributes{};
    attributes.Size = sizeof attributes;
    if (::HidD_GetAttributes(device.Get(), &attributes) == 0) {
        return {.outcome = OpenOutcome::failed,
                .identity = IdentityInPath(path),
                .error = static_cast<int>(::GetLastError())};
    }
    const HidIdentity identity{attributes.VendorID, attributes.ProductID};
    if (!wanted(identity)) return {.outcome = OpenOutcome::foreign, .identity = identity};
    return {.outcome = OpenOutcome::opened,
            .identity = identity,
            .handle = reinterpret_cast<HidHandle>(device.Release())};
}

ReportTransfer WindowsHidHost::Write(HidHandle device, const Report& report) {
    OVERLAPPED transfer{};
    transfer.hEvent = completed_.Get();
    return Complete(
        HandleOf(device), transfer,
        ::WriteFile(HandleOf(device), report.data(), static_cast<DWORD>(report.size()), nullptr, &transfer));
}

ReportTransfer WindowsHidHost::Read(HidHandle device, Report& report) {
    OVERLAPPED transfer{};
    transfer.hEvent = completed_.Get();
    Report incoming{};
    const ReportTransfer result =
        Complete(HandleOf(device), transfer,
                 ::ReadFile(HandleOf(device), incoming.data(), static_cast<DWORD>(incoming.size()), nullptr,
                            &transfer));
    if (result.whole) report = incoming;
    return result;
}

void WindowsHidHost::Cancel(HidHandle device) {
    ::CancelIo(HandleOf(device));
}

void WindowsHidHost::Close(HidHandle device) {
    const OwnedHandle closing(HandleOf(device));
}

std::optional<HidIdentity> IdentityInPath(std::string_view path) {
    const auto vendor = NumberBehind("vid_", std::string(path));
    const auto product = NumberBehind("pid_", std::string(path));
    if (!vendor || !product) return std::nullopt;
    return HidIdentity{*vendor, *product};
}

}  // namespace vento::platform
