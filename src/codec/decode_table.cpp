#include "codec/decode_table.h"

#include <array>

namespace vento::codec {
namespace {

/// A walk on its way: what it has completed, and the node that it has come to, -1 once it is over.
struct Walk {
    DecodeTable::Entry entry = 0;
    std::int16_t node = 0;
};

Walk Step(const CodeTree& codeTree, Walk walk, bool bit, unsigned bitsWalked) {
    if (walk.node == -1) return walk;
    const CodeNode& here = codeTree[static_cast<std::size_t>(walk.node)];
    walk.node = bit ? here.OneChild : here.ZeroChild;
    if (walk.node == -1) return walk;
    const auto symbol = codeTree[static_cast<std::size_t>(walk.node)].Symbol;
    if (symbol == -1) return walk;
    const unsigned count = DecodeTable::CountOf(walk.entry);
    walk.entry = (walk.entry & 0xffffffffffff) | static_cast<DecodeTable::Entry>(symbol) << 8 * count |
                 DecodeTable::Entry{bitsWalked} << 48 | DecodeTable::Entry{count + 1} << 56;
    walk.node = count + 1 < DecodeTable::kMostSymbols ? 0 : -1;
    return walk;
}

}  // namespace

DecodeTable::DecodeTable(const CodeTree& codeTree, unsigned indexBits)
    : indexBits_(indexBits), entries_(std::size_t{1} << indexBits) {
    std::array<std::int16_t, std::size_t{1} << kMostIndexBits> nodes;
    nodes[0] = 0;
    // Each bit more makes two walks of every walk so far.
    for (unsigned bits = 0; bits < indexBits; ++bits) {
        const std::size_t half = std::size_t{1} << bits;
        for (std::size_t i = 0; i < half; ++i) {
            const Walk walk{entries_[i], nodes[i]};
            const Walk zero = Step(codeTree, walk, false, bits + 1);
            const Walk one = Step(codeTree, walk, true, bits + 1);
            entries_[i] = zero.entry;
            nodes[i] = zero.node;
            entries_[i + half] = one.entry;
            nodes[i + half] = one.node;
        }
    }
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        if (CountOf(entries_[i]) == 0) entries_[i] = static_cast<std::uint16_t>(nodes[i]);
    }
}

}  // namespace vento::codec
