#pragma once

#include "Options.h"

namespace SettingsHost {

/// Removes the files of hosts with these options: the database and its log, backups, databases that were set aside, and
/// the log files. Lists them on standard output first, and asks on the terminal unless the options confirm it.
/// Returns: the exit status, 0 when all are removed, 1 when the answer was no. Errors: `CommandLineEnd` without a
/// terminal; `DatabaseError` when the database is in use or of another program, or a file cannot be removed.
int reset(const Options& options);

}  // namespace SettingsHost
