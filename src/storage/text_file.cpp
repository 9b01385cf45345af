#include "storage/text_file.h"

#include "platform/native.h"
#include "platform/replacement.h"
#include "storage/json.h"
#include "text/encoding.h"

namespace vento::storage {

std::string ReadText(const std::filesystem::path& file) {
    try {
        return platform::MakeNativeFiles()->ReadAll(Utf8FromPath(file), kLargestText);
    } catch (const platform::FileTooLarge&) {
        throw ContentError(
            Fill({"previsto un testo di al massimo {0} byte", "expected a text of {0} bytes at the most"},
                 {std::to_string(kLargestText)}));
    }
}

void ReplaceText(const std::filesystem::path& file, std::string_view text) {
    const auto replacement = platform::ReplaceNatively(file);
    replacement->Write(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    replacement->TakePlace();
}

}  // namespace vento::storage
