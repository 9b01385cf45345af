#include "codec/code_tree.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>

#include "codec/cls_huffman.h"

namespace vento::codec {
namespace {

/// The nodes without a parent, in ascending order of index.
class OpenNodes {
  public:
    void Append(std::int16_t node, std::int32_t weight) {
        weight_[end_] = weight;
        node_[end_] = node;
        ++end_;
        std::fill_n(&weight_[end_], kStride, kTaken);
    }

    struct Pair {
        std::int16_t a;
        std::int16_t b;
    };

    /// Takes out two of the lightest nodes, of which there are two at least. The first two nodes are put into
    /// the slots A and B, and each one after that is lighter than the heavier of the two displaces it: A, if
    /// both are equal. A node of equal weight never displaces one.
    Pair TakeLightestPair() {
        if (taken_ > kMostTaken) CloseUp();
        std::size_t a = NextOpen(0);
        std::size_t b = NextOpen(a + 1);
        for (std::size_t i = b + 1; i < end_; i += kStride) {
            if (!AnyBelow(i, std::max(weight_[a], weight_[b]))) continue;
            for (std::size_t k = i; k < i + kStride; ++k) {
                auto& heavier = weight_[a] < weight_[b] ? b : a;
                if (weight_[k] < weight_[heavier]) heavier = k;
            }
        }
        const Pair pair{node_[a], node_[b]};
        weight_[a] = weight_[b] = kTaken;
        taken_ += 2;
        return pair;
    }

  private:
    /// Nodes are looked at so many at a time.
    static constexpr std::size_t kStride = 8;
    /// So many places may be empty before the list is closed up.
    static constexpr std::size_t kMostTaken = 32;
    /// The weight of an empty place. No node that is compared with another weighs as much: only the root
    /// could.
    static constexpr std::int32_t kTaken = std::numeric_limits<std::int32_t>::max();

    [[nodiscard]] std::size_t NextOpen(std::size_t i) const {
        while (weight_[i] == kTaken)
            ++i;
        return i;
    }

    [[nodiscard]] bool AnyBelow(std::size_t first, std::int32_t limit) const {
        std::int32_t differences = 0;
        for (std::size_t k = 0; k < kStride; ++k)
            differences |= weight_[first + k] - limit;
        return differences < 0;
    }

    void CloseUp() {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < end_; ++i) {
            weight_[kept] = weight_[i];
            node_[kept] = node_[i];
            kept += weight_[i] != kTaken ? 1U : 0U;
        }
        end_ = kept;
        taken_ = 0;
        std::fill_n(&weight_[end_], kStride, kTaken);
    }

    std::array<std::int32_t, 512 + 2 * kStride> weight_;
    std::array<std::int16_t, 512> node_;
    std::size_t end_ = 0;
    std::size_t taken_ = 0;
};

}  // namespace

void InsertCode(CodeTree& codeTree, std::int32_t& nodeCount, std::int32_t symbol, const CodeBits& code) {
    std::int16_t current = 0;
    for (std::size_t i = 0; i < code.Count; ++i) {
        CodeNode& node = codeTree[static_cast<std::size_t>(current)];
        std::int16_t& child = code.Data[i] ? node.OneChild : node.ZeroChild;
        if (child == -1) {
            if (nodeCount == static_cast<std::int32_t>(codeTree.size())) {
                throw RangeError("The codes need a tree of more than 512 nodes (at symbol " +
                                 std::to_string(symbol) + ")");
            }
            child = static_cast<std::int16_t>(nodeCount++);
            codeTree[static_cast<std::size_t>(child)] = CodeNode{.Parent = current};
        }
        current = child;
    }
    codeTree[static_cast<std::size_t>(current)].Symbol = static_cast<std::int16_t>(symbol);
}

void AssignCodes(const CodeTree& codeTree, std::int16_t nodeIndex, CodeBits& bits, SymbolCodes& symbolCode) {
    const CodeNode& node = codeTree[static_cast<std::size_t>(nodeIndex)];
    if (node.Symbol > -1) {
        symbolCode[static_cast<std::size_t>(node.Symbol)] = bits;
        return;
    }
    const auto descend = [&](std::int16_t child, bool bit) {
        if (child == -1) return;
        bits.Data[bits.Count++] = bit;
        AssignCodes(codeTree, child, bits, symbolCode);
        bits.Data[--bits.Count] = false;
    };
    descend(node.ZeroChild, false);
    descend(node.OneChild, true);
}

std::int32_t BuildTree(const SymbolCounts& symbolCount, CodeTree& codeTree) {
    OpenNodes open;
    std::int16_t nodeCount = 0;
    const auto append = [&](const CodeNode& node) {
        codeTree[static_cast<std::size_t>(nodeCount)] = node;
        open.Append(nodeCount, node.Weight);
        return nodeCount++;
    };
    for (std::size_t value = 0; value < symbolCount.size(); ++value) {
        if (symbolCount[value] > 0)
            append({.Symbol = static_cast<std::int16_t>(value), .Weight = symbolCount[value]});
    }
    for (auto leaves = nodeCount; leaves >= 2; --leaves) {
        const auto [a, b] = open.TakeLightestPair();
        CodeNode& zero = codeTree[static_cast<std::size_t>(a)];
        CodeNode& one = codeTree[static_cast<std::size_t>(b)];
        zero.Parent = one.Parent =
            append({.OneChild = b, .ZeroChild = a, .Weight = zero.Weight + one.Weight});
    }
    return nodeCount;
}

}  // namespace vento::codec
