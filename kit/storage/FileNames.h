#pragma once

#include <string>
#include <vector>

namespace SettingsHost {

/// What SQLite puts beside a database, with its changes in it.
constexpr const char* companions[] = {"-wal", "-journal"};

/// The files that the storage keeps beside a database, as far as they are there: backups, copies that were not
/// finished, databases that were set aside, and what SQLite put beside those. The database's own log is not among them.
/// Errors: `DatabaseError`.
std::vector<std::string> companionFiles(const std::string& databaseFile);

}  // namespace SettingsHost
