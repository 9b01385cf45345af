#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "codec/cls_huffman.h"

namespace vento::console {

/// The key of the codec in a JSON file: a list of rows of two whole numbers, of whatever size. Throws
/// Failure.
[[nodiscard]] codec::KeyArray ReadKey(const std::string& path);

/// The key as such a list.
[[nodiscard]] nlohmann::ordered_json KeyFields(const codec::KeyArray& key);

}  // namespace vento::console
