#pragma once

#include <chrono>
#include <string>

#include "storage/Database.h"

struct sqlite3_backup;

namespace SettingsHost {

/// A consistent copy of the database in the making, a few pages at a time, while the database goes on being used.
///
/// A finished copy that proves to be in order becomes generation 1, `FILE.backup.1`; what was generation 1 becomes
/// generation 2. Until then both stay as they are. So at every moment, also at a loss of power, there is a good backup
/// once there has been one. The database outlives it.
class Backup {
public:
    /// Begins a copy. Errors: `DatabaseError`, also in `step`.
    explicit Backup(Database& database);
    /// Removes a copy that is not finished.
    ~Backup();

    Backup(const Backup&) = delete;
    Backup& operator=(const Backup&) = delete;

    /// Copies up to `pages` pages. Returns: false when the copy is complete and in its place.
    bool step(int pages);

private:
    struct Finisher {
        void operator()(sqlite3_backup* begun) const;
    };

    void check();
    void rotate();

    Database& database;
    std::string unfinished;
    Connection copy;
    std::unique_ptr<sqlite3_backup, Finisher> copying;
};

/// Is there no backup yet, or is the newest older than `maximumAge`? One from the future counts as too old: it was made
/// while the clock was wrong.
bool isBackupDue(const std::string& databaseFile, std::chrono::seconds maximumAge);

}  // namespace SettingsHost
