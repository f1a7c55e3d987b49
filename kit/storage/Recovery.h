#pragma once

#include <string>

#include "storage/Database.h"

namespace SettingsHost {

/// What had to be done about the database at the start.
struct Recovery {
    enum class Source {
        /// The database was in order, or there was none yet.
        NOT_NEEDED,
        /// The newest backup that is in order took its place.
        BACKUP,
        /// No backup could be used: everything begins anew.
        DEFAULTS,
    };

    Source source = Source::NOT_NEEDED;
    /// The name, without the folder, under which the damaged file was kept; empty when there was none.
    std::string setAside;
};

/// Opens the database at `path`. A damaged one is kept as `path`.damaged (or .damaged.2, …), its write-ahead log as
/// `path`.damaged-wal, and the newest backup in order takes its place, see Backup.h. The same happens when the file is
/// missing or empty but left backups or a log, as after a repair of the file system. Logs at level 3 what was done and
/// says so in `recovery`. A log-out that was cut short is finished first, see LogOut.h; a database that was lost
/// during one is neither kept nor restored. A loss of power on the way is made up for by the next start.
/// Errors: `DatabaseError` when nothing could be opened; nothing is lost then.
Database openOrRecover(const std::string& path, Recovery& recovery);

}  // namespace SettingsHost
