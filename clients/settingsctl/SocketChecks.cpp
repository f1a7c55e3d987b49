#include <array>
#include <cstdio>
#include <filesystem>

#include <sys/stat.h>

#include "Checks.h"

namespace SettingsCtl {

namespace {

constexpr mode_t permissions = 07777;

std::string octal(mode_t mode) {
    std::array<char, 8> digits{};
    std::snprintf(digits.data(), digits.size(), "%04o", mode & permissions);
    return digits.data();
}

/// As the host's, and as a service manager makes it for a group.
Finding checkMode(const std::string& check, const std::string& path, mode_t mode) {
    const std::string found = path + " has mode " + octal(mode);
    if ((mode & S_IRWXO) != 0) {
        return {check, false, found + ", so every user can connect: run 'chmod o= " + path + "'"};
    }
    return {check, true, found};
}

Finding checkFolder(const std::string& path, mode_t mode) {
    const std::string found = path + " has mode " + octal(mode);
    if ((mode & (S_IWGRP | S_IWOTH)) != 0 && (mode & S_ISVTX) == 0) {
        return {"folder", false, found + ", so others can replace the socket: run 'chmod go-w " + path + "'"};
    }
    return {"folder", true, found};
}

}  // namespace

Findings checkSocket(const std::string& check, const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return {};
    }
    Findings findings{checkMode(check, path, status.st_mode)};
    const auto parent = std::filesystem::path(path).parent_path();
    const std::string folder = parent.empty() ? "." : parent.string();
    if (::stat(folder.c_str(), &status) == 0) {
        findings.push_back(checkFolder(folder, status.st_mode));
    }
    return findings;
}

}  // namespace SettingsCtl
