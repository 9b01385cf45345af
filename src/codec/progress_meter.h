#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <utility>

namespace vento::codec {

/// The percentages of one run. Each is told when it differs from the one before it.
class ProgressMeter {
  public:
    using Handler = std::function<void(std::int16_t&)>;

    explicit ProgressMeter(Handler handler) : handler_(std::move(handler)) {}

    /// Takes `percentage` to the nearest whole number, halves to the even one.
    void Report(double percentage) {
        const auto whole = static_cast<std::int16_t>(std::nearbyint(percentage));
        if (whole == reported_) return;
        reported_ = whole;
        if (handler_) handler_(reported_);
    }

    void Finish() { Report(100); }

  private:
    Handler handler_;
    std::int16_t reported_ = 0;
};

/// One pass over `total` things, of which those whose number is a multiple of `stride` make a percentage:
/// number / total x share + base. Work that is done in blocks reports a block at a time.
class ProgressPass {
  public:
    ProgressPass(ProgressMeter& meter, std::uint64_t stride, std::uint64_t total, double share, double base)
        : meter_(&meter), stride_(stride), total_(static_cast<double>(total)), share_(share), base_(base) {}

    /// Begins with the number `first`, a multiple of the stride.
    ProgressPass& From(std::uint64_t first) {
        next_ = first;
        return *this;
    }

    /// Reports for every number below `end` that has not been reported yet.
    void Until(std::uint64_t end) {
        for (; next_ < end; next_ += stride_)
            meter_->Report(static_cast<double>(next_) / total_ * share_ + base_);
    }

  private:
    ProgressMeter* meter_;
    std::uint64_t stride_;
    std::uint64_t next_ = 0;
    double total_;
    double share_;
    double base_;
};

}  // namespace vento::codec
