#include "storage/LogOut.h"

#include <vector>

#include "SettingsHandlerKit/Logging.h"
#include "storage/Backup.h"
#include "storage/FileNames.h"
#include "storage/Files.h"

namespace SettingsHandlerKit {

namespace {

bool hasTable(Database& database, const std::string& name) {
    Statement statement(database, "SELECT count(*) FROM sqlite_schema WHERE name='" + name + "'");
    statement.step();
    return statement.number(0) > 0;
}

bool hasSettings(Database& database) {
    if (!hasTable(database, settingsTable)) {
        return false;
    }
    return Statement(database, std::string("SELECT 1 FROM ") + settingsTable + " LIMIT 1").step();
}

bool hasMarkerFile(const Database& database) {
    return database.disk().find(logOutMarkerName(database.file())).has_value();
}

/// The marker file without the table means one of two things. Without settings the database was lost after the
/// deletion; with settings the log-out failed before the deletion.
bool isToBeErased(Database& database) {
    return hasTable(database, logOutTable) || (hasMarkerFile(database) && !hasSettings(database));
}

void createMark(Database& database) {
    database.execute(std::string("CREATE TABLE IF NOT EXISTS ") + logOutTable + " (pending)");
}

void abortLogOut(Database& database) {
    try {
        database.rollBack();
        if (!hasTable(database, logOutTable)) {
            removeFile(database.disk(), logOutMarkerName(database.file()));
        }
    } catch (const DatabaseError&) {
        // The next call of finishLogOut finds that nothing was deleted, and removes the marker.
    }
}

/// Continues after a failure, to erase as much as possible. Table and marker file are removed when all is erased.
void erase(Database& database) {
    std::string failure;
    const auto attempt = [&failure](const std::function<void()>& step) {
        try {
            step();
        } catch (const DatabaseError& error) {
            failure = failure.empty() ? error.what() : failure;
        }
    };
    attempt([&] { createMark(database); });
    std::vector<std::string> files;
    attempt([&] { files = companionFiles(database.disk(), database.file()); });
    for (const auto& file : files) {
        attempt([&] { removeFile(database.disk(), file); });
    }
    attempt([&] {
        // Rewrites the whole database without deleted and overwritten values.
        database.execute("VACUUM");
        database.emptyWal();
    });
    if (!failure.empty()) {
        throw DatabaseError(failure);
    }
    // Syncs the write-ahead log, so that the truncated part cannot come back.
    database.execute(std::string("DROP TABLE ") + logOutTable);
    removeFile(database.disk(), logOutMarkerName(database.file()));
}

}  // namespace

void beginLogOut(Database& database, const std::function<void()>& removeValues) {
    try {
        createFile(database.disk(), logOutMarkerName(database.file()));
        database.execute("BEGIN IMMEDIATE");
        removeValues();
        createMark(database);
        database.execute("COMMIT");
    } catch (const DatabaseError&) {
        abortLogOut(database);
        throw;
    }
}

void finishLogOut(Database& database) {
    if (!database.isWritable()) {
        return;
    }
    try {
        if (!isToBeErased(database)) {
            if (hasMarkerFile(database)) {
                removeFile(database.disk(), logOutMarkerName(database.file()));
            }
            return;
        }
        erase(database);
    } catch (const DatabaseError& error) {
        writeLog(VessaLogger::ERROR,
                 std::string("a log-out is incomplete: removed values are still on the disk (retried hourly and at the "
                             "next start): ") +
                     error.what());
        return;
    }
    try {
        backUp(database);
    } catch (const DatabaseError& error) {
        writeLog(VessaLogger::ERROR, std::string("database backup failed: ") + error.what());
    }
}

}  // namespace SettingsHandlerKit
