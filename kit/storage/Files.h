#pragma once

#include <string>

namespace SettingsHandlerKit {

// Operations on files and folders of the storage. Each is synced: its effect survives a loss of power. Errors:
// `DatabaseError`.

/// Creates the folder and its missing parents, 0700.
void createFolders(const std::string& folder);

enum class FileAccess { WRITABLE, READ_ONLY };

/// Creates the file (0600) and its folders if they are missing. SQLite gives its own files the same mode.
/// Returns: READ_ONLY for a file that exists on a read-only file system.
FileAccess createFile(const std::string& file);

/// Does the file exist, and is it not empty?
bool holdsData(const std::string& file);

/// Renames a file within its folder; replaces a file of the new name.
void moveFile(const std::string& from, const std::string& to);

/// Does nothing if the file does not exist.
void removeFile(const std::string& file);

/// Copies `from` to `to` (0600); replaces a file of that name.
void copyFile(const std::string& from, const std::string& to);

}  // namespace SettingsHandlerKit
