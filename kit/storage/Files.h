#pragma once

#include <string>

namespace SettingsHost {

// Files and folders of the database. What a function made, moved or removed stays so after a loss of power. Errors:
// `DatabaseError`.

/// Makes the folders that are missing, 0700.
void makeFolders(const std::string& folder);

enum class FileAccess { WRITABLE, READ_ONLY };

/// Makes the file (0600) and its folders if need be. SQLite gives its own files the mode of this one.
/// Returns: READ_ONLY for a file that exists on a file system that cannot be written to.
FileAccess makeFile(const std::string& file);

/// Is there a file with something in it?
bool holdsData(const std::string& file);

/// Renames a file within its folder, over one that may have the new name.
void moveFile(const std::string& from, const std::string& to);

/// Does nothing when there is no such file.
void removeFile(const std::string& file);

/// Makes `to` (0600) a copy of `from`, over a file that may have the name.
void copyFile(const std::string& from, const std::string& to);

}  // namespace SettingsHost
