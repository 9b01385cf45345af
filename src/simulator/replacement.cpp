#include "simulator/replacement.h"

#include <random>
#include <string>
#include <system_error>

namespace vento::simulator {

namespace fs = std::filesystem;

namespace {

/// A name beside `file` that no other process will choose.
fs::path NameBeside(const fs::path& file) {
    std::random_device random;
    fs::path name = file;
    name += "." + std::to_string(random()) + ".new";
    return name;
}

}  // namespace

Replacement::Replacement(const fs::path& target)
    : target_(fs::weakly_canonical(target)), fresh_(NameBeside(target_)) {
    const fs::file_status status = fs::status(target_);
    if (!fs::exists(status) || fs::is_regular_file(status)) return;
    const auto reason =
        fs::is_directory(status) ? std::errc::is_a_directory : std::errc::operation_not_permitted;
    throw fs::filesystem_error("cannot replace", target, std::make_error_code(reason));
}

Replacement::~Replacement() {
    std::error_code ignored;
    fs::remove(fresh_, ignored);
}

void Replacement::TakePlace() {
    std::error_code none;
    const fs::file_status old = fs::status(target_, none);
    if (fs::exists(old)) fs::permissions(fresh_, old.permissions(), none);
    fs::rename(fresh_, target_);
}

}  // namespace vento::simulator
