#pragma once

#include <string>
#include <string_view>

#include "protocol/link.h"
#include "protocol/result_code.h"

namespace vento {

/// What a sequence comes to. The diagnostic is a plain English sentence for the developer and the console,
/// and is empty on success.
struct SequenceResult {
    ResultCode code = ResultCode::success;
    std::string diagnostic;
};

/// A failure whose diagnostic is `what` followed by how the latest exchange went.
[[nodiscard]] inline SequenceResult Failure(ResultCode code, std::string_view what, const Link& link,
                                            const Reply& reply) {
    return {code, std::string(what) + ": " + DescribeLatest(link, reply) + "."};
}

}  // namespace vento
