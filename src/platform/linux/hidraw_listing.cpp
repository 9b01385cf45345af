#include "platform/linux/hidraw_listing.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

#include "platform/linux/file_descriptor.h"

namespace vento::platform {
namespace {

/// The number that `digits` is as a whole.
template <class Number>
std::optional<Number> ParseWhole(std::string_view digits, int base) {
    Number number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, number, base);
    if (error != std::errc{} || rest != end) return std::nullopt;
    return number;
}

void AddNumber(std::string_view name, HidrawNumbers& numbers) {
    constexpr std::string_view kPrefix = "hidraw";
    if (!name.starts_with(kPrefix)) return;
    const auto number = ParseWhole<std::size_t>(name.substr(kPrefix.size()), 10);
    if (number && *number < numbers.size()) numbers.set(*number);
}

}  // namespace

void ListHidraw(const char* folder, HidrawNumbers& numbers) {
    const FileDescriptor list(::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!list.IsOpen()) return;
    // opendir would take its buffer from the heap, for each frame anew.
    alignas(dirent64) std::array<char, 4096> entries{};
    for (;;) {
        const ssize_t filled = ::getdents64(list.Number(), entries.data(), entries.size());
        if (filled <= 0) return;
        for (std::size_t at = 0; at < static_cast<std::size_t>(filled);) {
            const auto* entry = reinterpret_cast<const dirent64*>(&entries[at]);
            AddNumber(entry->d_name, numbers);
            at += entry->d_reclen;
        }
    }
}

std::optional<HidIdentity> IdentityInPath(std::string_view path) {
    constexpr std::size_t kIds = 5;        // "BUS0:" stands before them
    constexpr std::size_t kInstance = 14;  // "BUS0:VEND:PROD" stands before it
    const std::string_view name = path.substr(path.find_last_of('/') + 1);
    if (name.size() <= kInstance || name[4] != ':' || name[9] != ':' || name[kInstance] != '.') {
        return std::nullopt;
    }
    const auto vendorId = ParseWhole<std::uint16_t>(name.substr(kIds, 4), 16);
    const auto productId = ParseWhole<std::uint16_t>(name.substr(kIds + 5, 4), 16);
    if (!vendorId || !productId) return std::nullopt;
    return HidIdentity{*vendorId, *productId};
}

}  // namespace vento::platform
