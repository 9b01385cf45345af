#include "trace/trace.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <concepts>
#include <span>
#include <utility>

namespace vento {
namespace {

constexpr std::size_t kLongestLine = 512;

// A line that is put together without allocating: the last of them is written while an operation is unwound,
// which may be because there is no memory.
class LineText {
  public:
    LineText& operator<<(std::string_view part) {
        size_ += part.copy(text_.data() + size_, text_.size() - size_);
        return *this;
    }
    LineText& operator<<(std::integral auto number) {
        const auto [end, error] = std::to_chars(text_.data() + size_, text_.data() + text_.size(), number);
        size_ = static_cast<std::size_t>(end - text_.data());
        return *this;
    }
    // Byte 0 is the report id and always 0, whatever a read has left there.
    LineText& operator<<(const platform::Report& report) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        *this << "\"00";
        for (const std::uint8_t byte : std::span(report).subspan<1>())
            *this << kDigits.substr(byte >> 4U, 1) << kDigits.substr(byte & 15U, 1);
        return *this << "\"";
    }

    [[nodiscard]] std::string_view Text() const { return {text_.data(), size_}; }

  private:
    std::array<char, kLongestLine> text_{};
    std::size_t size_ = 0;
};

constexpr std::string_view Word(bool value) {
    return value ? "true" : "false";
}

// Of a transfer that failed: the system's error, 0 where it named none, and the bytes that crossed all the
// same.
void AddFailure(LineText& line, const platform::ReportTransfer& transfer) {
    if (!transfer.whole) line << R"(,"error":)" << transfer.error << R"(,"bytes":)" << transfer.bytes;
}

}  // namespace

Trace::Trace(std::function<void(std::string_view line)> write, platform::Clock& clock)
    : write_(std::move(write)), clock_(clock) {}

std::chrono::microseconds Trace::SinceFirst() {
    const auto now = clock_.Now();
    if (!first_) first_ = now;
    return std::chrono::floor<std::chrono::microseconds>(now - *first_);
}

template <typename AddRest>
void Trace::Line(std::uint64_t cycle, const AddRest& addRest) {
    constexpr std::int64_t kPerSecond = 1'000'000;
    const std::int64_t since = SinceFirst().count();
    LineText line;
    line << R"({"cycle":)" << cycle << R"(,"seconds":)" << since / kPerSecond << ".";
    for (std::int64_t least = kPerSecond / 10; least > std::max<std::int64_t>(since % kPerSecond, 1);
         least /= 10)
        line << "0";
    line << since % kPerSecond << R"(,"event":)";
    addRest(line);
    line << "}\n";
    write_(line.Text());
}

void Trace::Search(std::uint64_t cycle, const std::optional<platform::HidIdentity>& found) {
    Line(cycle, [&](LineText& line) {
        line << R"("search","found":)" << Word(found.has_value());
        if (found) {
            line << R"(,"vendorId":)" << found->vendorId << R"(,"productId":)" << found->productId;
        } else {
            line << R"(,"vendorId":null,"productId":null)";
        }
    });
}

void Trace::Write(std::uint64_t cycle, const platform::ReportTransfer& transfer,
                  const platform::Report& report) {
    Line(cycle, [&](LineText& line) {
        line << R"("write","ok":)" << Word(transfer.whole) << R"(,"report":)" << report;
        AddFailure(line, transfer);
    });
}

void Trace::Read(std::uint64_t cycle, const platform::ReportTransfer& transfer,
                 const platform::Report& report) {
    Line(cycle, [&](LineText& line) {
        line << R"("read","ok":)" << Word(transfer.whole) << R"(,"report":)";
        if (transfer.whole) {
            line << report;
        } else {
            line << "null";
        }
        AddFailure(line, transfer);
    });
}

void Trace::Close(std::uint64_t cycle) {
    Line(cycle, [](LineText& line) { line << R"("close")"; });
}

}  // namespace vento
