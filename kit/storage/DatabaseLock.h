#pragma once

#include <string>

#include "SettingsHandlerKit/Descriptor.h"

namespace SettingsHandlerKit {

// Locks of a database file without SQLite, for files that SQLite does not lock or cannot read. A lock is held until the
// descriptor is closed. A process that holds a lock for removal must not open the file with SQLite: the system drops
// the lock as soon as any descriptor of the file is closed.

/// A shared lock for a file on a read-only file system, where SQLite takes no lock. Errors: `DatabaseError`.
Descriptor lockForReading(const std::string& file);

/// An exclusive lock against every process that uses SQLite. Errors: `DatabaseError` when the file is in use.
Descriptor lockForRemoval(const std::string& file);

}  // namespace SettingsHandlerKit
