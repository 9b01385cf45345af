#include "protocol/section_table.h"

#include <span>

#include "protocol/commands.h"

namespace vento {

SequenceResult ReadSectionOffsets(SectionOffsets& offsets, Link& link) {
    Reply reply{};
    std::uint8_t count = 0;
    if (const auto code = ReadSectionCount(reply, count, link, ResultCode::sectionCountFailed);
        code != ResultCode::success) {
        return Failure(code, "The section count could not be read", link, reply);
    }
    if (count == 0 || count > kSections.size()) {
        return {ResultCode::unusableData,
                "The remote says that it has " + std::to_string(count) + " sections; 1 to 3 were expected."};
    }
    const auto words = std::span(offsets.words).first(count);
    if (const auto code = ReadSectionTable(reply, words, link, ResultCode::sectionTableFailed);
        code != ResultCode::success) {
        return Failure(code, "The section offsets could not be read", link, reply);
    }
    offsets.count = count;
    return {};
}

}  // namespace vento
