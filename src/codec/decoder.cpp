#include "codec/decoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <optional>
#include <span>
#include <string>

#include "codec/container.h"
#include "codec/lanes.h"

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
    for (const unsigned length : header.codeLengths) {
        divisor = std::gcd(divisor, length);
        if (divisor == 1) break;
    }
    return std::max(divisor, 1U);
}

/// One run through a data area, in blocks as long as there is enough of it, and bit by bit at its end.
class DataReader {
  public:
    DataReader(const ByteSource& source, const CodedHeader& header, ProgressMeter& progress,
               const ByteSink& decoded, HotLoop hotLoop)
        : header_(header),
          hotLoop_(hotLoop),
          source_(source),
          decoded_(decoded),
          base_(header.dataOffset),
          pass_(progress, 10000, source.size, 89, 0) {
        pass_.From((header.dataOffset / 10000 + 1) * 10000);
    }

    void Run();

    [[nodiscard]] std::size_t Produced() const { return produced_; }
    [[nodiscard]] std::uint8_t Checksum() const { return checksum_; }

  private:
    static constexpr std::size_t kLeastBytesForBlocks = 512;
    /// How many bits before its segment a lane sets out. It doubles with each block in which one was not in
    /// step.
    static constexpr std::uint64_t kFirstLead = 512;
    static constexpr std::uint64_t kLongestLead = 16384;
    /// No code is longer.
    static constexpr std::uint64_t kLongestCode = 255;

    enum class Outcome {
        accepted,
        /// The symbols are more than are wanted; they were left alone.
        tooMany,
        /// There is something that is no code, or the data end; where exactly, the walk finds out.
        stuck
    };

    void RunBlocks(const LaneDecoder& decoder);
    Outcome RunBlock(const LaneDecoder& decoder, std::uint64_t segment);
    Outcome RunSegment(const LaneDecoder& decoder, std::uint64_t stop);
    Outcome Accept(const LaneDecoder& decoder, const Lane& lane, std::size_t begin);
    void Walk(std::uint64_t end);
    std::int16_t WalkOne();
    void Append(std::span<const std::uint8_t> symbols);

    [[nodiscard]] std::size_t Wanted() const { return header_.sourceLength - produced_; }
    [[nodiscard]] std::uint64_t DataBits() const { return 8 * std::uint64_t{data_.size()}; }

    /// Reports for the bytes that have been gone through. The one with the last code is not, whatever bits it
    /// has left.
    void Report() {
        const std::uint64_t bits = Wanted() == 0 ? position_ - 1 : position_;
        pass_.Until(base_ + bits / 8 + 1);
    }

    const CodedHeader& header_;
    HotLoop hotLoop_;
    const ByteSource& source_;
    const ByteSink& decoded_;
    /// The bytes at hand, and the offset of the first of them in the container.
    std::span<const std::uint8_t> data_;
    std::uint64_t base_;
    ProgressPass pass_;
    /// In bits from the start of the bytes at hand. Between two codes, but for the walk.
    std::uint64_t position_ = 0;
    std::size_t produced_ = 0;
    std::uint8_t checksum_ = 0;
    std::uint64_t lead_ = kFirstLead;
};

void DataReader::Run() {
    std::optional<LaneDecoder> decoder;
    for (bool last = false; !last && Wanted() > 0;) {
        base_ += position_ / 8;
        position_ %= 8;
        data_ = source_.from(static_cast<std::size_t>(base_));
        last = base_ + data_.size() == source_.size;
        if (data_.size() > kLeastBytesForBlocks && header_.shortestCode != 0) {
            if (!decoder) decoder.emplace(header_, source_.size - header_.dataOffset, hotLoop_);
            RunBlocks(*decoder);
        }
        // Of a piece that is not the last one, codes that may reach beyond it are left for the next.
        Walk(last ? DataBits() : DataBits() - kLongestCode);
    }
    Report();
}

void DataReader::RunBlocks(const LaneDecoder& decoder) {
    const std::uint64_t limit = DataBits() - LaneDecoder::kMargin;
    const std::uint64_t longest = decoder.Room() * std::uint64_t{header_.shortestCode};
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
    Lane lane{position_, stop, decoder.Begin(0)};
    decoder.Run(data_, lane);
    return Accept(decoder, lane, decoder.Begin(0));
}

