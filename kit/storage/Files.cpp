#include "storage/Files.h"

#include <filesystem>

#include "SettingsHandlerKit/DatabaseError.h"

namespace SettingsHandlerKit {

namespace {

void failIf(const std::error_code& error, const std::string& what) {
    if (error) {
        throw DatabaseError(what + ": " + error.message());
    }
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
    if (folder.empty() || disk.find(folder)) {
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
    const std::error_code error = disk.tryOpen(file, true);
    if (!error) {
        return FileAccess::WRITABLE;
    }
    if (error == std::errc::read_only_file_system && !disk.tryOpen(file, false)) {
        return FileAccess::READ_ONLY;
    }
    const bool missing = error == std::errc::no_such_file_or_directory;
    failIf(missing ? disk.createFile(file) : error, "cannot open " + file);
    syncFolderOf(disk, file);
    return FileAccess::WRITABLE;
}

bool holdsData(const Disk& disk, const std::string& file) {
    const auto found = disk.find(file);
    return found && found->size > 0;
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
