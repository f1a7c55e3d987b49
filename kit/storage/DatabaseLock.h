#pragma once

#include <string>

#include "service/Descriptor.h"

namespace SettingsHost {

// Locks of a database file that do not go through SQLite, for files that SQLite takes no lock of or cannot read. They
// last as long as the descriptor is open. SQLite and a lock for removal do not go together in one process: the system
// drops the lock as soon as any descriptor of the file is closed.

/// Says that the file is being read, where SQLite takes no lock, because the file system cannot be written to.
Descriptor lockForReading(const std::string& file);

/// Keeps everybody who uses SQLite away from the file. Errors: `DatabaseError` when somebody reads or writes it.
Descriptor lockForRemoval(const std::string& file);

}  // namespace SettingsHost
