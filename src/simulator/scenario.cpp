#include "simulator/scenario.h"

#include <algorithm>
#include <array>
#include <limits>
#include <nlohmann/json.hpp>

#include "simulator/image.h"
#include "storage/json.h"
#include "storage/text_file.h"
#include "text/encoding.h"

namespace vento::simulator {

namespace fs = std::filesystem;
using storage::JsonNode;

namespace {

/// The table of the kinds of fault: name, keys besides those of every fault, and what reads them.
struct KindReader {
    std::string_view name;
    std::array<std::string_view, 2> keys;
    FaultKind (*read)(const JsonNode&);
};

constexpr std::uint64_t kLargestCount = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kMostInterfaces = 255;
constexpr std::size_t kMostSections = 255;
constexpr std::size_t kMostFaults = 100'000;
/// A report that took longer would not be waited for.
constexpr std::uint64_t kLongestReport = 1'000'000;
constexpr std::uint64_t kLongestAbsence = 3'600'000;

/// Puts the number at `key` into `field`, if there is one.
template <class Field>
void ReadNumber(const JsonNode& object, std::string_view key, Field& field, std::uint64_t least,
                std::uint64_t most) {
    const JsonNode node = object.At(key);
    if (node.IsThere()) field = static_cast<Field>(node.Number(least, most));
}

std::vector<SimulatedInterface> ReadInterfaces(const JsonNode& list) {
    std::vector<SimulatedInterface> interfaces(list.Count(kMostInterfaces, {"interfacce", "interfaces"}));
    for (std::size_t i = 0; i < interfaces.size(); ++i) {
        const JsonNode node = list.Item(i);
        static constexpr std::array<std::string_view, 3> kKeys = {"vendorId", "productId", "opens"};
        node.AllowKeys(kKeys);
        ReadNumber(node, "vendorId", interfaces[i].vendorId, 0, 65535);
        ReadNumber(node, "productId", interfaces[i].productId, 0, 65535);
        if (const JsonNode opens = node.At("opens"); opens.IsThere()) interfaces[i].opens = opens.Boolean();
    }
    return interfaces;
}

std::optional<RemoteSetup> ReadRemote(const JsonNode& node) {
    if (node.IsNull()) return std::nullopt;
    if (!node.IsObject())
        node.Refuse(Phrase{"un oggetto, o null per nessun telecomando", "an object, or null for no remote"});
    static constexpr std::array<std::string_view, 7> kKeys = {
        "version", "sections", "free", "arrivesAtPoll", "memory", "leavesAfterPolls", "awayForPolls"};
    node.AllowKeys(kKeys);
    RemoteSetup setup;
    ReadNumber(node, "version", setup.version, 0, 255);
    ReadNumber(node, "free", setup.contents.free, 0, 255);
    ReadNumber(node, "arrivesAtPoll", setup.arrivesAtPoll, 1, kLargestCount);
    ReadNumber(node, "leavesAfterPolls", setup.leavesAfterPolls, 1, kLargestCount);
    ReadNumber(node, "awayForPolls", setup.awayForPolls, 0, kLargestCount);
    if (const JsonNode list = node.At("sections"); list.IsThere()) {
        setup.sections.resize(list.Count(kMostSections, {"offset", "offsets"}));
        for (std::size_t i = 0; i < setup.sections.size(); ++i) {
            setup.sections[i] = static_cast<std::uint16_t>(list.Item(i).Number(0, 65535));
        }
    }
    if (const JsonNode memory = node.At("memory"); memory.IsThere()) {
        setup.contents.memory = ReadWordRuns(memory, WordForm::firstByte);
    }
    return setup;
}

FaultKind ReadUnplugged(const JsonNode& node) {
    fault::Unplugged kind;
    if (const JsonNode when = node.At("when"); when.IsThere()) {
        static constexpr std::array<std::string_view, 3> kMoments = {"open", "write", "read"};
        kind.when = static_cast<UnplugMoment>(when.Choice(kMoments));
    }
    if (const JsonNode absence = node.At("forMilliseconds"); absence.IsThere()) {
        kind.absence = std::chrono::milliseconds(absence.Number(0, kLongestAbsence));
    }
    return kind;
}

FaultKind ReadWriteFails(const JsonNode& node) {
    fault::WriteFails kind;
    ReadNumber(node, "report", kind.report, 1, kLargestCount);
    return kind;
}

FaultKind ReadReply(const JsonNode& node) {
    fault::Reply kind;
    const JsonNode list = node.At("bytes");
    const std::size_t count = list.Count(kind.payload.size(), {"byte", "bytes"});
    for (std::size_t i = 0; i < count; ++i)
        kind.payload[i] = list.Item(i).Byte();
    return kind;
}

FaultKind ReadFlip(const JsonNode& node) {
    const auto byte = static_cast<std::uint8_t>(node.At("byte").Number(0, platform::kReportPayload - 1));
    return fault::Flip{.byte = byte, .mask = node.At("mask").Byte()};
}

constexpr std::array<KindReader, 7> kKindReaders = {{
    {"unplugged", {"when", "forMilliseconds"}, ReadUnplugged},
    {"refused", {}, [](const JsonNode&) -> FaultKind { return fault::Refused{}; }},
    {"writeFails", {"report"}, ReadWriteFails},
    {"readFails", {}, [](const JsonNode&) -> FaultKind { return fault::ReadFails{}; }},
    {"status",
     {"value"},
     [](const JsonNode& node) -> FaultKind { return fault::Status{node.At("value").Byte()}; }},
    {"reply", {"bytes"}, ReadReply},
    {"flip", {"byte", "mask"}, ReadFlip},
}};

Fault ReadFault(const JsonNode& node) {
    std::array<std::string_view, kKindReaders.size()> names;
    std::ranges::transform(kKindReaders, names.begin(), &KindReader::name);
    const KindReader& reader = kKindReaders[node.At("kind").Choice(names)];

    std::vector<std::string_view> keys = {"cycle", "through", "kind"};
    std::ranges::remove_copy(reader.keys, std::back_inserter(keys), std::string_view());
    node.AllowKeys(keys);

    Fault fault{.kind = reader.read(node)};
    fault.cycle = static_cast<std::uint32_t>(node.At("cycle").Number(1, kLargestCount));
    fault.through = fault.cycle;
    ReadNumber(node, "through", fault.through, fault.cycle, kLargestCount);
    return fault;
}

std::vector<Fault> ReadFaults(const JsonNode& list) {
    std::vector<Fault> faults;
    const std::size_t count = list.Count(kMostFaults, {"guasti", "faults"});
    for (std::size_t i = 0; i < count; ++i)
        faults.push_back(ReadFault(list.Item(i)));
    return faults;
}

}  // namespace

Scenario ParseScenario(std::string_view text, const fs::path& folder) {
    const nlohmann::json document = storage::ParseJson(text);
    const JsonNode root(document);
    static constexpr std::array<std::string_view, 5> kKeys = {"interfaces", "remote", "reportMicroseconds",
                                                              "image", "faults"};
    root.AllowKeys(kKeys);
    Scenario scenario;
    if (const JsonNode node = root.At("interfaces"); node.IsThere()) {
        scenario.interfaces = ReadInterfaces(node);
    }
    if (const JsonNode node = root.At("remote"); node.IsThere()) scenario.remote = ReadRemote(node);
    ReadNumber(root, "reportMicroseconds", scenario.perReport, 0, kLongestReport);
    if (const JsonNode node = root.At("image"); node.IsThere()) {
        const std::string& name = node.Text();
        if (name.empty() || name.find('\0') != std::string::npos)
            node.Refuse(Phrase{"il nome di un file", "the name of a file"});
        scenario.image = folder / PathFromUtf8(name);
    }
    if (const JsonNode node = root.At("faults"); node.IsThere()) scenario.faults = ReadFaults(node);
    return scenario;
}

Scenario LoadScenario(const std::string& path) {
    const fs::path file = PathFromUtf8(path);
    return ParseScenario(storage::ReadText(file), file.parent_path());
}

}  // namespace vento::simulator
