#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "codec/file_bytes.h"
#include "codec/windows_1252.h"
#include "console/codec_run.h"
#include "console/commands.h"
#include "console/console_machine.h"
#include "simulator/replacement.h"
#include "simulator/text_file.h"
#include "text/language.h"

namespace vento::console {
namespace {

using simulator::Replacement;

CLI::Option* DeclareDest(CLI::App& command, Options& options, const char* summary) {
    return command.add_option("DEST", options.dest, summary)->type_name("");
}

void DeclareKey(CLI::App& command, Options& options) {
    command.add_option("--key", options.key, "The key, a JSON list of rows of two numbers")
        ->type_name("FILE");
}

void DeclareEncode(CLI::App& command, Options& options) {
    command.add_option("SRC", options.file, "The file to encode")->required()->type_name("");
    DeclareDest(command, options, "The container; it may be SRC itself")->required();
    DeclareKey(command, options);
}

void DeclareDecode(CLI::App& command, Options& options) {
    command.add_option("SRC", options.file, "The container")->required()->type_name("");
    DeclareDest(command, options, "What was in it; it may be SRC itself. Without it SRC is only checked");
    DeclareKey(command, options);
}

// With a key the bytes of the file are a text.
std::vector<std::uint8_t> CodeText(const std::string& file,
                                   const std::function<std::string(const std::string&)>& code) {
    const auto bytes = codec::ReadBytes(simulator::PathFromUtf8(file));
    return codec::BytesOf(code(codec::TextOf(bytes)));
}

std::string Counts(const Answer& answer, const Phrase& between, Language language) {
    const auto count = [&](const char* key) {
        return std::to_string(answer.fields[key].get<std::uint64_t>());
    };
    return count("bytesIn") + between.In(language) + count("bytesOut");
}

void RunEncode(const Console& console, Answer& answer) {
    const Options& options = console.options;
    RunCodec(console, answer, [&](const CodecTools& tools) {
        Replacement dest(simulator::PathFromUtf8(options.dest.value_or("")));
        if (tools.key != nullptr) {
            const auto encode = [&](const std::string& text) {
                return tools.codec.EncodeString(text, tools.key);
            };
            codec::ReplaceFile(dest.Fresh(), CodeText(options.file, encode));
        } else {
            tools.codec.EncodeFile(options.file, simulator::Utf8(dest.Fresh()));
        }
        const auto size = std::filesystem::file_size(dest.Fresh());
        dest.TakePlace();
        answer.fields["bytesOut"] = size;
    });
    answer.text =
        Counts(answer, {" byte codificati in ", " bytes encoded in "}, ChosenLanguage(options)) + "\n";
}

void Save(const Options& options, const std::vector<std::uint8_t>& bytes) {
    if (!options.dest) return;
    Replacement dest(simulator::PathFromUtf8(*options.dest));
    codec::ReplaceFile(dest.Fresh(), bytes);
    dest.TakePlace();
}

void RunDecode(const Console& console, Answer& answer) {
    const Options& options = console.options;
    bool uncoded = false;
    RunCodec(console, answer, [&](const CodecTools& tools) {
        std::vector<std::uint8_t> bytes;
        if (tools.key != nullptr) {
            const auto decode = [&](const std::string& text) {
                return tools.codec.DecodeString(text, tools.key);
            };
            bytes = CodeText(options.file, decode);
        } else {
            uncoded = tools.codec.DecodeFile(options.file, bytes);
        }
        Save(options, bytes);
        if (tools.key == nullptr) answer.fields["result"] = uncoded;
        answer.fields["bytesOut"] = bytes.size();
    });
    const Language language = ChosenLanguage(options);
    answer.text = Counts(answer, {" byte decodificati in ", " bytes decoded to "}, language);
    if (uncoded) answer.text += Phrase{", non erano compressi", ", they were not compressed"}.In(language);
    answer.text += "\n";
}

}  // namespace

constinit const CommandEntry kEncodeCommand{"encode", "Compress a file into an HE3 container", DeclareEncode,
                                            RunEncode};
constinit const CommandEntry kDecodeCommand{
    "decode", "Take a file out of its HE3 container, or check the container", DeclareDecode, RunDecode};

}  // namespace vento::console
