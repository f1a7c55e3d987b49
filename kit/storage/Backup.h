#pragma once

#include <chrono>
#include <string>

#include "storage/Database.h"

struct sqlite3_backup;

namespace SettingsHandlerKit {

/// Copies the database a few pages at a time while it stays in use. The copy is consistent.
///
/// A finished copy that passes SQLite's check becomes generation 1, `FILE.backup.1`, and the former generation 1
/// becomes generation 2. Both stay unchanged until then, so that once there is a good backup there always is one, also
/// after a loss of power. The database outlives it.
class Backup {
public:
    /// Starts a copy. Errors: `DatabaseError`, also in `step`.
    explicit Backup(Database& database);
    /// Removes the copy unless it is finished.
    ~Backup();

    Backup(const Backup&) = delete;
    Backup& operator=(const Backup&) = delete;

    /// Copies up to `pages` pages. Returns: false when the backup is finished.
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

/// Makes a whole backup. No other one is in progress. Errors: `DatabaseError`.
void backUp(Database& database);

/// Is there no backup, or is the newest one older than `maximumAge`? A backup from the future counts as too old: the
/// clock was wrong when it was made.
bool isBackupDue(const Disk& disk, const std::string& databaseFile, std::chrono::seconds maximumAge);

}  // namespace SettingsHandlerKit
