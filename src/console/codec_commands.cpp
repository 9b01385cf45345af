#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "codec/file_bytes.h"
#include "console/codec_run.h"
#include "console/commands.h"
#include "console/failure.h"
#include "console/input.h"
#include "console/output.h"
#include "text/encoding.h"
#include "text/language.h"

namespace vento::console {
namespace {

constexpr std::array kEncodeArguments{
    ArgumentEntry{
        {"SRC", "SRC"},
        {"Il file da comprimere; - per lo standard input", "The file to encode; - for standard input"}},
    ArgumentEntry{{"DEST", "DEST"},
                  {"Il contenitore; può essere SRC stesso; - per lo standard output",
                   "The container; it may be SRC itself; - for standard output"}},
};
constexpr std::array kDecodeArguments{
    ArgumentEntry{{"SRC", "SRC"},
                  {"Il contenitore; - per lo standard input", "The container; - for standard input"}},
    ArgumentEntry{
        {"DEST", "DEST"},
        {"Ciò che vi era dentro; può essere SRC stesso; - per lo standard output. Senza DEST SRC viene solo "
         "controllato",
         "What was in it; it may be SRC itself; - for standard output. Without it SRC is only checked"},
        false},
};

constexpr OptionEntry kKeyOption{
    "key",
    '\0',
    OptionEntry::Value::required,
    {"FILE", "FILE"},
    {"La chiave, una lista JSON di righe di due numeri", "The key, a JSON list of rows of two numbers"},
    [](Options& options, std::string_view value) {
        options.key = value;
        return true;
    }};
constexpr std::array kOptions{kKeyOption, kForceOption};
constexpr std::array kInfoOptions{kKeyOption};
constexpr std::array kInfoArguments{ArgumentEntry{
    {"FILE", "FILE"}, {"Il contenitore; - per lo standard input", "The container; - for standard input"}}};

Sentence Counts(const Answer& answer, const Phrase& pattern) {
    const auto count = [&](const char* key) {
        return std::to_string(answer.fields[key].get<std::uint64_t>());
    };
    return Fill(pattern, {count("bytesIn"), count("bytesOut")});
}

// Where the result goes, if it goes anywhere.
std::unique_ptr<Output> OutputFor(const Console& console) {
    const Options& options = console.options;
    if (options.arguments.size() < 2) return nullptr;
    return std::make_unique<Output>(console, options.Argument(1), options.Argument(0));
}

void RunEncode(const Console& console, Answer& answer) {
    std::unique_ptr<Output> output;
    RunCodec(console, answer, [&](const CodecTools& tools) {
        output = OutputFor(console);
        const std::string source = console.options.Argument(0);
        std::vector<std::uint8_t> container;
        if (tools.bytes || tools.key != nullptr) {
            container = tools.codec.EncodeBytes(
                tools.bytes ? *tools.bytes : codec::ReadBytes(PathFromUtf8(source)), tools.key);
        } else {
            container = tools.codec.EncodeFile(source);
        }
        output->Save(container, answer);
        answer.fields["bytesOut"] = container.size();
    });
    output->Tell(
        Counts(answer, {"{0} byte {0:codificato|codificati} in {1}", "{0} {0:byte|bytes} encoded in {1}"}),
        answer);
}

void RunDecode(const Console& console, Answer& answer) {
    std::unique_ptr<Output> output;
    bool uncoded = false;
    RunCodec(console, answer, [&](const CodecTools& tools) {
        output = OutputFor(console);
        const std::string source = console.options.Argument(0);
        std::vector<std::uint8_t> bytes;
        if (tools.bytes || tools.key != nullptr) {
            codec::Decoded decoded = tools.codec.DecodeBytes(
                tools.bytes ? *tools.bytes : codec::ReadBytes(PathFromUtf8(source)), tools.key);
            bytes = std::move(decoded.bytes);
            uncoded = decoded.uncoded && tools.key == nullptr;
        } else {
            uncoded = tools.codec.DecodeFile(source, bytes);
        }
        if (output) output->Save(bytes, answer);
        if (tools.key == nullptr) answer.fields["result"] = uncoded;
        answer.fields["bytesOut"] = bytes.size();
    });
    const Sentence counts = Counts(
        answer,
        uncoded
            ? Phrase{"{0} byte {0:decodificato|decodificati} in {1}, non {0:era compresso|erano compressi}",
                     "{0} {0:byte|bytes} decoded to {1}, which {0:was|were} not compressed"}
            : Phrase{"{0} byte {0:decodificato|decodificati} in {1}", "{0} {0:byte|bytes} decoded to {1}"});
    if (output) {
        output->Tell(counts, answer);
    } else {
        answer.text = counts.In(console.language) + "\n";
    }
}

// --- info ---

constexpr std::array kForms{"foreign", "stored", "coded"};

Sentence Describe(const codec::ContainerInfo& info) {
    const auto text = [](std::uint64_t number) { return std::to_string(number); };
    if (info.form == codec::Form::foreign) {
        return Fill({"nessun contenitore, {0} byte", "no container, {0} {0:byte|bytes}"},
                    {text(info.containerSize)});
    }
    if (info.form == codec::Form::stored) {
        return Fill({"contenitore con i byte come sono: {0} byte in {1}",
                     "container with the bytes as they are: {0} {0:byte|bytes} in {1}"},
                    {text(info.sourceLength), text(info.containerSize)});
    }
    return Fill({"contenitore compresso: {0} byte in {1}\nsomma di controllo {2}\n"
                 "tabella di {3} {3:valore|valori}, codici da {4} a {5} bit; i dati cominciano al byte {6}",
                 "coded container: {0} {0:byte|bytes} in {1}\nchecksum {2}\n"
                 "table of {3} {3:value|values}, codes of {4} to {5} bits; the data begin at byte {6}"},
                {text(info.sourceLength), text(info.containerSize), text(info.checksum), text(info.symbols),
                 text(info.shortestCode), text(info.longestCode), text(info.dataOffset + 1)});
}

void RunInfo(const Console& console, Answer& answer) {
    codec::ContainerInfo info;
    RunCodec(console, answer, [&](const CodecTools& tools) {
        info = tools.bytes ? codec::clsHuffman::Info(*tools.bytes, tools.key)
                           : codec::clsHuffman::FileInfo(console.options.Argument(0), tools.key);
    });
    for (const char* key : {"result", "events", "bytesOut"})
        answer.fields.erase(key);
    answer.fields["form"] = kForms.at(static_cast<std::size_t>(info.form));
    answer.fields["sourceLength"] = info.sourceLength;
    const bool coded = info.form == codec::Form::coded;
    const std::array<std::pair<const char*, std::uint64_t>, 5> ofCoded{{{"checksum", info.checksum},
                                                                        {"symbols", info.symbols},
                                                                        {"shortestCode", info.shortestCode},
                                                                        {"longestCode", info.longestCode},
                                                                        {"dataOffset", info.dataOffset}}};
    for (const auto& [key, value] : ofCoded)
        answer.fields[key] = coded ? nlohmann::ordered_json(value) : nlohmann::ordered_json(nullptr);
    answer.text = Describe(info).In(console.language) + "\n";
}

}  // namespace

constinit const CommandEntry kEncodeCommand{
    "encode",
    {"Comprime un file in un contenitore HE3", "Compress a file into an HE3 container"},
    kEncodeArguments,
    kOptions,
    {},
    RunEncode};
constinit const CommandEntry kDecodeCommand{
    "decode",
    {"Estrae un file dal suo contenitore HE3, o controlla il contenitore",
     "Take a file out of its HE3 container, or check the container"},
    kDecodeArguments,
    kOptions,
    {},
    RunDecode};

constinit const CommandEntry kInfoCommand{"info",
                                          {"Dice che cosa dichiara un contenitore HE3, senza decodificarlo",
                                           "Say what an HE3 container tells of itself, without decoding it"},
                                          kInfoArguments,
                                          kInfoOptions,
                                          {},
                                          RunInfo};

}  // namespace vento::console
