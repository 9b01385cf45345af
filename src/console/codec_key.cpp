#include "console/codec_key.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "console/failure.h"
#include "platform/files.h"
#include "storage/json.h"
#include "storage/text_file.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

using nlohmann::json;
using storage::ContentError;

json ReadDocument(const std::string& path) {
    return storage::ParseJson(storage::ReadText(PathFromUtf8(path)));
}

std::int64_t Element(const json& value, const std::string& place) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    const bool tooLarge = value.is_number_unsigned() && value.get<std::uint64_t>() > kMost;
    if (!value.is_number_integer() || tooLarge) {
        throw ContentError(Fill({"riga {0}: previsto un numero intero di 64 bit, trovato {1}",
                                 "row {0}: expected a whole number of 64 bits, found {1}"},
                                {place, Shorten(value.dump(), kQuotedCharacters)}));
    }
    return value.get<std::int64_t>();
}

codec::KeyArray KeyOf(const json& document) {
    if (!document.is_array())
        throw ContentError(Phrase{"prevista una lista di righe", "expected a list of rows"});
    codec::KeyArray key;
    for (const json& row : document) {
        const std::string place = std::to_string(key.size() + 1);
        if (!row.is_array() || row.size() != 2) {
            throw ContentError(Fill(
                {"riga {0}: prevista una lista di due numeri", "row {0}: expected a list of two numbers"},
                {place}));
        }
        key.push_back({Element(row[0], place), Element(row[1], place)});
    }
    return key;
}

}  // namespace

codec::KeyArray ReadKey(const std::string& path) {
    try {
        return KeyOf(ReadDocument(path));
    } catch (const ContentError& error) {
        throw Failure(kUnusableInput, About(path, error));
    } catch (const platform::FileError& error) {
        throw Failure(kMissingInput, About(path, error));
    }
}

nlohmann::ordered_json KeyFields(const codec::KeyArray& key) {
    auto fields = nlohmann::ordered_json::array();
    for (const auto& row : key)
        fields.push_back({row[0], row[1]});
    return fields;
}

}  // namespace vento::console
