#pragma once

#include <string>
#include <string_view>

namespace vento::desktop {

/// What a window shows of a caption, an item or a path: the text without control characters, which have no
/// shape, and without those that turn its direction, its lines parted by a line feed and none behind the
/// last. Both texts are UTF-8.
[[nodiscard]] std::string ShownText(std::string_view text);

}  // namespace vento::desktop
