#include "desktop/web/script.h"

#include <cstddef>

// NOLINTBEGIN(readability-identifier-naming): the names that the script knows
extern "C" {
[[clang::import_module("desktop"), clang::import_name("texts")]] void vento_texts(const char* json,
                                                                                  std::size_t length);
[[clang::import_module("desktop"), clang::import_name("show")]] void vento_show(const char* json,
                                                                                std::size_t length);
[[clang::import_module("desktop"), clang::import_name("tell")]] void vento_tell(const char* json,
                                                                                std::size_t length);
[[clang::import_module("desktop"), clang::import_name("ask")]] void vento_ask(const char* json,
                                                                              std::size_t length);
[[clang::import_module("desktop"), clang::import_name("choose")]] int vento_choose(const char* title,
                                                                                   std::size_t titleLength,
                                                                                   const char* filter,
                                                                                   std::size_t filterLength);
[[clang::import_module("desktop"), clang::import_name("end")]] void vento_end(const char* json,
                                                                              std::size_t length);
[[clang::import_module("desktop"), clang::import_name("onLinux")]] int vento_on_linux();
[[clang::import_module("desktop"), clang::import_name("canReachTransmitters")]] int vento_can_reach();
}
// NOLINTEND(readability-identifier-naming)

namespace vento::desktop::web::script {

std::string& TextRoom() {
    static std::string text;
    return text;
}

void SendTexts(std::string_view json) {
    vento_texts(json.data(), json.size());
}

void Show(std::string_view json) {
    vento_show(json.data(), json.size());
}

void Tell(std::string_view json) {
    vento_tell(json.data(), json.size());
}

void Ask(std::string_view json) {
    vento_ask(json.data(), json.size());
}

// The script asks for room as soon as it knows the answer.
std::optional<std::string> ChooseFile(std::string_view title, std::string_view filter) {
    const int length = vento_choose(title.data(), title.size(), filter.data(), filter.size());
    if (length < 0) return std::nullopt;
    return TextRoom();
}

void End(std::string_view json) {
    vento_end(json.data(), json.size());
}

bool OnLinux() {
    return vento_on_linux() != 0;
}

bool CanReachTransmitters() {
    return vento_can_reach() != 0;
}

}  // namespace vento::desktop::web::script
