#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sstream>

#include <fcntl.h>
#include <unistd.h>

#include "Checks.h"
#include "Wire/HostFrame.h"

namespace SettingsCtl {

namespace {

bool isInstalled(const std::string& program, const std::string& searchPath) {
    std::istringstream folders(searchPath);
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (::access((std::filesystem::path(folder) / program).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

/// A bridge locks its status file until it ends, however it ends. Asking takes no lock, which would keep a bridge that
/// starts right now from its own.
bool isLocked(int file) {
    struct flock wanted {};
    wanted.l_type = F_RDLCK;
    wanted.l_whence = SEEK_SET;
    return ::fcntl(file, F_OFD_GETLK, &wanted) == 0 && wanted.l_type != F_UNLCK;
}

std::string contentOf(int file) {
    std::string content(4096, '\0');
    const ssize_t count = ::pread(file, content.data(), content.size(), 0);
    content.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return content;
}

Finding checkState(const std::string& program, const std::string& content) {
    try {
        const Wire::HostFrame state(content);
        const std::string version = state.textAt({"version"}).value_or("unknown");
        const std::string text = state.textAt({"text"}).value_or("no state");
        if (version != ownVersion()) {
            return {program, false,
                    "version " + version + "; settingsctl " + ownVersion() + ": restart it after an update"};
        }
        const bool isConnected = state.booleanAt({"connected"}).value_or(false);
        return {program, isConnected, isConnected ? text : text + ": see its log"};
    } catch (const Wire::MalformedFrame&) {
        return {program, false, "its status file is malformed: restart it"};
    }
}

}  // namespace

Finding checkBridge(const std::string& program, const BridgePlaces& places) {
    for (const auto& folder : places.runtimeFolders) {
        const std::string path = std::filesystem::path(folder) / program / "status.json";
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        if (file < 0 && errno == ENOENT) {
            continue;
        }
        if (file < 0) {
            return {program, false, path + " cannot be read: " + std::strerror(errno)};
        }
        const bool runs = isLocked(file);
        const std::string content = contentOf(file);
        ::close(file);
        return runs ? checkState(program, content)
                    : Finding{program, false, "it has crashed: see its log, then start it"};
    }
    return {program, true, isInstalled(program, places.searchPath) ? "installed, not running" : "not installed"};
}

}  // namespace SettingsCtl
