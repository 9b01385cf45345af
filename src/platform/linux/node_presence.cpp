#include "platform/linux/node_presence.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

namespace vento::platform {
namespace {

/// Lines of the list are like "1: FLOCK  ADVISORY  WRITE 708 00:05:319 0 EOF".
bool IsLocked(const struct stat& node) {
    std::array<char, 64> file{};
    std::snprintf(file.data(), file.size(), " %02x:%02x:%ju ", major(node.st_dev), minor(node.st_dev),
                  static_cast<std::uintmax_t>(node.st_ino));
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        const bool isWhole = line.find(" FLOCK ") != std::string::npos;
        if (isWhole && line.find(" WRITE ") != std::string::npos &&
            line.find(file.data()) != std::string::npos) {
            return true;
        }
    }
    return false;
}

}  // namespace

Presence PresenceOfNode(const char* path) {
    struct stat node {};
    if (::stat(path, &node) != 0) return Presence::absent;
    if (::faccessat(AT_FDCWD, path, R_OK | W_OK, AT_EACCESS) != 0)
        return errno == EACCES ? Presence::forbidden : Presence::absent;
    return IsLocked(node) ? Presence::inUse : Presence::ready;
}

}  // namespace vento::platform