DataReader::Outcome DataReader::RunBlock(const LaneDecoder& decoder, std::uint64_t segment) {
    const std::uint64_t first = position_;
    const std::uint64_t grain = CommonDivisor(header_);
    std::array<Lane, LaneDecoder::kLanes> lanes;
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        const std::uint64_t start = first + i * segment;
        lanes[i] = {start / grain * grain, start + lead_, decoder.Begin(i)};
    }
    decoder.Run(data_, lanes);
    std::array<std::uint64_t, LaneDecoder::kLanes> starts = {first};
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        lanes[i].stop += segment;
        if (i == 0) continue;
        starts[i] = lanes[i].position;
        lanes[i].out = decoder.Begin(i);
    }
    decoder.Run(data_, lanes);
    bool inStep = true;
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        const bool fits = starts[i] == position_;
        inStep = inStep && fits;
        const auto outcome =
            fits ? Accept(decoder, lanes[i], decoder.Begin(i)) : RunSegment(decoder, lanes[i].stop);
        if (outcome != Outcome::accepted) return outcome;
    }
    if (!inStep) lead_ = std::min(2 * lead_, kLongestLead);
    return Outcome::accepted;
}

DataReader::Outcome DataReader::Accept(const LaneDecoder& decoder, const Lane& lane, std::size_t begin) {
    if (lane.position == Lane::kLost) return Outcome::stuck;
    const auto symbols = decoder.Symbols(begin, lane.out);
    if (symbols.size() > Wanted()) return Outcome::tooMany;
    Append(symbols);
    position_ = lane.position;
    Report();
    return Outcome::accepted;
}

void DataReader::Append(std::span<const std::uint8_t> symbols) {
    decoded_.append(symbols);
    checksum_ ^= ExclusiveOr(symbols);
    produced_ += symbols.size();
}

/// One code, bit by bit: its symbol, or -1 if the data end within it.
std::int16_t DataReader::WalkOne() {
    std::size_t node = 0;
    for (; position_ < DataBits(); ++position_) {
        const CodeNode& here = header_.codeTree[node];
        const std::int16_t next =
            (data_[position_ / 8] >> position_ % 8 & 1) != 0 ? here.OneChild : here.ZeroChild;
        if (next == -1) {
            Report();
            throw RangeError("The data do not fit their code, at bit " + std::to_string(position_ % 8) +
                             " of offset " + std::to_string(base_ + position_ / 8));
        }
        node = static_cast<std::size_t>(next);
        const auto symbol = header_.codeTree[node].Symbol;
        if (symbol == -1) continue;
        ++position_;
        return symbol;
    }
    return -1;
}

/// Decodes the codes that begin before `end`.
void DataReader::Walk(std::uint64_t end) {
    std::array<std::uint8_t, 256> symbols;
    std::size_t count = 0;
    while (position_ < end && Wanted() > 0) {
        const auto symbol = WalkOne();
        if (symbol == -1) break;
        symbols[count++] = static_cast<std::uint8_t>(symbol);
        if (count < symbols.size() && count < Wanted()) continue;
        Append({symbols.data(), count});
        count = 0;
    }
    Append({symbols.data(), count});
}

}  // namespace

bool DecodeCoded(const ByteSource& source, KeyArray* codeCript, ProgressMeter& progress,
                 const ByteSink& decoded, HotLoop hotLoop) {
    const CodedHeader header = ReadHeader(source.from(0), codeCript);
    if (header.sourceLength == 0) return false;
    const std::uint64_t dataBits = 8 * std::uint64_t{source.size - header.dataOffset};
    const std::uint64_t most = header.shortestCode == 0 ? 0 : dataBits / header.shortestCode;
    decoded.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(header.sourceLength, most)));
    DataReader reader(source, header, progress, decoded, hotLoop);
    reader.Run();
    ProgressPass(progress, 10000, reader.Produced(), 11, 89).Until(reader.Produced());
    if (reader.Checksum() != header.checksum) {
        throw RaisedError("clsHuffman.Decode()",
                          "The data might be corrupted (checksum did not match expected value)");
    }
    return true;
}

}  // namespace vento::codec
