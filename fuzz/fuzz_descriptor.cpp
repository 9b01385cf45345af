#include <algorithm>
#include <span>

#include "fuzzing.h"
#include "platform/linux/report_descriptor.h"

/// Any bytes as the report descriptor of a device: what is behind a beginning of it makes no report shorter.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::span bytes(data, size - 1);
    const std::size_t cut = std::min<std::size_t>(data[size - 1], bytes.size());
    const auto whole = vento::platform::ParseReportDescriptor(bytes).lengths;
    const auto beginning = vento::platform::ParseReportDescriptor(bytes.first(cut)).lengths;
    vento::fuzzing::Require(beginning.input <= whole.input && beginning.output <= whole.output,
                            "lengths only grow");
    return 0;
}
