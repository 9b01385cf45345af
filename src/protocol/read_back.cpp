#include "protocol/read_back.h"

#include <algorithm>

#include "protocol/wait_for_remote.h"

namespace vento {

std::string DecodeName(std::span<const std::uint8_t> memory) {
    std::string name;
    for (const std::uint8_t stored : memory.first(std::min(memory.size(), kNameLength))) {
        const int code = stored - 128;
        name.push_back(code > 31 && code < 127 ? static_cast<char>(code) : ' ');
    }
    return name;
}

SequenceResult InspectRemote(const OperationContext& context, Link& link, RemoteReading& reading) {
    if (SequenceResult wait = WaitForRemote(context, link); wait.Failed()) return wait;
    RemoteVersion version;
    if (SequenceResult read = ReadRemoteVersion(link, version); read.Failed()) return read;
    if (SequenceResult read = ReadSectionOffsets(link, reading.offsets); read.Failed()) return read;
    std::uint8_t flags = 0;
    if (SequenceResult read = ReadSectionFlags(link, flags); read.Failed()) return read;
    reading.version = version;
    reading.flags = flags;
    return ReleaseRemote(link);
}

SequenceResult ReadRemoteInfo(const OperationContext& context, Link& link, RemoteReading& reading) {
    if (SequenceResult wait = WaitForRemote(context, link); wait.Failed()) return wait;
    RemoteVersion version;
    if (SequenceResult read = ReadRemoteVersion(link, version); read.Failed()) return read;
    std::uint8_t flags = 0;
    if (SequenceResult read = ReadSectionFlags(link, flags); read.Failed()) return read;
    reading.flags = flags;
    if (!ReleaseRemote(link).Failed()) reading.version = version;
    return {};
}

SequenceResult ReadRemoteCodes(const OperationContext& context, Link& link, RemoteReading& reading) {
    reading.readText.clear();
    if (SequenceResult wait = WaitForRemote(context, link); wait.Failed()) return wait;
    if (SequenceResult read = ReadSectionOffsets(link, reading.offsets); read.Failed()) return read;
    std::uint8_t flags = 0;
    if (SequenceResult read = ReadSectionFlags(link, flags); read.Failed()) return read;
    reading.flags = flags;
    for (std::size_t i = 0; i < reading.offsets.count; ++i) {
        std::array<std::uint8_t, kNameLength> memory{};
        if (ReadRemoteBlock(link, reading.offsets.words[i], memory).Failed()) continue;
        const bool holdsProgramme = (flags & kSections[i].SectionMask) == 0;
        reading.names[i] = holdsProgramme ? DecodeName(memory) : "";
        reading.readText.append(kSections[i].name).append(" ").append(*reading.names[i]).append("\r\n");
    }
    return ReleaseRemote(link);
}

}  // namespace vento
