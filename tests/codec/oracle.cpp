#include "codec/oracle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <span>
#include <utility>

#include "codec/containers.h"
#include "codec/decoder.h"
#include "codec/progress_meter.h"
#include "codec/vento_codec.h"
#include "text/encoding.h"

namespace oracle {
namespace {

using vento::codec::clsHuffman;
using vento::codec::OverflowError;
using vento::codec::RaisedError;
using vento::codec::RangeError;

void Tell(Outcome& outcome, std::size_t part, std::size_t whole, int scale, int first) {
    std::vector<int>& events = outcome.events;
    const double percentage = static_cast<double>(part) / static_cast<double>(whole) * scale + first;
    const int rounded = static_cast<int>(std::nearbyint(percentage));
    if (rounded != (events.empty() ? 0 : events.back())) events.push_back(rounded);
}

std::uint8_t Checked(std::int64_t byte) {
    if (byte < 0 || byte > 255) throw OverflowError("not a byte");
    return static_cast<std::uint8_t>(byte);
}

void DecodeBytes(Outcome& outcome) {
    Bytes& bytes = outcome.bytes;
    std::optional<KeyArray>& key = outcome.key;
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
    if (key) {
        pairs -= 2 * std::ssize(*key);
        static_cast<void>(key->at(11));
        static_cast<void>(bytes.at(34));
        for (std::size_t i = 0; i < 24; ++i)
            key->at(i % 12).at(i / 12) = bytes.at(offset++);
    }
    std::map<int, int> lengths;
    for (std::size_t k = 0; static_cast<std::int64_t>(k) < pairs; ++k) {
        const auto without = [&](std::size_t column) {
            constexpr std::int64_t kFar = 1000;  // from any byte, and as good as farther
            return bytes.at(offset++) - (key ? std::clamp(key->at(k).at(column), -kFar, kFar) : 0);
        };
        const std::int64_t symbol = without(0);
        if (symbol < 0 || symbol > 255) throw RangeError("symbol");
        lengths[static_cast<int>(symbol)] = Checked(without(1));
    }
    struct Node {
        std::array<std::size_t, 2> child{};
        int symbol = -1;
    };
    std::size_t at = 8 * offset;
    const auto nextBit = [&] {
        const int byte = bytes.at(at / 8);
        return static_cast<std::size_t>(byte >> at++ % 8 & 1);
    };
    std::vector<Node> tree(1);
    for (const auto& [symbol, count] : lengths) {
        std::size_t node = 0;
        for (int i = 0; i < count; ++i) {
            std::size_t& child = tree[node].child.at(nextBit());
            if (child == 0) child = tree.size();
            node = child;
            if (node == 512) throw RangeError("nodes");
            tree.resize(std::max(tree.size(), node + 1));
        }
        if (count > 0) tree[node].symbol = symbol;
    }
    at = (at + 7) / 8 * 8;
    Bytes output;
    std::size_t node = 0;
    while (at < 8 * bytes.size() && output.size() < static_cast<std::size_t>(length)) {
        node = tree[node].child.at(nextBit());
        if (node == 0) throw RangeError("branch");
        if (tree[node].symbol != -1)
            output.push_back(static_cast<std::uint8_t>(tree[std::exchange(node, 0)].symbol));
        if (at % 80000 == 0 && output.size() < static_cast<std::size_t>(length))
            Tell(outcome, at / 8, bytes.size(), 89, 0);
    }
    unsigned checksum = 0;
    for (std::size_t i = 0; i < output.size(); ++i) {
        checksum ^= output[i];
        if (i % 10000 == 0) Tell(outcome, i, output.size(), 11, 89);
    }
    if (checksum != expected) throw RaisedError("clsHuffman.Decode()", "");
    bytes = output;
    Tell(outcome, 1, 1, 100, 0);
}

struct Subtree {
    std::int64_t weight = 0;
    std::map<int, std::string> codes;  // of its symbols, written as zeros and ones
};

std::map<int, std::string> CodesFor(const std::map<int, std::int64_t>& counts) {
    std::vector<Subtree> trees;
    trees.reserve(counts.size());
    for (const auto& [symbol, count] : counts)
        trees.push_back({count, {{symbol, ""}}});
    while (trees.size() > 1) {
        std::array<std::size_t, 2> lightest = {0, 1};
        for (std::size_t i = 2; i < trees.size(); ++i) {
            const bool second = trees[lightest[1]].weight > trees[lightest[0]].weight;
            std::size_t& heavier = lightest.at(second ? 1 : 0);
            if (trees[i].weight < trees[heavier].weight) heavier = i;
        }
        Subtree parent;
        for (const std::size_t bit : {0U, 1U}) {
            Subtree& child = trees[lightest.at(bit)];
            parent.weight += child.weight;
            for (const auto& [symbol, code] : std::exchange(child.codes, {}))
                parent.codes[symbol] = std::to_string(bit) + code;
        }
        std::erase_if(trees, [](const Subtree& tree) { return tree.codes.empty(); });
        trees.push_back(parent);
    }
    return trees.empty() ? std::map<int, std::string>() : trees[0].codes;
}

void EncodeBytes(Outcome& outcome) {
    Bytes& bytes = outcome.bytes;
    const std::optional<KeyArray>& key = outcome.key;
    std::map<int, std::int64_t> counts;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        ++counts[bytes[i]];
        if (i % 1000 == 0) Tell(outcome, i, bytes.size(), 7, 0);
    }
    auto codes = CodesFor(counts);
    std::string data;
    for (const std::uint8_t byte : bytes)
        data += codes[byte];
    if (data.empty() || (data.size() + 7) / 8 > bytes.size()) {
        bytes.insert(bytes.begin(), {77, 65, 48, 13});
        return;
    }
    unsigned checksum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        checksum ^= bytes[i];
        if (i % 10000 == 0) Tell(outcome, i, bytes.size(), 5, 7);
    }
    const std::size_t count = codes.size() + (key ? 2 * key->size() : 0);
    if (count > 32767) throw OverflowError("count");
    Bytes out = Head(checksum, bytes.size(), count);
    const auto put = [&](std::int64_t value, std::size_t row, std::size_t column) {
        if (key) value += Checked(key->at(row).at(column));
        const auto byte = Checked(value);
        if (out.size() == 523) throw RangeError("table");
        out.push_back(byte);
    };
    for (std::size_t i = 0; key && i < 24; ++i)
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
        Tell(outcome, i, bytes.size(), 88, 12);
    bytes = out;
    Tell(outcome, 1, 1, 100, 0);
}

