#include "trace/trace.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <span>
#include <utility>

namespace vento {
namespace {

// Byte 0 is the report id and always 0, whatever a read has left there.
std::string Hex(const platform::Report& report) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string hex = "00";
    hex.reserve(2 * report.size());
    for (const std::uint8_t byte : std::span(report).subspan<1>()) {
        hex += kDigits[byte >> 4U];
        hex += kDigits[byte & 15U];
    }
    return hex;
}

std::string Word(bool value) {
    return value ? "true" : "false";
}

// Of a transfer that failed: the system's error, 0 where it named none, and the bytes that crossed all the
// same.
std::string FailureOf(const platform::ReportTransfer& transfer) {
    if (transfer.whole) return "";
    return R"(,"error":)" + std::to_string(transfer.error) + R"(,"bytes":)" + std::to_string(transfer.bytes);
}

}  // namespace

Trace::Trace(std::function<void(std::string_view line)> write, platform::Clock& clock)
    : write_(std::move(write)), clock_(clock) {}

std::string Trace::SecondsSinceFirst() {
    const auto now = clock_.Now();
    const auto since = std::chrono::floor<std::chrono::microseconds>(now - first_.value_or(now)).count();
    if (!first_) first_ = now;
    constexpr std::int64_t kPerSecond = 1'000'000;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%lld.%06lld", static_cast<long long>(since / kPerSecond),
                  static_cast<long long>(since % kPerSecond));
    return text.data();
}

void Trace::Line(std::uint64_t cycle, const std::string& rest) {
    write_(R"({"cycle":)" + std::to_string(cycle) + R"(,"seconds":)" + SecondsSinceFirst() + "," + rest +
           "}\n");
}

void Trace::Search(std::uint64_t cycle, const std::optional<platform::HidIdentity>& found) {
    Line(cycle, R"("event":"search","found":)" + Word(found.has_value()) + R"(,"vendorId":)" +
                    (found ? std::to_string(found->vendorId) : "null") + R"(,"productId":)" +
                    (found ? std::to_string(found->productId) : "null"));
}

void Trace::Write(std::uint64_t cycle, const platform::ReportTransfer& transfer,
                  const platform::Report& report) {
    Line(cycle, R"("event":"write","ok":)" + Word(transfer.whole) + R"(,"report":")" + Hex(report) + '"' +
                    FailureOf(transfer));
}

void Trace::Read(std::uint64_t cycle, const platform::ReportTransfer& transfer,
                 const platform::Report& report) {
    Line(cycle, R"("event":"read","ok":)" + Word(transfer.whole) + R"(,"report":)" +
                    (transfer.whole ? '"' + Hex(report) + '"' : "null") + FailureOf(transfer));
}

void Trace::Close(std::uint64_t cycle) {
    Line(cycle, R"("event":"close")");
}

}  // namespace vento
