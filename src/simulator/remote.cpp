#include "simulator/remote.h"

#include <utility>

namespace vento::simulator {

namespace {

constexpr std::uint8_t kRelease = 0;
constexpr std::uint8_t kWriteBlock = 1;
constexpr std::uint8_t kVerify = 2;
constexpr std::uint8_t kCountSections = 4;
constexpr std::uint8_t kTellSections = 5;
constexpr std::uint8_t kTellVersion = 6;
constexpr std::uint8_t kWriteFlags = 7;
constexpr std::uint8_t kPrefix = 8;
constexpr std::uint8_t kPoll = 165;

// These mean what they say behind kPrefix only.
constexpr std::uint8_t kPrefixedRead = 1;
constexpr std::uint8_t kPrefixedActivate = 2;
constexpr std::uint8_t kPrefixedTellFree = 5;

constexpr std::uint8_t kSectionBits = 16 + 32 + 64;
constexpr std::uint8_t kSectionsWritten = 128;

std::uint16_t HighByteFirst(std::span<const std::uint8_t> bytes) {
    return static_cast<std::uint16_t>((bytes[0] << 8) + bytes[1]);
}

std::uint16_t WordBehind(std::uint16_t offset, std::size_t count) {
    return static_cast<std::uint16_t>(offset + count);
}

/// Adds a byte to a check sum, which is the sum of the inverted bytes.
void AddToCheck(std::uint8_t& check, std::uint8_t byte) {
    check = static_cast<std::uint8_t>(check + (255 - byte));
}

}  // namespace

/// The bytes that the remote sends back; those that nobody asked for are lost.
class Remote::Answer {
  public:
    explicit Answer(std::span<std::uint8_t> room) : room_(room) {}

    void Put(std::uint8_t byte) {
        if (room_.empty()) return;
        room_.front() = byte;
        room_ = room_.subspan(1);
    }