Outcome Observe(Outcome outcome, const auto& call) {
    try {
        call(outcome);
    } catch (const std::exception& error) {
        outcome.said = error.what();
        const auto* const raised = dynamic_cast<const RaisedError*>(&error);
        outcome.error = raised                                       ? raised->Source()
                        : dynamic_cast<const OverflowError*>(&error) ? "overflow"
                                                                     : "range";
    }
    return outcome;
}

// What the class makes of texts.
Outcome ObserveClass(const Outcome& before, auto function) {
    return Observe(before, [&](Outcome& outcome) {
        clsHuffman codec;
        codec.Progress = [&](std::int16_t& procent) { outcome.events.push_back(procent); };
        const auto text = vento::Utf8FromWindows1252(outcome.bytes);
        outcome.bytes =
            vento::Windows1252FromUtf8((codec.*function)(text, outcome.key ? &*outcome.key : nullptr));
    });
}

// What the functions for C make of bytes, in a room of the least size that is always enough.
Outcome ObserveC(Outcome outcome, bool encoding) {
    const Bytes bytes = outcome.bytes;
    std::vector<std::int64_t> key;
    key.reserve(1);
    for (const auto& row : outcome.key.value_or(KeyArray()))
        key.insert(key.end(), row.begin(), row.end());
    const auto tell = [](void* events, std::int16_t procent) {
        static_cast<std::vector<int>*>(events)->push_back(procent);
        return 0;
    };
    const vento_codec_options options = {outcome.key ? key.data() : nullptr, key.size() / 2, tell,
                                         &outcome.events};
    vento_codec_error error;
    std::size_t size = vento_codec_encode_bound(bytes.size());
    auto status = VENTO_CODEC_OK;
    if (!encoding) status = vento_codec_decode_bound(bytes.data(), bytes.size(), &size, &error);
    Bytes room(size);
    if (encoding) {
        status = vento_codec_encode(bytes.data(), bytes.size(), room.data(), size, &size, &options, &error);
    } else if (status == VENTO_CODEC_OK) {
        status = vento_codec_decode(bytes.data(), bytes.size(), room.data(), size, &size, nullptr, &options,
                                    &error);
    }
    if (status == VENTO_CODEC_OK) {
        room.resize(size);
        outcome.bytes = room;
    } else {
        outcome.said = error.description;
        outcome.error = error.number == 0x80040000       ? error.source
                        : status == VENTO_CODEC_RANGE    ? "range"
                        : status == VENTO_CODEC_OVERFLOW ? "overflow"
                                                         : error.description;
    }
    for (std::size_t row = 0; outcome.key && row < outcome.key->size(); ++row)
        (*outcome.key)[row] = {key[2 * row], key[2 * row + 1]};
    return outcome;
}

// The same decoding with the loop for all processors, whatever this one has. What is in no coded form never
// comes to it, and is taken as it is.
Outcome ObservePlainLoop(const Outcome& before, const Outcome& otherwise) {
    const Bytes& bytes = before.bytes;
    if (bytes.size() < 4 || Bytes(bytes.begin(), bytes.begin() + 4) != FromText("MA3\r")) return otherwise;
    return Observe(before, [&](Outcome& outcome) {
        using namespace vento::codec;
        ProgressMeter progress([&](std::int16_t& procent) { outcome.events.push_back(procent); });
        Bytes decoded;
        const auto append = [&](std::span<const std::uint8_t> part) {
            decoded.insert(decoded.end(), part.begin(), part.end());
        };
        if (DecodeCoded(SourceOf(bytes), outcome.key ? &*outcome.key : nullptr, progress,
                        {[](std::size_t) {}, append}, HotLoop::plain)) {
            progress.Finish();
            outcome.bytes = decoded;
        }
    });
}

Outcome IfTheSame(Outcome text, const Outcome& bytes) {
    if (text != bytes || text.said != bytes.said) text.error = "two ways to the same differ";
    return text;
}

}  // namespace

Outcome Encode(const Bytes& source, const std::optional<KeyArray>& key) {
    return Observe({source, {}, "", key}, EncodeBytes);
}

Outcome Decode(const Bytes& container, const std::optional<KeyArray>& key) {
    return Observe({container, {}, "", key}, DecodeBytes);
}

Outcome EncodeWithClass(const Bytes& source, const std::optional<KeyArray>& key) {
    const Outcome before = {source, {}, "", key};
    return IfTheSame(ObserveClass(before, &clsHuffman::EncodeString), ObserveC(before, true));
}

Outcome DecodeWithClass(const Bytes& container, const std::optional<KeyArray>& key) {
    const Outcome before = {container, {}, "", key};
    const auto text = ObserveClass(before, &clsHuffman::DecodeString);
    return IfTheSame(IfTheSame(text, ObserveC(before, false)), ObservePlainLoop(before, text));
}

}  // namespace oracle
