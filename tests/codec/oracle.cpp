#include "codec/oracle.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <map>

#include "codec/windows_1252.h"

namespace oracle {
namespace {

using vento::codec::OverflowError;
using vento::codec::RaisedError;
using vento::codec::RangeError;

struct Node {
    int parent = -1;
    int one = -1;
    int zero = -1;
    int symbol = -1;
    std::int64_t weight = 0;
};

class Events {
  public:
    explicit Events(std::vector<int>& told) : told_(told) {}
    void Test(double value) {
        const int percentage = static_cast<int>(std::nearbyint(value));
        if (percentage != last_) told_.push_back(last_ = percentage);
    }

  private:
    std::vector<int>& told_;
    int last_ = 0;
};

int Checked(std::int64_t byte) {
    if (byte < 0 || byte > 255) throw OverflowError("not a byte");
    return static_cast<int>(byte);
}

int At(const Bytes& bytes, std::size_t offset) {
    return bytes.at(offset);
}

bool DecodeBytes(Bytes& bytes, KeyArray* key, Events& events) {
    const bool marked = At(bytes, 3) == 13 && bytes[0] == 77 && bytes[1] == 65;
    if (!marked) return true;
    if (bytes[2] == 48) {
        bytes.erase(bytes.begin(), bytes.begin() + 4);
        return true;
    }
    if (bytes[2] != 51) throw RaisedError("HuffmanDecode()", "");
    const int expected = At(bytes, 4);
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i)
        number |= static_cast<std::uint32_t>(At(bytes, 5 + i)) << 8 * i;
    const auto length = static_cast<std::int32_t>(number);
    if (length == 0) return false;
    if (length < 0) throw RangeError("length");
    std::int64_t pairs = static_cast<std::int16_t>(At(bytes, 9) | At(bytes, 10) << 8);
    std::size_t offset = 11;
    if (key != nullptr) {
        pairs -= 2 * static_cast<std::int64_t>(key->size());
        static_cast<void>(key->at(11));
        static_cast<void>(bytes.at(34));
        for (std::size_t column = 0; column < 2; ++column) {
            for (std::size_t row = 0; row < 12; ++row)
                key->at(row).at(column) = bytes.at(offset++);
        }
    }
    std::map<int, std::vector<int>> codes;
    for (std::int64_t k = 0; k < pairs; ++k) {
        std::int64_t symbol = At(bytes, offset++);
        if (key != nullptr) symbol -= key->at(static_cast<std::size_t>(k)).at(0);
        if (symbol < 0 || symbol > 255) throw RangeError("symbol");
        std::int64_t count = At(bytes, offset++);
        if (key != nullptr) count -= key->at(static_cast<std::size_t>(k)).at(1);
        codes[static_cast<int>(symbol)] = std::vector<int>(static_cast<std::size_t>(Checked(count)), 0);
    }
    int position = 0;
    for (auto& [symbol, code] : codes) {
        for (int& bit : code) {
            bit = At(bytes, offset) >> position & 1;
            offset += static_cast<std::size_t>(position == 7);
            position = (position + 1) % 8;
        }
    }
    if (position > 0) ++offset;
    std::vector<Node> tree(1);
    for (const auto& [symbol, code] : codes) {
        if (code.empty()) continue;
        std::size_t node = 0;
        for (const int bit : code) {
            int child = bit == 1 ? tree.at(node).one : tree.at(node).zero;
            if (child == -1) {
                child = static_cast<int>(tree.size());
                if (child == 512) throw RangeError("nodes");
                (bit == 1 ? tree.at(node).one : tree.at(node).zero) = child;
                tree.push_back({.parent = static_cast<int>(node)});
            }
            node = static_cast<std::size_t>(child);
        }
        tree.at(node).symbol = symbol;
    }
    Bytes output;
    std::size_t node = 0;
    bool all = false;
    for (; offset < bytes.size() && !all; ++offset) {
        for (int bit = 0; bit < 8 && !all; ++bit) {
            const bool one = (bytes[offset] >> bit & 1) == 1;
            node = static_cast<std::size_t>(one ? tree.at(node).one : tree.at(node).zero);
            if (tree.at(node).symbol == -1) continue;
            output.push_back(static_cast<std::uint8_t>(tree.at(node).symbol));
            all = output.size() == static_cast<std::size_t>(length);
            node = 0;
        }
        if (!all && (offset + 1) % 10000 == 0)
            events.Test(static_cast<double>(offset + 1) / static_cast<double>(bytes.size()) * 89);
    }
    int checksum = 0;
    for (std::size_t i = 0; i < output.size(); ++i) {
        checksum ^= output[i];
        if (i % 10000 == 0)
            events.Test(static_cast<double>(i) / static_cast<double>(output.size()) * 11 + 89);
    }
    if (checksum != expected) throw RaisedError("clsHuffman.Decode()", "");
    bytes = output;
    events.Test(100);
    return false;
}

class BitWriter {
  public:
    explicit BitWriter(Bytes& out) : out_(out) {}
    void Put(const std::vector<int>& bits) {
        for (const int bit : bits) {
            if (position_ == 0) out_.push_back(0);
            if (bit == 1) out_.back() = static_cast<std::uint8_t>(out_.back() + (1 << position_));
            position_ = (position_ + 1) % 8;
        }
    }

