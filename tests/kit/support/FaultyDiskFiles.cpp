#include <filesystem>

#include "kit/support/FaultyDisk.h"

// What the storage does itself, without SQLite.

namespace SettingsHostTests {

std::error_code FaultyDisk::fault() const {
    return std::make_error_code(faultMode == Mode::FULL ? std::errc::no_space_on_device : std::errc::io_error);
}

std::error_code FaultyDisk::createFile(const std::string& file) {
    if (watches(file)) {
        if (fails(true)) {
            return fault();
        }
        trackCreation(file);
    }
    return Disk::createFile(file);
}

std::error_code FaultyDisk::copyFile(const std::string& from, const std::string& to) {
    if (watches(to)) {
        if (fails(true)) {
            return fault();
        }
        trackCreation(to);
        if (fails(true)) {
            Disk::createFile(to);
            return fault();
        }
    }
    return Disk::copyFile(from, to);
}

std::error_code FaultyDisk::renameFile(const std::string& from, const std::string& to) {
    if (watches(from)) {
        if (fails()) {
            return fault();
        }
        track(from);
        track(to);
        renames.emplace_back(from, to);
    }
    return Disk::renameFile(from, to);
}

std::error_code FaultyDisk::removeFile(const std::string& file) {
    if (watches(file)) {
        if (fails()) {
            return fault();
        }
        if (std::filesystem::is_regular_file(file)) {
            trackRemoval(file);
        }
    }
    return Disk::removeFile(file);
}

std::error_code FaultyDisk::sync(const std::string& path) {
    if (!watches(path) && path != watchedFolder) {
        return Disk::sync(path);
    }
    if (fails()) {
        return fault();
    }
    trackSync(path);
    return {};
}

}  // namespace SettingsHostTests
