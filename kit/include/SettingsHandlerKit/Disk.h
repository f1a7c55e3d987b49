#pragma once

#include <string>
#include <system_error>

namespace SettingsHandlerKit {

/// What a storage does to the disk: every operation that changes files or makes changes durable. This class is the
/// system's disk. Tests derive from it to let operations fail. Whether files exist and what they hold is read from the
/// system, so a derived disk keeps its files there.
///
/// Errors: each operation returns an `errno` value of the generic category, or none when it succeeded. Threads: those
/// of the storage. Paths are absolute.
class Disk {
public:
    Disk() = default;
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;
    virtual ~Disk();

    /// Creates a folder (0700). Its parent exists.
    virtual std::error_code createFolder(const std::string& folder);
    /// Creates an empty file (0600) if it does not exist.
    virtual std::error_code createFile(const std::string& file);
    /// Copies the file `from` to the new file `to` (0600), which must not exist.
    virtual std::error_code copyFile(const std::string& from, const std::string& to);
    /// Renames a file within its folder; replaces a file of the new name.
    virtual std::error_code renameFile(const std::string& from, const std::string& to);
    /// Removes a file.
    virtual std::error_code removeFile(const std::string& file);
    /// Returns when the content of a file, or the names in a folder, survive a loss of power.
    virtual std::error_code sync(const std::string& path);

    /// The name of the file system layer (VFS), registered with SQLite, through which the database is used; empty for
    /// SQLite's default. It is read whenever a database is opened.
    virtual std::string databaseLayer() const;
};

}  // namespace SettingsHandlerKit
