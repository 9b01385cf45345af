#include "simulator/image.h"

#include <array>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <utility>

#include "simulator/word_runs_json.h"
#include "storage/json.h"
#include "storage/text_file.h"
#include "text/encoding.h"

namespace vento::simulator {

namespace fs = std::filesystem;
using storage::ContentError;
using storage::JsonNode;

namespace {

RemoteContents ParseImage(std::string_view text) {
    const nlohmann::json document = storage::ParseJson(text);
    const JsonNode root(document);
    static constexpr std::array<std::string_view, 2> kKeys = {"free", "memory"};
    root.AllowKeys(kKeys);
    return {.free = root.At("free").Byte(), .memory = ReadWordRuns(root.At("memory"), WordForm::anyWord)};
}

std::string WriteImage(const RemoteContents& contents) {
    return "{ \"free\": " + std::to_string(contents.free) +
           ",\n  \"memory\": " + WriteWordRuns(contents.memory) + " }\n";
}

/// True if there is a file to load. Nothing but a file in a folder that is there will do.
bool IsThere(const fs::path& file) {
    std::error_code ignored;
    const fs::file_status status = fs::status(file, ignored);
    if (fs::is_regular_file(status)) return true;
    const bool isFree = status.type() == fs::file_type::not_found;
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    if (isFree && fs::is_directory(folder, ignored)) return false;
    throw ContentError(
        Fill({"immagine: previsto un file normale, o un nome per uno in una cartella esistente, trovato {0}",
              "image: expected a regular file, or a name for one in a folder that is there, found {0}"},
             {Utf8FromPath(file)}));
}

Sentence Named(const fs::path& file, const ReasonedError& error) {
    return Fill({"immagine {0}: {1}", "image {0}: {1}"}, {Utf8FromPath(file), error.Reason()});
}

}  // namespace

Image::Image(fs::path file, Remote& remote) : file_(std::move(file)), remote_(remote) {
    if (!IsThere(file_)) return;
    try {
        remote_.SetContents(ParseImage(storage::ReadText(file_)));
    } catch (const ContentError& error) {
        throw ContentError(Named(file_, error));
    } catch (const platform::FileError& error) {
        throw platform::FileError(Named(file_, error));
    }
    saved_ = WriteImage(remote_.Contents());
}

Image::~Image() {
    try {
        Save();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): whoever must know has called Save
    }
}

void Image::Save() {
    std::string text = WriteImage(remote_.Contents());
    if (text == saved_) return;
    try {
        storage::ReplaceText(file_, text);
    } catch (const platform::FileError& error) {
        throw ImageError(Named(file_, error));
    }
    saved_ = std::move(text);
}

}  // namespace vento::simulator
