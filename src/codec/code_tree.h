#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <span>

namespace vento::codec {

/// A node of the code tree. Nodes are named by their index; -1 stands for none.
struct CodeNode {
    std::int16_t Parent = -1;
    std::int16_t OneChild = -1;
    std::int16_t ZeroChild = -1;
    /// The byte value of a leaf, -1 at an inner node.
    std::int16_t Symbol = -1;
    /// How often the bytes below the node occur; only the encoder uses it.
    std::int32_t Weight = 0;
};

using CodeTree = std::array<CodeNode, 512>;

/// The code of one byte value. `Data` holds a bit for each branch from the root, the first at index 0.
struct CodeBits {
    std::uint8_t Count = 0;
    std::bitset<256> Data;
};

using SymbolCodes = std::array<CodeBits, 256>;
using SymbolCounts = std::array<std::int32_t, 256>;

/// Grows the tree whose root is node 0, and which has `nodeCount` nodes, by the path that `code` describes,
/// and puts `symbol` at its end. Throws RangeError if the tree has no node left.
void InsertCode(CodeTree& codeTree, std::int32_t& nodeCount, std::int32_t symbol, const CodeBits& code);

/// Gives every symbol at and below `nodeIndex` its code; `bits` is the path from the root to that node, and
/// is that again afterwards.
void AssignCodes(const CodeTree& codeTree, std::int16_t nodeIndex, CodeBits& bits, SymbolCodes& symbolCode);

/// Makes a leaf of each byte value that occurs, in ascending order, and joins two of the lightest nodes until
/// one is left, the root, which is the node made last. Returns the number of nodes. Which of several nodes of
/// equal weight are taken, and onto which branch, is part of the format: equal input gives equal containers.
[[nodiscard]] std::int32_t BuildTree(const SymbolCounts& symbolCount, CodeTree& codeTree);

}  // namespace vento::codec
