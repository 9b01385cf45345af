#include "codec/data_reader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <string>

#include "codec/lanes.h"
#include "codec/little_endian.h"

namespace vento::codec {
namespace {

std::uint8_t ExclusiveOr(std::span<const std::uint8_t> bytes) {
    std::array<std::uint64_t, 4> words{};
    std::size_t i = 0;
    for (; i + 32 <= bytes.size(); i += 32) {
        for (std::size_t k = 0; k < 4; ++k)
            words[k] ^= Load64(bytes.data() + i + 8 * k);
    }
    std::uint64_t all = words[0] ^ words[1] ^ words[2] ^ words[3];
    for (; i < bytes.size(); ++i)
        all ^= bytes[i];
    all ^= all >> 32;
    all ^= all >> 16;
    return static_cast<std::uint8_t>(all ^ all >> 8);
}

/// Code lengths that have a common divisor put every code at a multiple of it.
std::uint64_t CommonDivisor(const CodedHeader& header) {
    unsigned divisor = 0;
    for (const unsigned length : header.codeLengths)
        divisor = std::gcd(divisor, length);
    return std::max(divisor, 1U);
}

/// One run through a data area, in blocks as long as there is enough of it, and bit by bit at its end.
///
/// A block is cut into as many segments as there are lanes, and they are decoded at the same time. Nobody
/// knows where the first code of a segment begins; but Huffman codes synchronise themselves: a lane that sets
/// out some way before its segment, in the middle of a code as may be, soon falls into step. A segment counts
/// only if its first code is exactly where the last one of the segment before it ended. If not, it is decoded
/// again from there.
class DataReader {
  public:
    DataReader(std::span<const std::uint8_t> container, const CodedHeader& header, ProgressMeter& progress,
               std::vector<std::uint8_t>& decoded)
        : header_(header),
          data_(container.subspan(header.dataOffset)),
          decoded_(decoded),
          pass_(progress, 10000, container.size(), 89, 0) {
        pass_.From((header.dataOffset / 10000 + 1) * 10000);
    }

    void Run() {
        if (data_.size() > kLeastBytesForBlocks && header_.shortestCode != 0) RunBlocks();
        Walk();
    }

    [[nodiscard]] std::uint8_t Checksum() const { return checksum_; }

  private:
    static constexpr std::size_t kLeastBytesForBlocks = 512;
    /// How many bits before its segment a lane sets out. It doubles with each block in which one was not in
    /// step.
    static constexpr std::uint64_t kFirstLead = 512;
    static constexpr std::uint64_t kLongestLead = 16384;

    enum class Outcome {
        accepted,
        /// The symbols are more than are wanted; they were left alone.
        tooMany,
        /// There is something that is no code, or the data end; where exactly, the walk finds out.
        stuck
    };

    void RunBlocks();
    Outcome RunBlock(const LaneDecoder& decoder, std::uint64_t segment);
    Outcome RunSegment(const LaneDecoder& decoder, std::uint64_t stop);
    Outcome Accept(const LaneDecoder& decoder, const Lane& lane, std::size_t begin);
    void Walk();

    [[nodiscard]] std::size_t Wanted() const { return header_.sourceLength - decoded_.size(); }

    /// Reports for the bytes that have been gone through. The one with the last code is not, whatever bits it
    /// has left.
    void Report() {
        const std::uint64_t bits = decoded_.size() == header_.sourceLength ? position_ - 1 : position_;
        pass_.Until(header_.dataOffset + bits / 8 + 1);
    }

