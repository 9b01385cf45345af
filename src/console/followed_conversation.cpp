#include "console/followed_conversation.h"

#include <algorithm>
#include <array>

#include "protocol/code_transfer.h"

namespace vento::console {
namespace {

using Kind = FrameKind;

constexpr std::size_t kLooks = 2;  // of an operation for a transmitter, before its first frame
constexpr std::size_t kGoodPolls = 10;
constexpr std::size_t kMostBadPolls = 20000;  // divided by the LinkFactor

// What stands for a frame whose search found nothing, where several are due: the one that comes first.
constexpr std::array kLikeliestFirst{
    Kind::timing,    Kind::presence,    Kind::openFlags,   Kind::openWrite,    Kind::openVerify,
    Kind::prefix,    Kind::release,     Kind::version,     Kind::sectionCount, Kind::sectionTable,
    Kind::flags,     Kind::openRead,    Kind::memoryRange, Kind::state,        Kind::activation,
    Kind::flagValue, Kind::blockHeader, Kind::blockData,   Kind::verifyRange};

}  // namespace

// The operator may cancel a wait, and a programme that can't be sent ends a run behind the version.
bool FollowedConversation::MayEnd() const {
    return due.Empty() || mayEnd || due.Has(Kind::presence) || due.Has(Kind::none);
}

FrameKind FollowedConversation::Likeliest() const {
    const auto* const found =
        std::ranges::find_if(kLikeliestFirst, [this](Kind kind) { return due.Has(kind); });
    return found != kLikeliestFirst.end() ? *found : Kind::none;
}

void FollowedConversation::TakeLook(bool found) {
    const std::size_t count = due.Has(Kind::none) ? looks + 1 : 1;
    *this = {};
    looks = count;
    followed = true;
    due = looks < kLooks ? FrameKinds{Kind::none, Kind::timing} : FrameKinds{Kind::timing};
    if (!found) due = {Kind::none};
}

void FollowedConversation::BeginWait() {
    joined = !followed;
    followed = true;
    goodPolls = badPolls = 0;
    ++waits;
}

bool FollowedConversation::TakePoll(bool good, std::uint16_t factor) {
    goodPolls = good ? goodPolls + 1 : 0;
    badPolls += good ? 0 : 1;
    if (factor > 0) linkFactor = factor;
    if (purpose == Purpose::verify) {  // polls once behind a column that was not proved
        Next({Kind::openVerify, Kind::release});
        return true;
    }
    if (goodPolls == kGoodPolls) {
        due = DueAfterWait();
        return true;
    }
    due = {Kind::presence};
    // Polls in front of the trace may have been good.
    if (joined) due = {Kind::presence, Kind::version, Kind::sectionCount, Kind::prefix};
    if (badPolls >= kMostBadPolls / linkFactor) due = {};
    return false;
}

FrameKinds FollowedConversation::DueAfterWait() const {
    if (purpose == Purpose::read) return {Kind::sectionCount};
    if (purpose == Purpose::program) return {Kind::prefix};
    if (waits == 1) return {Kind::version};
    return {Kind::version, Kind::sectionCount, Kind::prefix};
}

std::optional<std::uint8_t> FollowedConversation::ExpectedByte(const RecordedExchange& exchange) const {
    switch (exchange.kind) {
        case Kind::memoryRange:
            return std::nullopt;
        case Kind::blockData: {
            if (header.empty()) return std::nullopt;
            return SumOfInverted(exchange.sendBytes, SumOfInverted(header, 0));
        }
        case Kind::verifyRange:
            return fromBegin ? std::optional(check) : std::nullopt;
        default:
            return exchange.SendByte();
    }
}

void FollowedConversation::Next(FrameKinds kinds, bool operationMayEnd) {
    due = kinds;
    mayEnd = operationMayEnd;
}

void FollowedConversation::Advance(const RecordedExchange& exchange, bool good) {
    const Kind kind = exchange.kind;
    switch (kind) {
        case Kind::timing:
            return Next(good ? FrameKinds{Kind::presence} : FrameKinds{}, true);
        case Kind::version:
            return Next(good ? FrameKinds{Kind::sectionCount, Kind::prefix} : FrameKinds{}, true);
        case Kind::sectionCount:
            if (purpose == Purpose::unknown && waits < 2) purpose = Purpose::program;
            if (purpose == Purpose::read) readingCodes = true;
            return Next(good ? FrameKinds{Kind::sectionTable} : FrameKinds{});
        case Kind::sectionTable:
            if (!good) return Next({});
            if (purpose == Purpose::read) return Next({Kind::prefix});
            return Next({Kind::openFlags, Kind::openVerify, Kind::prefix, Kind::release}, true);
        case Kind::release:
            return Next(ComesBack() ? FrameKinds{Kind::presence} : FrameKinds{}, true);
        case Kind::openFlags:
            section.reset();
            fromBegin = true;
            words = 0;
            check = 0;
            return Next(good ? FrameKinds{Kind::flagValue} : FrameKinds{Kind::openWrite, Kind::prefix});
        case Kind::flagValue:
            return AdvanceFlagValue(exchange);
        default:
            break;
    }
    if (purpose == Purpose::verify) return AdvanceVerify(kind, good);
    if (purpose == Purpose::unknown && kind == Kind::prefix && waits == 1) purpose = Purpose::read;
    AdvanceBlocks(exchange, good);
    AdvancePrefixed(kind, good);
}

// Each column is proved by its checksum and by the head of its section.
void FollowedConversation::AdvanceVerify(FrameKind kind, bool good) {
    if (!good) return Next({Kind::presence});
    switch (kind) {
        case Kind::openVerify:
            return Next({Kind::verifyRange});
        case Kind::verifyRange:
            return Next({Kind::prefix, Kind::openVerify, Kind::release, Kind::presence});
        case Kind::prefix:
            return Next({Kind::openRead});
        case Kind::openRead:
            return Next({Kind::memoryRange});
        default:
            return Next({Kind::openVerify, Kind::release, Kind::presence});
    }
}

// Behind its first release a read goes on, if the remote can be read.
bool FollowedConversation::ComesBack() const {
    return purpose == Purpose::read && !readingCodes && version.CanBeReadBack();
}

void FollowedConversation::AdvanceFlagValue(const RecordedExchange& exchange) {
    if (const auto announced = AnnouncedSection(exchange.SendByte())) {
        section = latest = announced;
        begin = offsets.words.at(*announced);
        return Next({Kind::openWrite});
    }
    const bool sent = !exchange.sendBytes.empty();
    Next(sent ? FrameKinds{Kind::prefix} : FrameKinds{Kind::openWrite, Kind::prefix});
}

void FollowedConversation::AdvanceBlocks(const RecordedExchange& exchange, bool good) {
    const auto& sent = exchange.sendBytes;
    switch (exchange.kind) {
        case Kind::openWrite:
            return Next(good ? FrameKinds{Kind::blockHeader} : FrameKinds{Kind::openFlags}, !good);
        case Kind::blockHeader:
            header = sent;
            if (!section && !sent.empty()) FindSection(WordOf(sent));
            return Next({Kind::blockData});
        case Kind::blockData:
            words += sent.size() / 2;
            check = SumOfInverted(sent, check);
            if (!good) return Next({Kind::openFlags}, true);
            return Next(sent.size() < 2 * kBlockSize ? FrameKinds{Kind::openVerify}
                                                     : FrameKinds{Kind::openWrite, Kind::openVerify});
        case Kind::openVerify:
            return Next(good ? FrameKinds{Kind::verifyRange} : FrameKinds{});
        case Kind::verifyRange:
            if (!good) return Next({});
            if (!section) return Next({Kind::openVerify, Kind::prefix, Kind::release}, true);
            verified = static_cast<std::uint8_t>(verified | kSections.at(*section).SectionMask);
            return Next({Kind::openFlags});
        default:
            return;
    }
}

// The announcement may have failed, or stand before the beginning of the trace.
void FollowedConversation::FindSection(std::uint16_t offset) {
    begin = offset;
    const auto all = offsets.All();
    const auto found = std::ranges::find(all, offset);
    if (found != all.end()) section = latest = static_cast<std::size_t>(found - all.begin());
}

void FollowedConversation::AdvancePrefixed(FrameKind kind, bool good) {
    const bool reading = purpose == Purpose::read;
    switch (kind) {
        case Kind::prefix:
            if (good) {
                return Next(reading ? FrameKinds{Kind::flags, Kind::openRead}
                                    : FrameKinds{Kind::state, Kind::flags});
            }
            return Next(AfterFailedPrefix());
        case Kind::flags:
            if (!good) return Next({});
            if (purpose == Purpose::program) {  // that would have announced a section
                purpose = Purpose::verify;
                return Next({Kind::openVerify, Kind::release});
            }
            return Next(readingCodes ? FrameKinds{Kind::prefix}
                                     : FrameKinds{Kind::release, Kind::openVerify});
        case Kind::openRead:
            return good ? Next({Kind::memoryRange}) : NextSectionToRead();
        case Kind::memoryRange:
            return NextSectionToRead();
        case Kind::state:
            if (good) return Next({Kind::activation});
            return Next(AfterFailedPrefix());
        case Kind::activation:
            if (!good) return Next(AfterFailedPrefix());
            return Next(waits > 1 ? FrameKinds{Kind::release} : FrameKinds{});
        default:
            return;
    }
}

// The first activation that fails is followed by one more, behind another wait.
FrameKinds FollowedConversation::AfterFailedPrefix() const {
    if (purpose == Purpose::program && waits == 1) return {Kind::presence};
    if (purpose == Purpose::read && sectionsRead > 0) return {Kind::prefix, Kind::release};
    return {};
}

void FollowedConversation::NextSectionToRead() {
    ++sectionsRead;
    Next(sectionsRead < offsets.count ? FrameKinds{Kind::prefix} : FrameKinds{Kind::release});
}

}  // namespace vento::console
