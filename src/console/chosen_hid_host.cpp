#include "console/chosen_hid_host.h"

#include "console/input.h"
#include "platform/file_error.h"
#include "text/encoding.h"

namespace vento::console {
namespace {

// Links to a device node, as udev makes them, are names of it too.
bool SameNode(std::string_view a, std::string_view b) {
    try {
        return a.starts_with('/') && b.starts_with('/') && SameFile(a, b);
    } catch (const platform::FileError&) {
        return false;
    }
}

}  // namespace

bool ChosenHidHost::IsChosen(std::string_view path) const {
    // Windows does not tell the case of letters in a path apart, and gives them now in one, now in the other.
    return !chosen_ || SameButForCase(path, *chosen_) || SameNode(path, *chosen_);
}

void ChosenHidHost::Search(const std::function<bool(std::string_view path)>& visit) {
    met_ = false;
    ForwardingHidHost::Search([&](std::string_view path) {
        if (!IsChosen(path)) return true;
        met_ = true;
        return visit(path);
    });
}

platform::OpenAnswer ChosenHidHost::Open(std::string_view path, platform::Wanted wanted) {
    const platform::OpenAnswer answer = ForwardingHidHost::Open(path, wanted);
    if (answer.outcome == platform::OpenOutcome::opened && answer.identity)
        opened_ = Opened{std::string(path), *answer.identity};
    return answer;
}

}  // namespace vento::console
