#include "storage/LogOut.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "service/logging/HostLog.h"
#include "storage/Backup.h"
#include "storage/FileNames.h"
#include "storage/Files.h"

namespace SettingsHost {

namespace {

/// Is there while something is to be erased; it holds nothing.
constexpr const char* noteTable = "log_out";

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

bool isMarked(const Database& database) {
    std::error_code unused;
    return std::filesystem::exists(logOutMarkerName(database.file()), unused);
}

/// With the marker alone the log-out took place if there is nothing stored: then the database was lost with the note
/// in it. Else it was given up before the deletion.
bool isToBeErased(Database& database) {
    return hasTable(database, noteTable) || (isMarked(database) && !hasSettings(database));
}

void makeNote(Database& database) {
    database.execute(std::string("CREATE TABLE IF NOT EXISTS ") + noteTable + " (pending)");
}

void giveUp(Database& database) {
    try {
        database.rollBack();
        if (!hasTable(database, noteTable)) {
            removeFile(logOutMarkerName(database.file()));
        }
    } catch (const DatabaseError&) {
        // The marker goes with the next look or start, which finds that nothing was deleted.
    }
}

/// Goes on when something fails, so that as much as possible is gone. The note and the marker go when all is.
void erase(Database& database) {
    std::string failure;
    const auto attempt = [&failure](const std::function<void()>& step) {
        try {
            step();
        } catch (const DatabaseError& error) {
            failure = failure.empty() ? error.what() : failure;
        }
    };
    attempt([&] { makeNote(database); });
    std::vector<std::string> files;
    attempt([&] { files = companionFiles(database.file()); });
    for (const auto& file : files) {
        attempt([&] { removeFile(file); });
    }
    attempt([&] {
        // Writes the whole database anew. Deleted and overwritten values are in no page of the new one.
        database.execute("VACUUM");
        database.emptyLog();
    });
    if (!failure.empty()) {
        throw DatabaseError(failure);
    }
    // Syncs the log, too, so that what was cut off cannot come back.
    database.execute(std::string("DROP TABLE ") + noteTable);
    removeFile(logOutMarkerName(database.file()));
}

void backUp(Database& database) {
    try {
        constexpr int pages = 1000;
        Backup backup(database);
        while (backup.step(pages)) {
        }
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR, std::string("cannot back the database up: ") + error.what());
    }
}

}  // namespace

void beginLogOut(Database& database, const std::function<void()>& removeValues) {
    try {
        makeFile(logOutMarkerName(database.file()));
        database.execute("BEGIN IMMEDIATE");
        removeValues();
        makeNote(database);
        database.execute("COMMIT");
    } catch (const DatabaseError&) {
        giveUp(database);
        throw;
    }
}

void finishLogOut(Database& database) {
    if (!database.isWritable()) {
        return;
    }
    try {
        if (!isToBeErased(database)) {
            removeFile(logOutMarkerName(database.file()));
            return;
        }
        erase(database);
    } catch (const DatabaseError& error) {
        logHost(VessaLogger::ERROR,
                std::string("what a log-out removed is not erased from the disk yet, which is tried "
                            "again within an hour and at the next start: ") +
                    error.what());
        return;
    }
    backUp(database);
}

}  // namespace SettingsHost
