#include "platform/linux/report_descriptor.h"

#include <algorithm>
#include <array>
#include <vector>

namespace vento::platform {
namespace {

// Tag and type of a short item, the size in the low two bits left out.
enum Item : std::uint8_t {
    kInput = 0x80,
    kOutput = 0x90,
    kCollection = 0xA0,
    kEndCollection = 0xC0,
    kUsagePage = 0x04,
    kReportSize = 0x74,
    kReportId = 0x84,
    kReportCount = 0x94,
    kPush = 0xA4,
    kPop = 0xB4,
    kUsage = 0x08,
};

constexpr std::uint8_t kLongItem = 0xFE;
constexpr std::uint32_t kApplication = 1;
constexpr std::uint32_t kGenericDesktop = 1;
constexpr std::uint32_t kFirstVendorPage = 0xFF00;
/// Pointer, mouse, keyboard, keypad: what Windows keeps to itself.
constexpr std::array<std::uint32_t, 4> kSystemUsages = {1, 2, 6, 7};

struct Globals {
    std::uint32_t usagePage = 0;
    std::uint32_t reportSize = 0;
    std::uint32_t reportCount = 0;
    std::uint8_t reportId = 0;
};

/// The bits of each report, by its id.
using Bits = std::array<std::uint64_t, 256>;

/// More than any device has; a sum of fields that claim the most would begin anew at zero.
constexpr std::uint64_t kMostBits = std::uint64_t{1} << 40U;

void AddBits(std::uint64_t& sum, std::uint64_t bits) {
    sum = std::min(sum + std::min(bits, kMostBits), kMostBits);
}

class Parser {
  public:
    void Take(std::uint8_t item, std::uint32_t data, std::size_t size) {
        switch (item) {
            case kUsagePage:
                globals_.usagePage = data;
                break;
            case kReportSize:
                globals_.reportSize = data;
                break;
            case kReportCount:
                globals_.reportCount = data;
                break;
            case kReportId:
                globals_.reportId = static_cast<std::uint8_t>(data);
                break;
            case kPush:
                stack_.push_back(globals_);
                break;
            case kPop:
                if (stack_.empty()) break;
                globals_ = stack_.back();
                stack_.pop_back();
                break;
            case kUsage:
                if (!usage_) usage_ = size == 4 ? data : globals_.usagePage << 16U | data;
                break;
            default:
                TakeMain(item, data);
                break;
        }
    }

    [[nodiscard]] ReportDescriptor Result() const {
        const auto longest = [](const Bits& bits) {
            return static_cast<std::size_t>((*std::ranges::max_element(bits) + 7) / 8);
        };
        return {.isSystemInput = hasSystemInput_ && !hasVendorCollection_,
                .lengths = {.input = longest(inputBits_), .output = longest(outputBits_)}};
    }

  private:
    void TakeMain(std::uint8_t item, std::uint32_t data) {
        const std::uint64_t bits = std::uint64_t{globals_.reportSize} * globals_.reportCount;
        switch (item) {
            case kInput:
                AddBits(inputBits_[globals_.reportId], bits);
                break;
            case kOutput:
                AddBits(outputBits_[globals_.reportId], bits);
                break;
            case kCollection:
                if (depth_++ == 0 && data == kApplication) Classify(usage_.value_or(0));
                break;
            case kEndCollection:
                if (depth_ > 0) --depth_;
                break;
            default:
                return;  // what else there is leaves the usages alone, or has nothing to do with them
        }
        usage_.reset();
    }

    void Classify(std::uint32_t usage) {
        const std::uint32_t page = usage >> 16U;
        const std::uint32_t id = usage & 0xFFFFU;
        if (page >= kFirstVendorPage) hasVendorCollection_ = true;
        if (page == kGenericDesktop && std::ranges::find(kSystemUsages, id) != kSystemUsages.end()) {
            hasSystemInput_ = true;
        }
    }

    Globals globals_;
    std::vector<Globals> stack_;
    std::optional<std::uint32_t> usage_;  ///< the first since the last main item, its page in the high half
    int depth_ = 0;
    bool hasSystemInput_ = false;
    bool hasVendorCollection_ = false;
    Bits inputBits_{};
    Bits outputBits_{};
};

}  // namespace

ReportDescriptor ParseReportDescriptor(std::span<const std::uint8_t> bytes) {
    Parser parser;
    while (!bytes.empty()) {
        const std::uint8_t prefix = bytes.front();
        const bool isLong = prefix == kLongItem;
        if (isLong && bytes.size() < 2) break;
        const std::size_t size = isLong ? std::size_t{2} + bytes[1] : (prefix & 3U) == 3 ? 4 : prefix & 3U;
        bytes = bytes.subspan(1);
        if (bytes.size() < size) break;
        std::uint32_t data = 0;
        for (std::size_t i = 0; !isLong && i < size; ++i)
            data |= std::uint32_t{bytes[i]} << (8 * i);
        if (!isLong) parser.Take(prefix & 0xFCU, data, size);
        bytes = bytes.subspan(size);
    }
    return parser.Result();
}

}  // namespace vento::platform
