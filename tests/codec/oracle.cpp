#include "codec/oracle.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <map>

#include "codec/containers.h"
#include "codec/windows_1252.h"

namespace oracle {
namespace {

using containers::FromBits;
using vento::codec::OverflowError;
using vento::codec::RaisedError;
using vento::codec::RangeError;

struct Node {
    std::array<int, 2> child = {-1, -1};
    int symbol = -1;
    std::int64_t weight = 0;
    bool joined = false;
};

void Tell(std::vector<int>& events, std::size_t part, std::size_t whole, int scale, int first) {
    const double percentage = static_cast<double>(part) / static_cast<double>(whole) * scale + first;
    const int rounded = static_cast<int>(std::nearbyint(percentage));
    if (rounded != (events.empty() ? 0 : events.back())) events.push_back(rounded);
}

std::uint8_t Checked(std::int64_t byte) {
    if (byte < 0 || byte > 255) throw OverflowError("not a byte");
    return static_cast<std::uint8_t>(byte);
}

void DecodeBytes(Bytes& bytes, KeyArray* key, std::vector<int>& events) {
    if (bytes.at(3) != 13 || bytes[0] != 77 || bytes[1] != 65) return;
    if (bytes[2] == 48) {
        bytes.erase(bytes.begin(), bytes.begin() + 4);
        return;
    }
    if (bytes[2] != 51) throw RaisedError("HuffmanDecode()", "");
    std::size_t offset = 4;
    const auto number = [&](int width) {
        std::uint32_t value = 0;
        for (int i = 0; i < width; ++i)
            value |= std::uint32_t{bytes.at(offset++)} << 8 * i;
        return value;
    };
    const auto expected = number(1);
    const auto length = static_cast<std::int32_t>(number(4));
    if (length == 0) return;
    if (length < 0) throw RangeError("length");
    std::int64_t pairs = static_cast<std::int16_t>(number(2));
    if (key != nullptr) {
        pairs -= 2 * std::ssize(*key);
        static_cast<void>(key->at(11));
        static_cast<void>(bytes.at(34));
        for (std::size_t i = 0; i < 24; ++i)
            key->at(i % 12).at(i / 12) = bytes.at(offset++);
    }
    std::map<int, int> lengths;
    for (std::size_t k = 0; static_cast<std::int64_t>(k) < pairs; ++k) {
        const auto without = [&](std::size_t column) {
            return bytes.at(offset++) - (key != nullptr ? key->at(k).at(column) : 0);
        };
        const std::int64_t symbol = without(0);
        if (symbol < 0 || symbol > 255) throw RangeError("symbol");
        lengths[static_cast<int>(symbol)] = Checked(without(1));
    }
    std::size_t at = 8 * offset;
    const auto nextBit = [&] {
        const bool bit = (bytes.at(at / 8) >> at % 8 & 1) == 1;
        ++at;
        return static_cast<std::size_t>(bit);
    };
    std::vector<Node> tree(1);
    for (const auto& [symbol, count] : lengths) {
        std::size_t node = 0;
        for (int i = 0; i < count; ++i) {
            const std::size_t bit = nextBit();
            if (tree.at(node).child.at(bit) == -1) {
                if (tree.size() == 512) throw RangeError("nodes");
                tree.at(node).child.at(bit) = static_cast<int>(tree.size());
                tree.emplace_back();
            }
            node = static_cast<std::size_t>(tree.at(node).child.at(bit));
        }
        if (count > 0) tree.at(node).symbol = symbol;
    }
    at = (at + 7) / 8 * 8;
    Bytes output;
    std::size_t node = 0;
    while (at < 8 * bytes.size() && output.size() < static_cast<std::size_t>(length)) {
        node = static_cast<std::size_t>(tree.at(node).child.at(nextBit()));
        if (tree.at(node).symbol != -1) {
            output.push_back(static_cast<std::uint8_t>(tree.at(node).symbol));
            node = 0;
        }
        if (at % 80000 == 0 && output.size() < static_cast<std::size_t>(length))
            Tell(events, at / 8, bytes.size(), 89, 0);
    }
    unsigned checksum = 0;
    for (std::size_t i = 0; i < output.size(); ++i) {
        checksum ^= output[i];
        if (i % 10000 == 0) Tell(events, i, output.size(), 11, 89);
    }
    if (checksum != expected) throw RaisedError("clsHuffman.Decode()", "");
    bytes = output;
    Tell(events, 1, 1, 100, 0);
}

std::vector<Node> Tree(const std::map<int, std::int64_t>& counts) {
    std::vector<Node> tree;
    tree.reserve(2 * counts.size());
    for (const auto& [symbol, count] : counts)
        tree.push_back({.symbol = symbol, .weight = count});
    for (std::size_t left = tree.size(); left >= 2; --left) {
        std::vector<std::size_t> lightest;
        for (std::size_t i = 0; i < tree.size(); ++i) {
            if (tree[i].joined) continue;
            if (lightest.size() < 2) {
                lightest.push_back(i);
                continue;
            }
            const bool second = tree[lightest[1]].weight > tree[lightest[0]].weight;
            std::size_t& heavier = lightest[second ? 1 : 0];
            if (tree[i].weight < tree[heavier].weight) heavier = i;
        }
        Node parent;
        for (std::size_t i = 0; i < 2; ++i) {
            Node& child = tree.at(lightest.at(i));
            child.joined = true;
            parent.weight += child.weight;
            parent.child.at(i) = static_cast<int>(lightest[i]);
        }
        tree.push_back(parent);
    }
    return tree;
}

// Codes are written as zeros and ones.
void Assign(const std::vector<Node>& tree, int index, const std::string& path,
            std::map<int, std::string>& codes) {
    const Node& node = tree.at(static_cast<std::size_t>(index));
    if (node.symbol != -1) {
        codes[node.symbol] = path;
        return;
    }
    Assign(tree, node.child[0], path + '0', codes);
    Assign(tree, node.child[1], path + '1', codes);
}

void EncodeBytes(Bytes& bytes, const KeyArray* key, std::vector<int>& events) {
    std::map<int, std::int64_t> counts;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        ++counts[bytes[i]];
        if (i % 1000 == 0) Tell(events, i, bytes.size(), 7, 0);
    }
    std::map<int, std::string> codes;
    const auto tree = Tree(counts);
    if (!tree.empty()) Assign(tree, static_cast<int>(tree.size()) - 1, "", codes);
    std::string data;
    for (const std::uint8_t byte : bytes)
        data += codes[byte];
    if (data.empty() || (data.size() + 7) / 8 > bytes.size()) {
        const Bytes mark = {77, 65, 48, 13};
        bytes.insert(bytes.begin(), mark.begin(), mark.end());
        return;
    }
    unsigned checksum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        checksum ^= bytes[i];
        if (i % 10000 == 0) Tell(events, i, bytes.size(), 5, 7);
    }
    Bytes out = {77, 65, 51, 13, static_cast<std::uint8_t>(checksum)};
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<std::uint8_t>(bytes.size() >> shift));
    const std::size_t count = codes.size() + (key != nullptr ? 2 * key->size() : 0);
    if (count > 32767) throw OverflowError("count");
    out.push_back(static_cast<std::uint8_t>(count));
    out.push_back(static_cast<std::uint8_t>(count >> 8));
    const auto put = [&](std::int64_t value, std::size_t row, std::size_t column) {
        if (key != nullptr) value += Checked(key->at(row).at(column));
        const auto byte = Checked(value);
        if (out.size() == 523) throw RangeError("table");
        out.push_back(byte);
    };
    for (std::size_t i = 0; key != nullptr && i < 24; ++i)
        put(0, i % 12, i / 12);
    std::string codeArea;
    for (std::size_t k = 0; const auto& [symbol, code] : codes) {
        put(symbol, k, 0);
        put(static_cast<std::int64_t>(code.size()), k++, 1);
        codeArea += code;
    }
    for (const Bytes& area : {FromBits(codeArea), FromBits(data)})
        out.insert(out.end(), area.begin(), area.end());
    for (std::size_t i = 0; i < bytes.size(); i += 10000)
        Tell(events, i, bytes.size(), 88, 12);
    bytes = out;
    Tell(events, 1, 1, 100, 0);
}

