#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SettingsHandlerKit/DatabaseError.h"
#include "SettingsHandlerKit/Disk.h"

namespace SettingsHandlerKit {

/// All files of a storage that is not in use, locked, so that they can be removed: a reset to defaults. Threads: one.
class StorageFiles {
public:
    /// Finds the files of the database at `path` and locks it.
    /// - Errors: `DatabaseError` when the database is in use, or the file belongs to another program or never was a
    ///   database. A damaged database and one of a newer version may be removed.
    explicit StorageFiles(const std::string& path, std::shared_ptr<Disk> disk = std::make_shared<Disk>());
    ~StorageFiles();
    StorageFiles(const StorageFiles&) = delete;
    StorageFiles& operator=(const StorageFiles&) = delete;

    /// The absolute paths of the files that exist, in the order in which they are removed.
    const std::vector<std::string>& files() const;
    /// Removes them; the removal survives a loss of power. An interrupted one can be repeated.
    /// - Errors: `DatabaseError`; the remaining files are unchanged then.
    void remove();

private:
    struct Parts;
    const std::unique_ptr<Parts> parts;
};

}  // namespace SettingsHandlerKit
