#pragma once

#include <string>
#include <vector>

#include "SettingsHandlerKit/Disk.h"

namespace SettingsHandlerKit {

// The names of the files that the storage keeps beside a database.

/// What SQLite appends to the name of a database for its own files, which hold changes of the database.
constexpr const char* walSuffix = "-wal";
constexpr const char* journalSuffix = "-journal";

constexpr int backupGenerations = 2;
/// `generation`: 1 is the newest.
std::string backupName(const std::string& database, int generation);
/// A backup that is not finished.
std::string unfinishedBackupName(const std::string& database);
/// A copy of a backup that is being restored.
std::string unfinishedRestoreName(const std::string& database);
/// A damaged database that was set aside; `number` counts from 1.
std::string damagedName(const std::string& database, int number);
/// The file that exists while a log-out is in progress.
std::string logOutMarkerName(const std::string& database);

/// The database and SQLite's files beside it, the database last. They need not exist.
std::vector<std::string> databaseFiles(const std::string& database);

/// The other files that the storage keeps beside a database, as far as they exist: backups, finished or not, restores
/// that are not finished, databases that were set aside, and SQLite's files beside these.
/// Errors: `DatabaseError`.
std::vector<std::string> companionFiles(const Disk& disk, const std::string& database);

}  // namespace SettingsHandlerKit