template <class Call>
Outcome Observe(const Bytes& input, std::optional<KeyArray> key, const Call& call) {
    Outcome outcome{input, {}, "", std::move(key)};
    try {
        call(outcome, outcome.key ? &*outcome.key : nullptr);
    } catch (const RaisedError& error) {
        outcome.error = error.Source();
    } catch (const OverflowError&) {
        outcome.error = "overflow";
    } catch (const std::out_of_range&) {
        outcome.error = "range";
    }
    return outcome;
}

// The same for a function of the class itself, from text to text.
template <class Function>
Outcome ObserveClass(const Bytes& input, std::optional<KeyArray> key, Function function) {
    return Observe(input, std::move(key), [&](Outcome& outcome, KeyArray* rows) {
        vento::codec::clsHuffman codec;
        codec.Progress = [&](std::int16_t& procent) { outcome.events.push_back(procent); };
        const auto text = vento::codec::TextOf(outcome.bytes);
        outcome.bytes = vento::codec::BytesOf((codec.*function)(text, rows));
    });
}

}  // namespace

Outcome Encode(const Bytes& source, std::optional<KeyArray> key) {
    return Observe(source, std::move(key), [](Outcome& outcome, const KeyArray* rows) {
        EncodeBytes(outcome.bytes, rows, outcome.events);
    });
}

Outcome Decode(const Bytes& container, std::optional<KeyArray> key) {
    return Observe(container, std::move(key), [](Outcome& outcome, KeyArray* rows) {
        DecodeBytes(outcome.bytes, rows, outcome.events);
    });
}

Outcome EncodeWithClass(const Bytes& source, std::optional<KeyArray> key) {
    return ObserveClass(source, std::move(key), &vento::codec::clsHuffman::EncodeString);
}

Outcome DecodeWithClass(const Bytes& container, std::optional<KeyArray> key) {
    return ObserveClass(container, std::move(key), &vento::codec::clsHuffman::DecodeString);
}

}  // namespace oracle
