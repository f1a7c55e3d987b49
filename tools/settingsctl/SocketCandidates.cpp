#include "SocketCandidates.h"

#include <filesystem>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace SettingsCtl {

namespace {

SocketPlace placeIn(const std::string& folder, const std::string& objection = "") {
    return {folder + "/settings.sock", folder + "/device.sock", objection};
}

SocketPlace ownPlace(const char* runtimeFolder) {
    // A variable that is unset, empty or relative names no folder.
    if (runtimeFolder != nullptr && runtimeFolder[0] == '/') {
        return placeIn(std::string(runtimeFolder) + "/settings-host");
    }
    const std::string folder = "/tmp/settings-host-" + std::to_string(::geteuid());
    return placeIn(folder, objectionTo(folder));
}

std::string deviceSocketBeside(const std::string& settingsSocket) {
    return settingsSocket.empty() ? "" : std::filesystem::path(settingsSocket).replace_filename("device.sock").string();
}

}  // namespace

std::vector<SocketPlace> settingsPlaces(const SocketOptions& options, const char* runtimeFolder) {
    if (options.settings) {
        return {{*options.settings, "", ""}};
    }
    return {ownPlace(runtimeFolder), placeIn("/run/settings-host")};
}

std::vector<SocketPlace> devicePlaces(const SocketOptions& options, const char* runtimeFolder) {
    if (options.device || options.settings) {
        return {{options.device ? *options.device : deviceSocketBeside(*options.settings), "", ""}};
    }
    std::vector<SocketPlace> places = settingsPlaces(options, runtimeFolder);
    for (auto& place : places) {
        std::swap(place.path, place.companion);
    }
    return places;
}

std::string objectionTo(const std::string& folder) {
    struct stat facts {};
    if (::lstat(folder.c_str(), &facts) != 0) {
        return "";
    }
    if (!S_ISDIR(facts.st_mode)) {
        return "its folder is a link or no folder";
    }
    if (facts.st_uid != ::geteuid()) {
        return "its folder belongs to another user";
    }
    return (facts.st_mode & (S_IWGRP | S_IWOTH)) != 0 ? "its folder is writable by others" : "";
}

}  // namespace SettingsCtl
