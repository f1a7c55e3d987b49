#pragma once

#include "Options.h"

namespace SettingsHost {

/// Removes what hosts with these options keep: the database with its log, backups, databases that were set aside, and
/// the log file that the options name. Lists it on standard output and asks on the terminal first, unless the options
/// confirm it.
/// Returns: the exit status, 0 when nothing is left, 1 when the person said no. Errors: `CommandLineEnd` when there is
/// nobody to ask; `DatabaseError` when the database is in use or somebody else's, or something cannot be removed.
int reset(const Options& options);

}  // namespace SettingsHost