  private:
    std::span<std::uint8_t> room_;
};

Remote::Remote(const RemoteSetup& setup)
    : version_(setup.version),
      sections_(setup.sections),
      first_(setup.contents),
      leavesAfterPolls_(setup.leavesAfterPolls),
      awayForPolls_(setup.awayForPolls),
      pollsToArrival_(setup.arrivesAtPoll) {
    SetContents(setup.contents);
}

bool Remote::Receive(std::span<const std::uint8_t> sendBytes, unsigned pace, std::span<std::uint8_t> reply) {
    if (!IsInReach(sendBytes)) return false;

    const Awaiting awaiting = std::exchange(awaiting_, Awaiting::command);
    if (pace != (awaiting == Awaiting::blockData ? kBlockDataPace : kCommandPace)) return false;
    if (sendBytes.size() != ExpectedSize(awaiting)) return false;

    Answer answer(reply);
    switch (awaiting) {
        case Awaiting::command:
            return TakeCommand(sendBytes[0], answer);
        case Awaiting::prefixedCommand:
            return TakePrefixedCommand(sendBytes[0], answer);
        case Awaiting::blockHeader:
            TakeBlockHeader(sendBytes);
            break;
        case Awaiting::blockData:
            TakeBlockData(sendBytes, answer);
            break;
        case Awaiting::verifyRange:
            Verify(sendBytes, answer);
            break;
        case Awaiting::flagValue:
            TakeFlagValue(sendBytes[0], answer);
            break;
        case Awaiting::activation:
            answer.Put(sendBytes[0]);
            break;
        case Awaiting::readRange:
            Read(sendBytes, answer);
            break;
    }
    return true;
}

bool Remote::IsInReach(std::span<const std::uint8_t> sendBytes) {
    const bool isPoll = sendBytes.size() == 1 && sendBytes[0] == kPoll && awaiting_ == Awaiting::command;
    if (pollsToArrival_ > 0 && isPoll) --pollsToArrival_;
    if (pollsToArrival_ == 0) ComeAndGo(isPoll);
    return pollsToArrival_ == 0;
}

void Remote::ComeAndGo(bool isPoll) {
    workedWith_ = workedWith_ || !isPoll;
    pollsInARow_ = isPoll ? pollsInARow_ + 1 : 0;
    if (leavesAfterPolls_ == 0 || !workedWith_ || pollsInARow_ <= leavesAfterPolls_) return;
    workedWith_ = false;
    pollsInARow_ = 0;
    pollsToArrival_ = awayForPolls_;
    SetContents(first_);
}

std::size_t Remote::ExpectedSize(Awaiting awaiting) const {
    switch (awaiting) {
        case Awaiting::blockHeader:
        case Awaiting::readRange:
            return 3;
        case Awaiting::verifyRange:
            return 4;
        case Awaiting::blockData:
            return blockSize_;
        default:
            return 1;
    }
}

bool Remote::TakeCommand(std::uint8_t command, Answer& answer) {
    switch (command) {
        case kRelease:
        case kCountSections:
        case kTellSections:
        case kTellVersion:
        case kPoll:
            break;
        case kWriteBlock:
            awaiting_ = Awaiting::blockHeader;
            break;
        case kVerify:
            awaiting_ = Awaiting::verifyRange;
            break;
        case kWriteFlags:
            awaiting_ = Awaiting::flagValue;
            break;
        case kPrefix:
            awaiting_ = Awaiting::prefixedCommand;
            break;
        default:
            return false;
    }
    answer.Put(command);
    if (command == kCountSections) answer.Put(static_cast<std::uint8_t>(sections_.size()));
    if (command == kTellSections) PutSections(answer);
    if (command == kTellVersion) answer.Put(version_);
    return true;
}

void Remote::PutSections(Answer& answer) const {
    for (const std::uint16_t offset : sections_) {
        answer.Put(static_cast<std::uint8_t>(offset & 255));
        answer.Put(static_cast<std::uint8_t>(offset >> 8));
    }
}

bool Remote::TakePrefixedCommand(std::uint8_t command, Answer& answer) {
    switch (command) {
        case kPrefixedRead:
            awaiting_ = Awaiting::readRange;
            break;
        case kPrefixedActivate:
            awaiting_ = Awaiting::activation;
            break;
        case kPrefixedTellFree:
            break;
        default:
            return false;
    }
    answer.Put(command);
    if (command != kPrefixedRead) answer.Put(free_);
    return true;
}

void Remote::TakeBlockHeader(std::span<const std::uint8_t> header) {
    blockOffset_ = HighByteFirst(header);
    blockSize_ = header[2];
    blockCheck_ = 0;
    for (const std::uint8_t byte : header)
        AddToCheck(blockCheck_, byte);
    awaiting_ = Awaiting::blockData;
}

void Remote::TakeBlockData(std::span<const std::uint8_t> data, Answer& answer) {
    std::uint8_t check = blockCheck_;
    for (std::size_t i = 0; i < data.size(); ++i) {
        // An odd last byte is the first of its word, whose second stays what it was.
        Word& word = memory_[WordBehind(blockOffset_, i / 2)];
        (i % 2 == 0 ? word.first : word.second) = data[i];
        AddToCheck(check, data[i]);
    }
    answer.Put(check);
}

void Remote::TakeFlagValue(std::uint8_t value, Answer& answer) {
    if ((value & kSectionsWritten) != 0) {
        free_ = static_cast<std::uint8_t>(free_ & ~(value & kSectionBits));
    }
    answer.Put(value);
    answer.Put(0);
}

void Remote::Verify(std::span<const std::uint8_t> range, Answer& answer) const {
    const std::uint16_t offset = HighByteFirst(range);
    const std::size_t lastIndex = HighByteFirst(range.subspan(2));
    std::uint8_t check = 0;
    for (std::size_t i = 0; i <= lastIndex; ++i) {
        const Word& word = memory_[WordBehind(offset, i)];
        AddToCheck(check, word.first);
        AddToCheck(check, word.second);
    }
    answer.Put(check);
}

void Remote::Read(std::span<const std::uint8_t> range, Answer& answer) const {
    const std::uint16_t offset = HighByteFirst(range);
    for (std::size_t i = 0; i < range[2]; ++i)
        answer.Put(memory_[WordBehind(offset, i)].first);
}

RemoteContents Remote::Contents() const {
    RemoteContents contents{.free = free_, .memory = {}};
    std::vector<Word>* run = nullptr;
    for (std::size_t i = 0; i < memory_.size(); ++i) {
        if (memory_[i] == Word{}) {
            run = nullptr;
            continue;
        }
        if (run == nullptr) run = &contents.memory[static_cast<std::uint16_t>(i)];
        run->push_back(memory_[i]);
    }
    return contents;
}

void Remote::SetContents(const RemoteContents& contents) {
    free_ = contents.free;
    memory_.assign(kMemoryWords, Word{});
    for (const auto& [offset, words] : contents.memory) {
        for (std::size_t i = 0; i < words.size(); ++i)
            memory_[WordBehind(offset, i)] = words[i];
    }
}

}  // namespace vento::simulator
