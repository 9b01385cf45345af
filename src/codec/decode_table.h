#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "codec/code_tree.h"

namespace vento::codec {

/// The walk through the code tree, done beforehand for every value that the next few bits can have.
class DecodeTable {
  public:
    /// Bytes 0 to 5: the symbols that a walk from the root completes, in order; byte 6: how many bits they
    /// take; byte 7: how many they are. If there is none, the node that the walk has come to stands in the
    /// lowest 16 bits, -1 for none.
    using Entry = std::uint64_t;
    static constexpr unsigned kMostSymbols = 6;
    static constexpr unsigned kMostIndexBits = 11;

    /// A table indexed by the next `indexBits` bits, the first of them lowest.
    DecodeTable(const CodeTree& codeTree, unsigned indexBits);

    [[nodiscard]] Entry At(std::uint64_t bits) const { return Look().At(bits); }
    [[nodiscard]] unsigned IndexBits() const { return indexBits_; }

    static unsigned CountOf(Entry entry) { return static_cast<unsigned>(entry >> 56); }
    static std::uint64_t CountAndBitsOf(Entry entry) { return entry >> 48; }
    static std::int16_t NodeOf(Entry entry) { return static_cast<std::int16_t>(entry & 0xffff); }

    /// What a look-up needs, to be kept at hand.
    struct View {
        const Entry* entries;
        std::uint64_t mask;

        [[nodiscard]] Entry At(std::uint64_t bits) const { return entries[bits & mask]; }
    };
    [[nodiscard]] View Look() const { return {entries_.data(), entries_.size() - 1}; }

  private:
    unsigned indexBits_;
    std::vector<Entry> entries_;
};

}  // namespace vento::codec
