#pragma once

#include <memory>
#include <string>

#include "SettingsHandlerKit/StorageObserver.h"
#include "storage/Database.h"

namespace SettingsHandlerKit {

/// Opens the database at `path`. A damaged one is renamed to `path`.damaged (or .damaged.2, …), its write-ahead log to
/// `path`.damaged-wal, and replaced with the newest good backup, see Backup.h. The same happens when the file is
/// missing or empty while backups or a write-ahead log exist, as after a repair of the file system. What was done is
/// logged at level 3 and returned in `recovery`. An interrupted log-out is finished, see LogOut.h; a database that was
/// lost during a log-out is neither kept nor restored. After a loss of power the next start completes the recovery.
/// Errors: `DatabaseError` when no database could be opened; nothing is lost then.
Database openOrRecover(const std::string& path, const std::shared_ptr<Disk>& disk, Recovery& recovery);

}  // namespace SettingsHandlerKit
