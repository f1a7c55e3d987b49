#include "SettingsClient/SocketCandidates.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "connection/DefaultSockets.h"

namespace SettingsClient {

namespace {

SocketCandidate candidateIn(const std::string& folder, const std::string& distrust = "") {
    return {folder + "/settings.sock", folder + "/device.sock", distrust};
}

SocketCandidate ownCandidate(const char* runtimeFolder) {
    // An empty or relative path counts as unset.
    if (runtimeFolder != nullptr && runtimeFolder[0] == '/') {
        return candidateIn(std::string(runtimeFolder) + "/settings-host");
    }
    const std::string folder = "/tmp/settings-host-" + std::to_string(::geteuid());
    return candidateIn(folder, distrustOf(folder));
}

std::string deviceSocketNextTo(const std::string& settingsSocket) {
    return settingsSocket.empty() ? "" : std::filesystem::path(settingsSocket).replace_filename("device.sock").string();
}

}  // namespace

std::vector<SocketCandidate> settingsSockets(const SocketOptions& options, const char* runtimeFolder) {
    if (options.settings) {
        return {{*options.settings, "", ""}};
    }
    return {ownCandidate(runtimeFolder), candidateIn("/run/settings-host")};
}

std::vector<SocketCandidate> deviceSockets(const SocketOptions& options, const char* runtimeFolder) {
    if (options.device || options.settings) {
        return {{options.device ? *options.device : deviceSocketNextTo(*options.settings), "", ""}};
    }
    std::vector<SocketCandidate> candidates = settingsSockets(options, runtimeFolder);
    for (auto& candidate : candidates) {
        std::swap(candidate.path, candidate.companion);
    }
    return candidates;
}

std::vector<SocketCandidate> defaultSettingsSockets() {
    return settingsSockets({}, runtimeFolder());
}

const char* runtimeFolder() {
    return std::getenv("XDG_RUNTIME_DIR");
}

std::string defaultSockets() {
    const auto candidates = defaultSettingsSockets();
    return candidates.front().path + ", then " + candidates.back().path;
}

std::string distrustOf(const std::string& folder) {
    struct stat status {};
    if (::lstat(folder.c_str(), &status) != 0) {
        return "";
    }
    if (!S_ISDIR(status.st_mode)) {
        return "its folder is a link or not a folder";
    }
    if (status.st_uid != ::geteuid()) {
        return "its folder belongs to another user";
    }
    return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 ? "its folder is writable by others" : "";
}

}  // namespace SettingsClient
