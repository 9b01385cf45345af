#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "codec/file_bytes.h"
#include "console/codec_run.h"
#include "console/commands.h"
#include "console/console_machine.h"
#include "platform/replacement.h"
#include "text/encoding.h"
#include "text/language.h"

namespace vento::console {
namespace {

constexpr std::array kEncodeArguments{
    ArgumentEntry{{"SRC", "SRC"}, {"Il file da comprimere", "The file to encode"}},
    ArgumentEntry{{"DEST", "DEST"},
                  {"Il contenitore; può essere SRC stesso", "The container; it may be SRC itself"}},
};
constexpr std::array kDecodeArguments{
    ArgumentEntry{{"SRC", "SRC"}, {"Il contenitore", "The container"}},
    ArgumentEntry{{"DEST", "DEST"},
                  {"Ciò che vi era dentro; può essere SRC stesso. Senza DEST SRC viene solo controllato",
                   "What was in it; it may be SRC itself. Without it SRC is only checked"},
                  false},
};

constexpr std::array kOptions{OptionEntry{
    "key",
    '\0',
    OptionEntry::Value::required,
    {"FILE", "FILE"},
    {"La chiave, una lista JSON di righe di due numeri", "The key, a JSON list of rows of two numbers"},
    [](Options& options, std::string_view value) {
        options.key = value;
        return true;
    }}};

std::string Counts(const Answer& answer, const Phrase& between, Language language) {
    const auto count = [&](const char* key) {
        return std::to_string(answer.fields[key].get<std::uint64_t>());
    };
    return count("bytesIn") + between.In(language) + count("bytesOut");
}

// An interrupt counts up to the moment in which the old file goes.
void Save(const Console& console, platform::Replacement& dest, std::span<const std::uint8_t> bytes) {
    dest.Write(bytes);
    EndIfInterrupted(console.terminal);
    dest.TakePlace();
}

void RunEncode(const Console& console, Answer& answer) {
    const Options& options = console.options;
    RunCodec(console, answer, [&](const CodecTools& tools) {
        const auto dest = platform::ReplaceNatively(PathFromUtf8(options.Argument(1)));
        std::vector<std::uint8_t> bytes;
        if (tools.key != nullptr) {
            bytes = tools.codec.EncodeBytes(codec::ReadBytes(PathFromUtf8(options.Argument(0))), tools.key);
        } else {
            bytes = tools.codec.EncodeFile(options.Argument(0));
        }
        Save(console, *dest, bytes);
        answer.fields["bytesOut"] = bytes.size();
    });
    answer.text = Counts(answer, {" byte codificati in ", " bytes encoded in "}, console.language) + "\n";
}

void RunDecode(const Console& console, Answer& answer) {
    const Options& options = console.options;
    bool uncoded = false;
    RunCodec(console, answer, [&](const CodecTools& tools) {
        std::vector<std::uint8_t> bytes;
        if (tools.key != nullptr) {
            bytes =
                tools.codec.DecodeBytes(codec::ReadBytes(PathFromUtf8(options.Argument(0))), tools.key).bytes;
        } else {
            uncoded = tools.codec.DecodeFile(options.Argument(0), bytes);
        }
        if (options.arguments.size() > 1) {
            Save(console, *platform::ReplaceNatively(PathFromUtf8(options.Argument(1))), bytes);
        }
        if (tools.key == nullptr) answer.fields["result"] = uncoded;
        answer.fields["bytesOut"] = bytes.size();
    });
    const Language language = console.language;
    answer.text = Counts(answer, {" byte decodificati in ", " bytes decoded to "}, language);
    if (uncoded) answer.text += Phrase{", non erano compressi", ", they were not compressed"}.In(language);
    answer.text += "\n";
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

}  // namespace vento::console
