#pragma once

#include <string>

#include "SettingsHandlerKit/Disk.h"

namespace SettingsHandlerKit {

// Operations on files and folders of the storage. Each is synced: its effect survives a loss of power. Errors:
// `DatabaseError`.

/// Creates the folder and its missing parents, 0700.
void createFolders(Disk& disk, const std::string& folder);

enum class FileAccess { WRITABLE, READ_ONLY };

/// Creates the file (0600) and its folders if they are missing. SQLite gives its own files the same mode.
/// Returns: READ_ONLY for a file that exists on a read-only file system.
FileAccess createFile(Disk& disk, const std::string& file);

/// Does the file exist, and is it not empty?
bool holdsData(const Disk& disk, const std::string& file);

/// Renames a file within its folder; replaces a file of the new name.
void moveFile(Disk& disk, const std::string& from, const std::string& to);

/// Does nothing if the file does not exist.
void removeFile(Disk& disk, const std::string& file);

/// Copies `from` to `to` (0600); replaces a file of that name.
void copyFile(Disk& disk, const std::string& from, const std::string& to);

}  // namespace SettingsHandlerKit
