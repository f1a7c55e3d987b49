#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace SettingsHandlerKit {

/// What a storage does with the disk. This class is the system's disk. Tests derive from it to let operations fail, or
/// to keep the files elsewhere; what a database holds goes through `databaseLayer`.
///
/// Errors: each operation that returns a `std::error_code` returns an `errno` value of the generic category, or none
/// when it succeeded. Threads: those of the storage. Paths are absolute.
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

    /// What is known of a file.
    struct FileState {
        /// 0 for a folder and for a link that leads nowhere.
        std::uintmax_t size = 0;
        /// When its content was changed.
        std::chrono::system_clock::time_point changed;
    };
    /// Returns: nothing when there is no file, folder or link of that name.
    virtual std::optional<FileState> find(const std::string& path) const;
    /// Can the file be opened, for reading and with `writing` also for that? Nothing is changed.
    virtual std::error_code tryOpen(const std::string& file, bool writing) const;
    /// Adds the names of all that is in a folder, without the folder, in any order.
    virtual std::error_code list(const std::string& folder, std::vector<std::string>& names) const;
};

}  // namespace SettingsHandlerKit