    const CodedHeader& header_;
    std::span<const std::uint8_t> data_;
    std::vector<std::uint8_t>& decoded_;
    ProgressPass pass_;
    /// In bits from the start of the data area. Between two codes, but for the walk.
    std::uint64_t position_ = 0;
    std::uint8_t checksum_ = 0;
    std::uint64_t lead_ = kFirstLead;
};

void DataReader::RunBlocks() {
    const LaneDecoder decoder(header_, data_);
    const std::uint64_t limit = 8 * std::uint64_t{data_.size()} - LaneDecoder::kMargin;
    const std::uint64_t longest = LaneDecoder::kRoom * std::uint64_t{header_.shortestCode};
    std::uint64_t end = limit;
    bool careful = false;
    while (position_ < end) {
        // The first segment is longer by the lead, in which the others are not yet in step.
        const std::uint64_t left = end - position_;
        const std::uint64_t segment =
            std::min((left - std::min(left, lead_)) / LaneDecoder::kLanes, longest - lead_);
        const auto outcome = segment >= 4 * lead_ ? RunBlock(decoder, segment)
                                                  : RunSegment(decoder, position_ + std::min(left, longest));
        if (outcome == Outcome::stuck) return;
        careful = careful || outcome == Outcome::tooMany;
        // So many bits hold no more symbols than are wanted.
        if (careful) end = std::min(limit, position_ + Wanted() * std::uint64_t{header_.shortestCode});
        if (careful && end < position_ + kFirstLead) return;
    }
}

DataReader::Outcome DataReader::RunSegment(const LaneDecoder& decoder, std::uint64_t stop) {
    Lane lane{position_, stop, LaneDecoder::Begin(0)};
    decoder.Run(lane);
    return Accept(decoder, lane, LaneDecoder::Begin(0));
}

DataReader::Outcome DataReader::RunBlock(const LaneDecoder& decoder, std::uint64_t segment) {
    const std::uint64_t first = position_;
    const std::uint64_t grain = CommonDivisor(header_);
    std::array<Lane, LaneDecoder::kLanes> lanes;
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        const std::uint64_t start = first + i * segment;
        lanes[i] = {start / grain * grain, start + lead_, LaneDecoder::Begin(i)};
    }
    decoder.Run(lanes);
    std::array<std::uint64_t, LaneDecoder::kLanes> starts = {first};
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        lanes[i].stop += segment;
        if (i == 0) continue;
        starts[i] = lanes[i].position;
        lanes[i].out = LaneDecoder::Begin(i);
    }
    decoder.Run(lanes);
    bool inStep = true;
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        const bool fits = starts[i] == position_;
        inStep = inStep && fits;
        const auto outcome =
            fits ? Accept(decoder, lanes[i], LaneDecoder::Begin(i)) : RunSegment(decoder, lanes[i].stop);
        if (outcome != Outcome::accepted) return outcome;
    }
    if (!inStep) lead_ = std::min(2 * lead_, kLongestLead);
    return Outcome::accepted;
}

DataReader::Outcome DataReader::Accept(const LaneDecoder& decoder, const Lane& lane, std::size_t begin) {
    if (lane.position == Lane::kLost) return Outcome::stuck;
    const auto symbols = decoder.Symbols(begin, lane.out);
    if (symbols.size() > Wanted()) return Outcome::tooMany;
    decoded_.insert(decoded_.end(), symbols.begin(), symbols.end());
    checksum_ ^= ExclusiveOr(symbols);
    position_ = lane.position;
    Report();
    return Outcome::accepted;
}

void DataReader::Walk() {
    const std::uint64_t end = 8 * std::uint64_t{data_.size()};
    std::size_t node = 0;
    while (position_ < end && decoded_.size() < header_.sourceLength) {
        const bool bit = (data_[position_ / 8] >> position_ % 8 & 1) != 0;
        const std::int16_t next = bit ? header_.codeTree[node].OneChild : header_.codeTree[node].ZeroChild;
        if (next == -1) {
            Report();
            throw RangeError("The data do not fit their code, at bit " + std::to_string(position_ % 8) +
                             " of offset " + std::to_string(header_.dataOffset + position_ / 8));
        }
        ++position_;
        node = static_cast<std::size_t>(next);
        const auto symbol = header_.codeTree[node].Symbol;
        if (symbol == -1) continue;
        node = 0;
        decoded_.push_back(static_cast<std::uint8_t>(symbol));
        checksum_ ^= static_cast<std::uint8_t>(symbol);
    }
    Report();
}

}  // namespace

std::uint8_t ReadData(std::span<const std::uint8_t> container, const CodedHeader& header,
                      ProgressMeter& progress, std::vector<std::uint8_t>& decoded) {
    const std::uint64_t dataBits = 8 * std::uint64_t{container.size() - header.dataOffset};
    const std::uint64_t most = header.shortestCode == 0 ? 0 : dataBits / header.shortestCode;
    decoded.clear();
    decoded.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(header.sourceLength, most)));
    DataReader reader(container, header, progress, decoded);
    reader.Run();
    return reader.Checksum();
}

}  // namespace vento::codec
