#pragma once

#include <functional>
#include <string>

#include "storage/Database.h"

namespace SettingsHost {

// A log-out leaves nothing behind: after it no file of the storage holds a byte of a value that was stored in the
// table of settings. Rows that are deleted stay in free pages, in the log, in backups and in databases that were set
// aside, so all of these are erased as well. Tables of others stay.
//
// The deletion itself is one transaction, with a table in the database that says that the rest is to be erased. The
// file FILE.log-out is there from before the deletion to the end, so that a database which is lost meanwhile does not
// come back from a backup.

/// The name of the table that a log-out clears.
constexpr const char* settingsTable = "settings";

/// Runs `removeValues`, which removes what is in the table of settings, so that it takes place for good together with
/// the note that the rest is to be erased. To be followed by `finishLogOut`.
/// Errors: `DatabaseError`; then no log-out has taken place.
void beginLogOut(Database& database, const std::function<void()>& removeValues);

/// Erases what a log-out left, and makes a backup without it. Does nothing when there was none. No backup is being made
/// meanwhile. What cannot be erased now is logged at level 3 and erased by a later call, also after a restart.
void finishLogOut(Database& database);

}  // namespace SettingsHost
