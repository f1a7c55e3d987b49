#include "service/sandbox/FileAccess.h"

#include <cerrno>
#include <cstdint>
#include <cstring>

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "SettingsHandlerKit/Descriptor.h"

namespace SettingsHandlerKit {

namespace {

// Missing from the headers of the oldest supported system.
constexpr std::uint64_t moveBetweenFolders = 1ULL << 13U;
constexpr std::uint64_t truncateFiles = 1ULL << 14U;

constexpr std::uint64_t readFiles = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t removeFiles = LANDLOCK_ACCESS_FS_REMOVE_FILE;
constexpr std::uint64_t changeFiles =
    readFiles | removeFiles | LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_MAKE_REG | truncateFiles;

/// All rights that a kernel with this version of Landlock can restrict.
std::uint64_t allRights(long version) {
    std::uint64_t rights = moveBetweenFolders - 1;
    if (version >= 2) {
        rights |= moveBetweenFolders;
    }
    if (version >= 3) {
        rights |= truncateFiles;
    }
    return rights;
}

/// Returns true for a path that does not exist.
bool permit(int ruleset, const std::string& path, std::uint64_t rights) {
    const Descriptor target(::open(path.c_str(), O_PATH | O_CLOEXEC));
    if (target.get() < 0) {
        return true;
    }
    landlock_path_beneath_attr rule{};
    rule.allowed_access = rights;
    rule.parent_fd = target.get();
    return ::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
}

bool permitAll(int ruleset, const SandboxFolders& folders, std::uint64_t handled) {
    bool permitted = true;
    for (const auto& folder : folders.changed) {
        permitted = permitted && permit(ruleset, folder, changeFiles & handled);
    }
    for (const auto& folder : folders.cleared) {
        permitted = permitted && permit(ruleset, folder, removeFiles);
    }
    for (const auto& folder : folders.read) {
        permitted = permitted && permit(ruleset, folder, readFiles);
    }
    // For the metrics of this process. Those of other processes are out of reach: a sandboxed process must not trace.
    permitted = permitted && permit(ruleset, "/proc", readFiles);
    permitted = permitted && permit(ruleset, "/usr/share/zoneinfo", readFiles);
    for (const auto* file : {"/etc/localtime", "/dev/null", "/dev/urandom"}) {
        permitted = permitted && permit(ruleset, file, LANDLOCK_ACCESS_FS_READ_FILE);
    }
    return permitted;
}

}  // namespace

std::string limitFileAccess(const SandboxFolders& folders) {
    const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) {
        return std::strerror(errno);
    }
    landlock_ruleset_attr attributes{};
    attributes.handled_access_fs = allRights(version);
    const Descriptor ruleset(
        static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof(attributes), 0)));
    if (ruleset.get() < 0 || !permitAll(ruleset.get(), folders, attributes.handled_access_fs) ||
        ::syscall(SYS_landlock_restrict_self, ruleset.get(), 0) != 0) {
        return std::strerror(errno);
    }
    return "";
}

}  // namespace SettingsHandlerKit
