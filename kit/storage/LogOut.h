#pragma once

#include <functional>
#include <string>

#include "storage/Database.h"

namespace SettingsHandlerKit {

// After a log-out no file of the storage holds a byte of a value from the table of settings. Deleted rows stay in free
// pages, in the write-ahead log, in backups and in databases that were set aside, so these are erased as well. Other
// tables stay.
//
// One transaction deletes the rows and creates a table which marks that files are still to be erased. In addition the
// file FILE.log-out exists from before the deletion until everything is erased, so that no backup is restored if the
// database is lost in between.

/// The name of the table that a log-out clears.
constexpr const char* settingsTable = "settings";
/// The name of the table that exists, empty, while files are still to be erased.
constexpr const char* logOutTable = "log_out";

/// Runs `removeValues`, which clears the table of settings, in one transaction with the mark. Call `finishLogOut` next.
/// Errors: `DatabaseError`; nothing was deleted then.
void beginLogOut(Database& database, const std::function<void()>& removeValues);

/// Erases what a log-out left behind, then makes a new backup. Does nothing without an unfinished log-out. No backup
/// may be in progress. What cannot be erased is logged at level 3 and erased by a later call, also after a restart.
void finishLogOut(Database& database);

}  // namespace SettingsHandlerKit
