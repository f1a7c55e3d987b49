#include "storage/Files.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>

#include "SettingsHandlerKit/DatabaseError.h"
#include "SettingsHandlerKit/Descriptor.h"

namespace SettingsHandlerKit {

namespace {

void failIf(const std::error_code& error, const std::string& what) {
    if (error) {
        throw DatabaseError(what + ": " + error.message());
    }
}

std::error_code openingError(const std::string& file, int flags) {
    const Descriptor opened(::open(file.c_str(), flags | O_CLOEXEC));
    return opened.get() < 0 ? std::error_code(errno, std::generic_category()) : std::error_code();
}

void sync(Disk& disk, const std::string& path) {
    failIf(disk.sync(path), "fsync failed for " + path);
}

/// The name of a file is stored in its folder, which is synced like a file.
void syncFolderOf(Disk& disk, const std::string& path) {
    sync(disk, std::filesystem::path(path).parent_path().string());
}

}  // namespace

void createFolders(Disk& disk, const std::string& folder) {
    std::error_code unused;
    if (folder.empty() || std::filesystem::exists(folder, unused)) {
        return;
    }
    createFolders(disk, std::filesystem::path(folder).parent_path().string());
    const std::error_code error = disk.createFolder(folder);
    if (error != std::errc::file_exists) {
        failIf(error, "cannot create the folder " + folder);
        syncFolderOf(disk, folder);
    }
}

FileAccess createFile(Disk& disk, const std::string& file) {
    createFolders(disk, std::filesystem::path(file).parent_path().string());
    const std::error_code error = openingError(file, O_RDWR);
    if (!error) {
        return FileAccess::WRITABLE;
    }
    if (error == std::errc::read_only_file_system && !openingError(file, O_RDONLY)) {
        return FileAccess::READ_ONLY;
    }
    const bool missing = error == std::errc::no_such_file_or_directory;
    failIf(missing ? disk.createFile(file) : error, "cannot open " + file);
    syncFolderOf(disk, file);
    return FileAccess::WRITABLE;
}

bool holdsData(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return !error && size > 0;
}

void moveFile(Disk& disk, const std::string& from, const std::string& to) {
    failIf(disk.renameFile(from, to), "cannot rename " + from + " to " + to);
    syncFolderOf(disk, to);
}

void removeFile(Disk& disk, const std::string& file) {
    const std::error_code error = disk.removeFile(file);
    if (error != std::errc::no_such_file_or_directory) {
        failIf(error, "cannot remove " + file);
        syncFolderOf(disk, file);
    }
}

void copyFile(Disk& disk, const std::string& from, const std::string& to) {
    removeFile(disk, to);
    failIf(disk.copyFile(from, to), "cannot copy " + from + " to " + to);
    sync(disk, to);
    syncFolderOf(disk, to);
}

}  // namespace SettingsHandlerKit