  private:
    Bytes& out_;
    int position_ = 0;
};

void Assign(const std::vector<Node>& tree, int index, std::vector<int> path,
            std::map<int, std::vector<int>>& codes) {
    const Node& node = tree.at(static_cast<std::size_t>(index));
    if (node.symbol > -1) {
        codes[node.symbol] = path;
        return;
    }
    path.push_back(0);
    if (node.zero > -1) Assign(tree, node.zero, path, codes);
    path.back() = 1;
    if (node.one > -1) Assign(tree, node.one, path, codes);
}

std::vector<Node> Tree(const std::array<std::int64_t, 256>& counts) {
    std::vector<Node> tree;
    for (std::size_t value = 0; value < 256; ++value) {
        if (counts.at(value) > 0)
            tree.push_back({.symbol = static_cast<int>(value), .weight = counts.at(value)});
    }
    for (std::size_t leaves = tree.size(); leaves >= 2; --leaves) {
        int a = -1;
        int b = -1;
        for (std::size_t i = 0; i < tree.size(); ++i) {
            if (tree[i].parent != -1) continue;
            const auto w = tree[i].weight;
            const auto weightOf = [&](int node) { return tree.at(static_cast<std::size_t>(node)).weight; };
            auto* const slot = [&]() -> int* {
                if (a == -1) return &a;
                if (b == -1) return &b;
                if (w < weightOf(a) && w < weightOf(b)) return weightOf(a) < weightOf(b) ? &b : &a;
                if (w < weightOf(a)) return &a;
                return w < weightOf(b) ? &b : nullptr;
            }();
            if (slot != nullptr) *slot = static_cast<int>(i);
        }
        Node& zero = tree.at(static_cast<std::size_t>(a));
        Node& one = tree.at(static_cast<std::size_t>(b));
        zero.parent = one.parent = static_cast<int>(tree.size());
        tree.push_back({.one = b, .zero = a, .weight = zero.weight + one.weight});
    }
    return tree;
}

void Store(Bytes& bytes) {
    const Bytes mark = {77, 65, 48, 13};
    bytes.insert(bytes.begin(), mark.begin(), mark.end());
}

void EncodeBytes(Bytes& bytes, const KeyArray* key, Events& events) {
    if (bytes.empty()) return Store(bytes);
    const auto total = static_cast<double>(bytes.size());
    std::array<std::int64_t, 256> counts{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        ++counts.at(bytes[i]);
        if (i % 1000 == 0) events.Test(static_cast<double>(i) / total * 7);
    }
    const auto tree = Tree(counts);
    std::map<int, std::vector<int>> codes;
    Assign(tree, static_cast<int>(tree.size()) - 1, {}, codes);
    std::int64_t bits = 0;
    for (const auto& [symbol, code] : codes)
        bits += counts.at(static_cast<std::size_t>(symbol)) * static_cast<std::int64_t>(code.size());
    if (bits > 2147483647) throw OverflowError("bits");
    const auto size = static_cast<std::size_t>(bits / 8 + (bits % 8 == 0 ? 0 : 1));
    if (size > bytes.size() || size == 0) return Store(bytes);
    int checksum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        checksum ^= bytes[i];
        if (i % 10000 == 0) events.Test(static_cast<double>(i) / total * 5 + 7);
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
        const int byte = Checked(value);
        if (key != nullptr && out.size() == 523) throw RangeError("table");
        out.push_back(static_cast<std::uint8_t>(byte));
    };
    for (std::size_t i = 0; key != nullptr && i < 24; ++i)
        put(0, i % 12, i / 12);
    std::size_t k = 0;
    for (const auto& [symbol, code] : codes) {
        put(symbol, k, 0);
        put(static_cast<std::int64_t>(code.size()), k, 1);
        ++k;
    }
    BitWriter codeArea(out);
    for (const auto& [symbol, code] : codes)
        codeArea.Put(code);
    BitWriter dataArea(out);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        dataArea.Put(codes[bytes[i]]);
        if (i % 10000 == 0) events.Test(static_cast<double>(i) / total * 88 + 5 + 7);
    }
    bytes = out;
    events.Test(100);
}

template <class Call>
Outcome Observe(const Bytes& input, std::optional<KeyArray> key, const Call& call) {
    Outcome outcome{input, {}, "", std::move(key)};
    try {
        call(outcome);
    } catch (const RaisedError& error) {
        outcome.error = error.Source();
    } catch (const OverflowError&) {
        outcome.error = "overflow";
    } catch (const std::out_of_range&) {
        outcome.error = "range";
    }
    return outcome;
}

KeyArray* KeyOf(Outcome& outcome) {
    return outcome.key ? &*outcome.key : nullptr;
}

vento::codec::clsHuffman Watched(Outcome& outcome) {
    vento::codec::clsHuffman codec;
    codec.Progress = [&outcome](std::int16_t& procent) { outcome.events.push_back(procent); };
    return codec;
}

}  // namespace

Outcome Encode(const Bytes& source, std::optional<KeyArray> key) {
    return Observe(source, std::move(key), [](Outcome& outcome) {
        Events events(outcome.events);
        EncodeBytes(outcome.bytes, KeyOf(outcome), events);
    });
}

Outcome Decode(const Bytes& container, std::optional<KeyArray> key) {
    return Observe(container, std::move(key), [](Outcome& outcome) {
        Events events(outcome.events);
        DecodeBytes(outcome.bytes, KeyOf(outcome), events);
    });
}

Outcome EncodeWithClass(const Bytes& source, std::optional<KeyArray> key) {
    return Observe(source, std::move(key), [](Outcome& outcome) {
        const auto text = vento::codec::TextOf(outcome.bytes);
        outcome.bytes = vento::codec::BytesOf(Watched(outcome).EncodeString(text, KeyOf(outcome)));
    });
}

Outcome DecodeWithClass(const Bytes& container, std::optional<KeyArray> key) {
    return Observe(container, std::move(key), [](Outcome& outcome) {
        const auto text = vento::codec::TextOf(outcome.bytes);
        outcome.bytes = vento::codec::BytesOf(Watched(outcome).DecodeString(text, KeyOf(outcome)));
    });
}

}  // namespace oracle
